#include "platform/sdf/SdfManager.h"
#include "smartcomp/Lifecycle.h"
#include "tests/components/Bench.h"

namespace trel::test {

namespace {

// A gripper at the origin that reaches 50 mm, and two parts.
class GripperTest : public Bench {
protected:
    void SetUp() override {
        Bench::SetUp();
        gripper_ = &make("Gripper", "Hand");
        near_ = &part("Near", "10 0 0", "120.4");
        far_ = &part("Far", "0 40 0", "80");
    }
    SmartComponent& gripper() { return *gripper_; }
    SmartComponent& near() { return *near_; }
    SmartComponent& far() { return *far_; }
    static std::string idOf(const SmartComponent& component) {
        return std::to_string(component.id());
    }
    void close() { set(gripper(), "Close", 1); }
    void open() { set(gripper(), "Close", 0); }

private:
    SmartComponent& part(const std::string& name, const std::string& place,
                         const std::string& mass) {
        SmartComponent& made = make("Part", name);
        write(made, "Position", place);
        write(made, "Mass", mass);
        return made;
    }

    SmartComponent* gripper_ = nullptr;
    SmartComponent* near_ = nullptr;
    SmartComponent* far_ = nullptr;
};

}  // namespace

TEST_F(GripperTest, TakesTheNearestPart) {
    start();
    close();
    EXPECT_EQ(read(gripper(), "Held"), idOf(near()));
    EXPECT_EQ(read(near(), "Holder"), idOf(gripper()));
    EXPECT_EQ(read(near(), "Position"), "0 0 0");
    EXPECT_EQ(get(gripper(), "Holding"), 1);
    EXPECT_EQ(get(gripper(), "Load"), 120);
    EXPECT_EQ(read(far(), "Holder"), "0");
}

TEST_F(GripperTest, TakesThePartThatItIsToldToTake) {
    write(gripper(), "Target", idOf(far()));
    start();
    close();
    EXPECT_EQ(read(gripper(), "Held"), idOf(far()));
}

TEST_F(GripperTest, TakesNothingBeyondItsReach) {
    write(far(), "Position", "0 50.1 0");
    write(gripper(), "Target", idOf(far()));
    start();
    close();
    EXPECT_EQ(read(gripper(), "Held"), "0");
    EXPECT_EQ(get(gripper(), "Holding"), 0);
    freshLog();
    open();  // and lets go of nothing
    EXPECT_EQ(freshLog(), (Lines{"Hand.Close := 0", "Hand.Close told"}));
}

TEST_F(GripperTest, TakesNoPartThatAnotherHolds) {
    SmartComponent& other = make("Gripper", "Other");
    start();
    close();
    set(other, "Close", 1);
    EXPECT_EQ(read(other, "Held"), idOf(far()));
}

TEST_F(GripperTest, CarriesThePartWhereverItGoes) {
    start();
    close();
    write(gripper(), "Position", "1 2 300");
    EXPECT_EQ(read(near(), "Position"), "1 2 300");
}

TEST_F(GripperTest, ReleasesThePartWithAPulse) {
    start();
    close();
    write(gripper(), "Position", "0 0 7");
    freshLog();
    open();
    EXPECT_EQ(freshLog(),
              (Lines{"Hand.Close := 0", "Hand.Close told", "Near.Holder := 0", "Hand.Held := 0",
                     "Hand.Load := 0", "Hand.Load told", "Hand.Holding := 0", "Hand.Holding told",
                     "Hand.Released := 1", "Hand.Released := 0", "Hand.Released told"}));
    EXPECT_EQ(read(near(), "Position"), "0 0 7");
}

//   Hand.Released -> Counter.Up : the pulse is 1 and then 0
TEST_F(GripperTest, ThePulseIsCounted) {
    SmartComponent& counter = make("Counter", "Count");
    connect(logic(), gripper(), "Released", counter, "Up");
    start();
    for (int times = 0; times != 3; ++times) {
        close();
        open();
    }
    EXPECT_EQ(get(counter, "Value"), 3);
    EXPECT_EQ(get(counter, "Up"), 0);
}

TEST_F(GripperTest, LosesAPartThatIsRemovedFromItsHand) {
    start();
    close();
    smartcomp::RemoveSmartComponent(near().id());
    write(gripper(), "Position", "0 0 1");
    EXPECT_EQ(get(gripper(), "Holding"), 0);
    open();
    EXPECT_EQ(read(gripper(), "Held"), "0");
    close();
    EXPECT_EQ(read(gripper(), "Held"), idOf(far()));
}

TEST_F(GripperTest, TargetAndHeldNamePartsOrNothing) {
    sdf::SdfObject* const station = sdf::SdfManager::inst()->find(1);
    for (const unsigned id : {3u, 4u}) {
        EXPECT_TRUE(gripper().checkPropertyObjectType(id, &near()));
        EXPECT_TRUE(gripper().checkPropertyObjectType(id, station));  // offered for "None"
        EXPECT_FALSE(gripper().checkPropertyObjectType(id, &gripper()));
    }
    EXPECT_FALSE(gripper().checkPropertyObjectType(1, &near()));
    EXPECT_FALSE(gripper().validatePropertyValue(3, "Near"));
}

//   Other.Target = binding => Hand.Target
TEST_F(GripperTest, ABoundTargetThatIsNoPartIsRefused) {
    SmartComponent& sensor = make("LineSensor", "Eye");
    bind(logic(), sensor, "Object", gripper(), "Target");
    write(sensor, "Object", idOf(near()));
    EXPECT_EQ(read(gripper(), "Target"), idOf(near()));
    freshLog();
    write(sensor, "Object", idOf(gripper()));
    EXPECT_EQ(freshLog(), (Lines{"Eye.Object := " + idOf(gripper()),
                                 "event 10007 Hand Target " + idOf(gripper())}));
    EXPECT_EQ(read(gripper(), "Target"), idOf(near()));
}

}  // namespace trel::test
