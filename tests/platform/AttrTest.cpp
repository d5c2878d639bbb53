#include "platform/sdf/Attr.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <utility>

#include "platform/rob/PoseTemplate.h"
#include "platform/rob/Vec3Template.h"
#include "tests/support/Expect.h"

namespace {

using sdf::Attr;
using trel::test::expectThrow;

TEST(Attr, NamesTheTypesThatTheDocumentHolds) {
    EXPECT_EQ(Attr::Type(typeid(std::string)), "string");
    EXPECT_EQ(Attr::Type(typeid(bool)), "bool");
    EXPECT_EQ(Attr::Type(typeid(int)), "int");
    EXPECT_EQ(Attr::Type(typeid(unsigned)), "uint");
    EXPECT_EQ(Attr::Type(typeid(unsigned long long)), "uint64");
    EXPECT_EQ(Attr::Type(typeid(double)), "double");
    EXPECT_EQ(Attr::Type(typeid(trel::rob::Vec3Template<double>)), "vec3");
    EXPECT_EQ(Attr::Type(typeid(trel::rob::PoseTemplate<double>)), "pose");
}

TEST(Attr, KnowsNoOtherType) {
    expectThrow<std::invalid_argument>(
        std::string("the document does not hold values of the program type ") +
            typeid(float).name(),
        [] { Attr::Type(typeid(float)); });
    EXPECT_THROW(Attr::Type(typeid(const char*)), std::invalid_argument);
    EXPECT_THROW(Attr::Type(typeid(void)), std::invalid_argument);
}

TEST(Attr, HoldsNameTypeAndValue) {
    const Attr attr("index", "uint", 3u, true);
    EXPECT_EQ(attr.name(), "index");
    EXPECT_EQ(attr.type(), "uint");
    EXPECT_EQ(std::any_cast<unsigned>(attr.value()), 3u);
    EXPECT_TRUE(attr.isPersistent());
    EXPECT_FALSE(Attr("x", "int", 1, false).isPersistent());
}

TEST(Attr, RefusesAValueOfAnotherTypeThanSaid) {
    expectThrow<std::invalid_argument>("a value of type int is no uint",
                                       [] { Attr("index", "uint", 3, true); });
    EXPECT_THROW(Attr("index", "uint", {}, true), std::invalid_argument);
    EXPECT_THROW(Attr("index", "float", 1.0f, true), std::invalid_argument);
}

TEST(Attr, TakesANewValueOfAnotherType) {
    Attr attr("index", "uint", 3u, true);
    attr.set(std::string("three"));
    EXPECT_EQ(attr.type(), "string");
    EXPECT_EQ(std::any_cast<std::string>(attr.value()), "three");
}

TEST(Attr, IsMovedAsAWhole) {
    Attr from("index", "uint", 3u, true);
    Attr to("x", "int", 1, false);
    to = std::move(from);
    EXPECT_EQ(to.name(), "index");
    EXPECT_EQ(to.type(), "uint");
    EXPECT_EQ(std::any_cast<unsigned>(to.value()), 3u);
    EXPECT_TRUE(to.isPersistent());
}

TEST(Attr, KeepsTheOldValueWhenTheNewOneIsRefused) {
    Attr attr("index", "uint", 3u, true);
    EXPECT_THROW(attr.set(1.0f), std::invalid_argument);
    EXPECT_THROW(attr.set({}), std::invalid_argument);
    EXPECT_EQ(std::any_cast<unsigned>(attr.value()), 3u);
}

}  // namespace
