#include <gmock/gmock.h>

#include <string>

#include "tests/host/Program.h"
#include "tests/host/StationFile.h"
#include "tests/host/TestLibrary.h"

namespace trel::test {

namespace {

using ::testing::HasSubstr;

class JUnit : public FolderTest {
protected:
    // The report of a run; valid for its schema, whatever happens.
    std::string report(const StationFile& file, const std::string& scenario,
                       std::vector<std::string> options = {}) const {
        options.insert(options.begin(),
                       {"run", write("s.xml", file.text()), "--scenario", write("s.yaml", scenario),
                        "--junit", path("run.xml"), "--components", library("Odd")});
        station(options);
        const Result check =
            stationAt("/usr/bin/xmllint",
                      {"--noout", "--schema", (sourceFolder() / "tests/files/junit.xsd").string(),
                       path("run.xml")});
        EXPECT_EQ(check.code, 0) << check.err;
        return readFile(path("run.xml"));
    }
    static StationFile buffer() {
        StationFile file;
        file.gate(10, "A", "Buffer");
        return file;
    }
};

}  // namespace

TEST_F(JUnit, IsACaseForEachExpectation) {
    const std::string scenario = path("s.yaml");
    EXPECT_EQ(
        report(buffer(), "timeline:\n  - {at: 1.5s, expect: {A.In: 0, A.Out: 1}}\n"),
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<testsuites tests=\"2\" failures=\"1\" errors=\"0\" skipped=\"0\" "
        "time=\"1.500000\">\n"
        "  <testsuite name=\"" +
            scenario +
            "\" tests=\"2\" failures=\"1\" errors=\"0\" "
            "skipped=\"0\" time=\"1.500000\">\n"
            "    <testcase classname=\"" +
            scenario + "\" name=\"" + scenario +
            ":2:25: at 1.5s A.In was expected to be 0\" time=\"1.500000\" />\n"
            "    <testcase classname=\"" +
            scenario + "\" name=\"" + scenario +
            ":2:34: at 1.5s A.Out was expected to be 1\" time=\"1.500000\">\n"
            "      <failure type=\"expectation\" message=\"at 1.5s A.Out was expected to be 1, "
            "and was 0\">" +
            scenario +
            ":2:34: at 1.5s A.Out was expected to be 1, and was 0"
            "</failure>\n"
            "    </testcase>\n  </testsuite>\n</testsuites>\n");
}

TEST_F(JUnit, EscapesNamesAndIsValidWithoutAnyExpectation) {
    StationFile file;
    file.gate(10, "A &amp; &lt;B&gt;", "Buffer");
    EXPECT_THAT(report(file, "timeline:\n  - {at: 1s, expect: {\"A & <B>.In\": 1}}\n"),
                HasSubstr("at 1s A &amp; &lt;B&gt;.In was expected to be 1, and was 0\""));
    EXPECT_THAT(report(file, "until: 1s\n"), HasSubstr("<testsuites tests=\"0\""));
}

TEST_F(JUnit, AComponentThatFailsIsAnErrorAndWhatIsNotReachedIsSkipped) {
    StationFile file;
    file.add(10, "Odd", "Thrower", {{"In", "DigitalInput"}});
    const std::string text = report(
        file, "timeline:\n  - {at: 10ms, set: {Odd.In: 1}}\n  - {at: 1s, expect: {Odd.In: 0}}\n",
        {"--stop-on-fault"});
    EXPECT_THAT(text, HasSubstr("tests=\"2\" failures=\"0\" errors=\"1\" skipped=\"1\""));
    EXPECT_THAT(text, HasSubstr("<skipped message=\"not reached: a component failed\" />"));
    EXPECT_THAT(text, HasSubstr("name=\"Odd (Thrower, #10)\" time=\"0.010000\">\n      <error "
                                "type=\"component\" message=\"Odd (Thrower, #10) failed at 0.01s "
                                "while being set at Odd.In by "));
}

}  // namespace trel::test
