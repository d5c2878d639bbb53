#include <cmath>
#include <limits>
#include <stdexcept>
#include <utility>
#include <variant>

#include "tests/components/Bench.h"

namespace trel::test {

namespace {

// Any component will do for what all types share.
class Sharing : public Bench {};

}  // namespace

TEST_F(Sharing, AnInputIsStoredThenToldThenReactedTo) {
    SmartComponent& buffer = make("Buffer", "B");
    start();
    set(buffer, "In", 1);
    EXPECT_EQ(freshLog(), (Lines{"B.In := 1", "B.In told", "B.Out := 1", "B.Out told"}));
}

TEST_F(Sharing, AnInputThatResetsItselfIsBackBeforeItIsTold) {
    SmartComponent& latch = make("Latch", "L");
    signal(latch, "Set").setAutoReset(true);
    start();
    set(latch, "Set", 1);
    EXPECT_EQ(freshLog(), (Lines{"L.Set := 1", "L.Set := 0", "L.Set told", "L.Out := 1",
                                 "L.Out told", "L.Inverse := 0", "L.Inverse told"}));
    EXPECT_EQ(get(latch, "Set"), 0);
}

TEST_F(Sharing, AnUnknownInputThrowsAndStoresNothing) {
    SmartComponent& buffer = make("Buffer", "B");
    EXPECT_THROW(buffer.handleInputSignal(999, 1, 0), std::out_of_range);
    EXPECT_EQ(freshLog(), Lines{});
}

TEST_F(Sharing, APropertyIsFramedSoThatARingEnds) {
    SmartComponent& one = make("Counter", "One");
    SmartComponent& two = make("Counter", "Two");
    bind(logic(), one, "Limit", two, "Limit");
    bind(logic(), two, "Limit", one, "Limit");
    freshLog();
    write(one, "Limit", "7");
    EXPECT_EQ(freshLog(), (Lines{"One.Limit := 7", "Two.Limit := 7"}));
    // Nothing was left behind: the next setting goes through as well.
    write(one, "Limit", "8");
    EXPECT_EQ(read(two, "Limit"), "8");
}

TEST_F(Sharing, ATextThatCannotBeUsedIsRefusedWithAnEvent) {
    SmartComponent& belt = make("Conveyor", "Belt");
    write(belt, "Speed", "fast");
    EXPECT_EQ(freshLog(), (Lines{"event 10007 Belt Speed fast"}));
    EXPECT_EQ(read(belt, "Speed"), "250");
    write(belt, "Speed", "100");
    EXPECT_EQ(read(belt, "Speed"), "100");
}

TEST_F(Sharing, ATextThatIsThereAlreadyIsPassedOver) {
    SmartComponent& belt = make("Conveyor", "Belt");
    write(belt, "Speed", "250");
    EXPECT_EQ(freshLog(), Lines{});
}

TEST_F(Sharing, AnUnknownPropertyThrows) {
    SmartComponent& belt = make("Conveyor", "Belt");
    EXPECT_THROW(belt.setPropertyValue(99, "1"), std::out_of_range);
}

TEST_F(Sharing, OutputsOfEveryTypeHoldWholeNumbersOnceInitialised) {
    for (const char* const type :
         {"Counter", "DigitalToGroup", "Conveyor", "LineSensor", "Gripper", "Group"}) {
        SmartComponent& component = make(type, type);
        addSignal(component, 50, "More", "AnalogOutput");
        signal(component, "More").setValue(2.6);
        component.initialize();
        for (const auto& [id, output] : component.getSignals()) {
            if (!output->isOutput()) continue;
            EXPECT_TRUE(std::holds_alternative<int>(output->getValue()))
                << type << "." << output->getName();
        }
        EXPECT_EQ(get(component, "More"), 3);
    }
}

TEST_F(Sharing, AnOutputBeyondAnIntHoldsTheNearestOneOnceInitialised) {
    constexpr int most = std::numeric_limits<int>::max();
    constexpr int least = std::numeric_limits<int>::min();
    SmartComponent& group = make("Group", "Group");
    addSignal(group, 50, "Out", "AnalogOutput");
    for (const auto& [read, held] :
         {std::pair{1e300, most}, std::pair{-1e300, least}, std::pair{std::nan(""), 0}}) {
        signal(group, "Out").setValue(read);
        group.initialize();
        EXPECT_EQ(get(group, "Out"), held);
    }
}

TEST_F(Sharing, AComponentThatWasGivenNoOutputSendsNothing) {
    SmartComponent& buffer = make("Buffer", "B");
    buffer.deleteSignal(signal(buffer, "Out").id());
    start();
    set(buffer, "In", 1);
    EXPECT_EQ(freshLog(), (Lines{"B.In := 1", "B.In told"}));
}

TEST_F(Sharing, OfTwoOutputsWithOneNameTheFirstIsSent) {
    SmartComponent& buffer = make("Buffer", "B");
    addSignal(buffer, 50, "Out", "DigitalOutput");
    start();
    set(buffer, "In", 1);
    EXPECT_EQ(buffer.getSignal(2)->getDigitalValue(), 1);
    EXPECT_EQ(buffer.getSignal(50)->getDigitalValue(), 0);
}

TEST_F(Sharing, APropertySetOutsideARunSendsNothing) {
    SmartComponent& comparator = make("Comparator", "C");
    comparator.initialize();
    freshLog();
    write(comparator, "Limit", "-1");
    EXPECT_EQ(freshLog(), (Lines{"C.Limit := -1"}));
    comparator.start(0);
    EXPECT_EQ(get(comparator, "Out"), 1);
    comparator.stop();
    freshLog();
    write(comparator, "Limit", "1");
    EXPECT_EQ(freshLog(), (Lines{"C.Limit := 1"}));
}

}  // namespace trel::test
