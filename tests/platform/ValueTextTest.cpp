#include "platform/sdf/ValueText.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <locale>
#include <random>
#include <stdexcept>
#include <string>

#include "platform/rob/PoseTemplate.h"
#include "platform/rob/Vec3Template.h"
#include "tests/support/CommaNumbers.h"
#include "tests/support/Expect.h"

namespace {

using sdf::valuetext::convert;
using sdf::valuetext::parse;
using sdf::valuetext::render;
using trel::test::expectThrow;
using Vec3 = trel::rob::Vec3Template<double>;
using Pose = trel::rob::PoseTemplate<double>;

constexpr double infinity = std::numeric_limits<double>::infinity();

TEST(ValueText, RendersEachTypeInItsForm) {
    EXPECT_EQ(render(std::string(" a b ")), " a b ");
    EXPECT_EQ(render(true), "1");
    EXPECT_EQ(render(false), "0");
    EXPECT_EQ(render(std::numeric_limits<int>::min()), "-2147483648");
    EXPECT_EQ(render(4294967295u), "4294967295");
    EXPECT_EQ(render(18446744073709551615ull), "18446744073709551615");
    EXPECT_EQ(render(Vec3{1, -2.5, 0}), "1 -2.5 0");
    EXPECT_EQ(render(Pose{{1, 2, 3}, {0.5, -0.5, 0.5, 1e-9}}), "1 2 3 0.5 -0.5 0.5 1e-09");
    EXPECT_EQ(render({}), "");
    expectThrow<std::invalid_argument>("the document does not hold values of this program type",
                                       [] { render(1.0f); });
}

TEST(ValueText, RendersADoubleAsTheShortestTextThatReadsBackEqual) {
    EXPECT_EQ(render(0.1), "0.1");
    EXPECT_EQ(render(250.0), "250");
    EXPECT_EQ(render(-0.0), "-0");
    EXPECT_EQ(render(1.0 / 3.0), "0.3333333333333333");
    EXPECT_EQ(render(1e300), "1e+300");
    EXPECT_EQ(render(infinity), "inf");
}

TEST(ValueText, ParsesWhatItRenders) {
    EXPECT_EQ(std::any_cast<std::string>(parse("string", " a b ")), " a b ");
    EXPECT_EQ(std::any_cast<int>(parse("int", "-7")), -7);
    EXPECT_EQ(std::any_cast<unsigned>(parse("uint", "4294967295")), 4294967295u);
    EXPECT_EQ(std::any_cast<unsigned long long>(parse("uint64", "18446744073709551615")),
              18446744073709551615ull);
    EXPECT_EQ(std::any_cast<double>(parse("double", "-2.5e3")), -2500.0);
    EXPECT_EQ(std::any_cast<double>(parse("double", "inf")), infinity);
    EXPECT_EQ(std::any_cast<Vec3>(parse("vec3", "1 2 3")), (Vec3{1, 2, 3}));
    EXPECT_EQ(std::any_cast<Pose>(parse("pose", "1 2 3 1 0 0 0")), (Pose{{1, 2, 3}, {1, 0, 0, 0}}));
}

TEST(ValueText, ABoolIsADigitOrAWord) {
    for (const char* text : {"1", "true"}) EXPECT_TRUE(std::any_cast<bool>(parse("bool", text)));
    for (const char* text : {"0", "false"}) EXPECT_FALSE(std::any_cast<bool>(parse("bool", text)));
    for (const char* text : {"", "2", "TRUE", "True", "yes", " 1", "01"})
        EXPECT_THROW(parse("bool", text), std::invalid_argument) << text;
}

TEST(ValueText, NumbersOfAVectorMayStandFurtherApart) {
    EXPECT_EQ(std::any_cast<Vec3>(parse("vec3", " 1\t2\n  3 ")), (Vec3{1, 2, 3}));
}

TEST(ValueText, RefusesWhatIsNoSuchValue) {
    for (const char* text :
         {"", " 1", "1 ", "+1", "0x1", "1.0", "2147483648", "-2147483649", "one"})
        EXPECT_THROW(parse("int", text), std::invalid_argument) << text;
    for (const char* text : {"-1", "4294967296"})
        EXPECT_THROW(parse("uint", text), std::invalid_argument) << text;
    for (const char* text : {"-1", "18446744073709551616"})
        EXPECT_THROW(parse("uint64", text), std::invalid_argument) << text;
    for (const char* text : {"", "1,5", "1.5mm", ".", "1e", "1e999", "0x10", "+1"})
        EXPECT_THROW(parse("double", text), std::invalid_argument) << text;
    for (const char* text : {"", "1 2", "1 2 3 4", "1 2 x", "1,2,3"})
        EXPECT_THROW(parse("vec3", text), std::invalid_argument) << text;
    for (const char* text : {"1 2 3", "1 2 3 1 0 0", "1 2 3 1 0 0 0 0"})
        EXPECT_THROW(parse("pose", text), std::invalid_argument) << text;
}

TEST(ValueText, SaysWhichTextIsNoValueOfWhichType) {
    expectThrow<std::invalid_argument>("\"wide\" is not a value of type int",
                                       [] { parse("int", "wide"); });
    expectThrow<std::invalid_argument>("\"length\" is no type of the document",
                                       [] { parse("length", "1"); });
}

TEST(ValueText, KnowsTheNamesOfItsTypes) {
    for (const char* type : {"string", "bool", "int", "uint", "uint64", "double", "vec3", "pose"})
        EXPECT_TRUE(sdf::valuetext::isTypeName(type));
    for (const char* type : {"", "Int", "float", "id", "name"})
        EXPECT_FALSE(sdf::valuetext::isTypeName(type));
}

TEST(ValueText, ConvertsNumbersAsNumbersCutTowardsZero) {
    EXPECT_EQ(convert<int>(2.9), 2);
    EXPECT_EQ(convert<int>(-2.9), -2);
    EXPECT_EQ(convert<unsigned>(-0.5), 0u);
    EXPECT_EQ(convert<unsigned long long>(7u), 7u);
    EXPECT_EQ(convert<double>(7), 7.0);
    EXPECT_EQ(convert<int>(true), 1);
    EXPECT_TRUE(convert<bool>(-0.25));
    EXPECT_FALSE(convert<bool>(0u));
    EXPECT_EQ(convert<double>(18446744073709551615ull), 18446744073709551616.0);
}

TEST(ValueText, RefusesANumberBeyondTheRange) {
    EXPECT_EQ(convert<int>(2147483647.9), 2147483647);
    EXPECT_EQ(convert<int>(-2147483648.9), std::numeric_limits<int>::min());
    EXPECT_EQ(convert<unsigned>(4294967295.5), 4294967295u);
    for (const double beyond : {2147483648.0, -2147483649.0, infinity, -infinity, std::nan("")})
        EXPECT_THROW(convert<int>(beyond), std::invalid_argument) << beyond;
    EXPECT_THROW(convert<unsigned>(-1), std::invalid_argument);
    EXPECT_THROW(convert<unsigned>(-1.0), std::invalid_argument);
    EXPECT_THROW(convert<unsigned>(4294967296ull), std::invalid_argument);
    EXPECT_THROW(convert<int>(4294967295u), std::invalid_argument);
    EXPECT_THROW(convert<unsigned long long>(18446744073709551616.0), std::invalid_argument);
}

TEST(ValueText, ParsesTextAndRendersToText) {
    EXPECT_EQ(convert<int>(std::string("12")), 12);
    EXPECT_EQ(convert<double>(std::string("0.5")), 0.5);
    EXPECT_EQ(convert<Vec3>(std::string("1 2 3")), (Vec3{1, 2, 3}));
    EXPECT_EQ(convert<std::string>(0.5), "0.5");
    EXPECT_EQ(convert<std::string>(false), "0");
    EXPECT_EQ(convert<std::string>(Vec3{1, 2, 3}), "1 2 3");
    EXPECT_THROW(convert<int>(std::string("0.5")), std::invalid_argument);
    EXPECT_THROW(convert<bool>(std::string("maybe")), std::invalid_argument);
}

TEST(ValueText, NothingReadsAsNothing) {
    EXPECT_EQ(convert<int>({}), 0);
    EXPECT_EQ(convert<double>(std::string()), 0.0);
    EXPECT_FALSE(convert<bool>(std::string()));
    EXPECT_EQ(convert<Pose>({}), Pose{});
}

TEST(ValueText, VectorsAreNoNumbers) {
    EXPECT_THROW(convert<double>(Vec3{}), std::invalid_argument);
    EXPECT_THROW(convert<Vec3>(1.0), std::invalid_argument);
    EXPECT_THROW(convert<Vec3>(Pose{}), std::invalid_argument);
}

TEST(ValueText, DoesNotDependOnTheLocale) {
    const std::locale old = std::locale::global(trel::test::commaLocale());
    EXPECT_EQ(render(1234567.5), "1234567.5");
    EXPECT_EQ(render(1234567), "1234567");
    EXPECT_EQ(std::any_cast<double>(parse("double", "1234.5")), 1234.5);
    EXPECT_THROW(parse("double", "1234,5"), std::invalid_argument);
    std::locale::global(old);
}

TEST(ValueText, AMillionRandomDoublesReadBackBitEqual) {
    std::mt19937_64 random(42);
    for (int i = 0; i < 1000000; ++i) {
        const auto number = std::bit_cast<double>(random());
        if (std::isnan(number)) continue;
        const auto back = std::any_cast<double>(parse("double", render(number)));
        ASSERT_EQ(std::bit_cast<std::uint64_t>(back), std::bit_cast<std::uint64_t>(number));
    }
}

}  // namespace
