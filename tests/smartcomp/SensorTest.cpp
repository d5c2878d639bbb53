#include "smartcomp/Sensor.h"

#include <any>
#include <numbers>
#include <type_traits>

#include "tests/smartcomp/Cell.h"
#include "tests/smartcomp/VirtualTable.h"

namespace trel::test {

namespace {

class SensorTest : public CellTest {
protected:
    void SetUp() override {
        CellTest::SetUp();
        eye_ = &Draft("Eye", 10, "Eye")
                    .signal(1, "on", "DigitalInput")
                    .signal(2, "seen", "DigitalOutput")
                    .make<Eye>();
        freshLog();
    }
    Eye& eye() { return *eye_; }

private:
    Eye* eye_ = nullptr;
};

}  // namespace

TEST_F(SensorTest, IsASensorThatIsShownAndMovedAndAttachedToNothing) {
    const Plain& lamp = Draft("Plain", 11, "Lamp").make<Plain>();
    EXPECT_TRUE(eye().isSensor());
    EXPECT_FALSE(eye().isUser());
    EXPECT_TRUE(eye().hasVisual());
    EXPECT_TRUE(eye().isMovable());
    EXPECT_FALSE(eye().canAttachTo(const_cast<Plain*>(&lamp)));
    EXPECT_EQ(eye().getSignals().size(), 2u);
}

TEST_F(SensorTest, APositionOf123IsPublishedUnturnedUnderItsOwnId) {
    eye().position = {1, 2, 3};
    eye().setVisualPos();
    EXPECT_EQ(log().lines(), Lines{"notice pose of 10 1 2 3 1 0 0 0"});
}

TEST_F(SensorTest, TheVisualIsUnturnedHoweverTheElementIsTurned) {
    eye().setPose({{7, 8, 9}, {0, 1, 0, 0}});
    freshLog();
    eye().position = {1, 2, 3};
    eye().setVisualPos();
    EXPECT_EQ(log().lines(), Lines{"notice pose of 10 1 2 3 1 0 0 0"});
}

TEST_F(SensorTest, AnInputThatReachesItChangesNothing) {
    eye().handleInputSignal(1, 1, 5);
    eye().handleSignalValue(1, 1, 5);
    eye().handleInputSignal(noSuchId, 1, 5);
    EXPECT_EQ(log().lines(), Lines{});
    EXPECT_EQ(signalOf(eye(), 1).getValue(), SignalValue(0));
}

TEST_F(SensorTest, AMotionOfItsCarrierIsPassedOver) {
    eye().position = {1, 2, 3};
    eye().transform(rob::Transform({{1, 1, 1}, {}}));
    EXPECT_EQ(eye().position, (rob::Vec3Template<double>{1, 2, 3}));
    EXPECT_EQ(log().lines(), Lines{});
}

TEST_F(SensorTest, ACopyHasThePropertiesAndSignalsOfItsSource) {
    eye().position = {1, 2, 3};
    leakOnPurpose([&] {
        auto* const copy = new Eye(eye());
        EXPECT_EQ(copy->getSignals(), eye().getSignals());
        *copy = eye();
        EXPECT_EQ(copy->element(), eye().element());
    });
    expectLost(1);
}

TEST_F(SensorTest, LeavesFourThingsToItsTypes) {
    EXPECT_TRUE(std::is_abstract_v<smartcomp::Sensor>);
    EXPECT_FALSE(std::is_abstract_v<Eye>);
}

TEST_F(SensorTest, ItsOwnOperationsFollowThoseOfAComponentInTheVirtualTable) {
    expectConsecutive({slotOf(&Eye::setStaticInputSignal), slotOf(&smartcomp::Sensor::detect),
                       slotOf(&smartcomp::Sensor::getSensorPosition),
                       slotOf(&smartcomp::Sensor::transform), slotOf(&smartcomp::Sensor::update)});
}

}  // namespace trel::test
