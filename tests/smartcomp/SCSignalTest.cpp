#include "smartcomp/SCSignal.h"

#include <any>
#include <clocale>
#include <limits>
#include <locale>
#include <stdexcept>
#include <utility>
#include <variant>

#include "tests/smartcomp/Cell.h"
#include "tests/support/CommaNumbers.h"

namespace trel::test {

namespace {

class SCSignalTest : public CellTest {
protected:
    void SetUp() override {
        CellTest::SetUp();
        lamp_ = &Draft("Plain", 10, "Lamp").make<Plain>();
        freshLog();
    }

    Plain& lamp() { return *lamp_; }

    // A new signal "Bulb" of this type, whose document holds this value.
    SCSignal& make(const std::string& type, std::any value) {
        return create(signalElement(nextId_++, "Bulb", type, std::move(value)));
    }
    SCSignal& create(const ElementPtr& element) {
        lamp_->element()->append(element);
        freshLog();
        return *SCSignal::Create(lamp_, element);
    }
    SCSignal& digital(int value = 0) { return make("DigitalOutput", value); }
    SCSignal& analog(double value = 0) { return make("AnalogOutput", value); }
    SCSignal& group(double value = 0) { return make("GroupOutput", value); }

private:
    Plain* lamp_ = nullptr;
    unsigned nextId_ = 1;
};

std::any stored(const SCSignal& signal, std::string_view key) {
    const auto child = signal.element()->get(key);
    return child ? child->value() : std::any();
}

}  // namespace

TEST_F(SCSignalTest, ReadsEveryFieldFromItsElement) {
    const auto element = signalElement(7, "Bulb", "DigitalInput", 1, true);
    element->touch("uivisible")->setValue(true);
    element->touch("description")->setValue(std::string("lights up"));
    lamp().element()->append(element);
    freshLog();

    SCSignal* const bulb = SCSignal::Create(&lamp(), element);

    EXPECT_EQ(bulb, lamp().getSignal(7));
    EXPECT_EQ(bulb->id(), 7u);
    EXPECT_EQ(bulb->element(), element);
    EXPECT_EQ(bulb->getName(), "Bulb");
    EXPECT_EQ(bulb->getType(), SignalType::DigitalInput);
    EXPECT_EQ(bulb->type(), "DigitalInput");
    EXPECT_EQ(bulb->getValue(), SignalValue(1));
    EXPECT_TRUE(bulb->isAutoReset());
    EXPECT_TRUE(bulb->isVisible());
    EXPECT_EQ(bulb->description(), "lights up");
    EXPECT_EQ(log().lines(), Lines{});
}

TEST_F(SCSignalTest, WithoutAnIdItIsSignal0) {
    const SCSignal& bulb = create(signalElement(0, "Bulb", "DigitalInput", 1));
    EXPECT_EQ(bulb.id(), 0u);
    EXPECT_EQ(lamp().getSignal(0), &bulb);
    EXPECT_EQ(bulb.element()->getId(true), 0u);
}

TEST_F(SCSignalTest, MissingChildrenReadAsNothingAndAreNotCreated) {
    const auto element = sdf::Element::Create("signal");
    element->setId(7);
    SCSignal& bare = create(element);

    EXPECT_EQ(bare.getName(), "");
    EXPECT_EQ(bare.type(), "");
    EXPECT_EQ(bare.getType(), SignalType::GroupOutput);
    EXPECT_EQ(bare.getValue(), SignalValue(0.0));
    EXPECT_FALSE(bare.isAutoReset());
    EXPECT_FALSE(bare.isVisible());
    EXPECT_EQ(bare.description(), "");
    EXPECT_EQ(element->firstChild(), nullptr);
    EXPECT_EQ(log().lines(), Lines{});
}

TEST_F(SCSignalTest, EachOfTheSixTypeNamesIsUnderstood) {
    const Lines names = {"AnalogInput",   "AnalogOutput", "DigitalInput",
                         "DigitalOutput", "GroupInput",   "GroupOutput"};
    for (std::size_t number = 0; number < names.size(); ++number) {
        SCSignal& signal = make(names[number], 3);
        EXPECT_EQ(static_cast<std::size_t>(signal.getType()), number);
        EXPECT_EQ(signal.getTypeString(), names[number]);
        const bool isDigital = number == 2 || number == 3;
        EXPECT_EQ(signal.getValue(), isDigital ? SignalValue(3) : SignalValue(3.0));
    }
}

TEST_F(SCSignalTest, AnyOtherTypeTextMakesAGroupOutputAndIsKept) {
    for (const char* type : {"digitalinput", "Digital Input", "", "DigitalInput "}) {
        SCSignal& signal = make(type, 2);
        EXPECT_EQ(signal.getType(), SignalType::GroupOutput) << type;
        EXPECT_EQ(signal.getValue(), SignalValue(2.0)) << type;
        EXPECT_EQ(signal.type(), type);
    }
}

TEST_F(SCSignalTest, ANameThatIsNoTextIsRefused) {
    const auto element = signalElement(7, "", "DigitalInput", 1);
    element->get("name")->setValue(5);
    lamp().element()->append(element);
    expectThrow<std::bad_any_cast>([&] { SCSignal::Create(&lamp(), element); });
    EXPECT_FALSE(lamp().hasSignal(7));
    EXPECT_EQ(elementOf(lamp(), "signal", 7), element);
}

TEST_F(SCSignalTest, ANameWithoutValueIsRefused) {
    const auto element = sdf::Element::Create("signal");
    element->setId(7);
    element->append("name");
    lamp().element()->append(element);
    expectThrow<std::bad_any_cast>([&] { SCSignal::Create(&lamp(), element); });
    EXPECT_FALSE(lamp().hasSignal(7));
}

// ---- Values and their texts

TEST_F(SCSignalTest, ADigitalSignalBuiltFrom1HoldsInt1) {
    SCSignal& signal = digital(1);
    EXPECT_EQ(signal.getValue(), SignalValue(1));
    EXPECT_EQ(signal.getValueString(), "1");
    EXPECT_EQ(signal.getDigitalValue(), 1);
}

TEST_F(SCSignalTest, AnAnalogSignalShowsSixDigitsAndHasNoDigitalValue) {
    SCSignal& signal = analog(0.5);
    EXPECT_EQ(signal.getValueString(), "0.500000");
    expectThrow<std::bad_variant_access>([&] { signal.getDigitalValue(); });
}

TEST_F(SCSignalTest, TheTextOfADigitalValueIsPlainDecimal) {
    EXPECT_EQ(digital(0).getValueString(), "0");
    EXPECT_EQ(digital(-5).getValueString(), "-5");
    EXPECT_EQ(digital(1234567).getValueString(), "1234567");
    EXPECT_EQ(digital(std::numeric_limits<int>::min()).getValueString(), "-2147483648");
}

TEST_F(SCSignalTest, TheTextOfAnyOtherValueHasSixDigitsAndNoExponent) {
    EXPECT_EQ(analog(0).getValueString(), "0.000000");
    EXPECT_EQ(analog(2.5).getValueString(), "2.500000");
    EXPECT_EQ(group(-1).getValueString(), "-1.000000");
    EXPECT_EQ(analog(1e15).getValueString(), "1000000000000000.000000");
    EXPECT_EQ(analog(1e-9).getValueString(), "0.000000");
    EXPECT_EQ(analog(-1e-9).getValueString(), "-0.000000");
    EXPECT_EQ(analog(std::numeric_limits<double>::max()).getValueString().size(), 309u + 7u);
}

TEST_F(SCSignalTest, TheTextOfAValueDependsOnNoLocale) {
    const std::locale before = std::locale::global(commaLocale());
    EXPECT_EQ(analog(1234.5).getValueString(), "1234.500000");
    EXPECT_EQ(digital(1234).getValueString(), "1234");
    std::locale::global(before);
}

TEST_F(SCSignalTest, ADoubleInADigitalSignalHasNoText) {
    SCSignal& signal = digital(1);
    signal.setValue(3.0);
    expectThrow<std::bad_variant_access>([&] { signal.getValueString(); });
    expectThrow<std::bad_variant_access>([&] { signal.getDigitalValue(); });
    EXPECT_EQ(signal.getValue(), SignalValue(3.0));
}

TEST_F(SCSignalTest, AnIntInAnAnalogSignalHasNoText) {
    SCSignal& signal = analog(0.5);
    signal.setValue(1);
    expectThrow<std::bad_variant_access>([&] { signal.getValueString(); });
    EXPECT_EQ(signal.getDigitalValue(), 1);
}

TEST_F(SCSignalTest, AnIntInAGroupSignalHasNoText) {
    SCSignal& signal = group(5);
    signal.setValue(1);
    expectThrow<std::bad_variant_access>([&] { signal.getValueString(); });
}

// ---- Setters

TEST_F(SCSignalTest, TheValueIsWrittenAsTheAlternativeThatItHolds) {
    SCSignal& signal = digital();
    signal.setValue(7);
    EXPECT_EQ(std::any_cast<int>(stored(signal, "value")), 7);
    signal.setValue(2.5);
    EXPECT_EQ(std::any_cast<double>(stored(signal, "value")), 2.5);
    EXPECT_EQ(signal.getValue(), SignalValue(2.5));
    signal.setValue(SignalValue(3));
    EXPECT_EQ(std::any_cast<int>(stored(signal, "value")), 3);
    signal.setValue(SignalValue(4.0));
    EXPECT_EQ(std::any_cast<double>(stored(signal, "value")), 4.0);
    EXPECT_EQ(signal.getValue(), SignalValue(4.0));
}

TEST_F(SCSignalTest, AValueIsStoredInANewChildWhenThereIsNone) {
    SCSignal& signal = make("DigitalOutput", {});
    EXPECT_EQ(signal.getValue(), SignalValue(0));
    signal.setValue(1);
    EXPECT_EQ(std::any_cast<int>(stored(signal, "value")), 1);
}

TEST_F(SCSignalTest, EverySetterWritesAlsoWhenNothingChanges) {
    SCSignal& signal = digital(1);
    signal.setValue(1);
    signal.setValue(SignalValue(1));
    signal.setValue(std::string("1"));
    signal.setAutoReset(false);
    signal.setVisible(false);
    signal.setDescription("");
    signal.setName("Bulb");
    EXPECT_EQ(log().writes(),
              (Lines{"write Lamp/signal 1/value int 1", "write Lamp/signal 1/value int 1",
                     "write Lamp/signal 1/value int 1", "write Lamp/signal 1/auto_reset bool 0",
                     "write Lamp/signal 1/uivisible bool 0",
                     "write Lamp/signal 1/description string ",
                     "write Lamp/signal 1/name string Bulb"}));
}

TEST_F(SCSignalTest, FlagsAndDescriptionAreWrittenTyped) {
    SCSignal& signal = digital();
    signal.setAutoReset(true);
    signal.setVisible(true);
    signal.setDescription("lights up");
    EXPECT_TRUE(signal.isAutoReset());
    EXPECT_TRUE(std::any_cast<bool>(stored(signal, "auto_reset")));
    EXPECT_TRUE(signal.isVisible());
    EXPECT_TRUE(std::any_cast<bool>(stored(signal, "uivisible")));
    EXPECT_EQ(signal.description(), "lights up");
    EXPECT_EQ(std::any_cast<std::string>(stored(signal, "description")), "lights up");
}

TEST_F(SCSignalTest, ANewNameIsWrittenWhereANameStands) {
    SCSignal& signal = digital();
    signal.setName("Lens");
    EXPECT_EQ(signal.getName(), "Lens");
    EXPECT_EQ(std::any_cast<std::string>(stored(signal, "name")), "Lens");
}

TEST_F(SCSignalTest, WithoutANameChildSetNameDoesNothingAtAll) {
    const auto element = sdf::Element::Create("signal");
    element->setId(7);
    SCSignal& signal = create(element);
    signal.setName("Lens");
    EXPECT_EQ(signal.getName(), "");
    EXPECT_EQ(element->get("name"), nullptr);
    EXPECT_EQ(log().lines(), Lines{});
}

TEST_F(SCSignalTest, SettersTellNobody) {
    SCSignal& signal = digital();
    signal.setValue(1);
    signal.setValue(std::string("2"));
    signal.setAutoReset(true);
    signal.setVisible(true);
    signal.setName("Lens");
    EXPECT_EQ(log().notices(), Lines{});
}

TEST_F(SCSignalTest, WritingAValueLeavesTheKeyTypeAlone) {
    SCSignal& signal = analog();
    signal.setValue(1);
    signal.setAutoReset(true);
    EXPECT_EQ(signal.element()->asString("type"), "AnalogOutput");
}

// ---- Values from text

TEST_F(SCSignalTest, TextBecomesADoubleInAnAnalogSignalAndAnIntInADigitalOne) {
    SCSignal& level = analog();
    level.setValue(std::string("2.5"));
    EXPECT_EQ(level.getValue(), SignalValue(2.5));
    EXPECT_EQ(std::any_cast<double>(stored(level, "value")), 2.5);

    SCSignal& bit = digital();
    bit.setValue(std::string("-1"));
    EXPECT_EQ(bit.getValue(), SignalValue(-1));
    EXPECT_EQ(std::any_cast<int>(stored(bit, "value")), -1);
}

TEST_F(SCSignalTest, TextLeavesAnIntInAGroupSignal) {
    SCSignal& signal = group(5);
    EXPECT_EQ(signal.getValue(), SignalValue(5.0));
    signal.setValue(std::string("6"));
    EXPECT_EQ(signal.getValue(), SignalValue(6));
    EXPECT_EQ(std::any_cast<double>(stored(signal, "value")), 6.0);
    signal.setValue(std::string("7.9"));
    EXPECT_EQ(signal.getValue(), SignalValue(7));
    EXPECT_EQ(std::any_cast<double>(stored(signal, "value")), 7.9);
}

TEST_F(SCSignalTest, ASignalThatHoldsAnIntRefusesAFraction) {
    SCSignal& signal = digital(1);
    expectThrow<std::invalid_argument>([&] { signal.setValue(std::string("0.5")); });
    EXPECT_EQ(signal.getValue(), SignalValue(1));
    EXPECT_EQ(std::any_cast<int>(stored(signal, "value")), 1);
    EXPECT_EQ(log().writes(), Lines{});
}

TEST_F(SCSignalTest, TextThatIsNoNumberIsRefusedAndChangesNothing) {
    SCSignal& signal = analog(0.5);
    for (const char* text : {"", "on", "1,5", "1x"})
        expectThrow<std::invalid_argument>([&] { signal.setValue(std::string(text)); });
    EXPECT_EQ(signal.getValue(), SignalValue(0.5));
    EXPECT_EQ(std::any_cast<double>(stored(signal, "value")), 0.5);
    EXPECT_EQ(log().writes(), Lines{});
}

TEST_F(SCSignalTest, AnalogTextForASignalThatWasGivenAnIntIsReadByTheIntInTheDocument) {
    SCSignal& signal = analog(0.5);
    signal.setValue(1);
    signal.setValue(std::string("4"));
    EXPECT_EQ(signal.getValue(), SignalValue(4.0));
    EXPECT_EQ(std::any_cast<int>(stored(signal, "value")), 4);
}

TEST_F(SCSignalTest, ASignalWithoutAValueTakesTextAsText) {
    SCSignal& signal = make("DigitalOutput", {});
    signal.setValue(std::string("3"));
    EXPECT_EQ(signal.getValue(), SignalValue(3));
    EXPECT_EQ(signal.element()->asString("value"), "3");
}

// ---- Which comes first

TEST_F(SCSignalTest, ValueAutoResetAndNameAreSetBeforeTheyAreWritten) {
    SCSignal& signal = digital();
    Lines seen;
    log().whenWritten = [&](sdf::Element& element) {
        seen.push_back(std::string(element.tag()) + " " + text(signal.getValue()) + " " +
                       signal.getName() + (signal.isAutoReset() ? " resets" : ""));
    };
    signal.setValue(1);
    signal.setValue(2.0);
    signal.setValue(SignalValue(3));
    signal.setName("Lens");
    signal.setAutoReset(true);
    EXPECT_EQ(seen, (Lines{"value int 1 Bulb", "value double 2 Bulb", "value int 3 Bulb",
                           "name int 3 Lens", "auto_reset int 3 Lens resets"}));
}

TEST_F(SCSignalTest, VisibleDescriptionAndTextValuesAreWrittenBeforeTheyAreSet) {
    SCSignal& signal = digital();
    Lines seen;
    log().whenWritten = [&](sdf::Element& element) {
        seen.push_back(std::string(element.tag()) + " " + text(signal.getValue()) +
                       signal.description() + (signal.isVisible() ? " visible" : ""));
    };
    signal.setVisible(true);
    signal.setDescription("lights up");
    signal.setValue(std::string("1"));
    EXPECT_EQ(seen, (Lines{"uivisible int 0", "description int 0 visible",
                           "value int 0lights up visible"}));
}

TEST_F(SCSignalTest, WhenTheWriteThrowsTheFirstThingStays) {
    leaveUnchecked(lamp());
    SCSignal& signal = digital();
    log().whenWritten = [](sdf::Element&) { throw std::runtime_error("disk full"); };
    expectThrow<std::runtime_error>([&] { signal.setValue(1); });
    expectThrow<std::runtime_error>([&] { signal.setAutoReset(true); });
    expectThrow<std::runtime_error>([&] { signal.setName("Lens"); });
    expectThrow<std::runtime_error>([&] { signal.setVisible(true); });
    expectThrow<std::runtime_error>([&] { signal.setDescription("lights up"); });
    EXPECT_EQ(signal.getValue(), SignalValue(1));
    EXPECT_TRUE(signal.isAutoReset());
    EXPECT_EQ(signal.getName(), "Lens");
    EXPECT_FALSE(signal.isVisible());
    EXPECT_EQ(signal.description(), "");
}

// ---- Copies

TEST_F(SCSignalTest, ACopyWritesToTheElementOfItsSource) {
    SCSignal& signal = digital(1);
    SCSignal copy = signal;
    EXPECT_EQ(copy.element(), signal.element());
    EXPECT_EQ(copy.getName(), "Bulb");
    EXPECT_EQ(copy.type(), "DigitalOutput");
    EXPECT_EQ(copy.id(), signal.id());

    copy.setValue(9);
    EXPECT_EQ(std::any_cast<int>(stored(signal, "value")), 9);
    EXPECT_EQ(signal.getValue(), SignalValue(1));
    signal.setValue(9);

    SCSignal assigned = analog();
    assigned = copy;
    EXPECT_EQ(assigned.element(), signal.element());
    EXPECT_EQ(assigned.getValue(), SignalValue(9));
}

TEST_F(SCSignalTest, AMoveTakesTheElementAlong) {
    SCSignal& signal = digital(1);
    SCSignal source = signal;
    SCSignal target = std::move(source);
    EXPECT_EQ(target.element(), signal.element());
    EXPECT_EQ(target.getName(), "Bulb");
    EXPECT_EQ(source.element(), nullptr);
    SCSignal assigned = analog();
    assigned = std::move(target);
    EXPECT_EQ(assigned.element(), signal.element());
    EXPECT_EQ(assigned.getValue(), SignalValue(1));
}

TEST_F(SCSignalTest, DestroyingASignalLeavesItsElementInTheDocument) {
    SCSignal& signal = digital(1);
    { const SCSignal copy = signal; }
    EXPECT_EQ(elementOf(lamp(), "signal", 1), signal.element());
}

}  // namespace trel::test
