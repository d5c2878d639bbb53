#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>

#include "tests/network/Station.h"

// Stations that are edited in the middle of their deliveries, by what components
// and listeners do when they are called. A longer run than that of every day:
//
//   TREL_EDIT_SCRIPTS=10000 build/dev/bin/network_tests --gtest_filter='EditScripts.*'

namespace network {
namespace {

constexpr unsigned stepsOfAScript = 200;

unsigned scripts() {
    const char* const wanted = std::getenv("TREL_EDIT_SCRIPTS");
    return wanted ? static_cast<unsigned>(std::strtoul(wanted, nullptr, 10)) : 500;
}

// The model and the script go on from station to station; so do their counts.
class EditScripts : public ::testing::Test {
protected:
    // The steps of one script, until something differs.
    void play(unsigned seed) {
        Random random(seed);
        script_.calm = seed % 3 == 0 ? 10 : 1;
        TwinStation station(random, model_, &script_);
        for (unsigned step = 0; step != stepsOfAScript; ++step) {
            const std::string difference = station.act();
            ASSERT_EQ(difference, "") << "script " << seed << ", step " << step;
        }
    }

    std::size_t edits(EditKind kind, Place place, WalkKind walk) const {
        return script_.reached[static_cast<std::size_t>(kind)][static_cast<std::size_t>(place)]
                              [static_cast<std::size_t>(walk)];
    }

    Model model_;
    Random edits_{1};
    Script script_{edits_};
};

// A reaction answers a dynamic input and an override a text; listeners hear of
// everything.
bool canHappen(Place place, WalkKind walk) {
    switch (place) {
        case Place::Reaction:
            return walk == WalkKind::None || walk == WalkKind::DynamicOut ||
                   walk == WalkKind::DynamicIn;
        case Place::Override:
            return walk == WalkKind::None || walk == WalkKind::BindingOut ||
                   walk == WalkKind::BindingIn;
        case Place::Question: return walk == WalkKind::BindingOut;
        default: return true;
    }
}

constexpr std::array<const char*, static_cast<std::size_t>(EditRule::Count)> namesOfEditRules = {
    "what was deleted and not yet reached gets nothing",
    "what begins elsewhere by now gets nothing",
    "what begins here by now is served",
    "a destination that is gone is passed over",
    "the 0 of a pulse does not reach a destination that is gone",
    "the 0 of a pulse is not sent from a source that is gone",
    "a walk whose source is gone ends",
    "a walk whose group is gone ends",
    "nothing is sent from a source that is gone",
    "nothing is sent into a group that is gone",
    "nothing is sent inwards from a property that is gone",
    "an object refused by what is gone is not reported",
    "an object accepted by what is gone is not set",
};

TEST_F(EditScripts, DoWhatTheModelDoes) {
    std::size_t all = 0;
    std::size_t least = SIZE_MAX;
    for (unsigned seed = 1; seed <= scripts(); ++seed) {
        play(seed);
        if (HasFatalFailure()) return;
    }
    for (unsigned kind = 0; kind != static_cast<unsigned>(EditKind::Count); ++kind)
        for (unsigned place = 0; place != static_cast<unsigned>(Place::Count); ++place)
            for (unsigned walk = 0; walk != static_cast<unsigned>(WalkKind::Count); ++walk) {
                const auto k = static_cast<EditKind>(kind);
                const auto p = static_cast<Place>(place);
                const auto w = static_cast<WalkKind>(walk);
                all += edits(k, p, w);
                if (!canHappen(p, w)) continue;
                least = std::min(least, edits(k, p, w));
                EXPECT_GT(edits(k, p, w), 0u) << "never reached: " << nameOf(k) << ", in a "
                                              << nameOf(p) << ", on " << nameOf(w);
            }
    for (std::size_t rule = 0; rule != namesOfEditRules.size(); ++rule) {
        EXPECT_GT(model_.met[rule], 0u) << "never met: " << namesOfEditRules[rule];
        std::cout << "  " << model_.met[rule] << " times " << namesOfEditRules[rule] << "\n";
    }
    RecordProperty("edits", std::to_string(all));
    std::cout << scripts() << " scripts, " << all << " edits in the middle of a delivery, at least "
              << least << " of a kind at a place on a walk\n";
}

TEST(TakingApart, LeavesNothingInWhateverOrder) {
    Model model;
    for (unsigned seed = 1; seed <= 300; ++seed) {
        Random random(seed);
        TwinStation station(random, model);
        for (unsigned step = 0; step != 20; ++step) ASSERT_EQ(station.act(), "");
        ASSERT_EQ(station.takeApart(), "") << "station " << seed;
    }
}

}  // namespace
}  // namespace network
