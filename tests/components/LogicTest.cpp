#include "tests/components/Bench.h"

namespace trel::test {

namespace {

class LatchTest : public Bench {
protected:
    void SetUp() override {
        Bench::SetUp();
        latch_ = &make("Latch", "L");
        start();
    }
    SmartComponent& latch() { return *latch_; }
    void expect(int out) {
        EXPECT_EQ(get(latch(), "Out"), out);
        EXPECT_EQ(get(latch(), "Inverse"), 1 - out);
    }

private:
    SmartComponent* latch_ = nullptr;
};

class CounterTest : public Bench {
protected:
    void SetUp() override {
        Bench::SetUp();
        counter_ = &make("Counter", "C");
    }
    SmartComponent& counter() { return *counter_; }
    void pulse(const std::string& input) {
        set(counter(), input, 1);
        set(counter(), input, 0);
    }

private:
    SmartComponent* counter_ = nullptr;
};

class ComparatorTest : public Bench {
protected:
    void SetUp() override {
        Bench::SetUp();
        comparator_ = &make("Comparator", "C");
        write(comparator(), "Limit", "10.5");
    }
    SmartComponent& comparator() { return *comparator_; }
    int out(int in) {
        set(comparator(), "In", in);
        return get(comparator(), "Out");
    }

private:
    SmartComponent* comparator_ = nullptr;
};

class Conversions : public Bench {};

}  // namespace

TEST_F(LatchTest, KeepsWhatWasSetUntilItIsReset) {
    expect(0);
    set(latch(), "Set", 1);
    expect(1);
    set(latch(), "Set", 0);
    expect(1);
    set(latch(), "Reset", 1);
    expect(0);
    set(latch(), "Reset", 0);
    expect(0);
}

TEST_F(LatchTest, ResetWinsWhileBothAreOn) {
    set(latch(), "Set", 1);
    set(latch(), "Reset", 1);
    expect(0);
    set(latch(), "Reset", 0);
    expect(1);  // Set is still on
}

TEST_F(LatchTest, SetWinsIfDominantSaysSo) {
    write(latch(), "Dominant", "Set");
    set(latch(), "Reset", 1);
    set(latch(), "Set", 1);
    expect(1);
}

TEST_F(LatchTest, DominantReadsSetOrReset) {
    EXPECT_EQ(latch().getEnumPropertyList(1, ""), (Lines{"Set", "Reset"}));
    EXPECT_TRUE(latch().validatePropertyValue(1, "Set"));
    EXPECT_FALSE(latch().validatePropertyValue(1, "set"));
    EXPECT_TRUE(latch().getEnumPropertyList(2, "").empty());
}

TEST_F(CounterTest, CountsRisingEdges) {
    start();
    pulse("Up");
    set(counter(), "Up", 1);
    set(counter(), "Up", 1);  // still on
    EXPECT_EQ(get(counter(), "Value"), 2);
    EXPECT_EQ(read(counter(), "Count"), "2");
    pulse("Down");
    EXPECT_EQ(get(counter(), "Value"), 1);
    pulse("Reset");
    EXPECT_EQ(get(counter(), "Value"), 0);
    EXPECT_EQ(read(counter(), "Count"), "0");
}

TEST_F(CounterTest, EachPulseOnAnInputThatResetsItselfCounts) {
    signal(counter(), "Up").setAutoReset(true);
    start();
    set(counter(), "Up", 1);
    set(counter(), "Up", 1);
    EXPECT_EQ(get(counter(), "Value"), 2);
}

TEST_F(CounterTest, ReachesItsLimit) {
    write(counter(), "Limit", "2");
    start();
    pulse("Up");
    EXPECT_EQ(get(counter(), "Reached"), 0);
    pulse("Up");
    EXPECT_EQ(get(counter(), "Reached"), 1);
    write(counter(), "Limit", "3");
    EXPECT_EQ(get(counter(), "Reached"), 0);
}

TEST_F(CounterTest, GoesOnFromTheCountInTheDocument) {
    property(counter(), "Count").setValue("41");
    counter().readPropertyValues();
    start();
    EXPECT_EQ(get(counter(), "Value"), 41);
    pulse("Up");
    EXPECT_EQ(read(counter(), "Count"), "42");
}

TEST_F(CounterTest, StopsAtTheLargestNumber) {
    property(counter(), "Count").setValue("2147483647");
    counter().readPropertyValues();
    start();
    pulse("Up");
    EXPECT_EQ(get(counter(), "Value"), 2147483647);
}

TEST_F(CounterTest, CountsAlsoWithoutItsProperty) {
    counter().deleteProperty(2);
    start();
    pulse("Up");
    pulse("Up");
    EXPECT_EQ(get(counter(), "Value"), 2);
}

TEST_F(CounterTest, LimitAndCountAreWholeNumbers) {
    for (const unsigned id : {1u, 2u}) {
        EXPECT_TRUE(counter().validatePropertyValue(id, "-5"));
        for (const char* const text : {"", "x", "1.5", "1 ", "99999999999"})
            EXPECT_FALSE(counter().validatePropertyValue(id, text)) << text;
    }
}

TEST_F(ComparatorTest, IsOnAboveItsLimit) {
    start();
    EXPECT_EQ(out(10), 0);
    EXPECT_EQ(out(11), 1);
    EXPECT_EQ(out(10), 0);
}

TEST_F(ComparatorTest, IsOnBelowItsLimitInTheOtherMode) {
    write(comparator(), "Mode", "Below");
    start();
    EXPECT_EQ(out(10), 1);
    EXPECT_EQ(out(11), 0);
}

TEST_F(ComparatorTest, StaysOnUntilTheValueHasComeBackByTheHysteresis) {
    write(comparator(), "Hysteresis", "2");
    start();
    EXPECT_EQ(out(10), 0);
    EXPECT_EQ(out(11), 1);
    EXPECT_EQ(out(9), 1);
    EXPECT_EQ(out(8), 0);
}

TEST_F(ComparatorTest, ReadsAnAnalogValueWithDecimalsAtTheStart) {
    signal(comparator(), "In").setValue(10.6);
    start();
    EXPECT_EQ(get(comparator(), "Out"), 1);
}

TEST_F(ComparatorTest, FollowsItsLimitWhileItRuns) {
    start();
    EXPECT_EQ(out(10), 0);
    write(comparator(), "Limit", "9");
    EXPECT_EQ(get(comparator(), "Out"), 1);
}

TEST_F(ComparatorTest, ValidatesItsProperties) {
    EXPECT_FALSE(comparator().validatePropertyValue(1, "nan"));
    EXPECT_FALSE(comparator().validatePropertyValue(2, "Between"));
    EXPECT_FALSE(comparator().validatePropertyValue(3, "-1"));
    EXPECT_EQ(comparator().getEnumPropertyList(2, ""), (Lines{"Above", "Below"}));
}

TEST_F(Conversions, AGroupIsTakenApartFromBitZeroUp) {
    SmartComponent& converter = make("GroupToDigital", "G");
    start();
    set(converter, "In", 0b101);
    EXPECT_EQ(freshLog(), (Lines{"G.In := 5", "G.In told", "G.Bit0 := 1", "G.Bit0 told",
                                 "G.Bit2 := 1", "G.Bit2 told"}));
    set(converter, "In", 0b100);
    EXPECT_EQ(get(converter, "Bit0"), 0);
    EXPECT_EQ(get(converter, "Bit2"), 1);
}

TEST_F(Conversions, ANegativeGroupHasAllHighBits) {
    SmartComponent& converter = make("GroupToDigital", "G");
    addSignal(converter, 50, "Bit31", "DigitalOutput");
    addSignal(converter, 51, "Bit32", "DigitalOutput");  // carries no bit of a group
    addSignal(converter, 52, "Bits", "DigitalOutput");
    start();
    set(converter, "In", -1);
    EXPECT_EQ(get(converter, "Bit31"), 1);
    EXPECT_EQ(get(converter, "Bit32"), 0);
    EXPECT_EQ(get(converter, "Bits"), 0);
}

TEST_F(Conversions, BitsArePutTogether) {
    SmartComponent& converter = make("DigitalToGroup", "D");
    addSignal(converter, 50, "Bit31", "DigitalInput");
    start();
    set(converter, "Bit0", 1);
    set(converter, "Bit7", 1);
    EXPECT_EQ(get(converter, "Out"), 129);
    set(converter, "Bit0", 0);
    EXPECT_EQ(get(converter, "Out"), 128);
    set(converter, "Bit31", 1);
    EXPECT_EQ(get(converter, "Out"), -2147483520);
}

//   D.Out -> G.In
TEST_F(Conversions, WhatIsPutTogetherComesApartAgain) {
    SmartComponent& together = make("DigitalToGroup", "D");
    SmartComponent& apart = make("GroupToDigital", "G");
    connect(logic(), together, "Out", apart, "In");
    start();
    for (unsigned value = 0; value != 256; ++value) {
        for (unsigned bit = 0; bit != 8; ++bit)
            set(together, "Bit" + std::to_string(bit), value >> bit & 1u);
        unsigned back = 0;
        for (unsigned bit = 0; bit != 8; ++bit)
            back |= static_cast<unsigned>(get(apart, "Bit" + std::to_string(bit))) << bit;
        EXPECT_EQ(back, value);
    }
}

}  // namespace trel::test
