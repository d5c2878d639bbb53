#include "platform/broker/SignalBroker.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using trel::broker::Listener;
using trel::broker::SignalBroker;
using Lines = std::vector<std::string>;

class Recorder : public Listener {
public:
    Recorder() { SignalBroker::subscribe(*this); }
    ~Recorder() override { SignalBroker::unsubscribe(*this); }

    void smartComponentUpdated(unsigned c) override { note("updated", c, 0); }
    void scPropertyValueChanged(unsigned p, unsigned c) override { note("property", p, c); }
    void scSignalValueChanged(unsigned s, unsigned c) override { note("signal", s, c); }
    void signalConnectionDeleted(unsigned i, unsigned l) override { note("deleted", i, l); }
    void setVisualPose(unsigned o, const trel::rob::PoseTemplate<double>& p) override {
        note("pose", o, static_cast<unsigned>(p.position.x));
    }
    void reportEvent(const std::string& code, const std::string& a, const std::string& b,
                     const std::string& c) override {
        lines.push_back(code + "|" + a + "|" + b + "|" + c);
    }

    Lines lines;
    std::function<void()> onNotice = [] {};

private:
    void note(const std::string& what, unsigned a, unsigned b) {
        lines.push_back(what + " " + std::to_string(a) + " " + std::to_string(b));
        onNotice();
    }
};

TEST(SignalBroker, CarriesEveryNoticeAsItIs) {
    Recorder recorder;
    SignalBroker::smartComponentUpdated(1);
    SignalBroker::scPropertyValueChanged(2, 3);
    SignalBroker::scSignalValueChanged(4, 5);
    SignalBroker::signalConnectionDeleted(6, 7);
    SignalBroker::setVisualPose(8, {{9, 0, 0}, {}});
    SignalBroker::reportEvent("10007", "a", "b", "c");
    EXPECT_EQ(recorder.lines, (Lines{"updated 1 0", "property 2 3", "signal 4 5", "deleted 6 7",
                                     "pose 8 9", "10007|a|b|c"}));
}

TEST(SignalBroker, NobodyNeedsToListen) {
    SignalBroker::smartComponentUpdated(1);
    Recorder recorder;
    EXPECT_TRUE(recorder.lines.empty());
}

TEST(SignalBroker, AListenerMayIgnoreWhatItDoesNotCareFor) {
    Listener plain;
    SignalBroker::subscribe(plain);
    SignalBroker::smartComponentUpdated(1);
    SignalBroker::scPropertyValueChanged(1, 2);
    SignalBroker::scSignalValueChanged(1, 2);
    SignalBroker::signalConnectionDeleted(1, 2);
    SignalBroker::setVisualPose(1, {});
    SignalBroker::reportEvent("", "", "", "");
    SignalBroker::unsubscribe(plain);
}

TEST(SignalBroker, ListenersComeAndGoDuringACall) {
    Recorder first;
    auto second = std::make_unique<Recorder>();
    std::unique_ptr<Recorder> third;
    first.onNotice = [&] {
        second.reset();
        if (!third) third = std::make_unique<Recorder>();
    };
    SignalBroker::smartComponentUpdated(1);
    SignalBroker::smartComponentUpdated(2);
    EXPECT_EQ(first.lines.size(), 2u);
    EXPECT_EQ(third->lines, Lines{"updated 2 0"});
}

TEST(SignalBroker, WhatAListenerThrowsReachesTheSender) {
    Recorder first;
    Recorder second;
    first.onNotice = [] { throw std::runtime_error("enough"); };
    EXPECT_THROW(SignalBroker::smartComponentUpdated(1), std::runtime_error);
    EXPECT_TRUE(second.lines.empty());
    first.onNotice = [] {};
    SignalBroker::smartComponentUpdated(2);
    EXPECT_EQ(second.lines, Lines{"updated 2 0"});
}

}  // namespace
