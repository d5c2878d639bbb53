#include "host/Clock.h"

#include <gtest/gtest.h>

namespace trel::test {

using host::readTime;
using host::textOfTime;

TEST(Clock, ReadsTimesWithUnits) {
    EXPECT_EQ(readTime("500us"), 500);
    EXPECT_EQ(readTime("20ms"), 20'000);
    EXPECT_EQ(readTime("1.5s"), 1'500'000);
    EXPECT_EQ(readTime("0.000001s"), 1);
    EXPECT_EQ(readTime("2min"), 120'000'000);
    EXPECT_EQ(readTime("1.5min"), 90'000'000);
    EXPECT_EQ(readTime("0"), 0);
    EXPECT_EQ(readTime("1.50000000s"), 1'500'000);
}

TEST(Clock, RefusesWhatIsNoTime) {
    for (const char* const text : {"", "5", "s", ".5s", "1.s", "1,5s", "-1s", "1 s", "1.5.1s",
                                   "1e3s", "5h", "1S", "99999999999999999999s", "3600001s"})
        EXPECT_FALSE(readTime(text)) << text;
}

TEST(Clock, RefusesAPartOfAMicrosecond) {
    EXPECT_FALSE(readTime("0.5us"));
    EXPECT_FALSE(readTime("0.0001ms"));
    EXPECT_FALSE(readTime("0.0000001s"));
}

TEST(Clock, WritesSecondsThatReadBack) {
    EXPECT_EQ(textOfTime(0), "0s");
    EXPECT_EQ(textOfTime(1), "0.000001s");
    EXPECT_EQ(textOfTime(1'250'000), "1.25s");
    EXPECT_EQ(textOfTime(60'000'000), "60s");
    for (const long long time : {0LL, 1LL, 999'999LL, 1'000'000LL, 12'345'678LL})
        EXPECT_EQ(readTime(textOfTime(time)), time);
}

}  // namespace trel::test
