#include <stdexcept>

#include "tests/smartcomp/Cell.h"

namespace trel::test {

namespace {

// A lamp (12) in a group (11) in a group (10) in the station logic, and a horn
// (13) beside the outer group:
//
//   Station Logic
//     Outer 10    in 1, out 2, pulse 3, pulseOut 4; property 1
//       Inner 11  the same
//         Lamp 12   in 1, out 2; property 1
//     Horn 13     in 1, out 2; property 1
class NestedAggregationTest : public CellTest {
protected:
    void SetUp() override {
        CellTest::SetUp();
        logic();
        outer_ = &group(10, "Outer", logicId);
        inner_ = &group(11, "Inner", 10);
        lamp_ = &leaf(12, "Lamp", 11);
        horn_ = &leaf(13, "Horn", logicId);
        freshLog();
    }

    Box& outer() { return *outer_; }
    Box& inner() { return *inner_; }
    Framed& lamp() { return *lamp_; }
    Framed& horn() { return *horn_; }

    // Station -> Outer.in -> Inner.in -> Lamp.in, and Lamp.out -> Inner.out ->
    // Outer.out -> Horn.in.
    void connectThrough(unsigned in, unsigned out) {
        connect(outer(), {10, in}, {11, in});
        connect(inner(), {11, in}, {12, 1});
        connect(inner(), {12, 2}, {11, out});
        connect(outer(), {11, out}, {10, out});
        connect(logic(), {10, out}, {13, 1});
        freshLog();
    }
    void lampRepeats() {
        lamp().onInput = [this](unsigned, int value, long long time) {
            lamp().handleSignalValue(2, value, time);
        };
    }

private:
    static Box& group(unsigned id, const std::string& name, unsigned parent) {
        return Draft("Group", id, name)
            .in(parent)
            .property(1, "Text", "String", std::string("old"))
            .signal(1, "in", "DigitalInput")
            .signal(2, "out", "DigitalOutput")
            .autoReset(3, "pulse", "DigitalInput")
            .autoReset(4, "pulseOut", "DigitalOutput")
            .make<Box>();
    }
    static Framed& leaf(unsigned id, const std::string& name, unsigned parent) {
        return Draft("Framed", id, name)
            .in(parent)
            .property(1, "Text", "String", std::string("old"))
            .signal(1, "in", "DigitalInput")
            .signal(2, "out", "DigitalOutput")
            .make<Framed>();
    }
    Box* outer_ = nullptr;
    Box* inner_ = nullptr;
    Framed* lamp_ = nullptr;
    Framed* horn_ = nullptr;
};

}  // namespace

TEST_F(NestedAggregationTest, ADynamicValueGoesInAndComesOut) {
    connectThrough(1, 2);
    lampRepeats();

    outer().handleSignalValue(1, 5, 7);

    EXPECT_EQ(log().lines(), (Lines{"write Outer/signal 1/value int 5", "notice signal 1 of 10",
                                    "write Inner/signal 1/value int 5", "notice signal 1 of 11",
                                    "Lamp.input 1 = 5 at 7", "write Lamp/signal 2/value int 5",
                                    "notice signal 2 of 12", "write Inner/signal 2/value int 5",
                                    "notice signal 2 of 11", "write Outer/signal 2/value int 5",
                                    "notice signal 2 of 10", "Horn.input 1 = 5 at 7"}));
    for (SmartComponent* const c :
         {static_cast<SmartComponent*>(&outer()), static_cast<SmartComponent*>(&inner()),
          static_cast<SmartComponent*>(&lamp())})
        EXPECT_TRUE(settingSignals(*c).empty());
}

TEST_F(NestedAggregationTest, AStaticValueGoesInAndStopsAtThePlainComponent) {
    connectThrough(1, 2);
    outer().setStaticSignalValue(1, 2.5);
    EXPECT_EQ(lamp().getSignal(1)->getValue(), SignalValue(2.5));
    EXPECT_EQ(log().notices(),
              (Lines{"notice signal 1 of 10", "notice signal 1 of 11", "notice signal 1 of 12"}));
    EXPECT_EQ(horn().getSignal(1)->getValue(), SignalValue(0));
}

TEST_F(NestedAggregationTest, AStaticOutputComesOutOfBothGroups) {
    connectThrough(1, 2);
    lamp().setStaticSignalValue(2, 5);
    EXPECT_EQ(log().notices(), (Lines{"notice signal 2 of 12", "notice signal 2 of 11",
                                      "notice signal 2 of 10", "notice signal 1 of 13"}));
    EXPECT_EQ(horn().getSignal(1)->getValue(), SignalValue(5));
}

// Each auto-reset input doubles what it hands on: value, 0 from the outer one,
// and each of these again from the inner one.
TEST_F(NestedAggregationTest, APulseThroughTwoPulsingInputsArrivesFourTimes) {
    connectThrough(3, 2);
    outer().handleSignalValue(3, 5, 7);
    EXPECT_EQ(log().startingWith("Lamp.input"),
              (Lines{"Lamp.input 1 = 5 at 7", "Lamp.input 1 = 0 at 7", "Lamp.input 1 = 0 at 7",
                     "Lamp.input 1 = 0 at 7"}));
    EXPECT_EQ(outer().getSignal(3)->getValue(), SignalValue(0));
    EXPECT_EQ(inner().getSignal(3)->getValue(), SignalValue(0));
}

// The 0 behind the value is no change for an output that fell back to 0.
TEST_F(NestedAggregationTest, APulseThroughTwoPulsingOutputsArrivesOnce) {
    connectThrough(1, 4);
    lamp().handleSignalValue(2, 5, 7);
    EXPECT_EQ(log().startingWith("Horn.input"),
              (Lines{"Horn.input 1 = 5 at 7", "Horn.input 1 = 0 at 7"}));
    EXPECT_EQ(inner().getSignal(4)->getValue(), SignalValue(0));
    EXPECT_EQ(outer().getSignal(4)->getValue(), SignalValue(0));
    EXPECT_EQ(log().events(), Lines{});
}

//   Horn.out -> Outer.in -> Inner.in -> Lamp.in ... -> Outer.out -> Horn.in
TEST_F(NestedAggregationTest, ARingThroughTheGroupsStopsSilently) {
    connectThrough(1, 2);
    lampRepeats();
    horn().onInput = [&](unsigned, int value, long long time) {
        horn().handleSignalValue(2, value, time);
    };
    connect(logic(), {13, 2}, {10, 1});
    freshLog();

    horn().handleSignalValue(2, 5, 7);

    EXPECT_EQ(log().startingWith("Horn.input").size(), 1u);
    EXPECT_EQ(log().events(), Lines{});
    EXPECT_TRUE(settingSignals(horn()).empty());
}

TEST_F(NestedAggregationTest, AStaticRingThroughAGroupStopsSilently) {
    connect(outer(), {10, 1}, {10, 2});
    connect(logic(), {10, 2}, {10, 1});
    freshLog();
    outer().setStaticSignalValue(1, 5);
    EXPECT_EQ(log().notices(), (Lines{"notice signal 1 of 10", "notice signal 2 of 10"}));
    EXPECT_EQ(log().events(), Lines{});
    EXPECT_TRUE(settingSignals(outer()).empty());
}

// A group's own output, set from inside, is delivered by the group's parent.
TEST_F(NestedAggregationTest, AnOutputIsDeliveredByTheParentNotByTheGroupItself) {
    connect(inner(), {11, 2}, {12, 1});
    freshLog();
    inner().handleSignalValue(2, 5, 7);
    EXPECT_EQ(log().startingWith("Lamp"), Lines{});
}

TEST_F(NestedAggregationTest, AnInnerThrowLeavesTheEntriesOfTheOutputs) {
    connectThrough(1, 2);
    horn().onInput = [](unsigned, int, long long) { throw std::runtime_error("jammed"); };
    expectThrow<std::runtime_error>("jammed", [&] { lamp().handleSignalValue(2, 5, 7); });
    EXPECT_TRUE(settingSignals(lamp()).contains(2));
    EXPECT_TRUE(settingSignals(inner()).contains(2));
    EXPECT_TRUE(settingSignals(outer()).contains(2));
    EXPECT_EQ(outer().getSignal(2)->getValue(), SignalValue(5));
}

// ---- Properties

TEST_F(NestedAggregationTest, APropertyGoesInThroughUserGroups) {
    bind(outer(), {10, 1}, {11, 1});
    bind(inner(), {11, 1}, {12, 1});
    freshLog();
    outer().setPropertyValue(1, "new");
    EXPECT_EQ(log().notices(), (Lines{"notice property 1 of 10", "notice property 1 of 11",
                                      "notice property 1 of 12"}));
    EXPECT_EQ(lamp().getProperty(1)->value(), "new");
    EXPECT_TRUE(settingProperties(outer()).empty());
    EXPECT_TRUE(settingProperties(inner()).empty());
}

TEST_F(NestedAggregationTest, APropertyComesOutThroughTheParents) {
    bind(inner(), {12, 1}, {11, 1});
    bind(outer(), {11, 1}, {10, 1});
    bind(logic(), {10, 1}, {13, 1});
    freshLog();
    lamp().setPropertyValue(1, "new");
    EXPECT_EQ(log().notices(), (Lines{"notice property 1 of 12", "notice property 1 of 11",
                                      "notice property 1 of 10", "notice property 1 of 13"}));
    EXPECT_EQ(horn().getProperty(1)->value(), "new");
}

TEST_F(NestedAggregationTest, BindingsInAndOutTogetherSettleSilently) {
    bind(outer(), {10, 1}, {11, 1});
    bind(outer(), {11, 1}, {10, 1});
    bind(inner(), {11, 1}, {12, 1});
    bind(inner(), {12, 1}, {11, 1});
    freshLog();
    inner().setPropertyValue(1, "new");
    for (SmartComponent* const c :
         {static_cast<SmartComponent*>(&outer()), static_cast<SmartComponent*>(&inner()),
          static_cast<SmartComponent*>(&lamp())}) {
        EXPECT_EQ(c->getProperty(1)->value(), "new");
        EXPECT_TRUE(settingProperties(*c).empty());
    }
    EXPECT_EQ(log().notices().size(), 3u);
    EXPECT_EQ(log().events(), Lines{});
}

// ---- From the document

TEST_F(NestedAggregationTest, ALoadedStationWorksLikeOneThatWasConnected) {
    Draft("Group", 30, "Cell")
        .signal(1, "in", "DigitalInput")
        .connection(7, {30, 1}, {31, 1}, 1)
        .connection(3, {30, 1}, {32, 1}, 0)
        .child(31)
        .child(32);
    Draft("Plain", 31, "One").in(30).signal(1, "in", "DigitalInput");
    Draft("Plain", 32, "Two").in(30).signal(1, "in", "DigitalInput");
    for (const unsigned id : {10u, 11u, 12u, 13u}) smartcomp::RemoveSubSmartComponent(id);

    smartcomp::Load();
    freshLog();

    auto& cell = dynamic_cast<Box&>(*sdf::SdfManager::inst()->objects().at(30));
    cell.handleSignalValue(1, 5, 7);
    EXPECT_EQ(log().lines(), (Lines{"write Cell/signal 1/value int 5", "notice signal 1 of 30",
                                    "Two.input 1 = 5 at 7", "One.input 1 = 5 at 7"}));
}

TEST_F(NestedAggregationTest, ALookInsideFindsWhatIsUsedDeepDown) {
    outer().addChildComponent(11, std::nullopt);
    inner().addChildComponent(12, std::nullopt);
    Draft("Box", 20, "User").property(1, "Part", "ObjectId", std::string("12")).make<Box>();
    EXPECT_TRUE(logic().isObjectUsedByComponent(10));
    EXPECT_FALSE(logic().isObjectUsedByComponent(13));
}

}  // namespace trel::test
