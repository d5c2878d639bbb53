#include <stdexcept>
#include <variant>

#include "tests/smartcomp/Cell.h"

namespace trel::test {

namespace {

// Values that reach a box (10) in the station logic and go on into its children
// Left (11) and Right (12), each with an input 1 and an output 2.
class ForwardingTest : public CellTest {
protected:
    void SetUp() override {
        CellTest::SetUp();
        logic();
        box_ = &Draft("Box", 10, "Box")
                    .property(1, "Text", "String", std::string("old"))
                    .signal(1, "in", "DigitalInput")
                    .signal(2, "out", "DigitalOutput")
                    .autoReset(3, "pulse", "DigitalInput")
                    .autoReset(4, "level", "AnalogInput")
                    .make<Box>();
        left_ = &child(11, "Left");
        right_ = &child(12, "Right");
        freshLog();
    }

    Box& box() { return *box_; }
    Plain& left() { return *left_; }
    Plain& right() { return *right_; }
    SignalValue valueOf(unsigned id) { return box_->getSignal(id)->getValue(); }
    void connectBoth(unsigned signal) {
        connect(*box_, {10, signal}, {11, 1});
        connect(*box_, {10, signal}, {12, 1});
        freshLog();
    }

private:
    static Plain& child(unsigned id, const std::string& name) {
        return Draft("Plain", id, name)
            .in(10)
            .signal(1, "in", "DigitalInput")
            .signal(2, "out", "DigitalOutput")
            .make<Plain>();
    }
    Box* box_ = nullptr;
    Plain* left_ = nullptr;
    Plain* right_ = nullptr;
};

}  // namespace

// ---- Dynamic

TEST_F(ForwardingTest, ADynamicInputIsStoredToldAndForwardedInOrder) {
    connectBoth(1);
    box().handleSignalValue(1, 5, 7);
    EXPECT_EQ(log().lines(), (Lines{"write Box/signal 1/value int 5", "notice signal 1 of 10",
                                    "Left.input 1 = 5 at 7", "Right.input 1 = 5 at 7"}));
    EXPECT_EQ(valueOf(1), SignalValue(5));
    EXPECT_TRUE(settingSignals(box()).empty());
}

TEST_F(ForwardingTest, TheOrderOfTheConnectionsDecides) {
    connectBoth(1);
    box().moveSgConnOrderForward(2);
    freshLog();
    box().handleInputSignal(1, 5, 7);
    EXPECT_EQ(log().lines().back(), "Left.input 1 = 5 at 7");
    EXPECT_EQ(log().lines().at(2), "Right.input 1 = 5 at 7");
}

TEST_F(ForwardingTest, AnAutoResetInputDeliversValueAnd0ConnectionByConnection) {
    connectBoth(3);
    box().handleInputSignal(3, 5, 7);
    EXPECT_EQ(log().lines(),
              (Lines{"write Box/signal 3/value int 5", "write Box/signal 3/value int 0",
                     "notice signal 3 of 10", "Left.input 1 = 5 at 7", "Left.input 1 = 0 at 7",
                     "Right.input 1 = 5 at 7", "Right.input 1 = 0 at 7"}));
    EXPECT_EQ(valueOf(3), SignalValue(0));
}

TEST_F(ForwardingTest, AnInputWithoutConnectionsIsStillSetResetAndTold) {
    box().handleInputSignal(1, 5, 7);
    box().handleInputSignal(3, 5, 7);
    EXPECT_EQ(log().lines(), (Lines{"write Box/signal 1/value int 5", "notice signal 1 of 10",
                                    "write Box/signal 3/value int 5",
                                    "write Box/signal 3/value int 0", "notice signal 3 of 10"}));
}

TEST_F(ForwardingTest, ADynamicInputIsNeitherComparedNorGuarded) {
    connectBoth(1);
    markSignal(box(), 1, 3);
    box().handleInputSignal(1, 0, 7);
    box().handleInputSignal(1, 0, 7);
    EXPECT_EQ(log().notices().size(), 2u);
    EXPECT_EQ(log().startingWith("Left.input").size(), 2u);
    EXPECT_EQ(settingSignals(box()).at(1), SignalValue(3));
}

TEST_F(ForwardingTest, OnlyConnectionsFromThisInputAreTakenAndNoBindings) {
    connect(box(), {10, 3}, {11, 1});
    connect(box(), {11, 1}, {12, 1});
    connect(logic(), {10, 1}, {11, 1});
    bind(box(), {10, 1}, {11, 1});
    freshLog();
    box().handleInputSignal(1, 5, 7);
    EXPECT_EQ(log().lines(), (Lines{"write Box/signal 1/value int 5", "notice signal 1 of 10"}));
}

TEST_F(ForwardingTest, AnInputThatLeadsToAChildsOutputSetsIt) {
    connect(box(), {10, 1}, {11, 2});
    connect(box(), {11, 2}, {12, 1});
    freshLog();
    box().handleInputSignal(1, 5, 7);
    EXPECT_EQ(left().getSignal(2)->getValue(), SignalValue(5));
    EXPECT_EQ(log().lines().back(), "Right.input 1 = 5 at 7");
}

TEST_F(ForwardingTest, AnUnknownInputThrowsBeforeAnythingIsWritten) {
    expectThrow<std::out_of_range>(noKey, [&] { box().handleInputSignal(noSuchId, 5, 7); });
    expectThrow<std::out_of_range>(noKey, [&] { box().setStaticInputSignal(noSuchId, 5); });
    EXPECT_EQ(log().lines(), Lines{});
    EXPECT_TRUE(settingSignals(box()).empty());
}

TEST_F(ForwardingTest, AnUnknownDynamicDestinationLeavesWhatWasDelivered) {
    connect(box(), {10, 1}, {11, 1});
    connect(box(), {10, 1}, {noSuchId, 1});
    connect(box(), {10, 1}, {12, 1});
    freshLog();
    expectThrow<std::out_of_range>(noKey, [&] { box().handleInputSignal(1, 5, 7); });
    EXPECT_EQ(log().lines(), (Lines{"write Box/signal 1/value int 5", "notice signal 1 of 10",
                                    "Left.input 1 = 5 at 7"}));
    EXPECT_EQ(valueOf(1), SignalValue(5));
}

TEST_F(ForwardingTest, ADynamicInputReachesComponentsOnly) {
    controller(20, "Robot");
    enterObject(21, nullptr);
    connect(box(), {10, 1}, {20, 1});
    connect(box(), {10, 3}, {21, 1});
    expectThrow<std::bad_cast>([&] { box().handleInputSignal(1, 5, 7); });
    expectThrow<std::bad_cast>([&] { box().handleInputSignal(3, 5, 7); });
    EXPECT_EQ(log().startingWith("Robot"), Lines{});
}

TEST_F(ForwardingTest, AnUnknownConnectionInTheOrderThrows) {
    orderOf(box()).push_back(noSuchId);
    expectThrow<std::out_of_range>(noKey, [&] { box().handleInputSignal(1, 5, 7); });
    expectThrow<std::out_of_range>(noKey, [&] { box().setStaticSignalValue(1, 6); });
    EXPECT_EQ(valueOf(1), SignalValue(6));
    EXPECT_EQ(settingSignals(box()).at(1), SignalValue(6));
    orderOf(box()).clear();
}

// ---- Static

TEST_F(ForwardingTest, AStaticInputIsStoredToldAndForwarded) {
    connectBoth(1);
    box().setStaticSignalValue(1, 2.5);
    EXPECT_EQ(log().lines(),
              (Lines{"write Box/signal 1/value double 2.5", "notice signal 1 of 10",
                     "write Left/signal 1/value double 2.5", "notice signal 1 of 11",
                     "write Right/signal 1/value double 2.5", "notice signal 1 of 12"}));
    EXPECT_TRUE(settingSignals(box()).empty());
}

TEST_F(ForwardingTest, AStaticAutoResetInputForwardsValueAndInt0) {
    connect(box(), {10, 4}, {11, 1});
    freshLog();
    box().setStaticSignalValue(4, 2.5);
    EXPECT_EQ(log().lines(), (Lines{"write Box/signal 4/value double 2.5",
                                    "write Box/signal 4/value int 0", "notice signal 4 of 10",
                                    "write Left/signal 1/value double 2.5", "notice signal 1 of 11",
                                    "write Left/signal 1/value int 0", "notice signal 1 of 11"}));
    EXPECT_EQ(valueOf(4), SignalValue(0));
}

TEST_F(ForwardingTest, AStaticInputIsNotComparedWithWhatItHolds) {
    connectBoth(1);
    box().setStaticSignalValue(1, 0);
    EXPECT_EQ(log().notices().size(), 3u);
}

TEST_F(ForwardingTest, AStaticValueThatComesBackRoundARingDoesNothing) {
    connectBoth(1);
    markSignal(box(), 1, 5);
    box().setStaticSignalValue(1, 5);
    EXPECT_EQ(log().lines(), Lines{});
    EXPECT_EQ(valueOf(1), SignalValue(0));
    EXPECT_TRUE(settingSignals(box()).contains(1));
}

TEST_F(ForwardingTest, AnotherStaticValueThatComesBackIsEvent10008AndDropped) {
    connectBoth(1);
    markSignal(box(), 1, 5);
    box().setStaticSignalValue(1, 6);
    EXPECT_EQ(log().lines(), Lines{"event 10008|Box|in|"});
    EXPECT_EQ(valueOf(1), SignalValue(0));
    EXPECT_EQ(settingSignals(box()).at(1), SignalValue(5));
}

TEST_F(ForwardingTest, AStaticInputReachesControllersToo) {
    controller(20, "Robot");
    connect(box(), {10, 1}, {20, 7});
    freshLog();
    box().setStaticSignalValue(1, 5);
    EXPECT_EQ(log().lines().back(), "Robot.set 7 = int 5 static");
}

TEST_F(ForwardingTest, AnUnknownStaticDestinationLeavesTheEntry) {
    connect(box(), {10, 1}, {11, 1});
    connect(box(), {10, 1}, {noSuchId, 1});
    expectThrow<std::out_of_range>(noKey, [&] { box().setStaticSignalValue(1, 5); });
    EXPECT_EQ(valueOf(1), SignalValue(5));
    EXPECT_EQ(left().getSignal(1)->getValue(), SignalValue(5));
    EXPECT_EQ(settingSignals(box()).at(1), SignalValue(5));
    freshLog();
    box().setStaticSignalValue(1, 6);
    EXPECT_EQ(log().lines(), Lines{"event 10008|Box|in|"});
}

TEST_F(ForwardingTest, ChildrenThatAreSetStaticallyAreNotAsked) {
    connectBoth(1);
    box().setStaticSignalValue(1, 5);
    EXPECT_EQ(log().startingWith("Left.input"), Lines{});
    EXPECT_EQ(log().startingWith("Right.input"), Lines{});
}

// ---- Properties

TEST_F(ForwardingTest, APropertyTextThatItHasIsRefusedSilently) {
    Draft("Framed", 13, "Sink").property(1, "T", "String", std::string("x")).make<Framed>();
    bind(logic(), {10, 1}, {13, 1});
    freshLog();
    box().setPropertyValue(1, "old");
    EXPECT_EQ(log().lines(), Lines{});
    EXPECT_EQ(box().getProperty(1)->value(), "old");
}

TEST_F(ForwardingTest, APropertySettingIsFramed) {
    box().setPropertyValue(1, "new");
    EXPECT_EQ(log().lines(), (Lines{"write Box/property 1 string new", "notice property 1 of 10"}));
    EXPECT_TRUE(settingProperties(box()).empty());
}

TEST_F(ForwardingTest, APropertyThatIsBeingSetRefusesAnotherText) {
    markProperty(box(), 1, "newer");
    box().setPropertyValue(1, "new");
    EXPECT_EQ(log().lines(), Lines{"event 10007|Box|Text|new"});
    EXPECT_EQ(box().getProperty(1)->value(), "old");
    EXPECT_TRUE(settingProperties(box()).contains(1));
}

TEST_F(ForwardingTest, AnUnknownPropertyThrows) {
    expectThrow<std::out_of_range>(noKey, [&] { box().setPropertyValue(noSuchId, "new"); });
    EXPECT_EQ(log().lines(), Lines{});
}

}  // namespace trel::test
