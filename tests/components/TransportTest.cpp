#include <gmock/gmock.h>

#include "platform/sdf/SdfManager.h"
#include "smartcomp/Lifecycle.h"
#include "smartcomp/Sensor.h"
#include "tests/components/Bench.h"

namespace trel::test {

namespace {

using ::testing::Contains;

// A belt from 0 to 1000 mm along x, 200 mm wide, at 250 mm/s.
class Transport : public Bench {
protected:
    SmartComponent& part(const std::string& name, const std::string& place) {
        SmartComponent& made = make("Part", name);
        write(made, "Position", place);
        return made;
    }
    static std::string place(const SmartComponent& part) { return read(part, "Position"); }
};

}  // namespace

TEST_F(Transport, AConveyorMovesAPartAtItsSpeed) {
    SmartComponent& belt = make("Conveyor", "Belt");
    SmartComponent& box = part("Box", "100 30 0");
    start();
    set(belt, "Run", 1, 0);
    execute(second / 10);
    EXPECT_EQ(place(box), "125 30 0");
    execute(second);
    EXPECT_EQ(place(box), "350 30 0");
}

TEST_F(Transport, APartMovesOnlyWhileTheConveyorRuns) {
    SmartComponent& belt = make("Conveyor", "Belt");
    SmartComponent& box = part("Box", "0 0 0");
    start();
    execute(second);
    EXPECT_EQ(place(box), "0 0 0");
    set(belt, "Run", 1, 2 * second);
    EXPECT_EQ(get(belt, "Running"), 1);
    execute(2 * second);  // it began only now
    EXPECT_EQ(place(box), "0 0 0");
    set(belt, "Run", 0, 3 * second);  // moved until it was stopped
    execute(9 * second);
    EXPECT_EQ(place(box), "250 0 0");
    EXPECT_EQ(get(belt, "Running"), 0);
}

TEST_F(Transport, APartStopsAtTheEndOfTheBelt) {
    SmartComponent& belt = make("Conveyor", "Belt");
    SmartComponent& box = part("Box", "900 -40 5");
    start();
    set(belt, "Run", 1, 0);
    execute(5 * second);
    EXPECT_EQ(place(box), "1000 -40 5");
    execute(6 * second);
    EXPECT_EQ(place(box), "1000 -40 5");
}

TEST_F(Transport, AConveyorRunsBackward) {
    SmartComponent& belt = make("Conveyor", "Belt");
    SmartComponent& box = part("Box", "300 0 0");
    start();
    set(belt, "Run", 1, 0);
    set(belt, "Backward", 1, 0);
    execute(second);
    EXPECT_EQ(place(box), "50 0 0");
    execute(9 * second);
    EXPECT_EQ(place(box), "0 0 0");
}

TEST_F(Transport, OnlyFreePartsOnTheBeltAreCarried) {
    SmartComponent& belt = make("Conveyor", "Belt");
    SmartComponent& on = part("On", "100 100 0");
    SmartComponent& beside = part("Beside", "100 101 0");
    SmartComponent& held = part("Held", "100 0 0");
    write(held, "Holder", "1");
    start();
    EXPECT_EQ(get(belt, "Carrying"), 1);
    set(belt, "Run", 1, 0);
    execute(second);
    EXPECT_EQ(place(on), "350 100 0");
    EXPECT_EQ(place(beside), "100 101 0");
    EXPECT_EQ(place(held), "100 0 0");
}

TEST_F(Transport, ManySmallStepsEndWhereOneLargeStepEnds) {
    SmartComponent& belt = make("Conveyor", "Belt");
    write(belt, "Speed", "33.3");
    SmartComponent& box = part("Box", "0 0 0");
    start();
    set(belt, "Run", 1, 0);
    for (long long time = 0; time <= second; time += millisecond) execute(time);
    EXPECT_EQ(place(box), "33.3 0 0");
}

TEST_F(Transport, ABeltWithoutLengthMovesNothing) {
    SmartComponent& belt = make("Conveyor", "Belt");
    write(belt, "End", "0 0 0");
    SmartComponent& box = part("Box", "10 0 0");
    start();
    set(belt, "Run", 1, 0);
    execute(second);
    EXPECT_EQ(place(box), "10 0 0");
}

TEST_F(Transport, ConveyorValidatesItsProperties) {
    SmartComponent& belt = make("Conveyor", "Belt");
    EXPECT_FALSE(belt.validatePropertyValue(1, "0 0"));
    EXPECT_FALSE(belt.validatePropertyValue(2, "0 0 0 0"));
    EXPECT_TRUE(belt.validatePropertyValue(2, " 1e3\t-2.5 0 "));
    EXPECT_FALSE(belt.validatePropertyValue(3, "-1"));
    EXPECT_FALSE(belt.validatePropertyValue(4, "inf"));
}

TEST_F(Transport, AnAxisGoesToWorkAndBackHome) {
    SmartComponent& axis = make("LinearAxis", "Axis");  // 500 mm upward at 500 mm/s
    start();
    EXPECT_EQ(get(axis, "AtHome"), 1);
    set(axis, "Go", 1, 0);
    execute(second / 2);
    EXPECT_EQ(read(axis, "Position"), "0 0 250");
    EXPECT_EQ(get(axis, "AtHome"), 0);
    EXPECT_EQ(get(axis, "AtWork"), 0);
    execute(second);
    EXPECT_EQ(get(axis, "AtWork"), 1);
    set(axis, "Go", 0, 2 * second);
    execute(4 * second);
    EXPECT_EQ(read(axis, "Position"), "0 0 0");
    EXPECT_EQ(get(axis, "AtHome"), 1);
}

TEST_F(Transport, AnAxisMovesUnderTheOldCommandUntilTheNewOneComes) {
    SmartComponent& axis = make("LinearAxis", "Axis");
    start();
    set(axis, "Go", 1, second);
    execute(second);
    EXPECT_EQ(read(axis, "Position"), "0 0 0");
    set(axis, "Go", 0, second + second / 5);
    EXPECT_EQ(read(axis, "Position"), "0 0 100");
}

TEST_F(Transport, ASensorNamesThePartAndThenDetectsIt) {
    SmartComponent& sensor = make("LineSensor", "Eye");  // along y, 200 mm, radius 20
    SmartComponent& box = part("Box", "500 50 0");
    start();
    EXPECT_EQ(get(sensor, "Detected"), 0);
    write(box, "Position", "-20 50 0");
    freshLog();
    execute(second);
    EXPECT_EQ(freshLog(), (Lines{"Eye.Object := " + std::to_string(box.id()), "Eye.Distance := 50",
                                 "Eye.Distance told", "Eye.Detected := 1", "Eye.Detected told"}));
    write(box, "Position", "-21 50 0");
    execute(2 * second);
    EXPECT_EQ(get(sensor, "Detected"), 0);
    EXPECT_EQ(read(sensor, "Object"), "0");
    EXPECT_EQ(get(sensor, "Distance"), 0);
}

TEST_F(Transport, ASensorDetectsTheNearestPart) {
    auto& sensor = dynamic_cast<smartcomp::Sensor&>(make("LineSensor", "Eye"));
    part("Far", "0 150 0");
    const SmartComponent& near = part("Near", "0 80 0");
    part("Behind", "0 -30 0");
    EXPECT_EQ(sensor.detect(), near.id());
}

TEST_F(Transport, ASensorLosesAPartThatIsRemoved) {
    SmartComponent& sensor = make("LineSensor", "Eye");
    const unsigned box = part("Box", "0 0 0").id();
    start();
    execute(0);
    EXPECT_EQ(get(sensor, "Detected"), 1);
    smartcomp::RemoveSmartComponent(box);
    sensor.execute(second);
    EXPECT_EQ(get(sensor, "Detected"), 0);
    EXPECT_EQ(read(sensor, "Object"), "0");
}

TEST_F(Transport, ASensorIsShownWhereItStands) {
    SmartComponent& sensor = make("LineSensor", "Eye");
    EXPECT_TRUE(sensor.isSensor());
    write(sensor, "Position", "1 2 3");
    EXPECT_THAT(freshLog(), Contains("Eye shown at 1 2 3"));
}

TEST_F(Transport, ASensorFollowsItsCarrier) {
    auto& sensor = dynamic_cast<smartcomp::Sensor&>(make("LineSensor", "Eye"));
    sensor.transform(rob::Transform({{10, 0, 0}, {0, 0, 0, 1}}));  // half a turn about z
    EXPECT_EQ(read(sensor, "Position"), "10 0 0");
    EXPECT_DOUBLE_EQ(sensor.getSensorPosition().x, 10);
    const auto& box = part("Box", "10 -150 0");
    EXPECT_EQ(sensor.detect(), box.id());
}

}  // namespace trel::test
