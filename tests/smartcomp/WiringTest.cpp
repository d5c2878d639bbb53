#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <ranges>
#include <vector>

#include "tests/smartcomp/Cell.h"

// A delivery meets the connections that begin at its source and no others, which
// an aggregation finds through an index once it has been walked for a while. The
// index must never show: whatever was edited in between, what is served is what a
// plain walk over the connections would serve.

namespace trel::test {
namespace {

constexpr unsigned boxId = 10;
constexpr unsigned firstId = 11;
constexpr unsigned count = 12;

class WiringTest : public CellTest, private broker::Listener {
protected:
    void SetUp() override {
        CellTest::SetUp();
        logic();
        Draft("Group", boxId, "Box").make<Box>();
        for (unsigned id = firstId; id != firstId + count; ++id)
            Draft("Framed", id, "C" + std::to_string(id))
                .in(boxId)
                .property(1, "Sent", "String", std::string("0"))
                .property(2, "Taken", "String", std::string("0"))
                .signal(1, "Taken", "DigitalInput")
                .signal(2, "Sent", "DigitalOutput")
                .make<Framed>();
        broker::SignalBroker::subscribe(*this);
    }
    void TearDown() override {
        broker::SignalBroker::unsubscribe(*this);
        CellTest::TearDown();
    }

    static Box& box() { return dynamic_cast<Box&>(*sdf::SdfManager::inst()->find(boxId)); }
    static SmartComponent& component(unsigned id) {
        return dynamic_cast<SmartComponent&>(*sdf::SdfManager::inst()->find(id));
    }
    unsigned below(unsigned n) { return static_cast<unsigned>(random_() % n); }
    unsigned anyComponent() { return firstId + below(count); }

    unsigned anyConnection(bool binding) {
        std::vector<unsigned> ids;
        if (binding)
            for (const auto& entry : box().bindings()) ids.push_back(entry.first);
        else
            for (const auto& entry : box().connections()) ids.push_back(entry.first);
        return ids.empty() ? 0 : ids[below(static_cast<unsigned>(ids.size()))];
    }

    void edit() {
        const bool binding = below(2) == 0;
        const unsigned id = anyConnection(binding);
        const unsigned source = binding ? 1 : 2;
        const unsigned destination = binding ? 2 : 1;
        const unsigned choice = id == 0 ? 0 : below(4);
        if (choice == 0) {
            const auto length = std::ranges::distance(box().connections());
            const int place = binding ? -1
                                      : static_cast<int>(below(static_cast<unsigned>(length) + 1));
            Connection::Build(&box(), box().getNextSgConnId(), anyComponent(), source,
                              anyComponent(), destination, place);
        } else if (choice == 1) {
            box().deleteConnection(id);
        } else if (choice == 2) {
            Connection& edited = binding ? *box().getBinding(id) : *box().getConnection(id);
            edited.modify(anyComponent(), source, anyComponent(), destination);
        } else if (!binding && box().getConnection(id)->getIndex() > 0) {
            box().moveSgConnOrderForward(id);
        }
    }

    // What a plain walk serves, by the connections themselves.
    std::vector<unsigned> expected(unsigned source, bool binding) {
        std::vector<unsigned> reached;
        if (binding) {
            for (const auto& [id, edge] : box().bindings())
                if (edge->matchSrc(source, 1)) reached.push_back(edge->getDstComponentId());
            return reached;
        }
        std::map<unsigned, unsigned> byIndex;
        for (const auto& [id, edge] : box().connections())
            if (edge->matchSrc(source, 2)) byIndex[edge->getIndex()] = edge->getDstComponentId();
        for (const auto& [index, destination] : byIndex) reached.push_back(destination);
        return reached;
    }

    std::vector<unsigned> send(unsigned source, bool binding) {
        const std::string text = std::to_string(++sent_);
        reached_.clear();
        if (binding)
            component(source).setPropertyValue(1, text);
        else
            component(source).setStaticSignalValue(2, static_cast<int>(sent_));
        return reached_;
    }

private:
    void scSignalValueChanged(unsigned signal, unsigned id) override {
        if (signal == 1) reached_.push_back(id);
    }
    void scPropertyValueChanged(unsigned property, unsigned id) override {
        if (property == 2) reached_.push_back(id);
    }

    std::mt19937 random_{20};
    unsigned sent_ = 0;
    std::vector<unsigned> reached_;
};

// A second text to one destination is equal to the first and passed over there.
std::vector<unsigned> withoutRepeats(const std::vector<unsigned>& ids) {
    std::vector<unsigned> once;
    for (const unsigned id : ids)
        if (std::find(once.begin(), once.end(), id) == once.end()) once.push_back(id);
    return once;
}

TEST_F(WiringTest, ServesWhatAPlainWalkServesAfterAnyEdit) {
    std::size_t served = 0;
    for (int round = 0; round != 400; ++round) {
        for (unsigned edits = below(4); edits != 0; --edits) edit();
        for (unsigned sends = 5 + below(30); sends != 0; --sends) {
            const unsigned source = anyComponent();
            const bool binding = below(2) == 0;
            const auto plain = expected(source, binding);
            ASSERT_EQ(send(source, binding), binding ? withoutRepeats(plain) : plain)
                << "round " << round << ", from " << source;
            served += plain.size();
        }
    }
    EXPECT_GT(served, 1'000u);
}

TEST_F(WiringTest, KnowsAConnectionThatIsAssignedTo) {
    const unsigned from = firstId;
    for (unsigned i = 1; i != 7; ++i) connect(box(), {from, 2}, {from + i, 1});
    for (int i = 0; i != 20; ++i) send(from, false);

    const Connection other = *box().getConnection(1);
    *box().getConnection(2) = *box().getConnection(2);
    box().getConnection(3)->modify(from, 2, from + 9, 1);
    EXPECT_EQ(send(from, false),
              (std::vector<unsigned>{from + 1, from + 2, from + 9, from + 4, from + 5, from + 6}));
    EXPECT_EQ(other.getDstComponentId(), from + 1);
}

TEST_F(WiringTest, KnowsAnAssignedConnectionByItsNewEnds) {
    const unsigned from = firstId;
    for (unsigned i = 1; i != 6; ++i) connect(box(), {from, 2}, {from + i, 1});
    const unsigned elsewhere = connect(box(), {from + 9, 2}, {from + 7, 1});
    for (int i = 0; i != 20; ++i) send(from, false);

    leaveUnchecked(box());  // its element is another connection's from here on
    *box().getConnection(elsewhere) = *box().getConnection(1);

    EXPECT_EQ(send(from, false),
              (std::vector<unsigned>{from + 1, from + 2, from + 3, from + 4, from + 5, from + 1}));
    EXPECT_EQ(send(from + 9, false), std::vector<unsigned>{});
}

// A copy hears nothing of what its source does to the connections.
TEST_F(WiringTest, KnowsInACopyWhatTheSourceModified) {
    box().element()->append(signalElement(1, "In", "DigitalInput", 0));
    SCSignal::Create(&box(), box().element()->get("signal"));
    for (unsigned i = 0; i != 6; ++i) connect(box(), {boxId, 1}, {firstId + i, 1});
    const unsigned elsewhere = connect(box(), {firstId, 2}, {firstId + 7, 1});
    SCSignal& modified = signalOf(component(firstId + 7), 1);
    Draft bare("Box", 99, "Assigned");
    leakOnPurpose([&] {
        auto* const assigned = new Box(bare.element(), sdf::ObjectType::Component);
        *assigned = box();
        int value = 0;
        for (Box* const copy : {new Box(box()), assigned}) {
            box().getConnection(elsewhere)->modify(firstId, 2, firstId + 7, 1);
            for (int i = 0; i != 20; ++i) copy->setStaticSignalValue(1, ++value);
            EXPECT_NE(modified.getValue(), SignalValue(value));
            box().getConnection(elsewhere)->modify(boxId, 1, firstId + 7, 1);
            copy->setStaticSignalValue(1, ++value);
            EXPECT_EQ(modified.getValue(), SignalValue(value));
        }
    });
    expectLost(2);
}

TEST_F(WiringTest, KnowsABindingThatBecomesNone) {
    const unsigned binding = bind(box(), {firstId, 1}, {firstId + 1, 2});
    EXPECT_EQ(send(firstId, true), std::vector<unsigned>{firstId + 1});
    leaveUnchecked(box());
    box().getBinding(binding)->setIndex(7);
    EXPECT_EQ(send(firstId, true), std::vector<unsigned>{});
    box().getConnection(binding)->setIndex(4294967295u);
    EXPECT_EQ(send(firstId, true), std::vector<unsigned>{firstId + 1});
}

}  // namespace
}  // namespace trel::test
