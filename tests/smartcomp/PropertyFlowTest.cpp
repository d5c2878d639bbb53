#include <any>
#include <limits>
#include <locale>
#include <stdexcept>

#include "tests/smartcomp/Cell.h"
#include "tests/support/CommaNumbers.h"

namespace trel::test {

namespace {

// One component in the station logic: what a setting does before it leaves it.
class PropertyFlowTest : public CellTest {
protected:
    void SetUp() override {
        CellTest::SetUp();
        logic();
        lamp_ = &draft("Plain", 10, "Lamp").make<Plain>();
        frame_ = &draft("Framed", 11, "Frame").make<Framed>();
        freshLog();
    }
    Plain& lamp() { return *lamp_; }
    Framed& frame() { return *frame_; }

private:
    static Draft draft(const char* type, unsigned id, const char* name) {
        return Draft(type, id, name)
            .property(1, "Speed", "Double", 5.0)
            .property(2, "Text", "String", std::string("red"));
    }
    Plain* lamp_ = nullptr;
    Framed* frame_ = nullptr;
};

using XYZ = rob::XYZTemplate<double>;

}  // namespace

// ---- Setting

TEST_F(PropertyFlowTest, TheDocumentIsWrittenThenTheBrokerIsTold) {
    lamp().setPropertyValue(1, "7.0");
    EXPECT_EQ(log().lines(), (Lines{"write Lamp/property 1 double 7", "notice property 1 of 10"}));
    EXPECT_EQ(lamp().getProperty(1)->value(), "7");
    EXPECT_EQ(lamp().getProperty(1)->element()->asDouble(""), 7.0);
}

TEST_F(PropertyFlowTest, TheSettingIsEnteredAfterTheWriteAndBeforeTheNotice) {
    bool atWrite = true;
    log().whenWritten = [&](sdf::Element&) { atWrite = !settingProperties(lamp()).empty(); };
    struct Watch : broker::Listener {
        explicit Watch(Plain& watched) : lamp(watched) {}
        void scPropertyValueChanged(unsigned, unsigned) override {
            atNotice = settingProperties(lamp).contains(1);
            value = lamp.getProperty(1)->value();
        }
        Plain& lamp;
        bool atNotice = false;
        std::string value;
    } watch(lamp());
    broker::SignalBroker::subscribe(watch);
    lamp().setPropertyValue(1, "7");
    broker::SignalBroker::unsubscribe(watch);
    EXPECT_FALSE(atWrite);
    EXPECT_TRUE(watch.atNotice);
    EXPECT_EQ(watch.value, "7");
}

TEST_F(PropertyFlowTest, TheBareOperationKeepsItsEntryUntilSomebodyEndsIt) {
    lamp().setPropertyValue(1, "7.0");
    EXPECT_EQ(settingProperties(lamp()), (std::unordered_map<unsigned, std::string>{{1, "7.0"}}));
    lamp().endSetPropertyValue(1);
    EXPECT_TRUE(settingProperties(lamp()).empty());
    lamp().endSetPropertyValue(1);
    lamp().endSetPropertyValue(noSuchId);
}

TEST_F(PropertyFlowTest, AnEntryThatStandsIsKept) {
    lamp().setPropertyValue(1, "7");
    lamp().setPropertyValue(1, "8");
    EXPECT_EQ(settingProperties(lamp()).at(1), "7");
    EXPECT_EQ(lamp().getProperty(1)->value(), "8");
}

TEST_F(PropertyFlowTest, TheBareOperationNeitherComparesNorValidates) {
    lamp().setPropertyValue(1, "5");
    lamp().setPropertyValue(1, "5");
    EXPECT_EQ(log().notices().size(), 2u);
    EXPECT_EQ(log().writes().size(), 2u);
    EXPECT_EQ(log().startingWith("validate"), Lines{});
}

TEST_F(PropertyFlowTest, AnUnknownPropertyThrowsBeforeAnythingIsWritten) {
    expectThrow<std::out_of_range>(noKey, [&] { lamp().setPropertyValue(noSuchId, "7"); });
    EXPECT_EQ(log().lines(), Lines{});
    EXPECT_TRUE(settingProperties(lamp()).empty());
}

TEST_F(PropertyFlowTest, TextThatTheDocumentRefusesChangesNothing) {
    expectThrow<std::invalid_argument>([&] { lamp().setPropertyValue(1, "fast"); });
    EXPECT_EQ(log().lines(), Lines{});
    EXPECT_TRUE(settingProperties(lamp()).empty());
    EXPECT_EQ(lamp().getProperty(1)->value(), "5");
}

TEST_F(PropertyFlowTest, ThePropertysOwnTextMayBeSet) {
    const std::string& own = lamp().getProperty(2)->value();
    lamp().setPropertyValue(2, own);
    EXPECT_EQ(lamp().getProperty(2)->value(), "red");
    EXPECT_EQ(settingProperties(lamp()).at(2), "red");

    // Its rendering differs from the text, so the cached one changes on the way.
    const auto element = propertyElement(3, "Text", "Double", {});
    element->setValue(std::string("5.0"));
    Property* const p = Property::Create(&lamp(), lamp().element()->append(element));
    element->setValue(5.0);
    lamp().setPropertyValue(3, p->value());
    EXPECT_EQ(p->value(), "5");
    EXPECT_EQ(settingProperties(lamp()).at(3), "5.0");
}

TEST_F(PropertyFlowTest, NotifyAloneWritesAndPropagatesNothing) {
    bind(logic(), {10, 2}, {11, 2});
    freshLog();
    lamp().notifyPropertyValueChanged(2);
    EXPECT_EQ(log().lines(), Lines{"notice property 2 of 10"});
}

// ---- The frame

TEST_F(PropertyFlowTest, ThePresentValueIsRefusedSilently) {
    EXPECT_FALSE(lamp().shouldSetProperty(1, "5"));
    EXPECT_TRUE(lamp().shouldSetProperty(1, "5.0")) << "the texts are compared";
    EXPECT_EQ(log().lines(), Lines{});
}

TEST_F(PropertyFlowTest, TwoEmptyTextsAreEqual) {
    lamp().setPropertyValue(2, "");
    freshLog();
    EXPECT_FALSE(lamp().shouldSetProperty(2, ""));
    EXPECT_FALSE(lamp().shouldSetProperty(2, std::string()));
    EXPECT_EQ(log().lines(), Lines{});
}

TEST_F(PropertyFlowTest, TextsAreComparedToTheirLastByte) {
    using namespace std::string_literals;
    lamp().setPropertyValue(2, "a\0b"s);
    lamp().endSetPropertyValue(2);
    EXPECT_FALSE(lamp().shouldSetProperty(2, "a\0b"s));
    EXPECT_TRUE(lamp().shouldSetProperty(2, "a"s));
    EXPECT_TRUE(lamp().shouldSetProperty(2, "a\0c"s));
}

TEST_F(PropertyFlowTest, ThePresentValueIsRefusedSilentlyAlsoWhileASettingIsUnderWay) {
    lamp().setPropertyValue(1, "7");
    freshLog();
    EXPECT_FALSE(lamp().shouldSetProperty(1, "7"));
    EXPECT_EQ(log().lines(), Lines{});
}

TEST_F(PropertyFlowTest, AnotherValueWhileASettingIsUnderWayIsEvent10007) {
    lamp().setPropertyValue(1, "7");
    freshLog();
    EXPECT_FALSE(lamp().shouldSetProperty(1, "7.0"));
    EXPECT_EQ(log().lines(), Lines{"event 10007|Lamp|Speed|7.0"});
    EXPECT_TRUE(lamp().shouldSetProperty(2, "blue")) << "another property is another matter";
}

TEST_F(PropertyFlowTest, AnUnknownPropertyIsNotToBeSet) {
    expectThrow<std::out_of_range>(noKey, [&] { lamp().shouldSetProperty(noSuchId, "7"); });
}

TEST_F(PropertyFlowTest, AFramedSettingReactsWhileItIsUnderWayAndEnds) {
    bool underWay = false;
    frame().onProperty = [&](unsigned id, const std::string& value) {
        underWay = settingProperties(frame()).contains(id);
        frame().say("reacts to " + value);
    };
    frame().setPropertyValue(1, "7");
    EXPECT_TRUE(underWay);
    EXPECT_TRUE(settingProperties(frame()).empty());
    EXPECT_EQ(log().lines(), (Lines{"write Frame/property 1 double 7", "notice property 1 of 11",
                                    "Frame.reacts to 7"}));
    freshLog();
    frame().setPropertyValue(1, "7");
    EXPECT_EQ(log().lines(), Lines{});
}

TEST_F(PropertyFlowTest, AfterAThrowTheEntryStaysAndRefusesOtherValues) {
    frame().onProperty = [](unsigned, const std::string&) { throw std::runtime_error("jammed"); };
    expectThrow<std::runtime_error>("jammed", [&] { frame().setPropertyValue(1, "7"); });
    EXPECT_EQ(settingProperties(frame()).at(1), "7");
    freshLog();
    frame().setPropertyValue(1, "8");
    EXPECT_EQ(log().lines(), Lines{"event 10007|Frame|Speed|8"});
    EXPECT_EQ(frame().getProperty(1)->value(), "7");
}

TEST_F(PropertyFlowTest, WithoutItsMarksAPropertyIsSetAgain) {
    frame().onProperty = [](unsigned, const std::string&) { throw std::runtime_error("stuck"); };
    for (const unsigned id : {1u, 2u})
        expectThrow<std::runtime_error>("stuck", [&] { frame().setPropertyValue(id, "7"); });
    frame().onProperty = {};
    frame().setPropertyValue(2, "green");
    EXPECT_EQ(frame().getProperty(2)->value(), "7");

    frame().clearMarks();
    EXPECT_TRUE(settingProperties(frame()).empty());
    frame().setPropertyValue(2, "green");
    EXPECT_EQ(frame().getProperty(2)->value(), "green");
    EXPECT_EQ(frame().getProperty(2)->element()->asString(""), "green");
}

TEST_F(PropertyFlowTest, WhatTheBrokersListenersThrowLeavesDocumentAndEntry) {
    struct Refusing : broker::Listener {
        void scPropertyValueChanged(unsigned, unsigned) override {
            throw std::runtime_error("no screen");
        }
    } refusing;
    broker::SignalBroker::subscribe(refusing);
    expectThrow<std::runtime_error>("no screen", [&] { lamp().setPropertyValue(1, "7"); });
    broker::SignalBroker::unsubscribe(refusing);
    EXPECT_EQ(lamp().getProperty(1)->value(), "7");
    EXPECT_EQ(settingProperties(lamp()).at(1), "7");
}

// ---- Typed reads

TEST_F(PropertyFlowTest, ADoubleIsReadAsTheDocumentHoldsIt) {
    double out = 0;
    lamp().getPropertyDouble(1, out);
    EXPECT_EQ(out, 5.0);

    lamp().getProperty(1)->element()->setValue(6.5);
    lamp().getPropertyDouble(1, out);
    EXPECT_EQ(out, 6.5) << "not the cached text";
    lamp().getProperty(1)->setValue("6.5");
}

TEST_F(PropertyFlowTest, ADoubleIsReadFromTheKeyValue) {
    const auto element = propertyElement(3, "Kept", "Double", {});
    element->touch("value")->setValue(1.25);
    Property::Create(&lamp(), lamp().element()->append(element));
    double out = 0;
    lamp().getPropertyDouble(3, out);
    EXPECT_EQ(out, 1.25);
    lamp().setPropertyValue(3, "2.5");
    lamp().getPropertyDouble(3, out);
    EXPECT_EQ(out, 2.5);
}

TEST_F(PropertyFlowTest, AnUnknownNumberThrowsAndKeepsWhatWasThere) {
    double out = 1.5;
    XYZ vector{1, 2, 3};
    expectThrow<std::out_of_range>(noKey, [&] { lamp().getPropertyDouble(noSuchId, out); });
    expectThrow<std::out_of_range>(noKey, [&] { lamp().getPropertyXYZ(noSuchId, vector); });
    EXPECT_EQ(out, 1.5);
    EXPECT_EQ(vector, (XYZ{1, 2, 3}));
}

TEST_F(PropertyFlowTest, ThreeNumbersAreReadFromTheText) {
    XYZ out;
    for (const char* text : {"1 -2.5 3e2", "  1\t-2.5\n300 ", "1 -2.5 300 4"}) {
        lamp().setPropertyValue(2, text);
        out = {};
        lamp().getPropertyXYZ(2, out);
        EXPECT_EQ(out, (XYZ{1, -2.5, 300})) << text;
    }
}

TEST_F(PropertyFlowTest, TheFirstNumberThatCannotBeReadLeavesTheRest) {
    const auto read = [&](const std::string& text) {
        lamp().setPropertyValue(2, text);
        XYZ out{7, 8, 9};
        lamp().getPropertyXYZ(2, out);
        return out;
    };
    EXPECT_EQ(read(""), (XYZ{7, 8, 9}));
    EXPECT_EQ(read("1"), (XYZ{1, 8, 9}));
    EXPECT_EQ(read("1 2"), (XYZ{1, 2, 9}));
    EXPECT_EQ(read("1 x 3"), (XYZ{1, 8, 9}));
    EXPECT_EQ(read("x 2 3"), (XYZ{7, 8, 9}));
    EXPECT_EQ(read("1,2,3"), (XYZ{1, 8, 9}));
    EXPECT_EQ(read("1e400 2 3"), (XYZ{7, 8, 9}));
}

TEST_F(PropertyFlowTest, NumbersAreReadTheSameInEveryLocale) {
    const std::locale before = std::locale::global(commaLocale());
    lamp().setPropertyValue(2, "1.5 2.5 3.5");
    XYZ out;
    lamp().getPropertyXYZ(2, out);
    lamp().setPropertyValue(1, "1234.5");
    double number = 0;
    lamp().getPropertyDouble(1, number);
    std::locale::global(before);
    EXPECT_EQ(out, (XYZ{1.5, 2.5, 3.5}));
    EXPECT_EQ(number, 1234.5);
    EXPECT_EQ(lamp().getProperty(1)->value(), "1234.5");
}

}  // namespace trel::test
