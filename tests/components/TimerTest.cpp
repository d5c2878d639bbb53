#include "tests/components/Bench.h"

namespace trel::test {

namespace {

class TimerTest : public Bench {
protected:
    void prepare(const std::string& mode) {
        timer_ = &make("Timer", "T");
        write(timer(), "Mode", mode);
        write(timer(), "Time", "100");
        start();
    }
    SmartComponent& timer() { return *timer_; }
    void in(int value, long long ms) { set(timer(), "In", value, ms * millisecond); }
    int outAfterStep(long long ms) {
        execute(ms * millisecond);
        return get(timer(), "Out");
    }

private:
    SmartComponent* timer_ = nullptr;
};

}  // namespace

TEST_F(TimerTest, OnDelaySwitchesOnWhenTheTimeHasPassed) {
    prepare("OnDelay");
    in(1, 10);
    EXPECT_EQ(outAfterStep(109), 0);
    EXPECT_EQ(outAfterStep(110), 1);
    in(0, 200);
    EXPECT_EQ(get(timer(), "Out"), 0);
}

TEST_F(TimerTest, OnDelayForgetsWhatDidNotLast) {
    prepare("OnDelay");
    in(1, 0);
    in(0, 90);
    EXPECT_EQ(outAfterStep(150), 0);
    in(1, 160);
    EXPECT_EQ(outAfterStep(259), 0);
    EXPECT_EQ(outAfterStep(260), 1);
}

TEST_F(TimerTest, OffDelaySwitchesOffWhenTheTimeHasPassed) {
    prepare("OffDelay");
    in(1, 10);
    EXPECT_EQ(get(timer(), "Out"), 1);
    in(0, 20);
    EXPECT_EQ(outAfterStep(119), 1);
    EXPECT_EQ(outAfterStep(120), 0);
}

TEST_F(TimerTest, OffDelayGoesOnWhenTheInputComesBack) {
    prepare("OffDelay");
    in(1, 0);
    in(0, 10);
    in(1, 50);
    EXPECT_EQ(outAfterStep(500), 1);
}

TEST_F(TimerTest, PulseLastsItsTimeWhateverTheInputDoes) {
    prepare("Pulse");
    in(1, 0);
    EXPECT_EQ(get(timer(), "Out"), 1);
    in(0, 1);
    EXPECT_EQ(outAfterStep(99), 1);
    EXPECT_EQ(outAfterStep(100), 0);
    EXPECT_EQ(outAfterStep(500), 0);
}

TEST_F(TimerTest, APulseThatRisesAgainLastsLonger) {
    prepare("Pulse");
    in(1, 0);
    in(0, 10);
    in(1, 60);
    EXPECT_EQ(outAfterStep(159), 1);
    EXPECT_EQ(outAfterStep(160), 0);
}

TEST_F(TimerTest, AnInputThatResetsItselfRisesAndFallsAtOnce) {
    prepare("OffDelay");
    signal(timer(), "In").setAutoReset(true);
    in(1, 0);
    EXPECT_EQ(get(timer(), "Out"), 1);
    EXPECT_EQ(outAfterStep(100), 0);
}

TEST_F(TimerTest, ATimeOfZeroPassesAtOnce) {
    prepare("OnDelay");
    write(timer(), "Time", "0");
    in(1, 5);
    EXPECT_EQ(get(timer(), "Out"), 1);
}

TEST_F(TimerTest, TheTimeIsExactToTheMicrosecond) {
    prepare("OnDelay");
    write(timer(), "Time", "0.25");
    set(timer(), "In", 1, 1000);
    execute(1249);
    EXPECT_EQ(get(timer(), "Out"), 0);
    execute(1250);
    EXPECT_EQ(get(timer(), "Out"), 1);
}

TEST_F(TimerTest, AnotherTimeCountsFromWhenTheWaitBegan) {
    prepare("OnDelay");
    in(1, 0);
    write(timer(), "Time", "40");
    EXPECT_EQ(outAfterStep(39), 0);
    EXPECT_EQ(outAfterStep(40), 1);
}

TEST_F(TimerTest, AnotherModeForgetsTheWait) {
    prepare("Pulse");
    in(1, 0);
    write(timer(), "Mode", "OnDelay");
    EXPECT_EQ(outAfterStep(300), 1);  // on because In is, no longer for a while
    in(0, 310);
    EXPECT_EQ(get(timer(), "Out"), 0);
}

TEST_F(TimerTest, AWaitBeginsAnewWithTheRun) {
    prepare("OnDelay");
    in(1, 0);
    stop();
    start(second);
    EXPECT_EQ(outAfterStep(1050), 0);
    EXPECT_EQ(outAfterStep(1100), 1);
}

TEST_F(TimerTest, ValidatesItsProperties) {
    prepare("OnDelay");
    EXPECT_EQ(timer().getEnumPropertyList(1, ""), (Lines{"OnDelay", "OffDelay", "Pulse"}));
    EXPECT_FALSE(timer().validatePropertyValue(1, "Slow"));
    EXPECT_FALSE(timer().validatePropertyValue(2, "-1"));
    EXPECT_FALSE(timer().validatePropertyValue(2, "1,5"));
    EXPECT_TRUE(timer().validatePropertyValue(2, "1.5"));
    write(timer(), "Mode", "Slow");
    EXPECT_EQ(read(timer(), "Mode"), "OnDelay");
}

}  // namespace trel::test
