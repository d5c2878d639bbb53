#include "smartcomp/Lifecycle.h"

#include <algorithm>
#include <any>
#include <iterator>
#include <stdexcept>

#include "smartcomp/Manager.h"
#include "tests/smartcomp/Cell.h"

namespace trel::test {

namespace {

using smartcomp::Build;
using smartcomp::Create;
using smartcomp::GetAllSmartComponents;
using smartcomp::Load;
using smartcomp::Recover;

class LifecycleTest : public CellTest {
protected:
    void SetUp() override {
        CellTest::SetUp();
        logic();
        before_ = GetAllSmartComponents().size();
        freshLog();
    }

    // The components made since the test began, in the order of making.
    std::vector<SmartComponent*> list() const {
        const auto& all = GetAllSmartComponents();
        return {std::next(all.begin(), static_cast<std::ptrdiff_t>(before_)), all.end()};
    }
    Lines names() const {
        Lines found;
        for (const auto* component : list()) found.push_back(component->name());
        return found;
    }

    static ElementPtr lastInStation() {
        return GetStationElem()->children("smart_component").back();
    }
    static void expectLockIsFree() {
        ASSERT_TRUE(sdf::SdfManager::inst()->mutex().try_lock());
        sdf::SdfManager::inst()->mutex().unlock();
    }

private:
    std::size_t before_ = 0;
};

}  // namespace

// ---- Create

TEST_F(LifecycleTest, CreateEntersTheComponentInTableAndList) {
    const Draft draft("Plain", 10, "Lamp");
    SmartComponent* const lamp = Create(draft.element());
    EXPECT_EQ(sdf::SdfManager::inst()->objects().at(10), lamp);
    EXPECT_EQ(list(), std::vector{lamp});
    EXPECT_EQ(lamp->element(), draft.element());
    EXPECT_EQ(made().element, draft.element());
}

TEST_F(LifecycleTest, CreateReadsThePropertyValuesBetweenTableAndList) {
    std::size_t listed = 99;
    bool inTable = false;
    Plain::whenRead = [&](Plain& lamp) {
        listed = list().size();
        inTable = sdf::SdfManager::inst()->objects().at(10) == &lamp;
    };
    Create(Draft("Plain", 10, "Lamp").element());
    EXPECT_TRUE(inTable);
    EXPECT_EQ(listed, 0u);
    EXPECT_EQ(log().startingWith("Lamp.read").size(), 1u);
    EXPECT_EQ(list().size(), 1u);
}

TEST_F(LifecycleTest, CreateTouchesNeitherDocumentNorParent) {
    const Draft draft("Plain", 10, "Lamp");
    Draft("Plain", 11, "Later");
    freshLog();
    Create(draft.element());
    EXPECT_EQ(log().writes(), Lines{});
    EXPECT_EQ(log().notices(), Lines{});
    EXPECT_EQ(lastInStation()->name(), "Later");
    EXPECT_FALSE(logic().hasObjChild(10));
}

TEST_F(LifecycleTest, CreateOfAnUnknownTypeThrowsBeforeAnythingIsMade) {
    const Draft draft("plain", 10, "Lamp");
    expectThrow<std::out_of_range>(noKey, [&] { Create(draft.element()); });
    EXPECT_FALSE(isInTable(10));
    EXPECT_EQ(list().size(), 0u);
    EXPECT_EQ(draft.element()->parent(), GetStationElem());
}

TEST_F(LifecycleTest, CreateWithoutATypeThrows) {
    const auto element = GetStationElem()->appendObject("smart_component", 10, "Lamp");
    expectThrow<std::out_of_range>(noKey, [&] { Create(element); });
}

TEST_F(LifecycleTest, CreateTwiceOnTheSameElementThrowsTheSecondTime) {
    const Draft draft("Plain", 10, "Lamp");
    SmartComponent* const lamp = Create(draft.element());
    freshLog();
    loseRefusedComponent([&] {
        expectThrow<std::logic_error>(taken, [&] { Create(draft.element()); });
    });
    expectLost(1);
    EXPECT_EQ(list(), std::vector{lamp});
    EXPECT_EQ(sdf::SdfManager::inst()->objects().at(10), lamp);
    EXPECT_EQ(log().lines(), Lines{}) << "the refused one reads no values";
    expectLockIsFree();
}

TEST_F(LifecycleTest, AnEmptyEntryTakesTheIdToo) {
    enterObject(10, nullptr);
    const Draft draft("Plain", 10, "Lamp");
    loseRefusedComponent([&] {
        expectThrow<std::logic_error>(taken, [&] { Create(draft.element()); });
    });
    expectLost(1);
    EXPECT_EQ(list().size(), 0u);
}

TEST_F(LifecycleTest, TheStationHoldsId1) {
    const Draft draft("Plain", stationId, "Lamp");
    loseRefusedComponent([&] {
        expectThrow<std::logic_error>(taken, [&] { Create(draft.element()); });
    });
    expectLost(1);
}

TEST_F(LifecycleTest, WhatReadingTheValuesThrowsLeavesTheComponentInTheTableOnly) {
    Plain::whenRead = [](Plain&) { throw std::runtime_error("no such colour"); };
    expectThrow<std::runtime_error>("no such colour",
                                    [&] { Create(Draft("Plain", 10, "Lamp").element()); });
    EXPECT_TRUE(isInTable(10));
    EXPECT_EQ(list().size(), 0u);
}

TEST_F(LifecycleTest, WhatAMakeFunctionThrowsPasses) {
    expectThrow<std::runtime_error>("no such part",
                                    [&] { Create(Draft("Failing", 10, "Lamp").element()); });
    EXPECT_FALSE(isInTable(10));
}

TEST_F(LifecycleTest, AMakeFunctionThatMakesNothingIsAnError) {
    const auto makeNothing = [](ElementPtr) -> SmartComponent* { return nullptr; };
    smartcomp::Manager::inst()->registerType("Nothing", makeNothing, makeNothing, nullptr);
    expectThrow<std::logic_error>("a registered function made no component",
                                  [&] { Create(Draft("Nothing", 10, "Lamp").element()); });
    EXPECT_FALSE(isInTable(10));
    EXPECT_EQ(list().size(), 0u);
}

// ---- Build

TEST_F(LifecycleTest, BuildMakesAnElementWithIdNameTypeAndParent) {
    SmartComponent* const lamp = Build("Plain", 10, "Lamp", logicId);

    const ElementPtr element = lastInStation();
    EXPECT_EQ(lamp->element(), element);
    EXPECT_EQ(element->getId(true), 10u);
    EXPECT_EQ(element->name(), "Lamp");
    EXPECT_EQ(std::any_cast<std::string>(element->get("type")->value()), "Plain");
    EXPECT_EQ(std::any_cast<unsigned>(element->get("parent")->value()), logicId);
    EXPECT_EQ(lamp->getObjParentId(), logicId);
    EXPECT_EQ(list(), std::vector{lamp});
    EXPECT_EQ(sdf::SdfManager::inst()->objects().at(10), lamp);
    EXPECT_EQ(log().startingWith("Lamp.read").size(), 1u);
    EXPECT_EQ(log().notices(), Lines{});
}

TEST_F(LifecycleTest, BuildTellsTheParentAndGivesNoPosition) {
    Build("Plain", 10, "Lamp", logicId);
    EXPECT_TRUE(logic().hasObjChild(10));
    EXPECT_EQ(logic().element()->children("child").back()->asUInt(""), 10u);
    EXPECT_EQ(logic().getChildXY(10), std::nullopt);
    EXPECT_EQ(logic().element()->get("xy"), nullptr);
}

TEST_F(LifecycleTest, BuildTellsTheParentBeforeTheElementIsMade) {
    Lines order;
    log().whenWritten = [&](sdf::Element& element) { order.emplace_back(element.tag()); };
    Build("Plain", 10, "Lamp", logicId);
    const auto child = std::find(order.begin(), order.end(), "child");
    const auto type = std::find(order.begin(), order.end(), "type");
    ASSERT_NE(type, order.end());
    EXPECT_LT(child, type);
    EXPECT_LT(type, std::find(order.begin(), order.end(), "parent"));
}

TEST_F(LifecycleTest, TheBuildFunctionAddsWhatTheTypeStartsWith) {
    const int created = made().created;
    SmartComponent* const starter = Build("Starter", 10, "Starter", logicId);
    EXPECT_EQ(made().created, created);
    EXPECT_EQ(starter->getProperty(1)->value(), "2.5");
    EXPECT_TRUE(starter->hasSignal(1));
}

TEST_F(LifecycleTest, BuildOfAnUnregisteredTypeLeavesElementAndChildBehind) {
    expectThrow<std::out_of_range>(noKey, [] { Build("no such type", 10, "Lamp", logicId); });

    EXPECT_TRUE(logic().hasObjChild(10));
    EXPECT_EQ(logic().element()->children("child").back()->asUInt(""), 10u);
    EXPECT_EQ(lastInStation()->getId(true), 10u);
    EXPECT_EQ(lastInStation()->asString("type"), "no such type");
    EXPECT_EQ(lastInStation()->asUInt("parent"), logicId);
    EXPECT_FALSE(isInTable(10));
    EXPECT_EQ(list().size(), 0u);
}

TEST_F(LifecycleTest, BuildUnderAnUnknownParentChangesNothing) {
    const auto elements = GetStationElem()->children("smart_component").size();
    expectThrow<std::out_of_range>(noKey, [] { Build("Plain", 10, "Lamp", noSuchId); });
    EXPECT_EQ(GetStationElem()->children("smart_component").size(), elements);
    EXPECT_FALSE(isInTable(10));
    EXPECT_EQ(log().lines(), Lines{});
    expectLockIsFree();
}

TEST_F(LifecycleTest, BuildUnderWhatIsNoAggregationChangesNothing) {
    Create(Draft("Plain", 20, "Lamp").element());
    enterObject(21, nullptr);
    freshLog();
    for (const unsigned parent : {20u, 21u, stationId})
        expectThrow<std::bad_cast>([&] { Build("Plain", 10, "Bulb", parent); });
    EXPECT_EQ(lastInStation()->getId(true), 20u);
    EXPECT_EQ(log().lines(), Lines{});
}

TEST_F(LifecycleTest, BuildUnderATakenIdLeavesTheElementAndTheParentsEntry) {
    SmartComponent* const first = Build("Plain", 10, "First", logicId);
    loseRefusedComponent([&] {
        expectThrow<std::logic_error>(taken, [] { Build("Plain", 10, "Second", logicId); });
    });
    expectLost(1);
    EXPECT_EQ(sdf::SdfManager::inst()->objects().at(10), first);
    EXPECT_EQ(list(), std::vector{first});
    EXPECT_EQ(lastInStation()->name(), "Second");
    EXPECT_EQ(logic().element()->children("child").size(), 1u) << "a child is one child";
}

// ---- Recover

TEST_F(LifecycleTest, RecoverWithoutSubElementsAndPositionBringsTheComponentBackAlone) {
    Build("Plain", 10, "Lamp", logicId);
    const ElementPtr element = lastInStation();
    smartcomp::RemoveSmartComponent(10);
    ASSERT_FALSE(logic().hasObjChild(10));

    SmartComponent* const lamp = Recover(element, {}, std::nullopt);

    EXPECT_EQ(lamp->element(), element);
    EXPECT_EQ(lastInStation(), element);
    EXPECT_EQ(sdf::SdfManager::inst()->objects().at(10), lamp);
    EXPECT_EQ(list().back(), lamp);
    EXPECT_TRUE(logic().hasObjChild(10));
    EXPECT_EQ(logic().getChildXY(10), std::nullopt);
    EXPECT_EQ(logic().element()->get("xy"), nullptr);
}

TEST_F(LifecycleTest, RecoverGivesTheParentThePosition) {
    Build("Plain", 10, "Lamp", logicId);
    const ElementPtr element = lastInStation();
    smartcomp::RemoveSmartComponent(10);

    Recover(element, {}, std::pair{5, 6});

    EXPECT_EQ(logic().getChildXY(10), std::pair(5, 6));
    EXPECT_EQ(logic().element()->asVec3("xy"), (rob::Vec3Template<double>{10, 5, 6}));
}

TEST_F(LifecycleTest, RecoverBringsBackWhatTheComponentContainedInOrder) {
    Build("Box", 10, "Box", logicId);
    Build("Plain", 11, "Left", 10);
    Build("Plain", 12, "Right", 10);
    const auto elements = GetStationElem()->children("smart_component");
    const ElementPtr box = elements.at(elements.size() - 3);
    const std::vector inner(elements.end() - 2, elements.end());
    smartcomp::RemoveSubSmartComponent(11);
    smartcomp::RemoveSubSmartComponent(12);
    smartcomp::RemoveSmartComponent(10);
    ASSERT_EQ(lastInStation(), GetStationLogicElem());

    SmartComponent* const recovered = Recover(box, inner, std::nullopt);

    EXPECT_EQ(recovered->name(), "Box");
    EXPECT_TRUE(dynamic_cast<Box*>(recovered)->hasObjChild(12));
    const auto after = GetStationElem()->children("smart_component");
    EXPECT_EQ(after.at(after.size() - 3), box);
    EXPECT_EQ(std::vector(after.end() - 2, after.end()), inner);
    const auto all = list();
    EXPECT_EQ(all.at(all.size() - 3), recovered);
    EXPECT_EQ(all.at(all.size() - 2)->name(), "Left");
    EXPECT_EQ(all.at(all.size() - 1)->name(), "Right");
}

TEST_F(LifecycleTest, RecoverUnderAnUnknownParentThrowsOnceTheComponentsStand) {
    const Draft lamp = Draft("Plain", 10, "Lamp").in(noSuchId);
    const Draft inner = Draft("Plain", 11, "Inner").in(10);
    expectThrow<std::out_of_range>(noKey, [&] {
        Recover(lamp.element(), {inner.element()}, std::pair{5, 6});
    });
    EXPECT_EQ(names(), (Lines{"Lamp", "Inner"}));
    EXPECT_TRUE(isInTable(10));
    EXPECT_TRUE(isInTable(11));
}

TEST_F(LifecycleTest, RecoverUnderWhatIsNoAggregationIsABadCast) {
    Create(Draft("Plain", 20, "Lamp").element());
    const Draft inner = Draft("Plain", 10, "Inner").in(20);
    expectThrow<std::bad_cast>([&] { Recover(inner.element(), {}, std::nullopt); });
    EXPECT_TRUE(isInTable(10));
}

TEST_F(LifecycleTest, ASubElementOfAnUnknownTypeEndsTheRecovery) {
    const Draft lamp("Plain", 10, "Lamp");
    const Draft odd("no such type", 11, "Odd");
    const Draft last("Plain", 12, "Last");
    expectThrow<std::out_of_range>(noKey, [&] {
        Recover(lamp.element(), {odd.element(), last.element()}, std::nullopt);
    });
    EXPECT_EQ(names(), Lines{"Lamp"});
    EXPECT_FALSE(logic().hasObjChild(10));
}

// ---- Load

TEST_F(LifecycleTest, LoadMakesEachComponentButTheStationLogic) {
    Draft("Plain", 10, "Lamp");
    Draft("Box", 11, "Box");
    GetStationElem()->append("part");
    ASSERT_EQ(GetStationLogicElem()->asString("type"), "StationLogic");

    Load();

    EXPECT_EQ(names(), (Lines{"Lamp", "Box"}));
    EXPECT_TRUE(isInTable(10));
    EXPECT_TRUE(isInTable(11));
    EXPECT_EQ(log().startingWith("Lamp.read").size(), 1u);
    EXPECT_EQ(log().notices(), Lines{});
}

TEST_F(LifecycleTest, LoadEndsAtAnElementOfAnUnknownType) {
    Draft("Plain", 10, "Lamp");
    Draft("no such type", 11, "Odd");
    Draft("Plain", 12, "Last");
    expectThrow<std::out_of_range>(noKey, [] { Load(); });
    EXPECT_EQ(names(), Lines{"Lamp"});
    EXPECT_FALSE(isInTable(12));
}

TEST_F(LifecycleTest, LoadSkipsNothingThatIsMerelyCalledLikeTheStationLogic) {
    Draft("stationlogic", 10, "StationLogic");
    expectThrow<std::out_of_range>(noKey, [] { Load(); });
}

TEST_F(LifecycleTest, LoadLeavesTheParentsAlone) {
    Draft("Plain", 10, "Lamp");
    freshLog();
    Load();
    EXPECT_EQ(log().writes(), Lines{});
    EXPECT_FALSE(logic().hasObjChild(10));
}

TEST_F(LifecycleTest, TheListIsOneAndTheSame) {
    const auto& list = GetAllSmartComponents();
    const auto size = list.size();
    Create(Draft("Plain", 10, "Lamp").element());
    EXPECT_EQ(&list, &GetAllSmartComponents());
    EXPECT_EQ(list.size(), size + 1);
}

TEST_F(LifecycleTest, TheListHasAllInTheOrderOfMakingWhateverFailedInBetween) {
    std::vector<SmartComponent*> made;
    for (unsigned id = 1000; id != 1300; ++id) {
        made.push_back(Create(Draft("Plain", id, "Lamp").element()));
        EXPECT_THROW(Create(Draft("Failing", id, "Lamp").element()), std::runtime_error);
        loseRefusedComponent([&] {
            EXPECT_THROW(Create(Draft("Plain", id, "Lamp").element()), std::logic_error);
        });
    }
    expectLost(made.size());
    EXPECT_EQ(list(), made);
}

TEST_F(LifecycleTest, TheStationLogicIsNotInTheList) {
    const auto& list = GetAllSmartComponents();
    EXPECT_EQ(std::find(list.begin(), list.end(), &logic()), list.end());
}

}  // namespace trel::test
