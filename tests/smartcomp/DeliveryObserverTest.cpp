#include "smartcomp/DeliveryObserver.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "smartcomp/Lifecycle.h"
#include "smartcomp/Lookup.h"
#include "tests/smartcomp/SignalCell.h"

// Whoever traces, counts or brakes deliveries sees each of them, and may refuse it.
//
//   logic ( A.out -> B.in, A.out -> C.in )

namespace trel::test {
namespace {

using smartcomp::DeliveryObserver;

class Watching : public DeliveryObserver {
public:
    Watching() { DeliveryObserver::replace(this); }
    ~Watching() override { DeliveryObserver::replace(nullptr); }

    bool before(const Delivery& delivery) override {
        expectTableUnlocked();
        eventLog().add("before " + line(delivery));
        return !onBefore || onBefore(delivery);
    }
    void after(const Delivery& delivery) override {
        expectTableUnlocked();
        eventLog().add("after " + line(delivery));
    }

    std::function<bool(const Delivery&)> onBefore;

private:
    static std::string line(const Delivery& delivery) {
        const auto end = [](unsigned component, unsigned member) {
            return std::to_string(component) + "." + std::to_string(member);
        };
        return end(delivery.sourceComponent, delivery.source) + " -> " +
               end(delivery.destinationComponent, delivery.destination) + " = " +
               (delivery.text ? "'" + *delivery.text + "'" : trel::test::text(delivery.value));
    }
};

class DeliveryObserverTest : public SignalCell {
protected:
    void SetUp() override {
        SignalCell::SetUp();
        for (const unsigned id : {10u, 11u, 12u}) make(id, std::string(1, "ABC"[id - 10]));
        connect(logic(), {10, 2}, {11, 1});
        connect(logic(), {10, 2}, {12, 1});
    }
    static Plain& component(unsigned id) {
        return dynamic_cast<Plain&>(*smartcomp::findObject(id));
    }
    static Lines observed() {
        Lines lines = log().lines();
        std::erase_if(lines, [](const auto& line) { return line.find("->") == line.npos; });
        return lines;
    }
};

TEST_F(DeliveryObserverTest, EveryDeliveryIsSeenBeforeAndAfterInOrder) {
    Watching watching;
    freshLog();
    component(10).handleSignalValue(2, 1, 0);
    EXPECT_EQ(observed(), (Lines{"before 10.2 -> 11.1 = int 1", "after 10.2 -> 11.1 = int 1",
                                 "before 10.2 -> 12.1 = int 1", "after 10.2 -> 12.1 = int 1"}));
    EXPECT_EQ(log().startingWith("B.input"), Lines{"B.input 1 = 1 at 0"});
}

TEST_F(DeliveryObserverTest, APulseIsTwoDeliveriesToEach) {
    signalOf(component(10), 2).setAutoReset(true);
    Watching watching;
    freshLog();
    component(10).handleSignalValue(2, 7, 0);
    EXPECT_EQ(log().startingWith("before"),
              (Lines{"before 10.2 -> 11.1 = int 7", "before 10.2 -> 11.1 = int 0",
                     "before 10.2 -> 12.1 = int 7", "before 10.2 -> 12.1 = int 0"}));
}

TEST_F(DeliveryObserverTest, WhatIsRefusedDoesNotArriveAndTheNextDoes) {
    Watching watching;
    watching.onBefore = [](const auto& delivery) { return delivery.destinationComponent != 11; };
    freshLog();
    component(10).setStaticSignalValue(2, 2.5);
    EXPECT_EQ(valueOf(component(11), 1), SignalValue(0));
    EXPECT_EQ(valueOf(component(12), 1), SignalValue(2.5));
    EXPECT_EQ(observed(),
              (Lines{"before 10.2 -> 11.1 = double 2.5", "before 10.2 -> 12.1 = double 2.5",
                     "after 10.2 -> 12.1 = double 2.5"}));
    // The sender knows nothing of it.
    EXPECT_EQ(valueOf(component(10), 2), SignalValue(2.5));
}

TEST_F(DeliveryObserverTest, ADeliveryThatThrowsHasNoAfter) {
    component(11).onInput = [](unsigned, int, long long) { throw std::runtime_error("stuck"); };
    Watching watching;
    freshLog();
    expectThrow<std::runtime_error>("stuck", [&] { component(10).handleSignalValue(2, 1, 0); });
    EXPECT_EQ(observed(), Lines{"before 10.2 -> 11.1 = int 1"});
    EXPECT_TRUE(component(10).getProperties().empty());
}

TEST_F(DeliveryObserverTest, AnObserverThatRemovesTheDestinationKeepsItFromIt) {
    Watching watching;
    watching.onBefore = [](const auto& delivery) {
        if (delivery.destinationComponent == 11) smartcomp::RemoveSmartComponent(11);
        return true;
    };
    freshLog();
    component(10).handleSignalValue(2, 1, 0);
    EXPECT_EQ(log().startingWith("after"), Lines{"after 10.2 -> 12.1 = int 1"});
    EXPECT_FALSE(isInTable(11));
}

TEST_F(DeliveryObserverTest, TextsThatAreOfferedAlongBindingsAreSeenToo) {
    for (const unsigned id : {20u, 21u})
        Draft("Framed", id, std::to_string(id))
            .property(1, "Size", "String", std::string("s"))
            .make<Framed>();
    bind(logic(), {20, 1}, {21, 1});
    Watching watching;
    freshLog();
    component(20).setPropertyValue(1, "large");
    EXPECT_EQ(observed(), (Lines{"before 20.1 -> 21.1 = 'large'", "after 20.1 -> 21.1 = 'large'"}));
    watching.onBefore = [](const auto&) { return false; };
    component(20).setPropertyValue(1, "small");
    EXPECT_EQ(component(21).getProperty(1)->value(), "large");
}

TEST_F(DeliveryObserverTest, WhoReplacesAnObserverIsGivenIt) {
    Watching first;
    Watching second;
    EXPECT_EQ(DeliveryObserver::replace(&first), &second);
    EXPECT_EQ(DeliveryObserver::replace(nullptr), &first);
    freshLog();
    component(10).handleSignalValue(2, 1, 0);
    EXPECT_EQ(observed(), Lines{});
}

TEST_F(DeliveryObserverTest, AnObserverThatLeavesInTheMiddleHoldsNothingUp) {
    Watching watching;
    watching.onBefore = [](const auto&) { return DeliveryObserver::replace(nullptr) != nullptr; };
    freshLog();
    component(10).handleSignalValue(2, 1, 0);
    EXPECT_EQ(observed(), Lines{"before 10.2 -> 11.1 = int 1"});
    EXPECT_EQ(log().startingWith("B.input"), Lines{"B.input 1 = 1 at 0"});
    EXPECT_EQ(log().startingWith("C.input"), Lines{"C.input 1 = 1 at 0"});
}

// A throw interrupts the settings on its way, and they keep their marks.
TEST_F(DeliveryObserverTest, WithoutItsMarksAComponentIsSetAgain) {
    component(11).onInput = [](unsigned, int value, long long) {
        if (value == 1) throw std::runtime_error("stuck");
    };
    expectThrow<std::runtime_error>("stuck", [&] { component(10).handleSignalValue(2, 1, 0); });
    component(10).handleSignalValue(2, 0, 1);
    EXPECT_EQ(valueOf(component(10), 2), SignalValue(1)) << "it is passed over";
    component(10).clearMarks();
    component(10).handleSignalValue(2, 0, 1);
    EXPECT_EQ(valueOf(component(10), 2), SignalValue(0));
}

}  // namespace
}  // namespace trel::test
