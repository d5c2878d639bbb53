#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <string>

#include "tests/network/Station.h"

namespace network {
namespace {

constexpr std::array<const char*, static_cast<std::size_t>(Rule::Count)> namesOfRules = {
    "an auto-reset output sends a static pulse",
    "an auto-reset output sends a dynamic pulse",
    "a static value comes back round a ring",
    "a dynamic value comes back round a ring",
    "event 10008",
    "an equal value is skipped",
    "a static value goes into a group",
    "a dynamic value goes into a group",
    "a controller gets a static value",
    "a controller gets a dynamic value",
    "the station logic ignores an input",
    "the station logic sends nothing",
    "a text goes along a binding",
    "a text goes into a user group",
    "an equal text is skipped",
    "event 10007 for a text that comes back",
    "event 10007 for an object that does not suit",
    "no object is checked as the station",
    "a destination that is not there",
    "a signal or property that is not there",
    "an object that is not there",
    "an object id without a number",
    "an object id out of range",
    "an end that is no component",
    "a dynamic output that holds a double",
    "a text that the document refuses",
};

// Drives random stations, each with its own seed, and stops at the first
// difference.
void driveStations(unsigned first, unsigned count, unsigned settings) {
    Model model;
    for (unsigned seed = first; seed != first + count; ++seed) {
        Random random(seed);
        TwinStation station(random, model);
        for (unsigned i = 0; i != settings; ++i) {
            const std::string difference = station.act();
            ASSERT_EQ(difference, "") << "seed " << seed << ", setting " << i;
        }
    }
    for (std::size_t rule = 0; rule != namesOfRules.size(); ++rule)
        EXPECT_GT(model.reached[rule], 0u) << "never reached: " << namesOfRules[rule];
}

TEST(RandomNetworks, DoWhatTheModelDoesUnderRandomSettings) { driveStations(1, 5'000, 40); }

TEST(RandomNetworks, DoWhatTheModelDoesInLongRuns) { driveStations(1'000'000, 40, 1'000); }

}  // namespace
}  // namespace network
