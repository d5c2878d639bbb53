#include <QString>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "components/Space.h"
#include "components/Texts.h"
#include "platform/station/Station.h"
#include "smartcomp/Lifecycle.h"
#include "smartcomp/Manager.h"
#include "smartcomp/TypeLibrary.h"
#include "tests/components/Bench.h"
#include "tests/support/Reach.h"

namespace trel::test {

namespace {

const Lines types = {"AndGate",        "OrGate",         "NotGate",  "NandGate",   "NorGate",
                     "XorGate",        "Buffer",         "Latch",    "Timer",      "Counter",
                     "Comparator",     "GroupToDigital", "Conveyor", "LinearAxis", "LineSensor",
                     "DigitalToGroup", "Gripper",        "Part",     "Group"};

std::string descriptionOf(const std::string& type) {
    smartcomp::Manager& manager = *smartcomp::Manager::inst();
    return (manager.*get(reach::DescFunc{}))(type)().toStdString();
}

class Library : public Bench {};

}  // namespace

TEST_F(Library, EveryTypeSaysWhatItDoes) {
    for (const std::string& type : types) {
        const std::string text = descriptionOf(type);
        EXPECT_GT(text.size(), 40u) << type;
        EXPECT_NE(text.find(": "), std::string::npos) << type;
    }
}

TEST_F(Library, ADescriptionNamesTheSignalsAndPropertiesThatItSpeaksOf) {
    EXPECT_NE(descriptionOf("Gripper").find("Released"), std::string::npos);
    EXPECT_NE(descriptionOf("Timer").find("OffDelay"), std::string::npos);
}

TEST_F(Library, GivesTheNumberOfItsLayout) {
    EXPECT_EQ(trelComponentsAbi(), smartcomp::typeLibraryAbi);
}

TEST_F(Library, EveryTypeIsBuiltWithCompleteRecords) {
    for (const std::string& type : types) {
        SmartComponent& made = make(type, type);
        for (const auto& [id, property] : made.getProperties()) {
            EXPECT_LE(id, 10u) << "kept for the properties that a type fixes";
            EXPECT_TRUE(property->isVisible());
            EXPECT_FALSE(property->description().empty()) << type << "." << property->name();
            EXPECT_TRUE(made.validatePropertyValue(id, property->value()))
                << type << "." << property->name();
        }
        for (const auto& [id, found] : made.getSignals()) {
            const auto& signal = dynamic_cast<SCSignal&>(*found);
            EXPECT_TRUE(signal.isVisible());
            EXPECT_FALSE(signal.description().empty()) << type << "." << signal.getName();
            for (const char* const key : {"name", "type", "value", "auto_reset", "uivisible"})
                EXPECT_TRUE(signal.element()->get(key)) << key;
        }
    }
}

TEST_F(Library, WhatIsBuiltIsReadBackTheSame) {
    std::vector<std::shared_ptr<sdf::Element>> elements;
    for (const std::string& type : types) elements.push_back(make(type, type).element());
    const std::string text = Station::inst().text();
    for (const auto& element : elements) {
        const unsigned id = element->getId(false);
        smartcomp::RemoveSmartComponent(id);
        smartcomp::Recover(element, {}, std::nullopt);
    }
    EXPECT_EQ(Station::inst().text(), text);
}

TEST_F(Library, AGroupIsAUserAggregationThatDoesNothingItself) {
    auto& group = dynamic_cast<Aggregation&>(make("Group", "G"));
    EXPECT_TRUE(group.isUser());
    EXPECT_TRUE(group.getSignals().empty());
    SmartComponent& inner = make("Buffer", "Inner", group.id());
    addSignal(group, 1, "In", "DigitalInput");
    addSignal(group, 2, "Level", "GroupOutput");
    connect(group, group, "In", inner, "In");
    connect(group, inner, "Out", group, "Level");
    start();
    set(group, "In", 1);
    EXPECT_EQ(get(group, "Level"), 1);
    freshLog();
    group.execute(second);
    EXPECT_EQ(freshLog(), Lines{});
}

TEST(Texts, ReadNothingButTheWholeValue) {
    using namespace trel::components;
    EXPECT_EQ(readWhole("-12"), -12);
    EXPECT_EQ(readNumber("2.5e1"), 25);
    EXPECT_EQ(readId("4294967295"), 4294967295u);
    EXPECT_EQ(readPoint("1 2\t3"), (Point{1, 2, 3}));
    for (const char* const text : {"", " ", "1x", "one", "1 2", "1 2 3 4", "1,2"}) {
        EXPECT_FALSE(readPoint(text)) << text;
        EXPECT_FALSE(readWhole(text)) << text;
        EXPECT_FALSE(readNumber(text)) << text;
    }
    for (const char* const text : {"-1", "4294967296", "+1"}) EXPECT_FALSE(readId(text)) << text;
    for (const char* const text : {"nan", "inf", "1e999"}) EXPECT_FALSE(readNumber(text)) << text;
}

TEST(Texts, WritePointsSoThatTheyReadBack) {
    using namespace trel::components;
    const Point point{0.1, -2, 1e-9};
    EXPECT_EQ(textOf(point), "0.1 -2 1e-09");
    EXPECT_EQ(readPoint(textOf(point)), point);
}

TEST(Texts, ARefusedTextLeavesTheValue) {
    using namespace trel::components;
    double value = 3;
    EXPECT_FALSE(takeAtLeastZero(value, readNumber("-0.5")));
    EXPECT_FALSE(takeAtLeastZero(value, readNumber("x")));
    EXPECT_EQ(value, 3);
    EXPECT_TRUE(takeAtLeastZero(value, readNumber("0")));
    EXPECT_EQ(value, 0);
}

TEST(Space, APointStandsBesideALine) {
    using namespace trel::components;
    const Point from{0, 0, 0}, to{10, 0, 0};
    EXPECT_EQ(beside({4, 3, 0}, from, to).along, 4);
    EXPECT_EQ(beside({4, 3, 0}, from, to).away, 3);
    EXPECT_EQ(beside({13, 4, 0}, from, to).along, 10);
    EXPECT_EQ(beside({13, 4, 0}, from, to).away, 5);
    EXPECT_EQ(beside({3, 4, 0}, from, from).away, 5);
}

TEST(Space, AWayEndsAtItsGoal) {
    using namespace trel::components;
    EXPECT_EQ(towards({0, 0, 0}, {0, 10, 0}, 4), (Point{0, 4, 0}));
    EXPECT_EQ(towards({0, 0, 0}, {0, 10, 0}, 40), (Point{0, 10, 0}));
    EXPECT_EQ(towards({1, 1, 1}, {1, 1, 1}, 0), (Point{1, 1, 1}));
}

}  // namespace trel::test
