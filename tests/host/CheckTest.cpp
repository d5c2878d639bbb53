#include <fmt/format.h>
#include <gmock/gmock.h>
#include <sys/resource.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "host/FaultKinds.h"
#include "tests/host/Program.h"
#include "tests/host/Row.h"
#include "tests/host/TestLibrary.h"

namespace trel::test {

namespace {

using host::faultKinds;
using host::Severity;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;

std::filesystem::path faultFile(const std::string& code) {
    return sourceFolder() / "tests/files/faults" / (code + ".xml");
}

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> result;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) result.push_back(line);
    return result;
}

// By code, the line that is expected of the file of that name.
std::map<std::string, std::string> expectedLines() {
    std::map<std::string, std::string> expected;
    for (const std::string& line :
         lines(readFile(sourceFolder() / "tests/files/faults/expected.txt")))
        expected[line.substr(0, line.find(".xml"))] = line;
    return expected;
}

// Without the folders of the files.
std::string withoutFolders(std::string text, const std::filesystem::path& folder) {
    const std::string prefix = folder.string() + "/";
    for (auto at = text.find(prefix); at != std::string::npos; at = text.find(prefix))
        text.erase(at, prefix.size());
    return text;
}

std::string codeIn(const std::string& line) {
    const auto bracket = line.rfind('[');
    return bracket == std::string::npos ? "" : line.substr(bracket + 1, line.size() - bracket - 2);
}

std::vector<std::string> codesIn(const std::string& text) {
    std::vector<std::string> codes;
    for (const std::string& line : lines(text))
        if (line.ends_with(']')) codes.push_back(codeIn(line));
    return codes;
}

class Check : public FolderTest {
protected:
    // What check says of a station with these, a line each, without the folder.
    std::vector<std::string> check(const std::string& components,
                                   const std::string& connections = "") const {
        const Result result =
            station({"check", write("s.xml", stationText(components, connections)), "--components",
                     library("Odd")});
        auto all = lines(withoutFolders(result.out, folder()));
        all.pop_back();
        return all;
    }

    static std::string component(unsigned id, const std::string& name, const std::string& type,
                                 const std::string& keys = "", unsigned parent = 2) {
        return fmt::format("  <smart_component id=\"{}\" name=\"{}\">\n    <type string=\"{}\" />\n"
                           "    <parent uint=\"{}\" />\n{}  </smart_component>\n",
                           id, name, type, parent, keys);
    }

    static std::string children(const std::vector<unsigned>& ids) {
        std::string text;
        for (const unsigned id : ids) text += fmt::format("    <child uint=\"{}\" />\n", id);
        return text;
    }
};

}  // namespace

// For each code there is a file that has that fault alone. One file is not there.
TEST(FaultFiles, EachHasItsOwnFaultAloneWithItsPlaceAndText) {
    const auto expected = expectedLines();
    EXPECT_EQ(expected.size(), faultKinds.size());
    for (const auto& kind : faultKinds) {
        const std::string code(kind.code);
        const auto file = faultFile(code);
        const Result result = station({"check", file.string(), "--components", library("Odd")});
        const bool isError = kind.severity == Severity::Error;
        EXPECT_EQ(withoutFolders(result.out, file.parent_path()),
                  expected.at(code) +
                      "\n1 file: " + (isError ? "1 error, 0 warnings\n" : "0 errors, 1 warning\n"))
            << result.err;
        EXPECT_EQ(codeIn(expected.at(code)), code);
        EXPECT_EQ(result.code, isError ? 2 : 0) << code;
    }
}

TEST(FaultFiles, WarningsCountWhereTheCheckIsStrict) {
    for (const auto& kind : faultKinds) {
        if (kind.severity == Severity::Error) continue;
        const std::string file = faultFile(std::string(kind.code)).string();
        EXPECT_EQ(station({"check", "--strict", file, "--components", library("Odd")}).code, 2)
            << file;
    }
}

// What keeps a file from being loaded is told in the same words by who runs it.
TEST(FaultFiles, AreRefusedByARunInTheSameWords) {
    const auto expected = expectedLines();
    for (const auto& kind : faultKinds) {
        const std::string code(kind.code);
        if (code == "type-crashes") continue;  // the run's process is the one that ends
        const auto file = faultFile(code);
        const Result result =
            station({"run", file.string(), "--until", "0s", "--components", library("Odd")});
        if (kind.severity == Severity::Error) {
            EXPECT_EQ(withoutFolders(result.err, file.parent_path()), expected.at(code) + "\n");
            EXPECT_EQ(result.code, 2);
        } else {
            EXPECT_EQ(result.code, 0) << code << result.err;
        }
    }
}

TEST(FaultFiles, StandInTheirDocumentationWithTheirRealMessages) {
    const std::string page = readFile(sourceFolder() / "docs/check.md");
    const auto expected = expectedLines();
    for (const auto& kind : faultKinds) {
        const std::string code(kind.code);
        EXPECT_THAT(page,
                    HasSubstr(fmt::format("\n### `{}`\n\n{}: {} To do: {}.\n\n    {}\n", code,
                                          kind.severity == Severity::Error ? "Error" : "Warning",
                                          kind.meaning, kind.remedy, expected.at(code))));
    }
    std::size_t headings = 0;
    for (const std::string& line : lines(page)) headings += line.starts_with("### `");
    EXPECT_EQ(headings, faultKinds.size());
}

TEST(FaultFiles, GiveTheSameAsJson) {
    const Result result = station({"check", "--json", faultFile("loop").string()});
    EXPECT_EQ(result.out,
              "{\"file\":\"" + faultFile("loop").string() +
                  "\",\"line\":7,\"column\":5,\"severity\":\"warning\",\"code\":\"loop\","
                  "\"path\":\"Station Logic\",\"fault\":\"signals drive each other in a "
                  "ring, which the guard of an output ends: A.Out -> B.In, B.Out -> "
                  "A.In\",\"remedy\":\"break the ring, or make sure that what comes back "
                  "is the same value\"}\n");
}

TEST_F(Check, TenFaultsInOneFileAreAllReported) {
    const auto found = check(
        component(10, "A", "Bufer") + component(10, "B", "Buffer") + component(12, "C", "Crasher") +
            component(13, "D", "Stillborn") + component(14, "E", "Buffer", "", 77) +
            component(15, "F", "Timer",
                      "    <property id=\"1\" name=\"Mode\" string=\"Slow\">\n"
                      "      <type string=\"String\" />\n    </property>\n") +
            component(16, "G", "Group",
                      "    <property id=\"x\" name=\"P\" string=\"0\">\n"
                      "      <type string=\"ObjectId\" />\n    </property>\n"
                      "    <role_object uint=\"0\" />\n    <colour string=\"red\" />\n"
                      "    <signal id=\"1\">\n      <name string=\"In\" />\n"
                      "      <type string=\"DigitalInput\" />\n      <value int=\"one\" />\n"
                      "    </signal>\n"
                      "    <connection id=\"1\">\n      <source uint64=\"68719476737\" />\n"
                      "      <destination uint64=\"68719476737\" />\n"
                      "      <index uint=\"0\" />\n    </connection>\n"),
        children({10, 12, 13, 15, 16, 88}));
    std::vector<std::string> codes;
    for (const std::string& line : found) codes.push_back(codeIn(line));
    EXPECT_THAT(codes,
                ElementsAre("child-unknown", "type-unknown", "object-id-twice", "type-crashes",
                            "type-fails", "parent-unknown", "property-refused", "id-text",
                            "element-unknown", "value-text", "loop-unguarded"));
}

TEST_F(Check, FaultlessFilesHaveNone) {
    const auto files = sourceFolder() / "tests/files/roundtrip";
    std::vector<std::string> arguments = {"check"};
    for (const auto& entry : std::filesystem::directory_iterator(files))
        if (entry.path().extension() == ".xml") arguments.push_back(entry.path().string());
    ASSERT_GT(arguments.size(), 20u);
    const Result result = station(arguments);
    EXPECT_EQ(result.code, 0) << result.out;
    EXPECT_THAT(result.out, HasSubstr(fmt::format("\n{} files: 0 errors, ", arguments.size() - 1)));
    for (const std::string& line : lines(result.out))
        EXPECT_THAT(line, ::testing::Not(HasSubstr(": error: ")));

    const auto example = sourceFolder() / "examples/pick_and_place/station.xml";
    EXPECT_EQ(station({"check", "--strict", example.string()}).out,
              "1 file: 0 errors, 0 warnings\n");
}

TEST_F(Check, EachOfSeveralFilesIsCheckedByItself) {
    const std::string good = write("good.xml", stationText(""));
    const Result result =
        station({"check", good, faultFile("loop").string(), path("none.xml"), good});
    EXPECT_EQ(result.code, 2);
    EXPECT_THAT(codesIn(result.out), ElementsAre("loop", "file-unreadable"));
    EXPECT_THAT(result.out, EndsWith("4 files: 1 error, 1 warning\n"));
}

TEST_F(Check, AWarningMayBeAllowedByACommentBeforeTheElement) {
    const auto with = [&](const std::string& comment) {
        return check("  <!-- " + comment + " -->\n" + component(10, "", "Buffer"));
    };
    EXPECT_EQ(with("a buffer").size(), 2u);
    EXPECT_THAT(with("spare: allow name-missing, allow child-nowhere"), ElementsAre());
    EXPECT_EQ(with("allow name").size(), 2u);
    EXPECT_EQ(with("allow name-missing-too").size(), 2u);
    // What cannot be loaded cannot be allowed.
    EXPECT_EQ(
        check("  <!-- allow parent-unknown -->\n" + component(10, "A", "Buffer", "", 77)).size(),
        1u);
}

TEST_F(Check, ALibraryThatCannotBeLoadedIsWrongUsage) {
    const Result result =
        station({"check", write("s.xml", stationText("")), "--components", path("none.so")});
    EXPECT_EQ(result.code, 3);
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.err, HasSubstr("none.so: there is no such library"));
}

TEST_F(Check, ComponentsThatContainEachOtherAreNamedInOrder) {
    EXPECT_THAT(
        check(component(10, "A", "Group", children({12}), 11) +
              component(11, "B", "Group", children({10}), 12) +
              component(12, "C", "Group", children({11}), 10)),
        ElementsAre(HasSubstr("s.xml:10:5: error: #10: the component contains itself: \"A\" "
                              "in \"B\" in \"C\" in \"A\""),
                    HasSubstr("s.xml:15:5: error: #11: "), HasSubstr("s.xml:20:5: error: #12: ")));
}

TEST_F(Check, AnUnknownTypeIsNamedWithTheNearest) {
    const auto remedy = [&](const std::string& type) {
        return check(component(10, "A", type), children({10})).at(0);
    };
    EXPECT_THAT(remedy("NotGat"), HasSubstr("write \"NotGate\" if that is meant"));
    EXPECT_THAT(remedy("Quantum"), HasSubstr("load the library that brings it with --components, "
                                             "or correct the type"));
}

// Every fault of the text is one, and nothing can be read behind it.
TEST(MalformedFiles, EachGivesItsMessageWithThePlaceAndExitCodeTwo) {
    const auto folder = sourceFolder() / "tests/files/malformed";
    unsigned files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() != ".xml") continue;
        ++files;
        const Result result = station({"run", entry.path().string()});
        EXPECT_EQ(result.code, 2) << entry.path() << result.err;
        EXPECT_EQ(result.err.rfind(entry.path().string() + ":", 0), 0u) << result.err;
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    }
    EXPECT_GE(files, 30u);
}

namespace {

double childSeconds() {
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

}  // namespace

TEST_F(Check, AHundredThousandComponentsTakeSeconds) {
    const double before = childSeconds();
    const Result result = station({"check", write("ring.xml", rowText(100'000, 10, true))});
    const double seconds = childSeconds() - before;
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_THAT(codesIn(result.out), ElementsAre("loop"));
    EXPECT_THAT(result.out, HasSubstr("B100009.Out -> B10.In"));
#if defined(NDEBUG) && !defined(__SANITIZE_ADDRESS__) && !defined(__clang__)
    EXPECT_LT(seconds, 10);
#endif
    RecordProperty("seconds", std::to_string(seconds));
}

}  // namespace trel::test
