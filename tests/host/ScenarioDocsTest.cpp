#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <sstream>
#include <string>
#include <vector>

#include "tests/host/Program.h"

// What the description of scenarios shows is what the program does.

namespace trel::test {

namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class ScenarioDocs : public FolderTest {
protected:
    // The blocks of the description that begin with this fence, in order.
    static std::vector<std::string> blocks(const std::string& fence) {
        std::vector<std::string> result;
        std::istringstream lines(readFile(sourceFolder() / "docs/scenario.md"));
        bool isInside = false;
        bool isWanted = false;
        for (std::string line; std::getline(lines, line);) {
            if (line.starts_with("```")) {
                isInside = !isInside;
                isWanted = isInside && line == "```" + fence;
                if (isWanted) result.emplace_back();
            } else if (isWanted) {
                result.back() += line + '\n';
            }
        }
        return result;
    }

    Result play(const std::string& scenario) const {
        return station({"run", (sourceFolder() / "examples/pick_and_place/station.xml").string(),
                        "--scenario", write("scenario.yaml", scenario)});
    }

    // Messages without the folder.
    std::string bare(std::string text) const {
        const std::string prefix = folder().string() + "/";
        for (auto at = text.find(prefix); at != std::string::npos; at = text.find(prefix))
            text.erase(at, prefix.size());
        return text;
    }

    static Result validate(const std::vector<std::string>& files) {
        std::vector<std::string> arguments = {
            (sourceFolder() / "docs/scenario.schema.json").string()};
        arguments.insert(arguments.end(), files.begin(), files.end());
        return stationAt((sourceFolder() / "tests/host/validate_scenarios").string(), arguments);
    }
};

}  // namespace

TEST_F(ScenarioDocs, ItsExamplesRunAndSatisfyTheSchema) {
    const auto examples = blocks("yaml");
    ASSERT_GE(examples.size(), 4u);
    for (const std::string& example : examples) {
        const Result result = play(example);
        EXPECT_EQ(result.code, 0) << example << result.out << result.err;
        const Result valid = validate({path("scenario.yaml")});
        EXPECT_EQ(valid.code, 0) << valid.out << valid.err;
    }
}

TEST_F(ScenarioDocs, ItsMessagesAreReal) {
    const auto messages = blocks("");
    ASSERT_EQ(messages.size(), 2u);
    EXPECT_EQ(bare(play("timeline:\n  - at: 1s\n    set: { Robot.Load:   2.5 }\n").err),
              messages[0]);
    const Result failed = play("timeline:\n  - at: 1s\n    expect:\n             Robot.Load: 120\n"
                               "  - {at: 2s, within: 500ms,\n     expect: {Robot.Count: 9},\n"
                               "     never: {Feeding.OnBelt: 3}}\n  - {at: 3s}\n");
    EXPECT_EQ(failed.code, 1);
    std::istringstream lines(messages[1]);
    for (std::string line; std::getline(lines, line);)
        EXPECT_THAT(bare(failed.out), HasSubstr(line + '\n'));
}

TEST_F(ScenarioDocs, AllScenariosOfTheProjectSatisfyTheSchema) {
    const Result result =
        validate({(sourceFolder() / "examples/pick_and_place/scenario.yaml").string(),
                  (sourceFolder() / "fuzz/small_scenario.yaml").string()});
    EXPECT_EQ(result.code, 0) << result.out << result.err;
}

TEST_F(ScenarioDocs, WhatTheSchemaRefusesTheProgramRefusesToo) {
    for (const char* const fault :
         {"until: 5\n", "step: 0s\n", "seed: -1\n", "timeline: 3\n", "timelime: []\n",
          "timeline:\n  - say: x\n", "timeline:\n  - {at: 1s, within: 1s}\n",
          "timeline:\n  - {at: 1s, puls: []}\n", "timeline:\n  - {at: 1s, release: 3}\n",
          "timeline:\n  - {at: 1s, force: {Robot.Start: 0.5}}\n",
          "timeline:\n  - {at: 1s, repeat: {every: 0s, times: 3}}\n",
          "timeline:\n  - {at: 1s, repeat: {every: 1s}}\n",
          "timeline:\n  - {at: 1s, repeat: {every: 1s, times: 0}}\n", "include: [{at: 1s}]\n"}) {
        EXPECT_EQ(play(fault).code, 2) << fault;
        const Result result = validate({path("scenario.yaml")});
        EXPECT_EQ(result.code, 1) << fault;
        EXPECT_THAT(result.out, HasSubstr("scenario.yaml: $")) << fault << result.err;
    }
}

// Each key of the schema is described.
TEST_F(ScenarioDocs, EveryKeyIsDescribed) {
    const std::string text = readFile(sourceFolder() / "docs/scenario.md");
    for (const char* const key :
         {"until", "step", "seed", "include", "timeline", "at", "repeat", "say", "release", "force",
          "set", "pulse", "expect", "never", "within"})
        EXPECT_THAT(text, HasSubstr("| `" + std::string(key) + "` | ")) << key;
}

}  // namespace trel::test
