#include <cmath>
#include <limits>
#include <stdexcept>
#include <variant>

#include "tests/smartcomp/SignalCell.h"

namespace trel::test {

namespace {

// Values set while the station is edited, among the top-level components.
class StaticSignalTest : public SignalCell {
protected:
    static Plain& pulsing(unsigned id, const std::string& name,
                          const std::string& type = "DigitalOutput") {
        return Draft("Plain", id, name).autoReset(2, "out", type).make<Plain>();
    }
};

}  // namespace

// ---- Inputs

TEST_F(StaticSignalTest, AnInputOfAPlainComponentIsStoredAndToldAndNothingElse) {
    Plain& a = make(10, "A");
    make(11, "B");
    connect(logic(), {10, 1}, {11, 1});
    freshLog();

    a.setStaticSignalValue(1, 1);

    EXPECT_EQ(log().lines(), (Lines{"write A/signal 1/value int 1", "notice signal 1 of 10"}));
    EXPECT_EQ(valueOf(a, 1), SignalValue(1));
    EXPECT_EQ(documentValue(a, 1), "int 1");
}

TEST_F(StaticSignalTest, AnInputIsNotComparedWithWhatItHolds) {
    Plain& a = make(10, "A");
    freshLog();
    a.setStaticSignalValue(1, 0);
    a.setStaticSignalValue(1, 0);
    EXPECT_EQ(log().notices().size(), 2u);
}

TEST_F(StaticSignalTest, TheEntryOfAnInputStaysUntilSomebodyEndsIt) {
    Plain& a = make(10, "A");
    a.setStaticSignalValue(1, 1);
    a.setStaticSignalValue(1, 0);
    EXPECT_EQ(settingSignals(a), (std::unordered_map<unsigned, SignalValue>{{1, 1}}))
        << "an entry that stands is kept";
    EXPECT_EQ(valueOf(a, 1), SignalValue(0)) << "but the value is set";
    a.endSetSignalValue(1);
    EXPECT_TRUE(settingSignals(a).empty());
    a.endSetSignalValue(1);
    a.endSetSignalValue(noSuchId);
}

TEST_F(StaticSignalTest, AnAutoResetInputFallsBackToInt0BeforeItIsTold) {
    Plain& a = Draft("Plain", 10, "A").autoReset(1, "level", "AnalogInput").make<Plain>();
    freshLog();
    a.setStaticSignalValue(1, 2.5);
    EXPECT_EQ(log().lines(), (Lines{"write A/signal 1/value double 2.5",
                                    "write A/signal 1/value int 0", "notice signal 1 of 10"}));
    EXPECT_EQ(valueOf(a, 1), SignalValue(0));
    EXPECT_EQ(settingSignals(a).at(1), SignalValue(2.5));
}

TEST_F(StaticSignalTest, EveryKindOfInputGoesToTheInputAndEveryOtherToTheOutput) {
    for (const char* type : {"AnalogInput", "DigitalInput", "GroupInput"}) {
        Plain& a = Draft("Plain", 10, "A").signal(1, "s", type).make<Plain>();
        a.setStaticSignalValue(1, 5);
        EXPECT_TRUE(settingSignals(a).contains(1)) << type;
        smartcomp::RemoveSubSmartComponent(10);
    }
    for (const char* type : {"AnalogOutput", "DigitalOutput", "GroupOutput", "odd"}) {
        Plain& a = Draft("Plain", 10, "A").signal(1, "s", type).make<Plain>();
        a.setStaticSignalValue(1, 5);
        EXPECT_EQ(valueOf(a, 1), SignalValue(5)) << type;
        EXPECT_TRUE(settingSignals(a).empty()) << type;
        smartcomp::RemoveSubSmartComponent(10);
    }
}

TEST_F(StaticSignalTest, AnUnknownSignalThrowsBeforeAnythingIsWritten) {
    Plain& a = make(10, "A");
    freshLog();
    expectThrow<std::out_of_range>(noKey, [&] { a.setStaticSignalValue(noSuchId, 1); });
    expectThrow<std::out_of_range>(noKey, [&] { a.setStaticInputSignal(noSuchId, 1); });
    expectThrow<std::out_of_range>(noKey, [&] { a.setStaticOutputSignal(noSuchId, 1); });
    EXPECT_EQ(log().lines(), Lines{});
    EXPECT_TRUE(settingSignals(a).empty());
}

// ---- Outputs

TEST_F(StaticSignalTest, AnOutputIsWrittenThenToldThenDelivered) {
    Plain& a = make(10, "A");
    make(11, "B");
    connect(logic(), {10, 2}, {11, 1});
    freshLog();

    a.setStaticSignalValue(2, 1);

    EXPECT_EQ(log().lines(), (Lines{"write A/signal 2/value int 1", "notice signal 2 of 10",
                                    "write B/signal 1/value int 1", "notice signal 1 of 11"}));
    EXPECT_TRUE(settingSignals(a).empty());
}

TEST_F(StaticSignalTest, SettingTheValueThatItHoldsDoesNothing) {
    Plain& a = make(10, "A");
    make(11, "B");
    connect(logic(), {10, 2}, {11, 1});
    a.setStaticSignalValue(2, 1);
    freshLog();
    a.setStaticSignalValue(2, 1);
    EXPECT_EQ(log().lines(), Lines{});
    EXPECT_TRUE(settingSignals(a).empty());
}

TEST_F(StaticSignalTest, Int1AndDouble1AreAChange) {
    Plain& a = make(10, "A");
    make(11, "B");
    connect(logic(), {10, 2}, {11, 1});
    a.setStaticSignalValue(2, 1);
    freshLog();
    a.setStaticSignalValue(2, 1.0);
    EXPECT_EQ(log().lines(), (Lines{"write A/signal 2/value double 1", "notice signal 2 of 10",
                                    "write B/signal 1/value double 1", "notice signal 1 of 11"}));
    EXPECT_EQ(valueOf(a, 2), SignalValue(1.0));
}

TEST_F(StaticSignalTest, ANumberThatIsNoneIsAlwaysAChange) {
    Plain& a = Draft("Plain", 10, "A").signal(2, "out", "AnalogOutput").make<Plain>();
    leaveUnchecked(a);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    a.setStaticSignalValue(2, nan);
    freshLog();
    a.setStaticSignalValue(2, nan);
    EXPECT_EQ(log().notices(), Lines{"notice signal 2 of 10"});
    EXPECT_TRUE(std::isnan(std::get<double>(valueOf(a, 2))));
}

TEST_F(StaticSignalTest, ZeroAndNegativeZeroAreEqual) {
    Plain& a = Draft("Plain", 10, "A").signal(2, "out", "AnalogOutput").make<Plain>();
    freshLog();
    a.setStaticSignalValue(2, -0.0);
    EXPECT_EQ(log().lines(), Lines{});
}

TEST_F(StaticSignalTest, WithoutAParentAnOutputIsWrittenAndToldAndDeliveredNowhere) {
    Plain& a = make(10, "A", 0);
    freshLog();
    a.setStaticSignalValue(2, 1);
    EXPECT_EQ(log().lines(), (Lines{"write A/signal 2/value int 1", "notice signal 2 of 10"}));
    EXPECT_TRUE(settingSignals(a).empty());
}

TEST_F(StaticSignalTest, AnUnknownParentThrowsOnceTheValueStands) {
    Plain& a = make(10, "A", noSuchId);
    freshLog();
    expectThrow<std::out_of_range>(noKey, [&] { a.setStaticSignalValue(2, 1); });
    EXPECT_EQ(valueOf(a, 2), SignalValue(1));
    EXPECT_EQ(log().notices(), Lines{"notice signal 2 of 10"});
    EXPECT_EQ(settingSignals(a).at(2), SignalValue(1));
}

TEST_F(StaticSignalTest, AParentThatIsNoAggregationIsABadCast) {
    make(20, "P");
    Plain& a = make(10, "A", 20);
    expectThrow<std::bad_cast>([&] { a.setStaticSignalValue(2, 1); });
    EXPECT_TRUE(settingSignals(a).contains(2));
}

// ---- Order of delivery

TEST_F(StaticSignalTest, ConnectionsAreServedInTheirOrderNotInThatOfTheirIds) {
    Plain& a = make(10, "A");
    make(11, "B");
    make(12, "C");
    Connection::Build(&logic(), 5, 10, 2, 12, 1, 0);
    Connection::Build(&logic(), 2, 10, 2, 11, 1, 1);
    freshLog();
    a.setStaticSignalValue(2, 1);
    EXPECT_EQ(log().notices(),
              (Lines{"notice signal 2 of 10", "notice signal 1 of 12", "notice signal 1 of 11"}));
    logic().moveSgConnOrderForward(2);
    freshLog();
    a.setStaticSignalValue(2, 0);
    EXPECT_EQ(log().notices(),
              (Lines{"notice signal 2 of 10", "notice signal 1 of 11", "notice signal 1 of 12"}));
}

TEST_F(StaticSignalTest, OnlyConnectionsOfThisSignalAreServedAndNoBindings) {
    Plain& a = make(10, "A");
    make(11, "B");
    connect(logic(), {10, 1}, {11, 1});
    connect(logic(), {11, 2}, {11, 1});
    bind(logic(), {10, 2}, {11, 1});
    freshLog();
    a.setStaticSignalValue(2, 1);
    EXPECT_EQ(log().notices(), Lines{"notice signal 2 of 10"});
}

//   A.out -> B.out (an output), B.out -> C.in
//   A.out -> D.in
TEST_F(StaticSignalTest, EachDeliveryRunsToItsEndBeforeTheNext) {
    Plain& a = make(10, "A");
    make(11, "B");
    make(12, "C");
    make(13, "D");
    connect(logic(), {10, 2}, {11, 2});
    connect(logic(), {10, 2}, {13, 1});
    connect(logic(), {11, 2}, {12, 1});
    freshLog();
    a.setStaticSignalValue(2, 1);
    EXPECT_EQ(log().notices(), (Lines{"notice signal 2 of 10", "notice signal 2 of 11",
                                      "notice signal 1 of 12", "notice signal 1 of 13"}));
}

// ---- Controllers and what is none

TEST_F(StaticSignalTest, AControllerReceivesTheValueAsStatic) {
    Plain& a = make(10, "A");
    controller(20, "Robot");
    connect(logic(), {10, 2}, {20, 7});
    freshLog();
    a.setStaticSignalValue(2, 2.5);
    EXPECT_EQ(log().startingWith("Robot"), Lines{"Robot.set 7 = double 2.5 static"});
}

TEST_F(StaticSignalTest, StaticDeliveryReachesComponentsAndControllers) {
    Plain& a = make(10, "A");
    controller(20, "Robot");
    freshLog();
    Plain::setDstSignalValue(10, 1, 1);
    Plain::setDstSignalValue(20, 3, 1);
    EXPECT_EQ(valueOf(a, 1), SignalValue(1));
    EXPECT_EQ(log().lines().back(), "Robot.set 3 = int 1 static");
}

TEST_F(StaticSignalTest, ADestinationThatIsNeitherIsABadCast) {
    enter<Thing>(20, "Pallet");
    enterObject(21, nullptr);
    expectThrow<std::bad_cast>([] { Plain::setDstSignalValue(20, 1, 1); });
    expectThrow<std::bad_cast>([] { Plain::setDstSignalValue(21, 1, 1); });
    expectThrow<std::out_of_range>(noKey, [] { Plain::setDstSignalValue(noSuchId, 1, 1); });
}

// ---- Pulses

TEST_F(StaticSignalTest, AnAutoResetOutputSendsAPulseAndHoldsInt0) {
    Plain& a = pulsing(10, "A");
    make(11, "B");
    make(12, "C");
    connect(logic(), {10, 2}, {11, 1});
    connect(logic(), {10, 2}, {12, 1});
    freshLog();

    a.setStaticSignalValue(2, 1);

    EXPECT_EQ(log().lines(), (Lines{"write A/signal 2/value int 1", "write A/signal 2/value int 0",
                                    "notice signal 2 of 10", "write B/signal 1/value int 1",
                                    "notice signal 1 of 11", "write B/signal 1/value int 0",
                                    "notice signal 1 of 11", "write C/signal 1/value int 1",
                                    "notice signal 1 of 12", "write C/signal 1/value int 0",
                                    "notice signal 1 of 12"}));
    EXPECT_EQ(valueOf(a, 2), SignalValue(0));
    EXPECT_TRUE(settingSignals(a).empty());
}

TEST_F(StaticSignalTest, AnAnalogAutoResetOutputHoldsTheIntToo) {
    Plain& a = pulsing(10, "A", "AnalogOutput");
    controller(20, "Robot");
    connect(logic(), {10, 2}, {20, 7});
    a.setStaticSignalValue(2, 2.5);
    EXPECT_EQ(valueOf(a, 2), SignalValue(0));
    EXPECT_EQ(documentValue(a, 2), "int 0");
    EXPECT_EQ(log().startingWith("Robot"),
              (Lines{"Robot.set 7 = double 2.5 static", "Robot.set 7 = int 0 static"}));
}

TEST_F(StaticSignalTest, APulseOf0FromAnAutoResetOutputAt0IsNoChange) {
    Plain& a = pulsing(10, "A");
    freshLog();
    a.setStaticSignalValue(2, 0);
    EXPECT_EQ(log().lines(), Lines{});
    a.setStaticSignalValue(2, 1);
    a.setStaticSignalValue(2, 1);
    EXPECT_EQ(log().notices().size(), 2u) << "each pulse starts from 0";
}

// ---- Rings

TEST_F(StaticSignalTest, AnOutputConnectedToItselfStopsSilently) {
    Plain& a = make(10, "A");
    connect(logic(), {10, 2}, {10, 2});
    freshLog();
    a.setStaticSignalValue(2, 1);
    EXPECT_EQ(log().notices().size(), 1u);
    EXPECT_EQ(log().events(), Lines{});
    EXPECT_TRUE(settingSignals(a).empty());
}

// The 0 of the pulse comes back while the 1 is still being set.
TEST_F(StaticSignalTest, APulseThatComesBackIsAConflict) {
    Plain& a = pulsing(10, "A");
    connect(logic(), {10, 2}, {10, 2});
    freshLog();
    a.setStaticSignalValue(2, 1);
    EXPECT_EQ(log().events(), Lines{"event 10008|A|out|"});
    EXPECT_EQ(valueOf(a, 2), SignalValue(0));
}

TEST_F(StaticSignalTest, TheGuardIsSilentForTheSameValueOnly) {
    Plain& a = make(10, "A");
    EXPECT_FALSE(a.checkSignalIsSet(2, 1));
    markSignal(a, 2, 1);
    freshLog();
    EXPECT_TRUE(a.checkSignalIsSet(2, 1));
    EXPECT_EQ(log().lines(), Lines{});
    EXPECT_TRUE(a.checkSignalIsSet(2, 1.0));
    EXPECT_TRUE(a.checkSignalIsSet(2, 0));
    EXPECT_EQ(log().lines(), (Lines{"event 10008|A|out|", "event 10008|A|out|"}));
    EXPECT_FALSE(a.checkSignalIsSet(1, 1));
    EXPECT_FALSE(a.checkSignalIsSet(noSuchId, 1));
    EXPECT_EQ(settingSignals(a).at(2), SignalValue(1));
}

TEST_F(StaticSignalTest, AnOutputInProgressDropsWhateverIsSet) {
    Plain& a = make(10, "A");
    markSignal(a, 2, 1);
    freshLog();
    a.setStaticSignalValue(2, 3);
    EXPECT_EQ(log().lines(), Lines{"event 10008|A|out|"});
    EXPECT_EQ(valueOf(a, 2), SignalValue(0));
}

// ---- What a throw leaves

//   A.out -> B.in, then -> nobody, then -> C.in
TEST_F(StaticSignalTest, AnUnknownDestinationLeavesWhatWasDeliveredAndTheEntry) {
    Plain& a = make(10, "A");
    const Plain& b = make(11, "B");
    const Plain& c = make(12, "C");
    connect(logic(), {10, 2}, {11, 1});
    connect(logic(), {10, 2}, {noSuchId, 1});
    connect(logic(), {10, 2}, {12, 1});
    expectThrow<std::out_of_range>(noKey, [&] { a.setStaticSignalValue(2, 1); });
    EXPECT_EQ(valueOf(a, 2), SignalValue(1));
    EXPECT_EQ(valueOf(b, 1), SignalValue(1));
    EXPECT_EQ(valueOf(c, 1), SignalValue(0));
    EXPECT_EQ(settingSignals(a).at(2), SignalValue(1));

    freshLog();
    a.setStaticSignalValue(2, 0);
    EXPECT_EQ(log().lines(), Lines{"event 10008|A|out|"}) << "the interrupted setting is still on";
}

TEST_F(StaticSignalTest, AnUnknownConnectionInTheOrderThrows) {
    Plain& a = make(10, "A");
    orderOf(logic()).push_back(noSuchId);
    expectThrow<std::out_of_range>(noKey, [&] { a.setStaticSignalValue(2, 1); });
    EXPECT_TRUE(settingSignals(a).contains(2));
    orderOf(logic()).clear();
}

TEST_F(StaticSignalTest, AnUnknownDestinationSignalThrows) {
    Plain& a = make(10, "A");
    make(11, "B");
    connect(logic(), {10, 2}, {11, noSuchId});
    expectThrow<std::out_of_range>(noKey, [&] { a.setStaticSignalValue(2, 1); });
    EXPECT_TRUE(settingSignals(a).contains(2));
}

}  // namespace trel::test
