#include <fmt/format.h>
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <string>

#include "tests/host/Program.h"
#include "tests/host/StationFile.h"

// What brakes an event storm, and says where it comes from.

namespace trel::test {

namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

//            +-> X --+
//   ... A ---+       +-> Z (xor) -> the next A ...
//            +-> Y --+
//
// A value comes to Z twice, and Z sends twice: what one rung gets, the next gets twice.
StationFile ladder(unsigned rungs) {
    StationFile file;
    unsigned id = 10;
    for (unsigned rung = 1; rung <= rungs; ++rung) {
        const unsigned a = id++;
        const unsigned x = id++;
        const unsigned y = id++;
        const unsigned z = id++;
        file.gate(a, fmt::format("A{}", rung), "Buffer");
        file.gate(x, fmt::format("X{}", rung), "Buffer");
        file.gate(y, fmt::format("Y{}", rung), "Buffer");
        file.gate(z, fmt::format("Z{}", rung), "XorGate", 2);
        if (rung > 1) file.connect({a - 1, 3}, {a, 1});
        file.connect({a, 2}, {x, 1});
        file.connect({a, 2}, {y, 1});
        file.connect({x, 2}, {z, 1});
        file.connect({y, 2}, {z, 2});
    }
    return file;
}

class Budget : public FolderTest {
protected:
    Result play(const StationFile& file, const std::string& scenario,
                std::vector<std::string> options = {}) const {
        options.insert(options.begin(), {"run", write("s.xml", file.text()), "--scenario",
                                         write("s.yaml", scenario)});
        return station(options);
    }
    static unsigned long long deliveriesOf(const Result& result) {
        const auto last = result.out.rfind("{\"kind\":\"ended\"");
        return nlohmann::json::parse(result.out.substr(last)).at("deliveries");
    }
};

}  // namespace

TEST_F(Budget, StopsALadderAtExactlyTheCountAndNamesTheHottestTenTimesAlike) {
    const StationFile file = ladder(20);
    const std::string scenario = "until: 3s\ntimeline:\n  - {at: 1s, set: {A1.In: 1}}\n";
    const Result first = play(file, scenario, {"--budget", "1000", "--json"});
    EXPECT_EQ(first.code, 5);
    EXPECT_EQ(deliveriesOf(first), 1000u);
    EXPECT_THAT(first.err, StartsWith("the budget of 1000 deliveries in a step is spent at 1s; the "
                                      "run was stopped; what got the most:\n"));
    EXPECT_THAT(first.err, HasSubstr("deliveries; ways that part at A"));
    EXPECT_EQ(std::count(first.err.begin(), first.err.end(), '\n'), 6);
    for (int run = 1; run != 10; ++run) {
        const Result again = play(file, scenario, {"--budget", "1000", "--json"});
        EXPECT_EQ(again.out, first.out);
        EXPECT_EQ(again.err, first.err);
    }
}

TEST_F(Budget, NamesWhereTheWaysPartAndMeet) {
    // 2 + 2 deliveries to the first rung, 2 * (1 + 2 + 2) to the second, ...
    const Result result =
        play(ladder(3), "timeline:\n  - {at: 1s, set: {A1.In: 1}}\n", {"--budget", "33"});
    EXPECT_EQ(result.code, 5);
    EXPECT_THAT(result.err, StartsWith("the budget of 33 deliveries in a step is spent at 1s; the "
                                       "run was stopped; what got the most:\n"));
    EXPECT_THAT(result.err, HasSubstr("  A3.In: 4 deliveries; ways that part at A2.Out meet at "
                                      "Z2.Out\n"));
    EXPECT_EQ(
        play(ladder(3), "timeline:\n  - {at: 1s, set: {A1.In: 1}}\n", {"--budget", "34"}).code, 0);
}

TEST_F(Budget, IsForEachStepAnew) {
    const std::string scenario =
        "timeline:\n  - {at: 1s, repeat: {every: 1s, times: 4}, pulse: [A1.In]}\n";
    EXPECT_EQ(play(ladder(3), scenario, {"--budget", "68"}).code, 0);
}

TEST_F(Budget, ARunThatItStopsLeavesItsFilesWhole) {
    const Result result =
        play(ladder(20), "timeline:\n  - {at: 1s, set: {A1.In: 1}}\n",
             {"--budget", "100", "--vcd", path("run.vcd"), "--save", path("after.xml")});
    EXPECT_EQ(result.code, 5);
    EXPECT_THAT(result.out, HasSubstr("nothing is saved, since the run was stopped\n"));
    EXPECT_THAT(readFile(path("run.vcd")), HasSubstr("#1000000000000\n"));
    EXPECT_EQ(readFile(path("run.vcd")).back(), '\n');
}

//   N1 -> N2 -> N3 -> N1, inverters
TEST_F(Budget, ARingOfInvertersEndsWithOneEventThatNamesItsMembersInOrder) {
    StationFile file;
    for (unsigned n = 1; n <= 3; ++n) file.gate(10 + n, fmt::format("N{}", n), "NotGate");
    for (unsigned n = 1; n <= 3; ++n) file.connect({10 + n, 2}, {10 + n % 3 + 1, 1});
    const Result result = play(file, "timeline: []\n", {"--until", "0s"});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_THAT(result.out,
                HasSubstr("!! event 10008: another value came back to N3 on a ring of connections, "
                          "at the signal Out, and was dropped; the ring is N3.Out -> N1.In, N1.Out "
                          "-> N2.In, N2.Out -> N3.In\n"));
    EXPECT_EQ(result.out.find("event"), result.out.rfind("event"));
}

TEST_F(Budget, AnInputOfAnAggregationWiredToItselfEndsWithTheStack) {
    StationFile file;
    file.add(10, "Loop", "Group", {{"In", "DigitalInput"}});
    file.connect({10, 1}, {10, 1}, 10);
    const Result result = play(file, "timeline:\n  - {at: 1s, set: {Loop.In: 1}}\n");
    EXPECT_EQ(result.code, 5);
    // A sanitizer says something of its own about the depth, ahead of it.
    EXPECT_THAT(result.err, HasSubstr("the stack is used up by "));
    EXPECT_THAT(result.err, HasSubstr(" nested deliveries at 1s; they go round the ring Loop.In -> "
                                      "Loop.In; the run was stopped\n"));
}

}  // namespace trel::test
