#include <gmock/gmock.h>

#include <string>

#include "tests/host/Program.h"
#include "tests/host/StationFile.h"
#include "tests/host/Waves.h"

// What a scenario does to a station, and what it expects.
//
//   A (buffer) -> B (inverter)      P (buffer whose output is a pulse)

namespace trel::test {

namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::Pair;

class Play : public FolderTest {
protected:
    void SetUp() override {
        FolderTest::SetUp();
        StationFile station;
        station.gate(10, "A", "Buffer");
        station.gate(11, "B", "NotGate");
        station.add(12, "P", "Buffer", {{"In", "DigitalInput"}, {"Out", "DigitalOutput", true}});
        station.add(13, "G", "DigitalToGroup", {{"Bit0", "DigitalInput"}, {"Out", "GroupOutput"}});
        station.connect({10, 2}, {11, 1});
        file_ = write("s.xml", station.text());
    }

    Result play(const std::string& scenario, std::vector<std::string> options = {}) const {
        options.insert(options.begin(),
                       {"run", file_, "--scenario", write("s.yaml", scenario), "--step", "100ms"});
        return station(options);
    }

    // A run of a timeline, whose expectations hold.
    std::string good(const std::string& timeline) const {
        const Result result = play("timeline:\n" + timeline);
        EXPECT_EQ(result.code, 0) << result.out << result.err;
        return result.out;
    }

    // The line about the expectation that fails, from its line on.
    std::string bad(const std::string& timeline) const {
        const Result result = play("timeline:\n" + timeline);
        EXPECT_EQ(result.code, 1) << result.out << result.err;
        const std::string prefix = path("s.yaml") + ":";
        const auto at = result.out.rfind(prefix);
        return at == std::string::npos ? result.out : result.out.substr(at + prefix.size());
    }

private:
    std::string file_;
};

}  // namespace

TEST_F(Play, APulseIsTheValueAndThenZero) {
    EXPECT_THAT(good("  - {at: 1s, pulse: [A.In]}\n"),
                HasSubstr("        1s  A.In = 1\n        1s  A.Out = 1\n        1s  B.In = 1\n"
                          "        1s  B.Out = 0\n        1s  A.In = 0\n"));
    EXPECT_THAT(good("  - {at: 1s, pulse: {G.Bit0: 1}}\n"), HasSubstr("G.Out = 1\n"));
}

TEST_F(Play, APulseOnASignalThatResetsItselfIsOne) {
    const std::string out = good("  - {at: 1s, pulse: [P.Out]}\n");
    EXPECT_THAT(out, HasSubstr("        1s  P.Out = 1\n        1s  P.Out = 0\n\nran"));
}

TEST_F(Play, AForcedSignalIsSetAgainWhenSomethingElseIsWritten) {
    const std::string out = good("  - {at: 1s, force: {B.In: 1}}\n"
                                 "  - {at: 2s, set: {A.In: 1}}\n"
                                 "  - {at: 3s, set: {A.In: 0}, expect: {A.Out: 0, B.In: 1, "
                                 "B.Out: 0}}\n"
                                 "  - {at: 4s, release: [B.In]}\n"
                                 "  - {at: 5s, expect: {B.In: 1}}\n"
                                 "  - {at: 6s, pulse: [A.In], expect: {B.In: 0, B.Out: 1}}\n");
    EXPECT_THAT(out, HasSubstr("        1s  B.In is forced\n        1s  B.In = 1 (forced)\n"));
    EXPECT_THAT(out, HasSubstr("        3s  B.In = 0 (forced)\n        3s  B.Out = 1\n"
                               "        3s  B.In = 1 (forced)\n        3s  B.Out = 0\n"));
    EXPECT_THAT(out, HasSubstr("        4s  B.In is released\n"));
}

TEST_F(Play, AForcedOutputIsDeliveredAgain) {
    good("  - {at: 1s, force: {A.Out: 1}, expect: {B.In: 1}}\n"
         "  - {at: 2s, pulse: [A.In], expect: {A.Out: 1, B.In: 1}}\n");
}

TEST_F(Play, ForcedSignalsHaveAWireOfTheirOwnInTheDump) {
    play("timeline:\n  - {at: 1s, force: {B.In: 1}}\n  - {at: 2s, release: [B.In]}\n",
         {"--vcd", path("run.vcd")});
    const Waves waves(readFile(path("run.vcd")));
    EXPECT_THAT(waves.changes.at("Test.B.In_forced"),
                ElementsAre(Pair(0, "0"), Pair(1'000'000'000'000, "1"),
                            Pair(2'000'000'000'000, "0")));
    EXPECT_FALSE(waves.kinds.contains("Test.A.In_forced"));
}

TEST_F(Play, WhatIsExpectedWithinASpanMayHoldForAMoment) {
    EXPECT_THAT(good("  - {at: 1s, within: 1s, expect: {B.Out: 0}}\n"
                     "  - {at: 1.5s, pulse: [A.In]}\n"),
                HasSubstr("      1.5s  -- ok: B.Out = 0 within 1s\n"));
    EXPECT_EQ(bad("  - {at: 1s, within: 300ms, expect: {B.Out: 0}}\n"
                  "  - {at: 1.5s, pulse: [A.In]}\n"),
              "2:38: from 1s on B.Out was expected to be 0 within 0.3s, and was 1 to the end\n");
}

TEST_F(Play, ASpanBeginsBeforeWhatIsSetAtItsTime) {
    good("  - {at: 1s, pulse: [A.In], within: 0s, expect: {B.Out: 0}}\n");
    EXPECT_EQ(bad("  - {at: 1s, pulse: [A.In], expect: {B.Out: 0}}\n"),
              "2:38: at 1s B.Out was expected to be 0, and was 1\n");
}

TEST_F(Play, WhatIsNeverToBeMustNotBeForAMomentEither) {
    good("  - {at: 1s, never: {B.Out: 0}}\n  - {at: 2s, say: quiet}\n");
    EXPECT_EQ(bad("  - {at: 1s, never: {B.Out: 0}}\n  - {at: 2s, pulse: [A.In]}\n"),
              "2:22: from 1s on B.Out was expected never to be 0, and was so at 2s\n");
    good("  - {at: 1s, within: 500ms, never: {B.Out: 0}}\n  - {at: 2s, pulse: [A.In]}\n");
}

TEST_F(Play, ARepeatedMomentComesAsOftenAsItSays) {
    EXPECT_THAT(good("  - {at: 1s, repeat: {every: 200ms, times: 3}, say: tick}\n"),
                AllOf(HasSubstr("        1s  -- tick\n"), HasSubstr("      1.2s  -- tick\n"),
                      HasSubstr("      1.4s  -- tick\n"), Not(HasSubstr("1.6s"))));
    EXPECT_THAT(good("  - {at: 1s, repeat: {every: 200ms, until: 1.4s}, say: tick}\n"),
                HasSubstr("      1.4s  -- tick\n"));
}

TEST_F(Play, AnIncludedFileAddsItsMomentsWhereItIsTold) {
    write("arm.yaml", "until: 1min\nseed: 3\ntimeline:\n  - {at: 200ms, say: the arm, set: {A.In: "
                      "1}}\n");
    const Result result = play("include: {file: arm.yaml, at: 2s}\nuntil: 3s\ntimeline:\n"
                               "  - {at: 2.2s, expect: {A.Out: 1}, say: here}\n");
    EXPECT_EQ(result.code, 0) << result.err << result.out;
    EXPECT_THAT(result.out, AllOf(HasSubstr("      2.2s  -- the arm\n"), HasSubstr("ran 3s")));
}

TEST_F(Play, AFaultInAnIncludedFileHasThatFile) {
    write("arm.yaml", "timeline:\n  - {at: soon}\n");
    EXPECT_EQ(play("include: [arm.yaml]\n").err,
              path("arm.yaml") +
                  ":2:10: error: \"soon\" is no time; write a number and us, ms, s or min, "
                  "as in 1.5s\n");
    write("arm.yaml", "include: s.yaml\n");
    EXPECT_EQ(play("include: [arm.yaml]\n").err,
              path("arm.yaml") + ":1:10: error: s.yaml includes itself here; take it out\n");
    EXPECT_EQ(play("include: leg.yaml\n").err,
              path("s.yaml") +
                  ":1:10: error: there is no file leg.yaml; names of files begin in the "
                  "folder of this one\n");
}

TEST_F(Play, RandomValuesAreTheSameForOneSeed) {
    const std::string timeline =
        "timeline:\n  - {at: 100ms, repeat: {every: 100ms, times: 60}, set: {A.In: random}}\n";
    const std::string first = play("seed: 1\n" + timeline).out;
    EXPECT_EQ(play("seed: 1\n" + timeline).out, first);
    EXPECT_NE(play("seed: 2\n" + timeline).out, first);
    EXPECT_EQ(play("seed: 2\n" + timeline, {"--seed", "1"}).out, first);
    // Drawn with the engine that the standard fixes, so the same on every platform.
    EXPECT_THAT(first, HasSubstr("A.In = 1\n"));
}

TEST_F(Play, AllFaultsOfAScenarioAreToldAtOnce) {
    const Result result = play("step: 0s\ntimeline:\n  - {at: 1s, set: {A.In: 2.5, C.In: 1}}\n"
                               "  - {at: later}\n");
    EXPECT_EQ(result.code, 2);
    EXPECT_EQ(result.err, path("s.yaml") +
                              ":1:7: error: a step of 0 gets nowhere; write a longer one, as "
                              "in 10ms\n" +
                              path("s.yaml") +
                              ":4:10: error: \"later\" is no time; write a number and "
                              "us, ms, s or min, as in 1.5s\n");
    EXPECT_EQ(play("timeline:\n  - {at: 1s, set: {A.In: 2.5, C.In: 1}}\n").err,
              path("s.yaml") +
                  ":2:26: error: A.In cannot be set to 2.5: while the simulation runs, "
                  "signals carry whole numbers of 32 bits; write one\n" +
                  path("s.yaml") +
                  ":2:31: error: there is no C in the station; see the names with "
                  "station show\n");
}

}  // namespace trel::test
