#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "tests/host/Program.h"

namespace trel::test {

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

// What a run of the example prints and writes.
class TraceForms : public FolderTest {
protected:
    static Result play(std::vector<std::string> options) {
        const auto folder = sourceFolder() / "examples/pick_and_place";
        options.insert(options.begin(), {"run", (folder / "station.xml").string(), "--scenario",
                                         (folder / "scenario.yaml").string()});
        return station(options);
    }
};

}  // namespace

TEST_F(TraceForms, JsonIsAnObjectOnALineForEachChange) {
    const Result result = play({"--json", "--until", "200ms"});
    EXPECT_EQ(result.code, 0) << result.err;
    std::istringstream lines(result.out);
    bool carrying = false;
    bool speed = false;
    for (std::string line; std::getline(lines, line);) {
        const auto object = nlohmann::json::parse(line);
        EXPECT_TRUE(object.contains("kind")) << line;
        carrying |= object == nlohmann::json::parse(R"({"time_us":0,"kind":"signal",
            "name":"Feeding/Belt.Carrying","value":3})");
        speed |= object == nlohmann::json::parse(R"({"time_us":200000,"kind":"property",
            "name":"Feeding/Belt.Speed","value":"250.00 mm/s"})");
    }
    EXPECT_TRUE(carrying);
    EXPECT_TRUE(speed);
    EXPECT_THAT(result.out, HasSubstr("\n{\"kind\":\"ended\",\"time_us\":200000,\"steps\":3,"));
}

TEST_F(TraceForms, CsvIsARowForEachChangeWithQuotesWhereItTakesThem) {
    EXPECT_EQ(play({"--csv", path("run.csv")}).code, 0);
    EXPECT_THAT(readFile(path("run.csv")),
                AllOf(StartsWith("time_us,kind,name,value,forced\n"
                                 "0,signal,Feeding/Belt.Carrying,3,0\n"),
                      HasSubstr("\n2200000,property,Part A.Position,\"600, 400, 60 mm\",0\n")));
}

TEST_F(TraceForms, OnlyWhatIsWatchedIsPrinted) {
    const Result result = play({"--watch", "Robot.*", "--watch", "Tally/*.Up"});
    EXPECT_THAT(result.out,
                AllOf(HasSubstr("  Robot.Count = 1\n"), HasSubstr("  Tally/Heavy.Up = "),
                      Not(HasSubstr("  Feeding/Belt.Run = 1\n")),
                      HasSubstr("-- The robot starts the cell.")));
}

TEST_F(TraceForms, APatternThatSuitsNothingIsRefused) {
    const Result result = play({"--watch", "Robbot.*"});
    EXPECT_EQ(result.code, 3);
    EXPECT_EQ(result.err, "--watch: \"Robbot.*\" suits no signal or property of the station; see "
                          "their names with station show\n");
}

TEST_F(TraceForms, AFileThatCannotBeWrittenIsExitCodeSix) {
    const std::string file = path("no/run.vcd");
    const Result result = play({"--vcd", file});
    EXPECT_EQ(result.code, 6);
    EXPECT_EQ(result.err, file + ": cannot be written (No such file or directory); check the "
                                 "folder and the room on the disk\n");
    EXPECT_EQ(play({"--csv", "/dev/full"}).code, 6);
}

TEST_F(TraceForms, TenRunsWriteTheSame) {
    const auto once = [&] {
        play({"--vcd", path("run.vcd"), "--csv", path("run.csv")});
        return readFile(path("run.vcd")) + readFile(path("run.gtkw")) + readFile(path("run.csv"));
    };
    const std::string first = once();
    for (int run = 1; run != 10; ++run) EXPECT_EQ(once(), first);
}

// With any compiler and standard library.
TEST_F(TraceForms, RandomStimuliWriteTheBytesThatTheyAlwaysWrote) {
    const auto files = sourceFolder() / "tests/files";
    const Result result =
        station({"run", (sourceFolder() / "examples/pick_and_place/station.xml").string(),
                 "--scenario", (files / "random.yaml").string(), "--vcd", path("random.vcd"),
                 "--csv", path("random.csv")});
    EXPECT_EQ(result.code, 0) << result.err;
    for (const char* const name : {"random.vcd", "random.csv", "random.gtkw"})
        EXPECT_EQ(readFile(path(name)), readFile(files / name)) << name;
}

}  // namespace trel::test
