#include "smartcomp/Property.h"

#include <any>
#include <optional>
#include <stdexcept>
#include <utility>

#include "tests/smartcomp/Cell.h"

namespace trel::test {

namespace {

class PropertyTest : public CellTest {
protected:
    void SetUp() override {
        CellTest::SetUp();
        lamp_ = &Draft("Plain", 10, "Lamp").property(1, "Speed", "Double", 5.0, "mm").make<Plain>();
        freshLog();
    }

    Plain& lamp() { return *lamp_; }
    Property& speed() { return *lamp_->getProperty(1); }
    sdf::Element& element() { return *speed().element(); }

    // A property of its own with this text as value.
    Property& withText(const std::string& type, const std::string& value) {
        const unsigned id = nextId_++;
        auto element = propertyElement(id, "Text", type, value);
        return *Property::Create(lamp_, lamp_->element()->append(element));
    }
    unsigned objectIdOf(const std::string& value) {
        return withText("ObjectId", value).getObjectId();
    }

private:
    Plain* lamp_ = nullptr;
    unsigned nextId_ = 100;
};

}  // namespace

TEST_F(PropertyTest, ReadsEveryFieldFromItsElement) {
    const auto element = propertyElement(2, "Colour", "String", std::string("red"), "RAL");
    element->touch("description")->setValue(std::string("what it shows"));
    element->touch("uivisible")->setValue(true);
    element->touch("read_only")->setValue(true);
    lamp().element()->append(element);
    freshLog();

    Property* const colour = Property::Create(&lamp(), element);

    EXPECT_EQ(colour, lamp().getProperty(2));
    EXPECT_EQ(colour->id(), 2u);
    EXPECT_EQ(colour->name(), "Colour");
    EXPECT_EQ(colour->objectType(), sdf::ObjectType::None);
    EXPECT_EQ(colour->element(), element);
    EXPECT_EQ(colour->type(), "String");
    EXPECT_EQ(colour->value(), "red");
    EXPECT_EQ(colour->unit(), "RAL");
    EXPECT_EQ(colour->description(), "what it shows");
    EXPECT_TRUE(colour->isVisible());
    EXPECT_TRUE(colour->isReadOnly());
    EXPECT_EQ(log().lines(), Lines{});
}

TEST_F(PropertyTest, AbsentKeysReadAsEmptyTextAndFalseAndAreNotCreated) {
    const auto element = lamp().element()->append("property")->setId(2);
    element->touch("type")->setValue(std::string("String"));
    freshLog();

    Property* const bare = Property::Create(&lamp(), element);

    EXPECT_EQ(bare->value(), "");
    EXPECT_EQ(bare->unit(), "");
    EXPECT_EQ(bare->description(), "");
    EXPECT_FALSE(bare->isVisible());
    EXPECT_FALSE(bare->isReadOnly());
    for (const char* key : {"unit", "description", "uivisible", "read_only", "value"})
        EXPECT_EQ(element->get(key), nullptr) << key;
    EXPECT_EQ(log().lines(), Lines{});
}

TEST_F(PropertyTest, EachOfTheTenTypeNamesHasItsPlace) {
    const Lines names = {"ObjectId", "Int32",  "Double",         "String", "Bool",
                         "Vector3",  "Orient", "ReferenceFrame", "Index",  "Error"};
    for (unsigned place = 0; place < names.size(); ++place) {
        EXPECT_EQ(Property::typeIndexOf(names[place]), place);
        const Property& property = withText(names[place], "");
        EXPECT_EQ(property.type(), names[place]);
        EXPECT_EQ(typeIndexOf(property), place);
        EXPECT_EQ(property.isObjectId(), place == 0);
    }
}

TEST_F(PropertyTest, TypeNamesAreMatchedByteForByte) {
    using namespace std::string_view_literals;
    for (const auto name : {""sv, "double"sv, "Double "sv, " Double"sv, "Doubl"sv, "Double\0"sv})
        EXPECT_EQ(Property::typeIndexOf(name), std::nullopt) << name;
}

TEST_F(PropertyTest, AnUnknownTypeIsNeverBuilt) {
    const auto element = propertyElement(2, "Speed", "double", 5.0);
    lamp().element()->append(element);

    expectThrow<std::bad_optional_access>([&] { Property::Create(&lamp(), element); });

    EXPECT_FALSE(lamp().hasProperty(2));
    EXPECT_EQ(lamp().getProperties().size(), 1u);
    EXPECT_FALSE(element->isMirrored());
}

TEST_F(PropertyTest, AMissingTypeIsNeverBuilt) {
    const auto element = lamp().element()->append("property")->setId(2);
    expectThrow<std::bad_optional_access>([&] { Property::Create(&lamp(), element); });
    EXPECT_FALSE(lamp().hasProperty(2));
}

// ---- Object ids

TEST_F(PropertyTest, AnObjectIdIsAnObjectIdAndAnInt32IsNot) {
    EXPECT_TRUE(withText("ObjectId", "7").isObjectId());
    EXPECT_EQ(typeIndexOf(withText("ObjectId", "7")), 0u);
    EXPECT_FALSE(withText("Int32", "7").isObjectId());
}

TEST_F(PropertyTest, AnInt32GivesObjectId0WhateverItsValue) {
    EXPECT_EQ(withText("Int32", "7").getObjectId(), 0u);
    EXPECT_EQ(withText("Int32", "no number").getObjectId(), 0u);
    EXPECT_EQ(withText("Int32", "99999999999").getObjectId(), 0u);
}

TEST_F(PropertyTest, AnObjectIdEndsWhereItsDigitsEnd) {
    EXPECT_EQ(objectIdOf("12abc"), 12u);
    EXPECT_EQ(objectIdOf("12 34"), 12u);
    EXPECT_EQ(objectIdOf("12.9"), 12u);
}

TEST_F(PropertyTest, AnObjectIdIsDecimal) {
    EXPECT_EQ(objectIdOf("0x10"), 0u);
    EXPECT_EQ(objectIdOf("010"), 10u);
    expectThrow<std::invalid_argument>(noStoul, [&] { objectIdOf("x10"); });
}

TEST_F(PropertyTest, BlanksAheadOfAnObjectIdArePassedOver) {
    EXPECT_EQ(objectIdOf("  12"), 12u);
    EXPECT_EQ(objectIdOf("\t\n\v\f\r 12"), 12u);
}

TEST_F(PropertyTest, TextWithoutLeadingDigitsIsNoObjectId) {
    for (const char* text :
         {"abc", "", "   ", "-", "+", "+-1", "--1", "- 1", "- ", ".5", "\xC2\xA0 1"})
        expectThrow<std::invalid_argument>(noStoul, [&] { objectIdOf(text); });
}

TEST_F(PropertyTest, TheLargestObjectIdHas32Bits) {
    EXPECT_EQ(objectIdOf("4294967295"), 4294967295u);
    EXPECT_EQ(objectIdOf("+4294967295"), 4294967295u);
    EXPECT_EQ(objectIdOf("000000000000000000004294967295"), 4294967295u);
    for (const char* text : {"4294967296", "18446744073709551615", "18446744073709551616",
                             "99999999999999999999999999"})
        expectThrow<std::out_of_range>(stoulRange, [&] { objectIdOf(text); });
}

TEST_F(PropertyTest, MinusOneIsTheLargestObjectId) {
    EXPECT_EQ(objectIdOf("-1"), 4294967295u);
    EXPECT_EQ(objectIdOf("-4294967295"), 1u);
    EXPECT_EQ(objectIdOf("-0"), 0u);
    for (const char* text : {"-4294967296", "-18446744073709551615", "-99999999999999999999999"})
        expectThrow<std::out_of_range>(stoulRange, [&] { objectIdOf(text); });
}

TEST_F(PropertyTest, ARefusedObjectIdChangesNothing) {
    Property& property = withText("ObjectId", "abc");
    freshLog();
    expectThrow<std::invalid_argument>(noStoul, [&] { property.getObjectId(); });
    EXPECT_EQ(property.value(), "abc");
    EXPECT_EQ(log().lines(), Lines{});
}

// ---- Setters

TEST_F(PropertyTest, SettersChain) {
    EXPECT_EQ(speed()
                  .setDescription("d")
                  ->setReadOnly(true)
                  ->setType("Int32")
                  ->setUnit("s")
                  ->setValue("6")
                  ->setVisible(true),
              &speed());
    EXPECT_EQ(speed().description(), "d");
    EXPECT_TRUE(speed().isReadOnly());
    EXPECT_EQ(speed().type(), "Int32");
    EXPECT_EQ(speed().unit(), "s");
    EXPECT_EQ(speed().value(), "6");
    EXPECT_TRUE(speed().isVisible());
}

TEST_F(PropertyTest, SettersWriteTypedKeys) {
    speed().setDescription("d")->setUnit("s")->setVisible(true)->setReadOnly(true);

    EXPECT_EQ(std::any_cast<std::string>(element().get("description")->value()), "d");
    EXPECT_EQ(std::any_cast<std::string>(element().get("unit")->value()), "s");
    EXPECT_TRUE(std::any_cast<bool>(element().get("uivisible")->value()));
    EXPECT_TRUE(std::any_cast<bool>(element().get("read_only")->value()));
}

TEST_F(PropertyTest, SettersTellNobody) {
    speed().setDescription("d")->setReadOnly(true)->setType("Int32")->setUnit("s")->setValue("6");
    EXPECT_EQ(log().notices(), Lines{});
    EXPECT_EQ(log().events(), Lines{});
}

TEST_F(PropertyTest, SettingThePresentDescriptionWritesAgain) {
    speed().setDescription("d")->setDescription("d");
    EXPECT_EQ(log().writes(), (Lines{"write Lamp/property 1/description string d",
                                     "write Lamp/property 1/description string d"}));
}

TEST_F(PropertyTest, SettingThePresentUnitWritesNothing) {
    speed().setUnit("mm");
    EXPECT_EQ(log().writes(), Lines{});
    speed().setUnit("m");
    EXPECT_EQ(log().writes(), Lines{"write Lamp/property 1/unit string m"});
}

TEST_F(PropertyTest, AnAbsentUnitIsEmptyAndSettingItEmptyWritesNothing) {
    Property& bare = withText("String", "x");
    freshLog();
    bare.setUnit("");
    EXPECT_EQ(log().writes(), Lines{});
    EXPECT_EQ(bare.element()->get("unit"), nullptr);
}

TEST_F(PropertyTest, SettingReadOnlyTwiceWritesOnce) {
    speed().setReadOnly(true)->setReadOnly(true);
    EXPECT_EQ(log().writes(), Lines{"write Lamp/property 1/read_only bool 1"});
    speed().setReadOnly(false);
    EXPECT_FALSE(speed().isReadOnly());
    EXPECT_FALSE(element().asBool("read_only"));
}

TEST_F(PropertyTest, ASetterThatSkipsGoesOnWithTheSameProperty) {
    EXPECT_EQ(speed().setReadOnly(speed().isReadOnly()), &speed());
    EXPECT_EQ(speed().setVisible(speed().isVisible()), &speed());
    EXPECT_EQ(speed().setUnit(std::string(speed().unit())), &speed());
    EXPECT_EQ(speed().setType("no such type"), &speed());
    EXPECT_EQ(log().writes(), Lines{});
}

TEST_F(PropertyTest, SettingVisibleTwiceWritesOnce) {
    speed().setVisible(false)->setVisible(true)->setVisible(true);
    EXPECT_EQ(log().writes(), Lines{"write Lamp/property 1/uivisible bool 1"});
}

TEST_F(PropertyTest, ATypeInTheWrongCaseIsIgnored) {
    Property& text = withText("String", "x");
    freshLog();

    text.setType("double");
    EXPECT_EQ(text.type(), "String");
    EXPECT_EQ(typeIndexOf(text), 3u);
    EXPECT_EQ(log().lines(), Lines{});

    text.setType("Double");
    EXPECT_EQ(text.type(), "Double");
    EXPECT_EQ(typeIndexOf(text), 2u);
    EXPECT_EQ(text.element()->asString("type"), "Double");
}

TEST_F(PropertyTest, SettingThePresentTypeWritesAgain) {
    speed().setType("Double");
    EXPECT_EQ(log().writes(), Lines{"write Lamp/property 1/type string Double"});
}

TEST_F(PropertyTest, SettingThePresentValueWritesAgain) {
    speed().setValue("5");
    EXPECT_EQ(log().writes(), Lines{"write Lamp/property 1 double 5"});
}

TEST_F(PropertyTest, ANumberIsKeptInItsNormalText) {
    speed().setValue("2.50");
    EXPECT_EQ(speed().value(), "2.5");
    EXPECT_EQ(element().getStringFromValue(), "2.5");
    EXPECT_EQ(element().asDouble(""), 2.5);
    speed().setValue("1e2");
    EXPECT_EQ(speed().value(), "100");
}

TEST_F(PropertyTest, ABoolReadsFourWordsAndRendersTwo) {
    const auto element = propertyElement(2, "On", "Bool", true);
    Property& on = *Property::Create(&lamp(), lamp().element()->append(element));
    EXPECT_EQ(on.value(), "1");
    EXPECT_EQ(on.setValue("false")->value(), "0");
    EXPECT_EQ(on.setValue("true")->value(), "1");
    EXPECT_EQ(on.setValue("0")->value(), "0");
    expectThrow<std::invalid_argument>([&] { on.setValue("True"); });
    EXPECT_EQ(on.value(), "0");
}

TEST_F(PropertyTest, AnElementWithoutValueTakesTheTextAsText) {
    const auto element = propertyElement(2, "Any", "Double", {});
    Property& any = *Property::Create(&lamp(), lamp().element()->append(element));
    any.setValue("2.50");
    EXPECT_EQ(any.value(), "2.50");
    EXPECT_EQ(std::any_cast<std::string>(element->value()), "2.50");
}

TEST_F(PropertyTest, TheTextOfAValueIsNotCheckedAgainstTheType) {
    Property& number = withText("Int32", "1");
    EXPECT_EQ(number.setValue("no number")->value(), "no number");
}

TEST_F(PropertyTest, TheTypeOfTheValueHeldRefusesOtherText) {
    expectThrow<std::invalid_argument>([&] { speed().setValue("fast"); });
    EXPECT_EQ(speed().value(), "5");
    EXPECT_EQ(element().asDouble(""), 5.0);
    EXPECT_EQ(log().writes(), Lines{});
}

// The own value and the key "value" are one.
TEST_F(PropertyTest, AChildValueHoldsTheValueOfTheProperty) {
    const auto element = propertyElement(2, "Kept", "Double", {});
    element->touch("value")->setValue(1.5);
    Property& kept = *Property::Create(&lamp(), lamp().element()->append(element));
    EXPECT_EQ(kept.value(), "1.5");

    kept.setValue("2.5");
    EXPECT_EQ(element->get("value")->asDouble(""), 2.5);
    EXPECT_EQ(element->asDouble("value"), 2.5);
}

TEST_F(PropertyTest, WritingAValueLeavesTheKeyTypeAlone) {
    speed().setValue("7")->setUnit("s")->setReadOnly(true);
    EXPECT_EQ(element().asString("type"), "Double");
    EXPECT_EQ(speed().type(), "Double");
    EXPECT_EQ(lamp().element()->asString("type"), "Plain");
}

// ---- The document first, the field after

TEST_F(PropertyTest, EverySetterWritesTheDocumentBeforeItsField) {
    Lines seen;
    log().whenWritten = [&](sdf::Element&) {
        seen.push_back(speed().description() + "|" + speed().unit() + "|" + speed().type() + "|" +
                       speed().value() + "|" + (speed().isVisible() ? "v" : "") +
                       (speed().isReadOnly() ? "r" : ""));
    };
    speed()
        .setDescription("d")
        ->setUnit("s")
        ->setType("Int32")
        ->setValue("6")
        ->setVisible(true)
        ->setReadOnly(true);
    EXPECT_EQ(seen, (Lines{"|mm|Double|5|", "d|mm|Double|5|", "d|s|Double|5|", "d|s|Int32|5|",
                           "d|s|Int32|6|", "d|s|Int32|6|v"}));
}

TEST_F(PropertyTest, WhenTheWriteThrowsTheFieldIsLeftAsItWas) {
    leaveUnchecked(lamp());
    log().whenWritten = [](sdf::Element&) { throw std::runtime_error("disk full"); };
    for (const auto& set :
         {+[](Property& p) { p.setDescription("d"); }, +[](Property& p) { p.setUnit("s"); },
          +[](Property& p) { p.setType("Int32"); }, +[](Property& p) { p.setValue("6"); },
          +[](Property& p) { p.setVisible(true); }, +[](Property& p) { p.setReadOnly(true); }})
        expectThrow<std::runtime_error>("disk full", [&] { set(speed()); });

    EXPECT_EQ(speed().description(), "");
    EXPECT_EQ(speed().unit(), "mm");
    EXPECT_EQ(speed().type(), "Double");
    EXPECT_EQ(typeIndexOf(speed()), 2u);
    EXPECT_EQ(speed().value(), "5");
    EXPECT_FALSE(speed().isVisible());
    EXPECT_FALSE(speed().isReadOnly());
}

// ---- Copies

TEST_F(PropertyTest, ACopyHasAllFieldsAndSharesTheElement) {
    speed().setDescription("d")->setVisible(true)->setReadOnly(true);
    Property copy = speed();

    EXPECT_EQ(copy.element(), speed().element());
    EXPECT_EQ(copy.id(), 1u);
    EXPECT_EQ(copy.description(), "d");
    EXPECT_EQ(copy.type(), "Double");
    EXPECT_EQ(typeIndexOf(copy), 2u);
    EXPECT_EQ(copy.value(), "5");
    EXPECT_EQ(copy.unit(), "mm");
    EXPECT_TRUE(copy.isVisible());
    EXPECT_TRUE(copy.isReadOnly());
    EXPECT_EQ(lamp().getProperty(1), &speed());

    Property& other = withText("String", "x");
    const ElementPtr otherElement = other.element();
    Property assigned = other;
    assigned = copy;
    EXPECT_EQ(assigned.value(), "5");
    EXPECT_EQ(assigned.element(), speed().element());
    EXPECT_EQ(other.element(), otherElement);
}

TEST_F(PropertyTest, AMoveLeavesTheTextsOfTheSourceEmpty) {
    speed().setDescription("a text that is too long to be kept inside the string itself");
    Property source = speed();
    Property target = std::move(source);

    EXPECT_EQ(target.description(), speed().description());
    EXPECT_EQ(target.type(), "Double");
    EXPECT_EQ(target.value(), "5");
    EXPECT_EQ(target.unit(), "mm");
    EXPECT_EQ(source.description() + source.type() + source.value() + source.unit(), "");

    Property assigned = withText("String", "x");
    assigned = std::move(target);
    EXPECT_EQ(assigned.value(), "5");
    EXPECT_EQ(target.description() + target.type() + target.value() + target.unit(), "");
}

TEST_F(PropertyTest, DestroyingAPropertyLeavesItsElementInTheDocument) {
    { const Property copy = speed(); }
    EXPECT_EQ(elementOf(lamp(), "property", 1), speed().element());
}

}  // namespace trel::test
