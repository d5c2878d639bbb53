#include "platform/sdf/Subscribers.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

struct Subscriber {
    std::string name;
    std::function<void()> onNotice = [] {};
};

class Notices : public testing::Test {
protected:
    std::string told() {
        std::string names;
        all_.tell([&](Subscriber& s) {
            names += s.name;
            const auto action = s.onNotice;  // which may put another in its place
            action();
        });
        return names;
    }

    sdf::Subscribers<Subscriber> all_;
    Subscriber a_{"a"}, b_{"b"}, c_{"c"};
};

TEST_F(Notices, ReachSubscribersInTheOrderOfTheirComing) {
    EXPECT_TRUE(all_.empty());
    for (Subscriber* s : {&b_, &a_, &c_}) all_.add(*s);
    EXPECT_EQ(told(), "bac");
    all_.remove(a_);
    EXPECT_EQ(told(), "bc");
    all_.add(a_);
    EXPECT_EQ(told(), "bca");
}

TEST_F(Notices, ReachOneThatCameTwiceOnce) {
    all_.add(a_);
    all_.add(a_);
    EXPECT_EQ(told(), "a");
    all_.remove(a_);
    EXPECT_EQ(told(), "");
}

TEST_F(Notices, NeverReachOneThatLeftMeanwhile) {
    for (Subscriber* s : {&a_, &b_, &c_}) all_.add(*s);
    a_.onNotice = [&] { all_.remove(b_); };
    EXPECT_EQ(told(), "ac");
    EXPECT_EQ(told(), "ac");
}

TEST_F(Notices, ReachOneThatLeavesItselfALastTime) {
    for (Subscriber* s : {&a_, &b_}) all_.add(*s);
    a_.onNotice = [&] { all_.remove(a_); };
    EXPECT_EQ(told(), "ab");
    EXPECT_EQ(told(), "b");
}

TEST_F(Notices, ReachANewcomerFromTheNextOneOn) {
    all_.add(a_);
    a_.onNotice = [&] { all_.add(b_); };
    EXPECT_EQ(told(), "a");
    EXPECT_EQ(told(), "ab");
}

TEST_F(Notices, ReachANewcomerInsideANoticeWithinTheNotice) {
    all_.add(a_);
    std::string inner;
    a_.onNotice = [&] {
        a_.onNotice = [] {};
        all_.add(b_);
        inner = told();
    };
    EXPECT_EQ(told(), "a");
    EXPECT_EQ(inner, "ab");
}

TEST_F(Notices, MayNestWhileSubscribersLeave) {
    for (Subscriber* s : {&a_, &b_, &c_}) all_.add(*s);
    std::string inner;
    a_.onNotice = [&] {
        a_.onNotice = [] {};
        all_.remove(b_);
        inner = told();
    };
    EXPECT_EQ(told(), "ac");
    EXPECT_EQ(inner, "ac");
}

TEST_F(Notices, AThrowEndsTheWalkAndLeavesTheListInOrder) {
    for (Subscriber* s : {&a_, &b_}) all_.add(*s);
    a_.onNotice = [&] {
        all_.remove(a_);
        throw std::runtime_error("refused");
    };
    EXPECT_THROW(told(), std::runtime_error);
    EXPECT_EQ(told(), "b");
}

}  // namespace
