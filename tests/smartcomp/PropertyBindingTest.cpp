#include <algorithm>
#include <any>
#include <stdexcept>
#include <vector>

#include "tests/smartcomp/Cell.h"

namespace trel::test {

namespace {

// Texts that travel along bindings, among the top-level components.
class PropertyBindingTest : public CellTest {
protected:
    void SetUp() override {
        CellTest::SetUp();
        logic();
    }

    // A component whose property 1 "Text" holds text and 2 "Part" an object id.
    template <typename Type>
    static Type& make(const char* type, unsigned id, const char* name, unsigned parent = logicId) {
        return Draft(type, id, name)
            .in(parent)
            .property(1, "Text", "String", std::string("old"))
            .property(2, "Part", "ObjectId", std::string("0"))
            .template make<Type>();
    }
    static std::string textOf(const SmartComponent& component, unsigned id = 1) {
        return component.getProperty(id)->value();
    }
    static std::size_t lineOf(const std::string& line) {
        const Lines& lines = eventLog().lines();
        return static_cast<std::size_t>(std::find(lines.begin(), lines.end(), line) -
                                        lines.begin());
    }
};

}  // namespace

// ---- Outwards

TEST_F(PropertyBindingTest, ABindingIsServedAfterWriteAndNotice) {
    Plain& source = make<Plain>("Plain", 10, "Source");
    make<Framed>("Framed", 11, "Sink");
    bind(logic(), {10, 1}, {11, 1});
    freshLog();

    source.setPropertyValue(1, "new");

    EXPECT_EQ(log().lines(),
              (Lines{"write Source/property 1 string new", "notice property 1 of 10",
                     "write Sink/property 1 string new", "notice property 1 of 11"}));
}

TEST_F(PropertyBindingTest, EveryMatchingBindingIsServedAndNoOther) {
    Plain& source = make<Plain>("Plain", 10, "Source");
    const auto& first = make<Framed>("Framed", 11, "First");
    const auto& second = make<Framed>("Framed", 12, "Second");
    const auto& other = make<Framed>("Framed", 13, "Other");
    bind(logic(), {10, 1}, {11, 1});
    bind(logic(), {10, 2}, {13, 1});
    bind(logic(), {13, 1}, {13, 1});
    bind(logic(), {10, 1}, {12, 1});
    connect(logic(), {10, 1}, {13, 1});

    source.setPropertyValue(1, "new");

    EXPECT_EQ(textOf(first), "new");
    EXPECT_EQ(textOf(second), "new");
    EXPECT_EQ(textOf(other), "old");
}

//   Source -> Near -> Far
//   Source -> Side
TEST_F(PropertyBindingTest, EachDestinationSettlesBeforeTheNextBinding) {
    Plain& source = make<Plain>("Plain", 10, "Source");
    make<Framed>("Framed", 11, "Near");
    make<Framed>("Framed", 12, "Far");
    make<Framed>("Framed", 13, "Side");
    bind(logic(), {10, 1}, {11, 1});
    bind(logic(), {10, 1}, {13, 1});
    bind(logic(), {11, 1}, {12, 1});
    freshLog();

    source.setPropertyValue(1, "new");

    // Whichever of the two is served first, nothing comes between Near and Far.
    const auto near = lineOf("notice property 1 of 11");
    EXPECT_EQ(log().lines().at(near + 1), "write Far/property 1 string new");
    EXPECT_EQ(log().lines().at(near + 2), "notice property 1 of 12");
    EXPECT_LT(lineOf("notice property 1 of 13"), log().lines().size());
}

TEST_F(PropertyBindingTest, TheCallersTextTravelsNotTheRenderedOne) {
    Plain& source = Draft("Plain", 10, "Source").property(1, "N", "Double", 5.0).make<Plain>();
    const auto& sink = make<Framed>("Framed", 11, "Sink");
    bind(logic(), {10, 1}, {11, 1});
    source.setPropertyValue(1, "2.50");
    EXPECT_EQ(textOf(source), "2.5");
    EXPECT_EQ(textOf(sink), "2.50");
}

TEST_F(PropertyBindingTest, SettingAPropertyFromItsOwnTextReachesTheOthers) {
    Plain& source = make<Plain>("Plain", 10, "Source");
    const auto& sink = make<Framed>("Framed", 11, "Sink");
    source.getProperty(1)->setValue("own");
    bind(logic(), {10, 1}, {11, 1});
    source.setPropertyValue(1, source.getProperty(1)->value());
    EXPECT_EQ(textOf(sink), "own");
}

TEST_F(PropertyBindingTest, NoCallIntoADestinationRunsUnderTheLock) {
    enter<Thing>(30, "Pallet");
    Plain& source = make<Plain>("Plain", 10, "Source");
    auto& sink = make<Framed>("Framed", 11, "Sink");
    bind(logic(), {10, 2}, {11, 2});
    std::vector<bool> isFree;
    const auto tryLock = [&] {
        isFree.push_back(sdf::SdfManager::inst()->mutex().try_lock());
        if (isFree.back()) sdf::SdfManager::inst()->mutex().unlock();
    };
    sink.accepts = [&](unsigned, sdf::SdfObject*) {
        tryLock();
        return true;
    };
    sink.onProperty = [&](unsigned, const std::string&) { tryLock(); };
    source.setPropertyValue(2, "30");
    EXPECT_EQ(isFree, (std::vector{true, true}));
}

// ---- What ends a propagation

TEST_F(PropertyBindingTest, WithoutAParentTheSettingThrowsOnceItStands) {
    Plain& lost = make<Plain>("Plain", 10, "Lost", noSuchId);
    freshLog();
    expectThrow<std::out_of_range>(noKey, [&] { lost.setPropertyValue(1, "new"); });
    EXPECT_EQ(textOf(lost), "new");
    EXPECT_EQ(log().notices(), Lines{"notice property 1 of 10"});
    EXPECT_EQ(settingProperties(lost).at(1), "new");
}

TEST_F(PropertyBindingTest, AParentThatIsNoAggregationIsABadCast) {
    make<Plain>("Plain", 20, "Plain");
    enterObject(21, nullptr);
    Plain& first = make<Plain>("Plain", 10, "First", 20);
    Plain& second = make<Plain>("Plain", 11, "Second", 21);
    expectThrow<std::bad_cast>([&] { first.setPropertyValue(1, "new"); });
    expectThrow<std::bad_cast>([&] { second.setPropertyValue(1, "new"); });
    EXPECT_EQ(textOf(first), "new");
    EXPECT_TRUE(settingProperties(second).contains(1));
}

TEST_F(PropertyBindingTest, AnUnknownDestinationThrowsOnceTheSettingStands) {
    Plain& source = make<Plain>("Plain", 10, "Source");
    bind(logic(), {10, 1}, {noSuchId, 1});
    expectThrow<std::out_of_range>(noKey, [&] { source.setPropertyValue(1, "new"); });
    EXPECT_EQ(textOf(source), "new");
    EXPECT_EQ(settingProperties(source).at(1), "new");
}

TEST_F(PropertyBindingTest, ADestinationThatIsNoComponentIsABadCast) {
    Plain& source = make<Plain>("Plain", 10, "Source");
    controller(20, "Robot");
    bind(logic(), {10, 1}, {20, 1});
    expectThrow<std::bad_cast>([&] { source.setPropertyValue(1, "new"); });
    EXPECT_EQ(log().startingWith("Robot"), Lines{});
}

TEST_F(PropertyBindingTest, AnUnknownDestinationPropertyThrows) {
    Plain& source = make<Plain>("Plain", 10, "Source");
    make<Framed>("Framed", 11, "Sink");
    bind(logic(), {10, 1}, {11, noSuchId});
    expectThrow<std::out_of_range>(noKey, [&] { source.setPropertyValue(1, "new"); });
    EXPECT_EQ(settingProperties(source).at(1), "new");
}

// A frame does not clean up on the way out.
TEST_F(PropertyBindingTest, AfterAThrowTheEntriesOfTheWholeChainStay) {
    auto& source = make<Framed>("Framed", 10, "Source");
    auto& middle = make<Framed>("Framed", 11, "Middle");
    bind(logic(), {10, 1}, {11, 1});
    bind(logic(), {11, 1}, {noSuchId, 1});
    expectThrow<std::out_of_range>(noKey, [&] { source.setPropertyValue(1, "new"); });
    EXPECT_TRUE(settingProperties(source).contains(1));
    EXPECT_TRUE(settingProperties(middle).contains(1));
    EXPECT_EQ(textOf(middle), "new");

    freshLog();
    source.setPropertyValue(1, "newer");
    EXPECT_EQ(log().lines(), Lines{"event 10007|Source|Text|newer"});
}

// ---- Object ids

TEST_F(PropertyBindingTest, ARefusedObjectIsEvent10007AndTheOthersAreServed) {
    enter<Thing>(30, "Pallet");
    Plain& source = make<Plain>("Plain", 10, "Source");
    auto& picky = make<Framed>("Framed", 11, "Picky");
    auto& eager = make<Framed>("Framed", 12, "Eager");
    eager.accepts = [](unsigned, sdf::SdfObject*) { return true; };
    bind(logic(), {10, 2}, {11, 1});
    bind(logic(), {10, 2}, {12, 1});
    freshLog();

    source.setPropertyValue(2, "30");

    EXPECT_EQ(log().events(), Lines{"event 10007|Picky|Text|30"});
    EXPECT_EQ(textOf(picky), "old");
    EXPECT_EQ(textOf(eager), "30");
    EXPECT_EQ(textOf(source, 2), "30");
}

TEST_F(PropertyBindingTest, TheDestinationIsAskedForItsPropertyAndTheObject) {
    Thing& pallet = enter<Thing>(30, "Pallet");
    Plain& source = make<Plain>("Plain", 10, "Source");
    auto& sink = make<Framed>("Framed", 11, "Sink");
    unsigned askedFor = 0;
    const sdf::SdfObject* asked = nullptr;
    sink.accepts = [&](unsigned id, sdf::SdfObject* object) {
        askedFor = id;
        asked = object;
        return true;
    };
    bind(logic(), {10, 2}, {11, 1});
    source.setPropertyValue(2, " 30 and more");
    EXPECT_EQ(askedFor, 1u);
    EXPECT_EQ(asked, &pallet);
    EXPECT_EQ(textOf(sink), " 30 and more");
}

TEST_F(PropertyBindingTest, AnObjectIdOf0IsCheckedAgainstTheObjectWithId1) {
    Plain& source = make<Plain>("Plain", 10, "Source");
    auto& sink = make<Framed>("Framed", 11, "Sink");
    unsigned asked = 99;
    sink.accepts = [&](unsigned, sdf::SdfObject* object) {
        asked = object->id();
        return true;
    };
    bind(logic(), {10, 2}, {11, 1});
    source.setPropertyValue(2, "0");
    EXPECT_EQ(asked, stationId);
    EXPECT_EQ(textOf(sink), "0");
}

TEST_F(PropertyBindingTest, AnAggregationTakesAnyObject) {
    enter<Thing>(30, "Pallet");
    Plain& source = make<Plain>("Plain", 10, "Source");
    const auto& box = make<Box>("Box", 11, "Box");
    bind(logic(), {10, 2}, {11, 1});
    source.setPropertyValue(2, "30");
    EXPECT_EQ(textOf(box), "30");
}

TEST_F(PropertyBindingTest, OnlyTheTypeOfTheSourceIsLookedAt) {
    Plain& source = make<Plain>("Plain", 10, "Source");
    auto& sink = make<Framed>("Framed", 11, "Sink");
    sink.accepts = [](unsigned, sdf::SdfObject*) -> bool { throw std::logic_error("nobody asks"); };
    bind(logic(), {10, 1}, {11, 2});
    source.setPropertyValue(1, "no id at all");
    EXPECT_EQ(textOf(sink, 2), "no id at all");
}

// The property that was set is nobody's from then on.
TEST_F(PropertyBindingTest, WhatTookThePlaceOfTheSourceSaysWhetherAnObjectIsMeant) {
    enter<Thing>(30, "Pallet");
    Plain& source = make<Plain>("Plain", 10, "Source");
    auto& sink = make<Framed>("Framed", 11, "Sink");
    sink.accepts = [](unsigned, sdf::SdfObject*) { return false; };
    bind(logic(), {10, 1}, {11, 1});
    const std::unique_ptr<Property> former(source.getProperty(1));
    log().whenWritten = [&](sdf::Element& text) {
        log().whenWritten = nullptr;
        text.removeFromParent();
        Property::Create(&source, source.element()->append(propertyElement(
                                      1, "Part", "ObjectId", std::any(std::string("0")))));
    };
    source.setPropertyValue(1, "30");
    EXPECT_EQ(log().events(), Lines{"event 10007|Sink|Text|30"});
    EXPECT_EQ(textOf(sink), "old");
}

TEST_F(PropertyBindingTest, ABadObjectIdEscapesOnceTheSettingStands) {
    const auto refused = [&](const std::string& value, const auto& expect) {
        Plain& source = make<Plain>("Plain", 10, "Source");
        const auto& sink = make<Framed>("Framed", 11, "Sink");
        const unsigned id = bind(logic(), {10, 2}, {11, 1});
        freshLog();
        expect([&] { source.setPropertyValue(2, value); });
        EXPECT_EQ(log().lines(),
                  (Lines{"write Source/property 2 string " + value, "notice property 2 of 10"}));
        EXPECT_EQ(settingProperties(source).at(2), value);
        EXPECT_EQ(textOf(sink), "old");
        logic().deleteBinding(id);
        smartcomp::RemoveSubSmartComponent(10);
        smartcomp::RemoveSubSmartComponent(11);
    };
    refused("Pallet", [](auto act) { expectThrow<std::invalid_argument>(noStoul, act); });
    refused("", [](auto act) { expectThrow<std::invalid_argument>(noStoul, act); });
    refused("4294967296", [](auto act) { expectThrow<std::out_of_range>(stoulRange, act); });
    refused("999", [](auto act) { expectThrow<std::out_of_range>(noKey, act); });
}

TEST_F(PropertyBindingTest, BindingsBehindABadObjectIdAreNotServed) {
    Plain& source = make<Plain>("Plain", 10, "Source");
    const auto& first = make<Box>("Box", 11, "First");
    const auto& second = make<Box>("Box", 12, "Second");
    bind(logic(), {10, 2}, {11, 1});
    bind(logic(), {10, 2}, {12, 1});
    expectThrow<std::invalid_argument>(noStoul, [&] { source.setPropertyValue(2, "none"); });
    EXPECT_EQ(textOf(first), "old");
    EXPECT_EQ(textOf(second), "old");
}

TEST_F(PropertyBindingTest, ABadObjectIdWithoutBindingsIsNobodysBusiness) {
    Plain& source = make<Plain>("Plain", 10, "Source");
    source.setPropertyValue(2, "none");
    EXPECT_EQ(textOf(source, 2), "none");
}

TEST_F(PropertyBindingTest, AnEmptyEntryIsNoObject) {
    enterObject(30, nullptr);
    Plain& source = make<Plain>("Plain", 10, "Source");
    make<Box>("Box", 11, "Box");
    bind(logic(), {10, 2}, {11, 1});
    expectThrow<std::bad_cast>([&] { source.setPropertyValue(2, "30"); });
    EXPECT_EQ(settingProperties(source).at(2), "30");
}

// ---- Rings

//   A.1 -> B.1, B.1 -> A.1
TEST_F(PropertyBindingTest, TwoAggregationsBoundBothWaysSettleSilently) {
    auto& a = make<Box>("Box", 10, "A");
    auto& b = make<Box>("Box", 11, "B");
    bind(logic(), {10, 1}, {11, 1});
    bind(logic(), {11, 1}, {10, 1});
    freshLog();

    a.setPropertyValue(1, "new");

    EXPECT_EQ(textOf(a), "new");
    EXPECT_EQ(textOf(b), "new");
    EXPECT_EQ(log().lines(), (Lines{"write A/property 1 string new", "notice property 1 of 10",
                                    "write B/property 1 string new", "notice property 1 of 11"}));
    EXPECT_TRUE(settingProperties(a).empty());
    EXPECT_TRUE(settingProperties(b).empty());
}

TEST_F(PropertyBindingTest, ATextThatComesBackOtherThanRenderedIsEvent10007) {
    auto& a = Draft("Box", 10, "A").property(1, "p", "Double", 5.0).make<Box>();
    auto& b = make<Box>("Box", 11, "B");
    bind(logic(), {10, 1}, {11, 1});
    bind(logic(), {11, 1}, {10, 1});
    freshLog();

    a.setPropertyValue(1, "2.50");

    EXPECT_EQ(log().events(), Lines{"event 10007|A|p|2.50"});
    EXPECT_EQ(textOf(a), "2.5");
    EXPECT_EQ(textOf(b), "2.50");
    EXPECT_TRUE(settingProperties(a).empty());
}

TEST_F(PropertyBindingTest, AValueThatAReactionChangesOnTheWayIsEvent10007) {
    auto& a = make<Framed>("Framed", 10, "A");
    auto& b = make<Framed>("Framed", 11, "B");
    bind(logic(), {10, 1}, {11, 1});
    bind(logic(), {11, 2}, {10, 1});
    b.accepts = [](unsigned, sdf::SdfObject*) { return true; };
    a.accepts = b.accepts;
    b.onProperty = [&](unsigned id, const std::string&) {
        if (id == 1) b.setPropertyValue(2, "1");
    };
    freshLog();

    a.setPropertyValue(1, "new");

    EXPECT_EQ(log().events(), Lines{"event 10007|A|Text|1"});
    EXPECT_EQ(textOf(a), "new") << "the value already set stays";
    EXPECT_EQ(textOf(b, 2), "1");
    EXPECT_TRUE(settingProperties(a).empty());
    EXPECT_TRUE(settingProperties(b).empty());
}

TEST_F(PropertyBindingTest, APropertyBoundToItselfSettles) {
    auto& a = make<Box>("Box", 10, "A");
    bind(logic(), {10, 1}, {10, 1});
    freshLog();
    a.setPropertyValue(1, "new");
    EXPECT_EQ(log().notices().size(), 1u);
    EXPECT_EQ(log().events(), Lines{});
}

// ---- Inwards

TEST_F(PropertyBindingTest, AUserAggregationServesItsOwnBindingsAfterTheOuterOnes) {
    auto& group = make<Box>("Group", 10, "Group");
    make<Framed>("Framed", 11, "Outer");
    make<Framed>("Framed", 12, "Inner", 10);
    bind(logic(), {10, 1}, {11, 1});
    bind(group, {10, 1}, {12, 1});
    freshLog();

    group.setPropertyValue(1, "new");

    EXPECT_EQ(log().notices(), (Lines{"notice property 1 of 10", "notice property 1 of 11",
                                      "notice property 1 of 12"}));
}

TEST_F(PropertyBindingTest, AnotherAggregationServesNoBindingsOfItsOwn) {
    auto& box = make<Box>("Box", 10, "Box");
    const auto& inner = make<Framed>("Framed", 12, "Inner", 10);
    bind(box, {10, 1}, {12, 1});
    box.setPropertyValue(1, "new");
    EXPECT_EQ(textOf(inner), "old");
}

TEST_F(PropertyBindingTest, InwardsOnlyMatchingBindingsAreServedAndNoSignalConnections) {
    auto& group = make<Box>("Group", 10, "Group");
    const auto& inner = make<Framed>("Framed", 12, "Inner", 10);
    bind(group, {10, 2}, {12, 1});
    bind(group, {12, 1}, {12, 1});
    connect(group, {10, 1}, {12, 1});
    group.setPropertyValue(1, "new");
    EXPECT_EQ(textOf(inner), "old");
}

TEST_F(PropertyBindingTest, InwardsNoObjectIsChecked) {
    auto& group = make<Box>("Group", 10, "Group");
    auto& inner = make<Framed>("Framed", 12, "Inner", 10);
    inner.accepts = [](unsigned, sdf::SdfObject*) -> bool {
        throw std::logic_error("nobody asks");
    };
    bind(group, {10, 2}, {12, 2});
    group.setPropertyValue(2, "no id at all");
    EXPECT_EQ(textOf(inner, 2), "no id at all");
    EXPECT_EQ(log().events(), Lines{});
}

TEST_F(PropertyBindingTest, AnUnknownInnerDestinationThrows) {
    auto& group = make<Box>("Group", 10, "Group");
    bind(group, {10, 1}, {noSuchId, 1});
    expectThrow<std::out_of_range>(noKey, [&] { group.setPropertyValue(1, "new"); });
    EXPECT_EQ(settingProperties(group).at(1), "new");
    EXPECT_EQ(textOf(group), "new");
}

TEST_F(PropertyBindingTest, AChildsPropertyReachesTheAggregationThroughItsBindings) {
    auto& box = make<Box>("Box", 10, "Box");
    auto& inner = make<Framed>("Framed", 12, "Inner", 10);
    bind(box, {12, 1}, {10, 1});
    inner.setPropertyValue(1, "new");
    EXPECT_EQ(textOf(box), "new");
}

}  // namespace trel::test
