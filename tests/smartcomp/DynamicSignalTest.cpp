#include <any>
#include <limits>
#include <stdexcept>
#include <variant>

#include "platform/broker/SignalBroker.h"
#include "tests/smartcomp/SignalCell.h"

namespace trel::test {

namespace {

// Values set while the simulation runs, among the top-level components.
class DynamicSignalTest : public SignalCell {
protected:
    static Plain& pulsing(unsigned id, const std::string& name) {
        return Draft("Plain", id, name)
            .signal(1, "in", "DigitalInput")
            .autoReset(2, "out", "DigitalOutput")
            .make<Plain>();
    }
    static Lines inputs(const std::string& name) { return log().startingWith(name + ".input"); }
};

constexpr long long now = 123456789012345;

}  // namespace

// ---- Inputs

TEST_F(DynamicSignalTest, AnInputGoesToTheComponentAndNothingIsStored) {
    Plain& a = make(10, "A");
    freshLog();
    a.handleSignalValue(1, 5, now);
    EXPECT_EQ(log().lines(), Lines{"A.input 1 = 5 at 123456789012345"});
    EXPECT_EQ(valueOf(a, 1), SignalValue(0));
    EXPECT_TRUE(settingSignals(a).empty());
}

TEST_F(DynamicSignalTest, AnInputIsNeitherComparedNorGuarded) {
    Plain& a = make(10, "A");
    markSignal(a, 1, 1);
    freshLog();
    a.handleSignalValue(1, 0, 1);
    a.handleSignalValue(1, 0, 2);
    EXPECT_EQ(log().lines(), (Lines{"A.input 1 = 0 at 1", "A.input 1 = 0 at 2"}));
}

TEST_F(DynamicSignalTest, AnUnknownSignalThrowsBeforeAnythingHappens) {
    Plain& a = make(10, "A");
    freshLog();
    expectThrow<std::out_of_range>(noKey, [&] { a.handleSignalValue(noSuchId, 1, now); });
    expectThrow<std::out_of_range>(noKey, [&] { a.handleOutputSignal(noSuchId, 1, now); });
    EXPECT_EQ(log().lines(), Lines{});
}

// ---- Outputs

TEST_F(DynamicSignalTest, AnOutputIsWrittenThenToldThenDelivered) {
    Plain& a = make(10, "A");
    make(11, "B");
    connect(logic(), {10, 2}, {11, 1});
    freshLog();
    a.handleSignalValue(2, 1, now);
    EXPECT_EQ(log().lines(), (Lines{"write A/signal 2/value int 1", "notice signal 2 of 10",
                                    "B.input 1 = 1 at 123456789012345"}));
    EXPECT_EQ(valueOf(a, 2), SignalValue(1));
    EXPECT_EQ(documentValue(a, 2), "int 1");
    EXPECT_TRUE(settingSignals(a).empty());
}

TEST_F(DynamicSignalTest, SettingTheValueThatItHoldsDoesNothing) {
    Plain& a = make(10, "A");
    make(11, "B");
    connect(logic(), {10, 2}, {11, 1});
    freshLog();
    a.handleSignalValue(2, 0, now);
    EXPECT_EQ(log().lines(), Lines{});
    EXPECT_TRUE(settingSignals(a).empty());
}

TEST_F(DynamicSignalTest, AnyTimeIsPassedOnUnchanged) {
    Plain& a = make(10, "A");
    make(11, "B");
    connect(logic(), {10, 2}, {11, 1});
    int value = 0;
    for (const long long time : {0LL, -1LL, std::numeric_limits<long long>::min(),
                                 std::numeric_limits<long long>::max()}) {
        freshLog();
        a.handleSignalValue(2, ++value, time);
        EXPECT_EQ(inputs("B"),
                  Lines{"B.input 1 = " + std::to_string(value) + " at " + std::to_string(time)});
    }
}

TEST_F(DynamicSignalTest, AnOutputThatHoldsADoubleThrowsBeforeAnythingChanges) {
    Plain& a = Draft("Plain", 10, "A").signal(2, "level", "AnalogOutput").make<Plain>();
    freshLog();
    expectThrow<std::bad_variant_access>([&] { a.handleSignalValue(2, 1, now); });
    EXPECT_EQ(log().lines(), Lines{});
    EXPECT_EQ(valueOf(a, 2), SignalValue(0.0));
    EXPECT_TRUE(settingSignals(a).empty());

    a.setStaticSignalValue(2, 3);
    a.handleSignalValue(2, 4, now);
    EXPECT_EQ(valueOf(a, 2), SignalValue(4));
}

TEST_F(DynamicSignalTest, TheGuardIsAskedBeforeTheValueIsLookedAt) {
    Plain& a = Draft("Plain", 10, "A").signal(2, "level", "AnalogOutput").make<Plain>();
    markSignal(a, 2, 1);
    freshLog();
    a.handleSignalValue(2, 1, now);
    EXPECT_EQ(log().lines(), Lines{});
    a.handleSignalValue(2, 2, now);
    EXPECT_EQ(log().lines(), Lines{"event 10008|A|level|"});
}

TEST_F(DynamicSignalTest, WithoutAParentAnOutputThrowsOnceItStands) {
    Plain& a = make(10, "A", 0);
    freshLog();
    expectThrow<std::out_of_range>(noKey, [&] { a.handleSignalValue(2, 1, now); });
    EXPECT_EQ(valueOf(a, 2), SignalValue(1));
    EXPECT_EQ(log().notices(), Lines{"notice signal 2 of 10"});
    EXPECT_EQ(settingSignals(a).at(2), SignalValue(1));
}

TEST_F(DynamicSignalTest, AParentThatIsNoAggregationIsABadCast) {
    make(20, "P");
    Plain& a = make(10, "A", 20);
    expectThrow<std::bad_cast>([&] { a.handleSignalValue(2, 1, now); });
    EXPECT_TRUE(settingSignals(a).contains(2));
}

// ---- Order of delivery

TEST_F(DynamicSignalTest, ConnectionsAreServedInTheirOrderNotInThatOfTheirIds) {
    Plain& a = make(10, "A");
    make(11, "B");
    make(12, "C");
    Connection::Build(&logic(), 5, 10, 2, 12, 1, 0);
    Connection::Build(&logic(), 2, 10, 2, 11, 1, 1);
    bind(logic(), {10, 2}, {11, 1});
    freshLog();
    a.handleSignalValue(2, 1, 5);
    EXPECT_EQ(log().lines(), (Lines{"write A/signal 2/value int 1", "notice signal 2 of 10",
                                    "C.input 1 = 1 at 5", "B.input 1 = 1 at 5"}));
}

//   A.out -> B.in, B reacts with B.out -> C.in
//   A.out -> D.in
TEST_F(DynamicSignalTest, EachDeliveryRunsToItsEndBeforeTheNext) {
    Plain& a = make(10, "A");
    Plain& b = make(11, "B");
    make(12, "C");
    make(13, "D");
    connect(logic(), {10, 2}, {11, 1});
    connect(logic(), {10, 2}, {13, 1});
    connect(logic(), {11, 2}, {12, 1});
    b.onInput = [&](unsigned, int value, long long time) { b.handleSignalValue(2, value, time); };
    freshLog();
    a.handleSignalValue(2, 1, 5);
    EXPECT_EQ(log().startingWith("write").size(), 2u);
    EXPECT_EQ(log().lines(),
              (Lines{"write A/signal 2/value int 1", "notice signal 2 of 10", "B.input 1 = 1 at 5",
                     "write B/signal 2/value int 1", "notice signal 2 of 11", "C.input 1 = 1 at 5",
                     "D.input 1 = 1 at 5"}));
}

// ---- Controllers and what is none

TEST_F(DynamicSignalTest, AControllerReceivesTheIntAsDynamic) {
    Plain& a = make(10, "A");
    controller(20, "Robot");
    connect(logic(), {10, 2}, {20, 7});
    freshLog();
    a.handleSignalValue(2, 3, now);
    EXPECT_EQ(log().startingWith("Robot"), Lines{"Robot.set 7 = int 3 dynamic"});
}

TEST_F(DynamicSignalTest, ADestinationThatIsNeitherIsABadCast) {
    enter<Thing>(20, "Pallet");
    Plain& a = make(10, "A");
    connect(logic(), {10, 2}, {20, 7});
    expectThrow<std::bad_cast>([&] { a.handleSignalValue(2, 3, now); });
    EXPECT_TRUE(settingSignals(a).contains(2));
}

// ---- Pulses

TEST_F(DynamicSignalTest, AnAutoResetOutputAt0SendsAPulseAndKeeps0) {
    Plain& a = pulsing(10, "A");
    make(11, "B");
    controller(20, "Robot");
    connect(logic(), {10, 2}, {11, 1});
    connect(logic(), {10, 2}, {20, 7});
    freshLog();

    a.handleSignalValue(2, 1, 5);

    EXPECT_EQ(log().lines(),
              (Lines{"write A/signal 2/value int 1", "write A/signal 2/value int 0",
                     "notice signal 2 of 10", "B.input 1 = 1 at 5", "B.input 1 = 0 at 5",
                     "Robot.set 7 = int 1 dynamic", "Robot.set 7 = int 0 dynamic"}));
    EXPECT_EQ(valueOf(a, 2), SignalValue(0));
    EXPECT_TRUE(settingSignals(a).empty());
}

TEST_F(DynamicSignalTest, AnAutoResetOutputFallsBackToItsOldValueNotTo0) {
    Plain& a = pulsing(10, "A");
    signalOf(a, 2).setValue(7);
    make(11, "B");
    connect(logic(), {10, 2}, {11, 1});
    freshLog();
    a.handleSignalValue(2, 1, 5);
    EXPECT_EQ(valueOf(a, 2), SignalValue(7));
    EXPECT_EQ(documentValue(a, 2), "int 7");
    EXPECT_EQ(inputs("B"), (Lines{"B.input 1 = 1 at 5", "B.input 1 = 0 at 5"}));
    freshLog();
    a.handleSignalValue(2, 7, 6);
    EXPECT_EQ(log().lines(), Lines{}) << "the old value is no change";
}

TEST_F(DynamicSignalTest, APulseOf0FromAnotherValueIsTwoZeros) {
    Plain& a = pulsing(10, "A");
    signalOf(a, 2).setValue(7);
    make(11, "B");
    connect(logic(), {10, 2}, {11, 1});
    a.handleSignalValue(2, 0, 5);
    EXPECT_EQ(inputs("B"), (Lines{"B.input 1 = 0 at 5", "B.input 1 = 0 at 5"}));
    EXPECT_EQ(valueOf(a, 2), SignalValue(7));
}

TEST_F(DynamicSignalTest, BothValuesOfAPulseGoToTheComponentThatTheFirstOneFound) {
    Plain& a = pulsing(10, "A");
    Plain& b = make(11, "B");
    Plain& c = make(12, "C");
    connect(logic(), {10, 2}, {11, 1});
    b.onInput = [&](unsigned, int, long long) { enterObject(11, &c); };
    a.handleSignalValue(2, 1, 5);
    EXPECT_EQ(inputs("B"), (Lines{"B.input 1 = 1 at 5", "B.input 1 = 0 at 5"}));
    EXPECT_EQ(inputs("C"), Lines{});
    a.handleSignalValue(2, 1, 6);
    EXPECT_EQ(inputs("B").size(), 2u);
    EXPECT_EQ(inputs("C"), (Lines{"C.input 1 = 1 at 6", "C.input 1 = 0 at 6"}));
    enterObject(11, &b);
}

// ---- Rings

//   A.out -> B.in, B reacts with B.out
//   B.out -> A.in, A reacts with A.out
TEST_F(DynamicSignalTest, ALoopThatComesBackWithTheSameValueStopsSilently) {
    Plain& a = make(10, "A");
    Plain& b = make(11, "B");
    connect(logic(), {10, 2}, {11, 1});
    connect(logic(), {11, 2}, {10, 1});
    b.onInput = [&](unsigned, int value, long long time) { b.handleSignalValue(2, value, time); };
    a.onInput = [&](unsigned, int value, long long time) { a.handleSignalValue(2, value, time); };
    freshLog();

    a.handleSignalValue(2, 1, 5);

    EXPECT_EQ(log().notices(), (Lines{"notice signal 2 of 10", "notice signal 2 of 11"}));
    EXPECT_EQ(log().events(), Lines{});
    EXPECT_EQ(inputs("A").size(), 1u);
    EXPECT_TRUE(settingSignals(a).empty());
    EXPECT_TRUE(settingSignals(b).empty());
}

TEST_F(DynamicSignalTest, ALoopThatComesBackWithAnotherValueIsEvent10008AndStops) {
    Plain& a = make(10, "A");
    Plain& b = make(11, "B");
    connect(logic(), {10, 2}, {11, 1});
    connect(logic(), {11, 2}, {10, 1});
    b.onInput = [&](unsigned, int value, long long time) { b.handleSignalValue(2, value, time); };
    a.onInput = [&](unsigned, int value, long long time) {
        a.handleSignalValue(2, 1 - value, time);
    };
    freshLog();

    a.handleSignalValue(2, 1, 5);

    EXPECT_EQ(log().events(), Lines{"event 10008|A|out|"});
    EXPECT_EQ(valueOf(a, 2), SignalValue(1)) << "the new value is dropped";
    EXPECT_EQ(inputs("A").size(), 1u);
    EXPECT_TRUE(settingSignals(a).empty());
}

TEST_F(DynamicSignalTest, TheEventNamesTheSignalAsItIsCalledNow) {
    Plain& a = make(10, "A");
    a.setName("Gate");
    signalOf(a, 2).setName("open");
    markSignal(a, 2, 1);
    freshLog();
    a.handleSignalValue(2, 2, now);
    EXPECT_EQ(log().lines(), Lines{"event 10008|Gate|open|"});
}

// The value that the guard keeps is the int that is being set.
TEST_F(DynamicSignalTest, AStaticDoubleInADynamicRingIsAConflict) {
    Plain& a = make(10, "A");
    Plain& b = make(11, "B");
    connect(logic(), {10, 2}, {11, 1});
    b.onInput = [&](unsigned, int, long long) { a.setStaticSignalValue(2, 1.0); };
    freshLog();
    a.handleSignalValue(2, 1, 5);
    EXPECT_EQ(log().events(), Lines{"event 10008|A|out|"});
    b.onInput = [&](unsigned, int, long long) { a.setStaticSignalValue(2, 0); };
    freshLog();
    a.handleSignalValue(2, 0, 6);
    EXPECT_EQ(log().events(), Lines{});
}

// Also where nothing is delivered, and whether the routes are known already or not.
TEST_F(DynamicSignalTest, AMarkThatAListenerLeavesEndsWithTheSettingThatToldIt) {
    struct Leaving : broker::Listener {
        explicit Leaving(Plain& at) : component(at) { broker::SignalBroker::subscribe(*this); }
        ~Leaving() override { broker::SignalBroker::unsubscribe(*this); }
        void scSignalValueChanged(unsigned id, unsigned) override { markSignal(component, id, -1); }
        Plain& component;
    };
    Plain& a = make(10, "A");
    const Leaving listener(a);
    for (int value = 1; value <= 20; ++value) {
        a.handleSignalValue(2, value, now);
        EXPECT_TRUE(settingSignals(a).empty()) << value;
        a.setStaticSignalValue(2, -value);
        EXPECT_TRUE(settingSignals(a).empty()) << value;
    }
}

// ---- What a throw leaves

TEST_F(DynamicSignalTest, AReactionThatThrowsLeavesTheEntriesOfTheChain) {
    Plain& a = make(10, "A");
    Plain& b = make(11, "B");
    Plain& c = make(12, "C");
    make(13, "D");
    connect(logic(), {10, 2}, {11, 1});
    connect(logic(), {11, 2}, {12, 1});
    connect(logic(), {10, 2}, {13, 1});
    b.onInput = [&](unsigned, int value, long long time) { b.handleSignalValue(2, value, time); };
    c.onInput = [](unsigned, int, long long) { throw std::runtime_error("jammed"); };
    expectThrow<std::runtime_error>("jammed", [&] { a.handleSignalValue(2, 1, 5); });

    EXPECT_EQ(valueOf(a, 2), SignalValue(1));
    EXPECT_EQ(valueOf(b, 2), SignalValue(1));
    EXPECT_EQ(settingSignals(a).at(2), SignalValue(1));
    EXPECT_EQ(settingSignals(b).at(2), SignalValue(1));
    EXPECT_EQ(inputs("D"), Lines{}) << "later connections are not served";

    freshLog();
    a.handleSignalValue(2, 0, 6);
    EXPECT_EQ(log().lines(), Lines{"event 10008|A|out|"});
}

TEST_F(DynamicSignalTest, AnUnknownDestinationLeavesWhatWasDelivered) {
    Plain& a = make(10, "A");
    make(11, "B");
    connect(logic(), {10, 2}, {11, 1});
    connect(logic(), {10, 2}, {noSuchId, 1});
    freshLog();
    expectThrow<std::out_of_range>(noKey, [&] { a.handleSignalValue(2, 1, 5); });
    EXPECT_EQ(inputs("B").size(), 1u);
    EXPECT_EQ(settingSignals(a).at(2), SignalValue(1));
}

TEST_F(DynamicSignalTest, AnUnknownConnectionInTheOrderThrows) {
    Plain& a = make(10, "A");
    orderOf(logic()).push_back(noSuchId);
    expectThrow<std::out_of_range>(noKey, [&] { a.handleSignalValue(2, 1, 5); });
    EXPECT_TRUE(settingSignals(a).contains(2));
    orderOf(logic()).clear();
}

TEST_F(DynamicSignalTest, AnUnknownDestinationSignalThrows) {
    Plain& a = make(10, "A");
    make(11, "B");
    connect(logic(), {10, 2}, {11, noSuchId});
    expectThrow<std::out_of_range>(noKey, [&] { a.handleSignalValue(2, 1, 5); });
    EXPECT_TRUE(settingSignals(a).contains(2));
}

TEST_F(DynamicSignalTest, NoCallIntoADestinationRunsUnderTheLock) {
    Plain& a = make(10, "A");
    Plain& b = make(11, "B");
    connect(logic(), {10, 2}, {11, 1});
    bool isFree = false;
    b.onInput = [&](unsigned, int, long long) {
        isFree = sdf::SdfManager::inst()->mutex().try_lock();
        if (isFree) sdf::SdfManager::inst()->mutex().unlock();
    };
    a.handleSignalValue(2, 1, 5);
    EXPECT_TRUE(isFree);
}

}  // namespace trel::test
