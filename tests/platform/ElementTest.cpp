#include "platform/sdf/Element.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "tests/platform/WriteLog.h"
#include "tests/support/Expect.h"

namespace {

using sdf::Element;
using trel::test::expectThrow;
using trel::test::WriteLog;
using Lines = std::vector<std::string>;

using Vec3 = trel::rob::Vec3Template<double>;
using Pose = trel::rob::PoseTemplate<double>;

const std::string noName = "\"not a name\" cannot be a tag: it must be an XML name";

std::shared_ptr<Element> withValue(std::any value) {
    auto e = Element::Create("property");
    e->setValue(std::move(value));
    return e;
}

std::vector<std::string> tagsOf(const Element& e) {
    std::vector<std::string> tags;
    for (const Element* c = e.firstChild(); c; c = c->nextSibling()) tags.emplace_back(c->tag());
    return tags;
}

TEST(Element, IsCreatedAloneWithItsTagOnly) {
    const auto e = Element::Create("signal");
    EXPECT_EQ(e->tag(), "signal");
    EXPECT_EQ(e->kind(), Element::Kind::Element);
    EXPECT_EQ(e->parent(), nullptr);
    EXPECT_EQ(e->getId(true), 0u);
    EXPECT_FALSE(e->hasName());
    EXPECT_EQ(e->name(), "");
    EXPECT_FALSE(e->value().has_value());
    EXPECT_EQ(e->place().line, 0u);
    EXPECT_EQ(e->firstChild(), nullptr);
}

TEST(Element, ATagMustBeAnXmlName) {
    for (const char* tag : {"", "1st", "two words", "a<b", "-x", "\xC3", "\xC3\x97"})
        EXPECT_THROW(Element::Create(tag), std::invalid_argument) << tag;
    expectThrow<std::invalid_argument>(noName, [] { Element::Create("not a name"); });
    for (const char* tag : {"a", "_", "a-1.b", "ns:a",
                            "gr\xC3\xB6\xC3\x9F"
                            "e"})
        EXPECT_EQ(Element::Create(tag)->tag(), tag);
}

// However long it is, and whatever it has in common with others.
TEST(Element, IsFoundByAllOfItsTag) {
    const auto e = Element::Create("station");
    std::vector<std::string> tags;
    for (std::size_t length = 1; length != 50; ++length)
        for (const char last : {'x', 'y'}) tags.push_back(std::string(length - 1, 'a') + last);
    for (const std::string& tag : tags) {
        EXPECT_EQ(e->get(tag), nullptr) << tag;
        const auto key = e->touch(tag);
        EXPECT_EQ(key->tag(), tag);
        EXPECT_EQ(e->get(tag), key);
    }
    for (const std::string& tag : tags) EXPECT_EQ(e->get(tag)->tag(), tag);
}

TEST(Element, AnInstructionAndAnAttributeNeedANameToo) {
    for (const auto kind : {Element::Kind::Instruction, Element::Kind::Attribute})
        expectThrow<std::invalid_argument>(noName,
                                           [&] { Element::CreateNote(kind, "not a name", "x"); });
    EXPECT_NO_THROW(Element::CreateNote(Element::Kind::Comment, "", "x"));
}

TEST(Element, TouchMakesAMissingKeyOnceAndEmpty) {
    const auto e = Element::Create("signal");
    const auto unit = e->touch("unit");
    EXPECT_EQ(unit->parent(), e);
    EXPECT_FALSE(unit->value().has_value());
    EXPECT_EQ(e->touch("unit"), unit);
    EXPECT_EQ(tagsOf(*e), Lines{"unit"});
}

TEST(Element, ARefusedKeyLeavesNothingBehind) {
    const auto e = Element::Create("signal");
    expectThrow<std::invalid_argument>(noName, [&] { e->touch("not a name"); });
    EXPECT_EQ(e->firstChild(), nullptr);
}

TEST(Element, AnEmptyNameMeansTheElementItself) {
    const auto e = withValue(7);
    EXPECT_EQ(e->touch(""), e);
    EXPECT_EQ(e->get(""), e);
    EXPECT_EQ(e->asInt(""), 7);
}

TEST(Element, GetGivesNullForAMissingKeyAndMakesNone) {
    const auto e = Element::Create("signal");
    EXPECT_EQ(e->get("unit"), nullptr);
    EXPECT_EQ(e->firstChild(), nullptr);
}

TEST(Element, NotesAreNoKeys) {
    const auto e = Element::Create("cell");
    e->append(Element::CreateNote(Element::Kind::Instruction, "unit", "mm"));
    e->append(Element::CreateNote(Element::Kind::Comment, "", "unit"));
    EXPECT_EQ(e->get("unit"), nullptr);
    EXPECT_TRUE(e->children("unit").empty());
    const auto key = e->touch("unit");
    EXPECT_EQ(e->get("unit"), key);
    EXPECT_EQ(e->children("unit"), std::vector{key});
}

TEST(Element, AMissingIdIsZeroOrAnError) {
    const auto e = Element::Create("signal");
    e->setName("Start");
    EXPECT_EQ(e->getId(true), 0u);
    expectThrow<std::logic_error>("signal Start has no object id", [&] { e->getId(false); });
    EXPECT_EQ(e->setId(5), e);
    EXPECT_EQ(e->getId(false), 5u);
    e->setId(0);
    EXPECT_EQ(e->getId(true), 0u);
}

TEST(Element, AnEmptyNameIsANameAllTheSame) {
    const auto e = Element::Create("signal");
    e->setName("");
    EXPECT_TRUE(e->hasName());
    EXPECT_EQ(e->name(), "");
}

TEST(Element, AppendObjectPlacesANewChildLastWithIdAndName) {
    const auto station = Element::Create("station");
    station->append("first");
    const auto part = station->appendObject("part", 9, "Box");
    EXPECT_EQ(part->getId(false), 9u);
    EXPECT_EQ(part->name(), "Box");
    EXPECT_EQ(part->parent(), station);
    EXPECT_EQ(tagsOf(*station), (Lines{"first", "part"}));
}

TEST(Element, ThePathNamesEveryElementOnTheWay) {
    const auto station = Element::Create("station");
    const auto gripper = station->appendObject("smart_component", 7, "Gripper");
    const auto property = gripper->append("property");
    property->setId(3);
    EXPECT_EQ(property->touch("unit")->path(), "station/smart_component Gripper/property 3/unit");
}

// Own value and key "value" are one.

TEST(ElementValue, IsReadUnderTheKeyValueToo) {
    const auto e = withValue(std::string("12"));
    EXPECT_EQ(e->asString("value"), "12");
    EXPECT_EQ(e->asInt("value"), 12);
    EXPECT_EQ(e->get("value"), nullptr);
}

TEST(ElementValue, StandsInTheChildValueWhereThereIsOne) {
    const auto e = Element::Create("signal");
    e->touch("value")->setValue(3);
    EXPECT_EQ(std::any_cast<int>(e->value()), 3);
    EXPECT_EQ(e->ownValue(), nullptr);

    e->setValue(4);
    EXPECT_EQ(e->get("value")->asInt(""), 4);
    EXPECT_EQ(e->ownValue(), nullptr);
    e->setValueFromString("5");
    EXPECT_EQ(e->get("value")->asInt(""), 5);
    EXPECT_EQ(e->getStringFromValue(), "5");
}

TEST(ElementValue, MovesIntoANewChildValue) {
    const auto e = withValue(2.5);
    const auto key = e->touch("value");
    EXPECT_EQ(e->ownValue(), nullptr);
    EXPECT_EQ(key->asDouble(""), 2.5);
    EXPECT_EQ(e->asDouble(""), 2.5);
    EXPECT_EQ(e->asDouble("value"), 2.5);
}

TEST(ElementValue, GivesWayToTheValueThatAnAppendedChildBrings) {
    const auto e = withValue(1);
    auto key = Element::Create("value");
    key->setValue(2);
    e->append(key);
    EXPECT_EQ(e->ownValue(), nullptr);
    EXPECT_EQ(e->asInt(""), 2);
}

TEST(ElementValue, MovesIntoTheInnermostOfNestedChildren) {
    const auto e = withValue(1);
    auto key = Element::Create("value");
    key->append("value");
    e->append(key);
    EXPECT_EQ(e->asInt(""), 1);
    EXPECT_EQ(key->ownValue(), nullptr);
    EXPECT_EQ(key->get("value")->asInt(""), 1);
}

TEST(ElementValue, GoesWithTheChildThatHoldsIt) {
    const auto e = withValue(1);
    const auto key = e->touch("value");
    key->removeFromParent();
    EXPECT_FALSE(e->value().has_value());
    EXPECT_EQ(e->asInt("value"), 0);
    EXPECT_EQ(key->asInt(""), 1);
}

TEST(ElementValue, MayBeOfEveryTypeThatTheDocumentHolds) {
    EXPECT_EQ(withValue(std::string("a"))->asString(""), "a");
    EXPECT_TRUE(withValue(true)->asBool(""));
    EXPECT_EQ(withValue(-3)->asInt(""), -3);
    EXPECT_EQ(withValue(4294967295u)->asUInt(""), 4294967295u);
    EXPECT_EQ(withValue(18446744073709551615ull)->asUInt64(""), 18446744073709551615ull);
    EXPECT_EQ(withValue(0.1)->asDouble(""), 0.1);
    const Vec3 vec{1, 2, 3};
    EXPECT_EQ(withValue(vec)->asVec3(""), vec);
    const Pose pose{{1, 2, 3}, {0.5, 0.5, 0.5, 0.5}};
    EXPECT_EQ(withValue(pose)->asPose(""), pose);
}

TEST(ElementValue, OfAnotherTypeIsRefusedAndNothingChanges) {
    const auto e = withValue(1);
    WriteLog log;
    EXPECT_THROW(e->setValue(1.0f), std::invalid_argument);
    EXPECT_THROW(e->setValue("pointer"), std::invalid_argument);
    EXPECT_THROW(e->setValue(1ul), std::invalid_argument);
    EXPECT_EQ(e->asInt(""), 1);
    EXPECT_TRUE(log.lines.empty());

    const auto empty = Element::Create("unit");
    EXPECT_THROW(empty->setValue(1.0f), std::invalid_argument);
    EXPECT_EQ(empty->ownValue(), nullptr);
}

TEST(ElementValue, IsTakenAwayByAnEmptyOne) {
    const auto e = withValue(1);
    e->setValue({});
    EXPECT_FALSE(e->value().has_value());
    EXPECT_EQ(e->getStringFromValue(), "");
}

TEST(ElementValue, ReadsAsNothingWhereItIsMissingOrEmpty) {
    const auto e = Element::Create("property");
    e->touch("unit")->setValue(std::string());
    for (const char* key : {"unit", "missing", "", "value"}) {
        EXPECT_EQ(e->asInt(key), 0);
        EXPECT_EQ(e->asUInt(key), 0u);
        EXPECT_EQ(e->asUInt64(key), 0u);
        EXPECT_EQ(e->asDouble(key), 0.0);
        EXPECT_FALSE(e->asBool(key));
        EXPECT_EQ(e->asString(key), "");
        EXPECT_EQ(e->asVec3(key), Vec3{});
        EXPECT_EQ(e->asPose(key), Pose{});
    }
}

TEST(ElementValue, AMissingPoseIsUnturned) {
    EXPECT_EQ(Element::Create("node")->asPose("pose").rotation,
              (trel::rob::RotationTemplate<double>{1, 0, 0, 0}));
}

TEST(ElementValue, ThatCannotBeConvertedIsNamedWithItsPath) {
    const auto station = Element::Create("station");
    station->touch("speed")->setValue(std::string("fast"));
    expectThrow<std::invalid_argument>("station/speed: \"fast\" is not a value of type double",
                                       [&] { station->asDouble("speed"); });
}

TEST(ElementValueText, KeepsTheTypeOfTheValueHeld) {
    const auto e = withValue(1);
    e->setValueFromString("12");
    EXPECT_EQ(std::any_cast<int>(e->value()), 12);
    EXPECT_EQ(e->getStringFromValue(), "12");
}

TEST(ElementValueText, ThatIsNoSuchValueIsRefusedAndChangesNothing) {
    const auto e = withValue(1);
    WriteLog log;
    for (const char* text : {"0.5", "", "x", "1 ", "2147483648"})
        EXPECT_THROW(e->setValueFromString(text), std::invalid_argument) << text;
    EXPECT_EQ(e->asInt(""), 1);
    EXPECT_TRUE(log.lines.empty());
}

TEST(ElementValueText, IsTakenAsTextByAnElementWithoutValue) {
    const auto e = Element::Create("property");
    e->setValueFromString("12");
    EXPECT_EQ(std::any_cast<std::string>(e->value()), "12");
}

TEST(ElementObserver, IsToldOfEveryValueAfterItStands) {
    struct Reader : sdf::ValueObserver {
        void valueWritten(Element& element, const std::any& value) override {
            seen = element.getStringFromValue() + "/" + sdf::valuetext::render(value);
        }
        std::string seen;
    } reader;
    const auto e = withValue(1);
    Element::Subscribe(reader);
    e->setValue(2);
    Element::Unsubscribe(reader);
    EXPECT_EQ(reader.seen, "2/2");
}

TEST(ElementObserver, IsToldOfTheNodeThatHoldsTheValue) {
    const auto e = Element::Create("signal");
    e->touch("value");
    WriteLog log;
    e->setValue(1);
    e->setValueFromString("2");
    e->touch("unit")->setValue(std::string("mm"));
    e->addAttribute("colour", "string", "red");
    EXPECT_EQ(log.lines, (Lines{"value=1", "value=2", "unit=mm", "colour=red"}));
}

TEST(ElementObserver, IsNotToldOfValuesThatAreRestored) {
    WriteLog log;
    const auto e = Element::Create("unit");
    e->restoreValue(std::string("mm"));
    EXPECT_EQ(e->asString(""), "mm");
    EXPECT_TRUE(log.lines.empty());
}

TEST(ElementObserver, IsToldNothingOnceUnsubscribed) {
    const auto e = Element::Create("unit");
    WriteLog stays;
    {
        WriteLog leaves;
        e->setValue(1);
        EXPECT_EQ(leaves.lines.size(), 1u);
    }
    e->setValue(2);
    EXPECT_EQ(stays.lines, (Lines{"unit=1", "unit=2"}));
}

TEST(ElementAttribute, IsAKeyWithAType) {
    const auto e = Element::Create("property");
    e->addAttribute("limit", "double", "2.5");
    const auto key = e->get("limit");
    ASSERT_NE(key, nullptr);
    EXPECT_EQ(key->kind(), Element::Kind::Attribute);
    EXPECT_EQ(std::any_cast<double>(key->value()), 2.5);
    EXPECT_EQ(e->touch("limit"), key);
    EXPECT_TRUE(e->children("limit").empty()) << "an attribute is no child element";
}

TEST(ElementAttribute, AddedTwiceIsReplaced) {
    const auto e = Element::Create("property");
    e->addAttribute("limit", "double", "2.5");
    e->addAttribute("limit", "int", "3");
    EXPECT_EQ(std::any_cast<int>(e->get("limit")->value()), 3);
    EXPECT_EQ(tagsOf(*e), Lines{"limit"});
}

TEST(ElementAttribute, OfTextThatIsNoValueIsRefused) {
    const auto e = Element::Create("property");
    EXPECT_THROW(e->addAttribute("limit", "int", "wide"), std::invalid_argument);
    EXPECT_THROW(e->addAttribute("limit", "length", "1"), std::invalid_argument);
    EXPECT_THROW(e->addAttribute("no name", "int", "1"), std::invalid_argument);
    EXPECT_EQ(e->firstChild(), nullptr);
}

TEST(ElementAttribute, AppendedBesideAKeyOfItsNameBecomesAChild) {
    const auto a = Element::Create("a");
    const auto b = Element::Create("b");
    a->addAttribute("limit", "int", "1");
    b->addAttribute("limit", "int", "2");
    const auto moved = b->get("limit");
    a->append(moved);
    EXPECT_EQ(moved->kind(), Element::Kind::Element);
    EXPECT_EQ(a->asInt("limit"), 1);
    EXPECT_EQ(b->get("limit"), nullptr);
}

TEST(ElementAttribute, NamedValueHoldsTheValue) {
    const auto e = withValue(std::string("old"));
    e->addAttribute("value", "string", "new");
    EXPECT_EQ(e->ownValue(), nullptr);
    EXPECT_EQ(e->asString(""), "new");
}

TEST(ElementMirror, CountsEveryCopy) {
    const auto a = Element::Create("a");
    const auto b = Element::Create("b");
    {
        const sdf::ElementMirror first(a);
        sdf::ElementMirror second(first);
        EXPECT_TRUE(a->isMirrored());
        second = sdf::ElementMirror(b);
        EXPECT_TRUE(a->isMirrored());
        EXPECT_TRUE(b->isMirrored());
        sdf::ElementMirror& same = second;
        second = same;
        EXPECT_TRUE(b->isMirrored());
    }
    EXPECT_FALSE(a->isMirrored());
    EXPECT_FALSE(b->isMirrored());
}

TEST(ElementMirror, NeedsAnElement) {
    expectThrow<std::invalid_argument>("a document object needs an element",
                                       [] { sdf::ElementMirror mirror(nullptr); });
}

}  // namespace
