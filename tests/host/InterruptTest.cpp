#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>
#include <string>

#include "tests/host/Program.h"
#include "tests/host/StationFile.h"
#include "tests/host/Waves.h"

// Runs that last, on a terminal and until somebody ends them.

namespace trel::test {

namespace {

using ::testing::AnyOf;
using ::testing::HasSubstr;

class LongRun : public FolderTest {
protected:
    void SetUp() override {
        FolderTest::SetUp();
        StationFile file;
        file.gate(10, "A", "Buffer");
        write("s.xml", file.text());
        write("s.yaml", "timeline:\n  - {at: 10ms, set: {A.In: 1}}\n  - {at: 900h, say: late}\n");
    }
    // For a second, then it gets this signal.
    Result interrupted(const std::string& signal) const {
        return stationAt("/usr/bin/timeout",
                         {"--preserve-status", "-s", signal, "1", STATION_PROGRAM, "run",
                          path("s.xml"), "--until", "59999min", "--vcd", path("run.vcd"), "--junit",
                          path("run.xml"), "--csv", path("run.csv"), "--save", path("after.xml")});
    }
    // On a terminal, which gets errors and, where it is to, output.
    Result onTerminal(const std::string& command) const {
        return stationAt("/usr/bin/script", {"-qec", command, path("typescript")});
    }
};

}  // namespace

TEST_F(LongRun, AnInterruptEndsItWithItsFilesWhole) {
    for (const int signal : {SIGINT, SIGTERM}) {
        const Result result = interrupted(signal == SIGINT ? "INT" : "TERM");
        EXPECT_THAT(result.code, AnyOf(-signal, 128 + signal));
        EXPECT_THAT(result.out, HasSubstr("-- STOPPED: interrupted at "));
        EXPECT_EQ(result.out.find("STOPPED"), result.out.rfind("STOPPED"));
        EXPECT_THAT(result.out, HasSubstr("nothing is saved, since the run was stopped\n"));
        const Waves waves(readFile(path("run.vcd")));
        EXPECT_GT(waves.end, 0);
        EXPECT_THAT(readFile(path("run.xml")), HasSubstr("</testsuites>\n"));
        EXPECT_EQ(readFile(path("run.csv")).back(), '\n');
        EXPECT_FALSE(std::filesystem::exists(path("after.xml")));
    }
}

TEST_F(LongRun, ShowsOnATerminalHowFarItIs) {
    const std::string command = std::string(STATION_PROGRAM) + " run " + path("s.xml") +
                                " --until 59999min & sleep 2; kill -INT $!";
    EXPECT_THAT(onTerminal("(" + command + ") >" + path("out")).out,
                HasSubstr("s of 3599940s\x1b[K\r"));
}

TEST_F(LongRun, IsQuietElsewhere) {
    const Result result = interrupted("INT");
    EXPECT_EQ(result.err.find('%'), std::string::npos) << result.err;
}

}  // namespace trel::test
