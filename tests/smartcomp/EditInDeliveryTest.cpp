#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/smartcomp/Cell.h"

// What reactions and listeners may do to a delivery that is under way. The same
// rules hold for all six walks, so each test runs along each of them:
//
//   Cell ( Source.2 -> First.1, Second.1, Third.1 )   outwards
//   Cell.1 ( -> First.1, Second.1, Third.1 )          inwards
//
// with signals that are set while editing or while running, or with properties
// and bindings. First, Second and Third are named after the order of service.

namespace trel::test {
namespace {

enum class Path { StaticOut, StaticIn, DynamicOut, DynamicIn, BindingOut, BindingIn };

constexpr unsigned cellId = 10;
constexpr unsigned sourceId = 11;

class EditInDelivery : public CellTest,
                       public ::testing::WithParamInterface<Path>,
                       private broker::Listener {
protected:
    void SetUp() override {
        CellTest::SetUp();
        logic();
        Draft(cellDraft(cellId, "Cell")).make<Box>();
        for (unsigned id = sourceId; id <= 15; ++id) {
            Framed& component = plainDraft(id).make<Framed>();
            component.onInput = [&component](unsigned signal, int value, long long) {
                signalOf(component, signal).setValue(value);
                component.notifySignalValueChanged(signal);
            };
        }
        for (unsigned destination = 12; destination <= 14; ++destination) link(destination);
        service_ = orderOfService();
        broker::SignalBroker::subscribe(*this);
    }

    void TearDown() override {
        broker::SignalBroker::unsubscribe(*this);
        CellTest::TearDown();
    }

    static Draft cellDraft(unsigned id, const std::string& name) {
        return Draft("Group", id, name)
            .property(1, "In", "String", std::string("old"))
            .signal(1, "In", "DigitalInput");
    }
    static Draft plainDraft(unsigned id) {
        return Draft("Framed", id, "C" + std::to_string(id))
            .in(cellId)
            .property(1, "P", "String", std::string("old"))
            .property(2, "Q", "String", std::string("old"))
            .signal(1, "In", "DigitalInput")
            .signal(2, "Out", "DigitalOutput");
    }

    static Box& cell() { return component<Box>(cellId); }
    static SmartComponent& source() { return component<SmartComponent>(sourceEnd().component); }
    template <typename Type>
    static Type& component(unsigned id) {
        return dynamic_cast<Type&>(*sdf::SdfManager::inst()->find(id));
    }

    static bool isBinding() {
        return GetParam() == Path::BindingOut || GetParam() == Path::BindingIn;
    }
    static bool isInwards() {
        return GetParam() == Path::StaticIn || GetParam() == Path::DynamicIn ||
               GetParam() == Path::BindingIn;
    }
    static End sourceEnd() {
        if (isInwards()) return {cellId, 1};
        return {sourceId, isBinding() ? 1u : 2u};
    }

    // A connection or binding from the source to a component's first member.
    static unsigned link(unsigned destination) {
        const End end{destination, 1};
        return isBinding() ? bind(cell(), sourceEnd(), end) : connect(cell(), sourceEnd(), end);
    }

    static std::vector<unsigned> orderOfService() {
        std::vector<unsigned> ids;
        std::map<unsigned, unsigned> byIndex;
        for (const auto& [id, connection] : cell().connections())
            byIndex[connection->getIndex()] = id;
        for (const auto& [index, id] : byIndex) ids.push_back(id);
        for (const auto& [id, binding] : cell().bindings()) ids.push_back(id);
        return ids;
    }

    // The connections in the order in which they are served, and where they lead.
    unsigned first() const { return service_[0]; }
    unsigned second() const { return service_[1]; }
    unsigned third() const { return service_[2]; }
    unsigned destinationOf(unsigned connection) const { return 11 + connection; }

    static Connection& connection(unsigned id) {
        return isBinding() ? *cell().getBinding(id) : *cell().getConnection(id);
    }

    // Has a connection begin elsewhere.
    void beginAt(End source, unsigned id) const {
        connection(id).modify(source.component, source.member, destinationOf(id), 1);
    }

    // Sends a value from the source; `edit` happens when the broker is told that
    // it reached `where`.
    void sendAnd(unsigned where, std::function<void()> edit) {
        where_ = where;
        edit_ = std::move(edit);
        send();
        EXPECT_FALSE(edit_) << "the edit was never reached";
    }

    static void send() {
        switch (GetParam()) {
            case Path::StaticOut:
            case Path::StaticIn: return source().setStaticSignalValue(sourceEnd().member, 1);
            case Path::DynamicOut:
            case Path::DynamicIn: return source().handleSignalValue(sourceEnd().member, 1, 5);
            case Path::BindingOut:
            case Path::BindingIn: return source().setPropertyValue(sourceEnd().member, "new");
        }
    }

    // The components that the delivery reached, in order, without the source.
    std::vector<unsigned> reached() const { return reached_; }
    std::vector<unsigned> destinations(std::vector<unsigned> connections) const {
        for (unsigned& id : connections) id = destinationOf(id);
        return connections;
    }

private:
    void scSignalValueChanged(unsigned, unsigned componentId) override { told(componentId); }
    void scPropertyValueChanged(unsigned, unsigned componentId) override { told(componentId); }

    void told(unsigned componentId) {
        if (componentId != sourceEnd().component) reached_.push_back(componentId);
        if (componentId != where_ || !edit_) return;
        const auto edit = std::exchange(edit_, nullptr);
        edit();
    }

    std::vector<unsigned> service_;
    std::vector<unsigned> reached_;
    unsigned where_ = 0;
    std::function<void()> edit_;
};

TEST_P(EditInDelivery, WithoutAnEditEveryDestinationIsServedInOrder) {
    send();
    EXPECT_EQ(reached(), destinations({first(), second(), third()}));
}

TEST_P(EditInDelivery, TheConnectionBeingServedMayBeDeleted) {
    sendAnd(destinationOf(first()), [&] { cell().deleteConnection(first()); });
    EXPECT_EQ(reached(), destinations({first(), second(), third()}));
    EXPECT_FALSE(cell().element()->children("connection").empty());
}

TEST_P(EditInDelivery, ADeletedConnectionNotYetReachedGetsNothing) {
    sendAnd(destinationOf(first()), [&] { cell().deleteConnection(second()); });
    EXPECT_EQ(reached(), destinations({first(), third()}));
}

TEST_P(EditInDelivery, AConnectionThatLosesItsIdToAnotherGetsNothing) {
    const std::unique_ptr<Connection> lost(tableOf(cell()).at(second()));
    sendAnd(destinationOf(first()), [&] {
        Connection::Build(&cell(), second(), sourceEnd().component, sourceEnd().member, 15, 1,
                          isBinding() ? -1 : 0);
    });
    EXPECT_EQ(reached(), destinations({first(), third()}));
}

TEST_P(EditInDelivery, AllConnectionsMayBeDeletedAtOnce) {
    sendAnd(destinationOf(first()), [&] {
        for (const unsigned id : {first(), second(), third()}) cell().deleteConnection(id);
    });
    EXPECT_EQ(reached(), destinations({first()}));
    EXPECT_EQ(cell().getNextSgConnId(), 1u);
}

TEST_P(EditInDelivery, WhatIsAddedIsNotServed) {
    sendAnd(destinationOf(first()), [&] {
        for (int i = 0; i != 100; ++i) link(15);
    });
    EXPECT_EQ(reached(), destinations({first(), second(), third()}));
}

TEST_P(EditInDelivery, WhatIsAddedInFrontShiftsNothing) {
    if (isBinding()) GTEST_SKIP() << "bindings have no order to be added to";
    sendAnd(destinationOf(second()), [&] {
        Connection::Build(&cell(), 50, sourceEnd().component, sourceEnd().member, 15, 1, 0);
    });
    EXPECT_EQ(reached(), destinations({first(), second(), third()}));
}

TEST_P(EditInDelivery, AConnectionMovedBackIsNotServedAgain) {
    if (isBinding()) GTEST_SKIP() << "bindings have no order";
    sendAnd(destinationOf(first()), [&] { cell().moveSgConnOrderBackward(first()); });
    EXPECT_EQ(reached(), destinations({first(), second(), third()}));
}

TEST_P(EditInDelivery, AConnectionMovedForwardIsServedOnce) {
    if (isBinding()) GTEST_SKIP() << "bindings have no order";
    sendAnd(destinationOf(second()), [&] {
        cell().moveSgConnOrderForward(third());
        cell().moveSgConnOrderForward(third());
    });
    EXPECT_EQ(reached(), destinations({first(), second(), third()}));
    EXPECT_EQ(connection(third()).getIndex(), 0u);
}

TEST_P(EditInDelivery, AModifiedConnectionIsServedWithItsNewDestination) {
    sendAnd(destinationOf(first()), [&] {
        const auto [component, member] = sourceEnd();
        connection(second()).modify(component, member, 15, 1);
    });
    EXPECT_EQ(reached(),
              (std::vector<unsigned>{destinationOf(first()), 15, destinationOf(third())}));
}

TEST_P(EditInDelivery, AConnectionThatNoLongerBeginsHereGetsNothing) {
    sendAnd(destinationOf(first()), [&] { beginAt({15, 2}, second()); });
    EXPECT_EQ(reached(), destinations({first(), third()}));
}

// Also behind the only one that began here.
TEST_P(EditInDelivery, AConnectionThatBeginsHereNowIsServedWhereItsTurnIsYetToCome) {
    for (const unsigned id : {second(), third()}) beginAt({15, 2}, id);
    sendAnd(destinationOf(first()), [&] { beginAt(sourceEnd(), third()); });
    EXPECT_EQ(reached(), destinations({first(), third()}));
}

TEST_P(EditInDelivery, AConnectionThatBeginsHereNowGetsNothingWhereItsTurnIsOver) {
    for (const unsigned id : {first(), second()}) beginAt({15, 2}, id);
    sendAnd(destinationOf(third()), [&] { beginAt(sourceEnd(), first()); });
    EXPECT_EQ(reached(), destinations({third()}));
}

TEST_P(EditInDelivery, ARemovedDestinationNotYetReachedGetsNothing) {
    sendAnd(destinationOf(first()),
            [&] { smartcomp::RemoveSmartComponent(destinationOf(second())); });
    EXPECT_EQ(reached(), destinations({first(), third()}));
}

TEST_P(EditInDelivery, ADestinationMayRemoveItself) {
    sendAnd(destinationOf(first()), [&] {
        smartcomp::RemoveSmartComponent(destinationOf(first()));
        EXPECT_FALSE(isInTable(destinationOf(first())));
        EXPECT_EQ(trel::GetStationElem()->children("smart_component").size(), 6u);
    });
    EXPECT_EQ(reached(), destinations({first(), second(), third()}));
}

TEST_P(EditInDelivery, ADestinationsMemberMayBeDeletedBeforeItIsReached) {
    sendAnd(destinationOf(first()), [&] {
        auto& destination = component<SmartComponent>(destinationOf(second()));
        if (isBinding())
            destination.deleteProperty(1);
        else
            destination.deleteSignal(1);
    });
    EXPECT_EQ(reached(), destinations({first(), third()}));
}

TEST_P(EditInDelivery, AWalkEndsWhenItsSourceIsRemoved) {
    const unsigned id = sourceEnd().component;
    sendAnd(destinationOf(first()), [&] {
        if (isInwards())
            smartcomp::RemoveSmartComponent(id);
        else
            smartcomp::RemoveSubSmartComponent(id);
        EXPECT_FALSE(isInTable(id));
    });
    EXPECT_EQ(reached(), destinations({first()}));
    EXPECT_FALSE(isInTable(id));
}

TEST_P(EditInDelivery, AWalkEndsWhenItsSourceMemberIsDeleted) {
    sendAnd(destinationOf(first()), [&] {
        if (isBinding())
            source().deleteProperty(sourceEnd().member);
        else
            source().deleteSignal(sourceEnd().member);
    });
    EXPECT_EQ(reached(), destinations({first()}));
    if (isBinding())
        EXPECT_FALSE(source().hasProperty(sourceEnd().member));
    else
        EXPECT_FALSE(source().hasSignal(sourceEnd().member));
}

TEST_P(EditInDelivery, AWalkEndsWhenTheAggregationIsRemoved) {
    sendAnd(destinationOf(first()), [&] {
        smartcomp::RemoveSmartComponent(cellId);
        EXPECT_FALSE(isInTable(cellId));
    });
    EXPECT_EQ(reached(), destinations({first()}));
}

TEST_P(EditInDelivery, TheSourceMayBeRemovedBeforeTheWalkBegins) {
    const unsigned id = sourceEnd().component;
    sendAnd(id, [&] { smartcomp::RemoveSmartComponent(id); });
    EXPECT_EQ(reached(), std::vector<unsigned>{});
    EXPECT_FALSE(isInTable(id));
}

TEST_P(EditInDelivery, TheAggregationMayBeRemovedBeforeTheWalkBegins) {
    sendAnd(sourceEnd().component, [&] { smartcomp::RemoveSmartComponent(cellId); });
    EXPECT_EQ(reached(), std::vector<unsigned>{});
}

TEST_P(EditInDelivery, ARemovedSourceMayBeRecoveredUnderTheWalk) {
    const unsigned id = sourceEnd().component;
    sendAnd(destinationOf(first()), [&] {
        const auto element = source().element();
        smartcomp::RemoveSmartComponent(id);
        smartcomp::Recover(element, {}, std::nullopt);
    });
    EXPECT_EQ(reached(), destinations({first()}));
    EXPECT_TRUE(isInTable(id));
    EXPECT_EQ(source().element()->parent(), trel::GetStationElem());
}

TEST_P(EditInDelivery, EveryComponentMayBeRemovedAtOnce) {
    sendAnd(destinationOf(first()), [&] {
        for (unsigned id = cellId; id <= 15; ++id) smartcomp::RemoveSubSmartComponent(id);
    });
    EXPECT_EQ(reached(), destinations({first()}));
}

TEST_P(EditInDelivery, TheSameValueSetAgainEndsQuietly) {
    sendAnd(destinationOf(first()), [] { send(); });
    EXPECT_EQ(log().events(), Lines{});
    // Nothing guards a dynamic input: it is stored and sent inwards once more.
    if (GetParam() == Path::DynamicIn) return;
    EXPECT_EQ(reached(), destinations({first(), second(), third()}));
}

TEST_P(EditInDelivery, AThrowUnderAnEditLeavesNoneOfItHeld) {
    struct Stop {};
    EXPECT_THROW(sendAnd(destinationOf(first()),
                         [&] {
                             cell().deleteConnection(second());
                             smartcomp::RemoveSmartComponent(destinationOf(third()));
                             throw Stop{};
                         }),
                 Stop);
    EXPECT_FALSE(isInTable(destinationOf(third())));
    EXPECT_EQ(reached(), destinations({first()}));
}

std::string nameOfPath(const ::testing::TestParamInfo<Path>& path) {
    static const std::vector<std::string> names = {"StaticOut", "StaticIn",   "DynamicOut",
                                                   "DynamicIn", "BindingOut", "BindingIn"};
    return names[static_cast<std::size_t>(path.param)];
}

INSTANTIATE_TEST_SUITE_P(Walks, EditInDelivery,
                         ::testing::Values(Path::StaticOut, Path::StaticIn, Path::DynamicOut,
                                           Path::DynamicIn, Path::BindingOut, Path::BindingIn),
                         nameOfPath);

}  // namespace
}  // namespace trel::test
