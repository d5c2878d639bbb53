#include "host/Scenario.h"

#include <vector>

#include "host/Script.h"
#include "tests/host/LiveCell.h"

namespace trel::test {

namespace {

class ScenarioTest : public LiveCell {
protected:
    host::Scenario read(const std::string& text) const {
        return host::Scenario::read(write("s.yaml", text));
    }

    // What is said about a scenario, without the folder.
    std::string fault(const std::string& text) const {
        try {
            host::Script script(read(text));
        } catch (const host::Failure& failure) {
            EXPECT_EQ(failure.code(), host::ExitCode::FileInvalid);
            return std::string(failure.what()).substr(folder().string().size() + 1);
        }
        return "good";
    }
    std::string faultOfSet(const std::string& wish) const {
        return fault("timeline:\n  - at: 1s\n    set:\n      " + wish + "\n");
    }
    std::string faultOfExpect(const std::string& wish) const {
        return fault("timeline:\n  - at: 1s\n    expect:\n      " + wish + "\n");
    }
};

}  // namespace

TEST_F(ScenarioTest, IsReadWithTimesWishesAndPlaces) {
    const auto scenario = read("until: 2s\nstep: 5ms\ntimeline:\n"
                               "  - at: 1s\n    say: [one, two]\n    set: {A.In: 1}\n"
                               "  - at: 500ms\n    expect:\n      Cell/A.Out: 0\n");
    EXPECT_EQ(scenario.until, 2'000'000);
    EXPECT_EQ(scenario.step, 5'000);
    ASSERT_EQ(scenario.timeline.size(), 2u);
    EXPECT_EQ(scenario.timeline[0].at, 500'000);  // in the order of time
    EXPECT_EQ(scenario.timeline[0].expect[0].path, "Cell/A.Out");
    EXPECT_EQ(scenario.timeline[0].expect[0].pathPlace.line, 9);
    EXPECT_EQ(scenario.timeline[0].expect[0].valuePlace.column, 19);
    EXPECT_EQ(scenario.timeline[1].say, (std::vector<std::string>{"one", "two"}));
    EXPECT_EQ(scenario.timeline[1].set[0].value, "1");
}

TEST_F(ScenarioTest, AFaultInTheFileHasItsPlaceAndRemedy) {
    EXPECT_EQ(fault("timelime: []\n"),
              "s.yaml:1:1: error: \"timelime\" is no key here; write one of "
              "until, step, seed, include, timeline");
    EXPECT_EQ(fault("until: 5\n"),
              "s.yaml:1:8: error: \"5\" is no time; write a number and us, ms, s or "
              "min, as in 1.5s");
    EXPECT_EQ(fault("step: 0s\n"),
              "s.yaml:1:7: error: a step of 0 gets nowhere; write a longer one, as in 10ms");
    EXPECT_EQ(fault("until: 1s\nuntil: 2s\n"),
              "s.yaml:2:1: error: \"until\" stands here twice; keep one");
    EXPECT_EQ(fault("timeline:\n  - say: x\n"),
              "s.yaml:2:5: error: a moment needs its time; write at, as in \"at: 1.5s\"");
    EXPECT_EQ(
        fault("timeline:\n  - at: 1s\n    puls: {}\n"),
        "s.yaml:3:5: error: \"puls\" is no key here; write one of at, repeat, say, release, force, "
        "set, pulse, expect, within, never");
    EXPECT_EQ(fault("timeline:\n  - at: 1s\n    set: [A.In]\n"),
              "s.yaml:3:10: error: names and values are expected here; write them as in "
              "\"Cell/Gripper.Close: 1\"");
    EXPECT_EQ(fault("timeline:\n  - at: 1s\n    set:\n      A.In: 1\n      A.In: 0\n"),
              "s.yaml:5:7: error: \"A.In\" stands here twice; keep one");
    EXPECT_EQ(fault("timeline: 3\n"),
              "s.yaml:1:11: error: the timeline is a list; begin each moment with \"- at:\"");
    EXPECT_EQ(fault("just text\n"),
              "s.yaml:1:1: error: a scenario is a map; write until, step or timeline");
}

TEST_F(ScenarioTest, AnEmptyFileIsRefusedAtItsBeginning) {
    EXPECT_EQ(fault(""), "s.yaml:1:1: error: a scenario is a map; write until, step or timeline");
    EXPECT_EQ(fault("# nothing\n"),
              "s.yaml:1:1: error: a scenario is a map; write until, step or timeline");
}

TEST_F(ScenarioTest, WhatIsNoYamlHasItsPlace) {
    const std::string text = fault("timeline:\n  - at: [1s\n");
    EXPECT_EQ(text.rfind("s.yaml:3:1: error: ", 0), 0u) << text;
    EXPECT_NE(text.find("correct the YAML here"), std::string::npos) << text;
}

TEST_F(ScenarioTest, AFileThatIsNotThereIsNamed) {
    try {
        host::Scenario::read(path("none.yaml"));
        FAIL() << "nothing was thrown";
    } catch (const host::Failure& failure) {
        EXPECT_EQ(failure.what(),
                  path("none.yaml") +
                      ": error: cannot be read; check the name and that you may read it");
    }
}

TEST_F(ScenarioTest, AValueThatTheRunTimePathCannotCarryIsRefused) {
    EXPECT_EQ(faultOfSet("'\"Belt 1.5\".signal#4': 2.5"),
              "s.yaml:4:30: error: \"Belt 1.5\".signal#4 cannot be set to 2.5: while the "
              "simulation runs, "
              "signals carry whole numbers of 32 bits; write one");
    EXPECT_EQ(faultOfSet("A.In: 2"),
              "s.yaml:4:13: error: A.In is digital and cannot be 2; write 0 or 1");
    EXPECT_EQ(faultOfSet("A.In: true"), "good");
    EXPECT_NE(faultOfSet("'\"Belt 1.5\".signal#4': 99999999999").find("32 bits"),
              std::string::npos);
}

TEST_F(ScenarioTest, APropertyTextThatItsTypeCannotUseIsRefused) {
    EXPECT_EQ(faultOfSet("'\"Belt 1.5\".property#3': fast"),
              "s.yaml:4:32: error: \"Belt 1.5\".property#3 cannot be \"fast\"; write a number "
              "such as -0.5");
    EXPECT_EQ(faultOfSet("'\"Belt 1.5\".property#3': 12.5"), "good");
}

TEST_F(ScenarioTest, AnUnknownOrAmbiguousNameIsRefusedWithItsPlace) {
    EXPECT_EQ(faultOfSet("B.In: 1"),
              "s.yaml:4:7: error: there is no B in the station; see the names with station show");
    EXPECT_NE(faultOfExpect("'\"Belt 1.5\".Speed': 1").find("is ambiguous; write one of"),
              std::string::npos);
}

TEST_F(ScenarioTest, ASignalIsExpectedToBeANumber) {
    EXPECT_EQ(faultOfExpect("A.In: high"),
              "s.yaml:4:13: error: A.In is a signal and is never \"high\"; write a number");
}

TEST_F(ScenarioTest, AnExpectationTakesANumberInAnyFormAndATextAsItIsShown) {
    const auto holds = [&](const std::string& name, const std::string& value) {
        const host::Script script(
            read("timeline:\n  - at: 1s\n    expect:\n      '" + name + "': " + value + "\n"));
        return !script.moments[0].expect[0].found().has_value();
    };
    EXPECT_TRUE(holds("A.In", "0.0"));
    EXPECT_TRUE(holds("A.In", "false"));
    EXPECT_FALSE(holds("A.In", "1"));
    EXPECT_TRUE(holds("\"Belt 1.5\".property#3", "250"));
    EXPECT_TRUE(holds("\"Belt 1.5\".property#3", "2.5e2"));
    EXPECT_TRUE(holds("\"Belt 1.5\".property#3", "250.00"));
    EXPECT_FALSE(holds("\"Belt 1.5\".property#3", "251"));
}

}  // namespace trel::test
