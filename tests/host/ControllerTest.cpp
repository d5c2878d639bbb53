#include <stdexcept>
#include <variant>

#include "host/Members.h"
#include "host/Objects.h"
#include "smartcomp/StationLogic.h"
#include "tests/host/LiveCell.h"

namespace trel::test {

namespace {

using host::Member;

class ControllerTest : public LiveCell {
protected:
    static SignalValue input(unsigned component) {
        return *host::signalValueOf({component, Member::Kind::Signal, 1});
    }
    static SignalValue output(unsigned component) {
        return *host::signalValueOf({component, Member::Kind::Signal, 2});
    }

    // Notes each value that reaches a component's input, in the order of coming.
    class Arrivals : private sdf::ValueObserver {
    public:
        Arrivals() { sdf::Element::Subscribe(*this); }
        ~Arrivals() override { sdf::Element::Unsubscribe(*this); }
        std::string text;

    private:
        void valueWritten(sdf::Element& element, const std::any&) override {
            const auto signal = element.parent();
            const auto owner = signal ? signal->parent() : nullptr;
            if (owner && signal->getId(true) == 1 && owner->getId(true) != 90)
                text += owner->name() + element.getStringFromValue() + " ";
        }
    };
};

}  // namespace

TEST_F(ControllerTest, AnOutputReachesItsConnectionsInTheirOrder) {
    start();
    const Arrivals arrivals;
    robot().setOutput(1, 1, true, 0);
    EXPECT_EQ(arrivals.text, "Cell1 A1 A1 Other1 ");  // the inner A, then the outer one
    EXPECT_EQ(output(inner), SignalValue(1));
    EXPECT_EQ(output(outer), SignalValue(1));
    EXPECT_EQ(robot().signal(1).value(), SignalValue(1));
}

TEST_F(ControllerTest, BeforeTheRunAnOutputIsSetStatically) {
    robot().setOutput(1, 1, false, 0);
    EXPECT_EQ(input(outer), SignalValue(1));
    EXPECT_EQ(output(outer), SignalValue(0));  // stored, not reacted to
    EXPECT_EQ(input(inner), SignalValue(1));
}

TEST_F(ControllerTest, AnOutputThatResetsItselfDeliversAPulse) {
    start();
    const Arrivals arrivals;
    robot().setOutput(2, 1, true, 0);
    EXPECT_EQ(arrivals.text, "A1 A0 ");
    EXPECT_EQ(robot().signal(2).value(), SignalValue(0));
    EXPECT_EQ(robot().signal(2).element->asInt("value"), 0);
}

TEST_F(ControllerTest, AnEqualValueIsNotDelivered) {
    start();
    robot().setOutput(1, 1, true, 0);
    const Arrivals arrivals;
    robot().setOutput(1, 1, true, 1);
    EXPECT_EQ(arrivals.text, "");
}

TEST_F(ControllerTest, WhatItReceivesStandsInItsElement) {
    robot().setSignalValue(3, 2.5, false);
    EXPECT_EQ(robot().signal(3).value(), SignalValue(2.5));
    EXPECT_EQ(robot().element()->children("signal").at(2)->asDouble("value"), 2.5);
}

TEST_F(ControllerTest, AnUnknownSignalThrowsAndNamesTheController) {
    try {
        robot().setSignalValue(7, 1, true);
        FAIL() << "nothing was thrown";
    } catch (const std::out_of_range& error) {
        EXPECT_STREQ(error.what(), "the controller \"Robot\" has no signal with the id 7");
    }
}

TEST_F(ControllerTest, AConnectionThatWasDeletedIsNotServed) {
    start();
    smartcomp::StationLogic::inst()->deleteConnection(4);
    robot().setOutput(1, 1, true, 0);
    EXPECT_EQ(input(outer), SignalValue(0));
    EXPECT_EQ(input(inner), SignalValue(1));
}

TEST_F(ControllerTest, ARunDeliversWholeNumbersOnly) {
    start();
    EXPECT_THROW(robot().setOutput(1, 0.5, true, 0), std::bad_variant_access);
}

TEST_F(ControllerTest, AControllerStandsInTheObjectTableWhileItLives) {
    EXPECT_EQ(host::objectOf(90), &robot());
    const auto element = sdf::Element::Create("controller");
    element->setId(90);
    EXPECT_THROW(host::Controller{element}, std::logic_error);
    EXPECT_EQ(host::objectOf(90), &robot());
    element->setId(95);
    { const host::Controller third(element); }
    EXPECT_EQ(host::objectOf(95), nullptr);
}

TEST_F(ControllerTest, AValueThatIsNoNumberIsRefusedAtOnce) {
    const auto element = sdf::Element::Create("controller");
    element->setId(95);
    element->append("signal")->setId(1)->touch("value")->setValue(std::string("on"));
    EXPECT_THROW(host::Controller{element}, std::invalid_argument);
    EXPECT_EQ(host::objectOf(95), nullptr);
}

}  // namespace trel::test
