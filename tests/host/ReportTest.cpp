#include <gmock/gmock.h>

#include <regex>
#include <string>

#include "tests/host/Program.h"
#include "tests/host/StationFile.h"

// tests/host/report_in_browser opens a report in a browser.

namespace trel::test {

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

class Report : public FolderTest {
protected:
    std::string of(const StationFile& file, const std::string& scenario,
                   std::vector<std::string> options = {}) const {
        options.insert(options.begin(), {"run", write("s.xml", file.text()), "--scenario",
                                         write("s.yaml", scenario), "--report", path("run.html")});
        station(options);
        return readFile(path("run.html"));
    }
    static StationFile row() {
        StationFile file;
        file.gate(10, "A", "Buffer");
        file.gate(11, "B &lt;&amp;&gt;", "NotGate");
        file.connect({10, 2}, {11, 1});
        return file;
    }
};

}  // namespace

TEST_F(Report, OfTheExampleHasDiagramWaveformsAndExpectationsAndNoOutsideLinks) {
    const auto folder = sourceFolder() / "examples/pick_and_place";
    const Result result =
        station({"run", (folder / "station.xml").string(), "--scenario",
                 (folder / "scenario.yaml").string(), "--report", path("run.html")});
    ASSERT_EQ(result.code, 0) << result.err;
    const std::string html = readFile(path("run.html"));
    EXPECT_THAT(html,
                AllOf(HasSubstr("<p class=\"verdict good\">All that was expected held</p>"),
                      HasSubstr("<svg class=\"waves\""), HasSubstr(">Robot.PartPlaced</text>"),
                      HasSubstr(">ResetCount = 0</text>"),
                      HasSubstr("at 1.2s Robot.Load was expected to be 120")));
    EXPECT_FALSE(std::regex_search(html,
                                   std::regex("(src|href)=\"(?!data:)|url\\(|@import|<script")));
}

TEST_F(Report, APulseIsALineInItsWaveform) {
    const std::string html = of(row(), "until: 2s\ntimeline:\n  - {at: 1s, pulse: [A.In]}\n");
    EXPECT_THAT(html, HasSubstr("<text class=\"name\" x=\"248\" y=\"18\">A.In</text><path "
                                "class=\"wire\" d=\"M260.0 21.0H710.0V21.0V5.0V21.0H1160.0\" />"));
}

TEST_F(Report, WhatIsWatchedIsDrawnTextsToo) {
    const auto folder = sourceFolder() / "examples/pick_and_place";
    station({"run", (folder / "station.xml").string(), "--scenario",
             (folder / "scenario.yaml").string(), "--report", path("run.html"), "--watch",
             "Part A.*"});
    EXPECT_THAT(readFile(path("run.html")),
                AllOf(HasSubstr(">Part A.Holder</text><rect class=\"text\""),
                      HasSubstr("<title>600, 400, 60 mm</title>"),
                      Not(HasSubstr(">Robot.PartPlaced</text><path"))));
}

TEST_F(Report, SaysWhatFailedWhatWasReportedAndWhyItStopped) {
    EXPECT_THAT(of(row(), "timeline:\n  - {at: 1s, expect: {A.Out: 1}}\n"),
                AllOf(HasSubstr("<p class=\"verdict bad\">1 expectation(s) failed</p>"),
                      HasSubstr("<td class=\"failed\">and was 0</td>")));
    EXPECT_THAT(of(row(),
                   "timeline:\n  - {at: 1s, set: {A.In: 1}}\n  - {at: 2s, expect: {A.In: 1}}"
                   "\n",
                   {"--budget", "0"}),
                AllOf(HasSubstr("<p class=\"verdict bad\">Stopped: the budget of 0 deliveries in a "
                                "step is spent at 1s</p>"),
                      HasSubstr("<td class=\"skipped\">not reached: ")));
}

TEST_F(Report, EscapesNames) {
    const std::string html = of(row(), "timeline:\n  - {at: 1s, set: {A.In: 1}}\n");
    EXPECT_THAT(html, AllOf(HasSubstr(">B &lt;&amp;&gt;.Out</text>"), Not(HasSubstr("B <&>"))));
}

}  // namespace trel::test
