#include <QString>
#include <functional>
#include <stdexcept>
#include <string>
#include <utility>

#include "smartcomp/Hold.h"
#include "smartcomp/Lifecycle.h"
#include "smartcomp/Manager.h"
#include "smartcomp/Removals.h"
#include "tests/smartcomp/Cell.h"

namespace trel::test {

namespace {

using smartcomp::Build;
using smartcomp::GetAllSmartComponents;
using smartcomp::RemoveSmartComponent;
using smartcomp::RemoveSubSmartComponent;

class RemovalTest : public CellTest {
protected:
    void SetUp() override {
        CellTest::SetUp();
        logic();
        freshLog();
    }
    static bool isInDocument(unsigned id) {
        for (const auto& element : GetStationElem()->children("smart_component"))
            if (element->getId(true) == id) return true;
        return false;
    }
    static bool isListed(const SmartComponent* component) {
        for (const auto* entry : GetAllSmartComponents())
            if (entry == component) return true;
        return false;
    }
};

}  // namespace

TEST_F(RemovalTest, ARemovedComponentLeavesParentTableAndDocumentButNotTheList) {
    SmartComponent* const lamp = Build("Plain", 10, "Lamp", logicId);
    logic().setChildXY(10, 5, 6);
    freshLog();

    RemoveSmartComponent(10);

    EXPECT_FALSE(logic().hasObjChild(10));
    EXPECT_EQ(logic().element()->children("child").size(), 0u);
    EXPECT_EQ(logic().getChildXY(10), std::nullopt);
    EXPECT_FALSE(isInTable(10));
    EXPECT_TRUE(Plain::objectIsInvalid(10));
    EXPECT_FALSE(isInDocument(10));
    EXPECT_FALSE(Alive::contains(lamp));
    EXPECT_TRUE(isListed(lamp));
    EXPECT_EQ(log().notices(), Lines{});
}

// Whoever holds a component may call it when it is gone.
TEST_F(RemovalTest, WhatIsRemovedTakesNoValues) {
    auto& lamp = Draft("Framed", 10, "Lamp")
                     .property(1, "Text", "String", std::string("old"))
                     .signal(1, "In", "DigitalInput")
                     .signal(2, "Out", "DigitalOutput")
                     .make<Framed>();
    signalOf(lamp, 2).setValue(0);
    // The connections that began there are there still.
    const auto& horn = Draft("Framed", 11, "Horn")
                           .property(1, "Text", "String", std::string("old"))
                           .signal(1, "In", "DigitalInput")
                           .make<Framed>();
    connect(logic(), {10, 2}, {11, 1});
    bind(logic(), {10, 1}, {11, 1});
    const smartcomp::Hold hold(lamp);
    RemoveSubSmartComponent(10);
    freshLog();

    lamp.setStaticSignalValue(1, 1);
    lamp.setStaticSignalValue(2, 1);
    lamp.setStaticOutputSignal(2, 1);
    lamp.handleSignalValue(1, 1, 100);
    lamp.handleSignalValue(2, 1, 100);
    lamp.handleOutputSignal(2, 1, 100);
    lamp.SmartComponent::setPropertyValue(1, "new");

    EXPECT_EQ(log().lines(), Lines{});
    EXPECT_EQ(lamp.getProperty(1)->value(), "old");
    EXPECT_EQ(horn.getProperty(1)->value(), "old");
    EXPECT_TRUE(settingSignals(lamp).empty());
    EXPECT_TRUE(settingProperties(lamp).empty());
}

TEST_F(RemovalTest, WhatWasRemovedIsForgottenWithTheLastHold) {
    auto& lamp = Draft("Plain", 10, "Lamp").signal(1, "In", "DigitalInput").make<Plain>();
    auto& other = Draft("Plain", 11, "Other").make<Plain>();
    {
        const smartcomp::Hold first(other);
        const smartcomp::Removals::Since since;
        {
            const smartcomp::Hold second(lamp);
            lamp.deleteSignal(1);
            RemoveSubSmartComponent(10);
            EXPECT_TRUE(since.signal(10, 1));
        }
        EXPECT_TRUE(since.component(10));
        EXPECT_EQ(smartcomp::Removals::count(), 2u);
    }
    EXPECT_EQ(smartcomp::Removals::count(), 0u);
    RemoveSubSmartComponent(11);
    EXPECT_EQ(smartcomp::Removals::count(), 0u) << "nobody asks for it";
}

TEST_F(RemovalTest, AnAggregationThatIsRemovedTakesNoValues) {
    auto& box = Draft("Box", 10, "Box")
                    .property(1, "Text", "String", std::string("old"))
                    .signal(1, "In", "DigitalInput")
                    .make<Box>();
    const smartcomp::Hold hold(box);
    RemoveSubSmartComponent(10);
    freshLog();

    box.handleInputSignal(1, 1, 100);
    box.setStaticInputSignal(1, 1);
    box.setPropertyValue(1, "new");

    EXPECT_EQ(log().lines(), Lines{});
    EXPECT_EQ(box.getProperty(1)->value(), "old");
    EXPECT_TRUE(settingSignals(box).empty());
}

TEST_F(RemovalTest, TheParentIsToldFirstThenTheTableThenTheComponentDies) {
    auto& lamp = dynamic_cast<Plain&>(*Build("Plain", 10, "Lamp", logicId));
    bool isChild = true, inTable = true, inDocument = false;
    lamp.whenDestroyed = [&] {
        isChild = logic().hasObjChild(10);
        inTable = isInTable(10);
        inDocument = isInDocument(10);
    };
    RemoveSmartComponent(10);
    EXPECT_FALSE(isChild);
    EXPECT_FALSE(inTable);
    EXPECT_TRUE(inDocument) << "the element goes with the base";
}

TEST_F(RemovalTest, ConnectionsThatNameARemovedComponentStay) {
    Build("Plain", 10, "Lamp", logicId);
    const unsigned id = connect(logic(), {logicId, 1}, {10, 1});
    RemoveSmartComponent(10);
    EXPECT_EQ(logic().getConnection(id)->getDstComponentId(), 10u);
}

TEST_F(RemovalTest, ASubComponentGoesWithoutTellingItsParent) {
    auto& box = dynamic_cast<Box&>(*Build("Box", 10, "Box", logicId));
    SmartComponent* const inner = Build("Plain", 11, "Inner", 10);
    box.setChildXY(11, 5, 6);

    RemoveSubSmartComponent(11);

    EXPECT_TRUE(box.hasObjChild(11));
    EXPECT_EQ(box.getChildXY(11), std::pair(5, 6));
    EXPECT_FALSE(isInTable(11));
    EXPECT_FALSE(isInDocument(11));
    EXPECT_FALSE(Alive::contains(inner));
    EXPECT_TRUE(isListed(inner));
}

TEST_F(RemovalTest, AnUnknownIdThrowsAndChangesNothing) {
    Build("Plain", 10, "Lamp", logicId);
    expectThrow<std::out_of_range>(noKey, [] { RemoveSmartComponent(noSuchId); });
    expectThrow<std::out_of_range>(noKey, [] { RemoveSubSmartComponent(noSuchId); });
    EXPECT_TRUE(isInTable(10));
    EXPECT_TRUE(logic().hasObjChild(10));
}

TEST_F(RemovalTest, WhatIsNoComponentIsABadCastAndStays) {
    enter<Thing>(20, "Pallet");
    enterObject(21, nullptr);
    for (const unsigned id : {20u, 21u}) {
        expectThrow<std::bad_cast>([&] { RemoveSmartComponent(id); });
        expectThrow<std::bad_cast>([&] { RemoveSubSmartComponent(id); });
        EXPECT_TRUE(isInTable(id));
    }
}

TEST_F(RemovalTest, AComponentUnderAnUnknownParentStays) {
    Plain& lamp = Draft("Plain", 10, "Lamp").in(noSuchId).make<Plain>();
    expectThrow<std::out_of_range>(noKey, [] { RemoveSmartComponent(10); });
    EXPECT_TRUE(isInTable(10));
    EXPECT_TRUE(Alive::contains(&lamp));
}

TEST_F(RemovalTest, AComponentUnderWhatIsNoAggregationStays) {
    Draft("Plain", 20, "Other").make<Plain>();
    Draft("Plain", 10, "Lamp").in(20).make<Plain>();
    expectThrow<std::bad_cast>([] { RemoveSmartComponent(10); });
    EXPECT_TRUE(isInTable(10));
}

TEST_F(RemovalTest, AnAggregationLeavesItsChildrenToTheCaller) {
    Build("Box", 10, "Box", logicId);
    Build("Plain", 11, "Inner", 10);
    RemoveSmartComponent(10);
    EXPECT_TRUE(isInTable(11));
    EXPECT_TRUE(isInDocument(11));
}

TEST_F(RemovalTest, AnIdIsFreeAgainAfterARemoval) {
    Build("Plain", 10, "Lamp", logicId);
    RemoveSmartComponent(10);
    EXPECT_EQ(Build("Plain", 10, "Horn", logicId)->name(), "Horn");
}

// A component need not hold itself where the library calls it: whatever it does to itself, it lives
// until its call returns.
//
//   10.1 -> 11.1 -> 12.1        11 is the careless one

namespace {

class Careless : public Plain {
public:
    using Plain::Plain;

    void setPropertyValue(unsigned propertyId, const std::string& value) override {
        SmartComponent::setPropertyValue(propertyId, value);
        if (afterwards) afterwards();
        endSetPropertyValue(propertyId);
    }

    std::function<void()> afterwards;
};

SmartComponent* makeCareless(ElementPtr element) {
    return new Careless(std::move(element), sdf::ObjectType::Component);
}

class RemovalByATextTest : public RemovalTest {
protected:
    void SetUp() override {
        RemovalTest::SetUp();
        smartcomp::Manager::inst()->registerType("Careless", makeCareless, makeCareless,
                                                 [] { return QString("holds nothing"); });
        first_ = &draft("Framed", 10).make<Framed>();
        careless_ = &draft("Careless", 11).signal(2, "Out", "DigitalOutput").make<Careless>();
        last_ = &draft("Framed", 12).make<Framed>();
        bind(logic(), {10, 1}, {11, 1});
        bind(logic(), {11, 1}, {12, 1});
    }

    static Draft draft(const char* type, unsigned id) {
        return Draft(type, id, type).property(1, "Text", "String", std::string("old"));
    }
    void send(const std::string& text) { first_->setPropertyValue(1, text); }
    bool carelessLives() const { return Alive::contains(careless_); }

    Framed* first_ = nullptr;
    Careless* careless_ = nullptr;
    Framed* last_ = nullptr;
};

}  // namespace

TEST_F(RemovalByATextTest, WhoeverTheTextReachesLivesUntilItsCallReturns) {
    bool livesMeanwhile = false;
    careless_->afterwards = [&] {
        RemoveSubSmartComponent(11);
        EXPECT_FALSE(isInTable(11));
        EXPECT_FALSE(isInDocument(11));
        livesMeanwhile = carelessLives();
    };
    send("new");
    EXPECT_TRUE(livesMeanwhile);
    EXPECT_FALSE(carelessLives());
    EXPECT_EQ(last_->getProperty(1)->value(), "new");
}

TEST_F(RemovalByATextTest, ItsMembersDoToo) {
    Property& text = *careless_->getProperty(1);
    SCSignal& signal = signalOf(*careless_, 2);
    careless_->afterwards = [&] {
        careless_->deleteProperty(1);
        careless_->deleteSignal(2);
        EXPECT_EQ(text.value(), "new");
        EXPECT_EQ(signal.getName(), "Out");
    };
    send("new");
    EXPECT_TRUE(carelessLives());
    EXPECT_FALSE(careless_->hasProperty(1));
    EXPECT_FALSE(careless_->hasSignal(2));
}

TEST_F(RemovalByATextTest, AnotherTextMeanwhileEndsNothing) {
    auto& other = draft("Framed", 13).make<Framed>();
    bool livesMeanwhile = false;
    careless_->afterwards = [&] {
        RemoveSubSmartComponent(11);
        other.setPropertyValue(1, "by the way");
        livesMeanwhile = carelessLives();
    };
    send("new");
    EXPECT_TRUE(livesMeanwhile);
    EXPECT_FALSE(carelessLives());
}

TEST_F(RemovalByATextTest, AnybodyElseDiesAtOnce) {
    const auto& other = draft("Framed", 13).make<Framed>();
    careless_->afterwards = [&] {
        RemoveSubSmartComponent(13);
        EXPECT_FALSE(Alive::contains(&other));
    };
    send("new");
    EXPECT_FALSE(isInTable(13)) << "nothing was removed";
}

}  // namespace trel::test
