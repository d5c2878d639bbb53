#include "smartcomp/SignalInterface.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "tests/smartcomp/VirtualTable.h"

namespace trel::test {

namespace {

// A signal of whatever type is asked for, which counts how often.
class AnySignal : public SignalInterface {
public:
    explicit AnySignal(SignalType type) : type_(type) {}

    void setName(std::string name) override { name_ = std::move(name); }
    const std::string& getName() const override { return name_; }
    SignalType getType() override {
        ++asked;
        return type_;
    }
    void setValue(SignalValue value) override { value_ = value; }
    void setValue(const std::string&) override {}
    SignalValue getValue() override { return value_; }
    int getDigitalValue() const override { return std::get<int>(value_); }
    std::string getValueString() override { return ""; }

    void become(SignalType type) { type_ = type; }

    int asked = 0;

private:
    SignalType type_;
    std::string name_;
    SignalValue value_;
};

struct Row {
    SignalType type;
    const char* name;
    bool digital, analog, input, output;
};

constexpr Row rows[] = {
    {SignalType::AnalogInput, "AnalogInput", false, true, true, false},
    {SignalType::AnalogOutput, "AnalogOutput", false, true, false, true},
    {SignalType::DigitalInput, "DigitalInput", true, false, true, false},
    {SignalType::DigitalOutput, "DigitalOutput", true, false, false, true},
    {SignalType::GroupInput, "GroupInput", false, false, true, false},
    {SignalType::GroupOutput, "GroupOutput", false, false, false, true},
};

}  // namespace

TEST(SignalInterfaceTest, TheSixTypesHaveTheirNumbers) {
    int number = 0;
    for (const Row& row : rows) EXPECT_EQ(static_cast<int>(row.type), number++);
}

TEST(SignalInterfaceTest, TheTypeNameIsExactlyOneOfSix) {
    for (const Row& row : rows) EXPECT_EQ(AnySignal(row.type).getTypeString(), row.name);
}

TEST(SignalInterfaceTest, AnyOtherTypeHasNoName) {
    for (const int other : {-1, 6, 7, 1000})
        EXPECT_EQ(AnySignal(static_cast<SignalType>(other)).getTypeString(), "") << other;
}

TEST(SignalInterfaceTest, EachTypeIsDigitalOrAnalogAndInputOrOutput) {
    for (const Row& row : rows) {
        AnySignal signal(row.type);
        EXPECT_EQ(signal.isDigital(), row.digital) << row.name;
        EXPECT_EQ(signal.isAnalog(), row.analog) << row.name;
        EXPECT_EQ(signal.isInput(), row.input) << row.name;
        EXPECT_EQ(signal.isOutput(), row.output) << row.name;
    }
}

TEST(SignalInterfaceTest, AnyOtherTypeIsNeither) {
    AnySignal signal(static_cast<SignalType>(6));
    EXPECT_FALSE(signal.isDigital());
    EXPECT_FALSE(signal.isAnalog());
    EXPECT_FALSE(signal.isInput());
    EXPECT_FALSE(signal.isOutput());
}

TEST(SignalInterfaceTest, EveryQuestionAsksForTheTypeAfresh) {
    AnySignal signal(SignalType::DigitalInput);
    EXPECT_TRUE(signal.isDigital());
    signal.become(SignalType::AnalogOutput);
    EXPECT_FALSE(signal.isDigital());
    EXPECT_TRUE(signal.isAnalog());
    EXPECT_TRUE(signal.isOutput());
    EXPECT_EQ(signal.getTypeString(), "AnalogOutput");
    EXPECT_GE(signal.asked, 5);
}

TEST(SignalInterfaceTest, OneOfAnyTypeIsDestroyedThroughTheInterface) {
    EXPECT_TRUE(std::has_virtual_destructor_v<SignalInterface>);
    EXPECT_TRUE(std::is_abstract_v<SignalInterface>);
}

TEST(SignalInterfaceTest, EqualValuesHoldTheSameAlternative) {
    EXPECT_EQ(SignalValue(1), SignalValue(1));
    EXPECT_NE(SignalValue(1), SignalValue(1.0));
    EXPECT_TRUE((std::is_same_v<SignalValue, std::variant<int, double>>));
}

TEST(SignalInterfaceTest, TheVirtualTableHasTheOperationsInOrder) {
    using S = SignalInterface;
    expectConsecutive(
        {1, slotOf(&S::setName), slotOf(&S::getName), slotOf(&S::getType),
         slotOf(&S::getTypeString), slotOf(static_cast<void (S::*)(SignalValue)>(&S::setValue)),
         slotOf(static_cast<void (S::*)(const std::string&)>(&S::setValue)), slotOf(&S::getValue),
         slotOf(&S::getDigitalValue), slotOf(&S::getValueString), slotOf(&S::isDigital),
         slotOf(&S::isAnalog), slotOf(&S::isInput), slotOf(&S::isOutput)});
}

}  // namespace trel::test
