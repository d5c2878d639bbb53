#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <regex>
#include <string>
#include <utility>
#include <vector>

#include "tests/host/Program.h"
#include "tests/host/TestLibrary.h"

namespace trel::test {

namespace {

using ::testing::AllOf;
using ::testing::AnyOf;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class TypeLibraries : public FolderTest {
protected:
    // A copy of a library of ours in the test's folder.
    std::string copied(const std::string& name, const std::string& as) const {
        std::filesystem::copy_file(library(name), path(as));
        return path(as);
    }
    void nameFolder() const { setenv("STATION_COMPONENTS", folder().c_str(), 1); }
    std::string oneOf(const std::string& type) const {
        return write("s.xml", stationText("  <smart_component id=\"10\" name=\"A\">\n"
                                          "    <type string=\"" +
                                              type +
                                              "\" />\n"
                                              "    <parent uint=\"2\" />\n  </smart_component>\n",
                                          "    <child uint=\"10\" />\n"));
    }
};

}  // namespace

TEST(Types, AreListedWithDescriptionPropertiesAndSignals) {
    const Result result = station({"types", "Timer"});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(
        result.out,
        "Timer  (libtrelcomponents.so)\n"
        "  Timer: OnDelay switches Out on when In has been on for Time, OffDelay switches it "
        "off when In has been off for Time, Pulse switches it on for Time whenever In rises.\n"
        "  properties\n"
        "    Mode : String = OnDelay    OnDelay, OffDelay or Pulse  [one of OnDelay, OffDelay, "
        "Pulse]\n"
        "    Time : Double = 500.00 ms  How long it waits\n"
        "  signals\n"
        "    In : DigitalInput    What is timed\n"
        "    Out : DigitalOutput  Follows In according to Mode\n");
}

TEST(Types, OfAllLibrariesAreListedByName) {
    const std::string all = station({"types", "--components", library("Odd")}).out;
    EXPECT_THAT(all, StartsWith("AndGate  (libtrelcomponents.so)\n"));
    EXPECT_THAT(all, HasSubstr("\nBare  (libstation_test_Odd.so)\n  It has no description.\n"));
    EXPECT_THAT(all, HasSubstr("\nCrasher  (libstation_test_Odd.so)\n  It has no description.\n"
                               "  a component cannot be made: ended with \"Aborted\"\n"));
    EXPECT_THAT(all, HasSubstr("a component cannot be made: misses its settings\n"));
    EXPECT_LT(all.find("Bare"), all.find("Buffer"));
}

TEST(Types, WhatANewComponentGetsIsCheckedAsAFileIs) {
    const std::string sloppy = station({"types", "Sloppy", "--components", library("Odd")}).out;
    EXPECT_THAT(sloppy, HasSubstr("  a component cannot be made: bad optional access\n"
                                  "  error: Sloppy.Speed: \"double\" is no property type; write "
                                  "ObjectId, Int32, Double,"));
    EXPECT_THAT(sloppy,
                HasSubstr("  error: Sloppy.Out: the signal has the id 1 of another one; give "
                          "each its own [signal-id-twice]\n"));
    EXPECT_THAT(sloppy,
                HasSubstr("  warning: Sloppy.In: \"DigitalOut\" is no signal type; write "));
    EXPECT_THAT(station({"types"}).out, Not(AnyOf(HasSubstr(" error: "), HasSubstr(" warning: "))));
}

TEST(Types, OneThatAsksForWhatIsNotThereIsToldSo) {
    EXPECT_THAT(
        station({"types", "Asker", "--components", library("Odd")}).out,
        HasSubstr("a component cannot be made: invalid unordered_map<K, T> key (it asked for "
                  "an id that is not there)\n"));
}

TEST(Types, OneThatIsUnknownIsAnsweredWithTheNearest) {
    const Result result = station({"types", "Timr"});
    EXPECT_EQ(result.code, 3);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "no library that is loaded brings the type \"Timr\"; \"Timer\" is near; "
                          "see the types with station types, or load its library with "
                          "--components\n");
}

TEST(Types, TheExampleOfTheHelpIsOne) {
    EXPECT_THAT(station({"types", "--help"}).out, HasSubstr("Example: station types Timer"));
}

TEST_F(TypeLibraries, AreFoundByNameInTheFoldersThatAreNamed) {
    copied("Odd", "libodd.so");
    EXPECT_EQ(station({"types", "Bare", "--components", "odd"}).code, 3);
    nameFolder();
    for (const std::string name : {"odd", "libodd.so"})
        EXPECT_EQ(station({"types", "Bare", "--components", name}).code, 0) << name;
    copied("Odd", "other.so");
    EXPECT_EQ(station({"types", "Bare", "--components", "other"}).code, 0);
}

TEST_F(TypeLibraries, ANameThatIsNowhereIsAnsweredWithThePlaces) {
    nameFolder();
    const Result result = station({"types", "--components", "odd"});
    EXPECT_EQ(result.code, 3);
    EXPECT_THAT(result.err, StartsWith("odd: no library of that name is in " + folder().string()));
    EXPECT_THAT(result.err, HasSubstr("; give its path, or name its folder in "
                                      "STATION_COMPONENTS\n"));
}

TEST_F(TypeLibraries, OneThatBringsATypeOfAnotherIsNamedWithIt) {
    const Result result = station({"types", "--components", library("Twice")});
    EXPECT_EQ(result.code, 3);
    EXPECT_THAT(result.err,
                AllOf(StartsWith(library("Twice") + ": brings the type \"Timer\", which "),
                      HasSubstr("libtrelcomponents.so brings already; load one of them "
                                "alone, or rename the type\n")));
}

TEST_F(TypeLibraries, OneThatIsGivenTwiceIsLoadedOnce) {
    EXPECT_EQ(
        station({"types", "Bare", "--components", library("Odd"), "--components", library("Odd")})
            .code,
        0);
}

TEST_F(TypeLibraries, OneThatEndsTheProcessThatLoadsItIsNamed) {
    const Result result = station({"types", "--components", library("Crashing")});
    EXPECT_EQ(result.code, 3);
    EXPECT_EQ(result.err, library("Crashing") + ": ended with \"Aborted\" while it was loaded; its "
                                                "maker has to mend that\n");
}

// A table of them, with words in capitals for what differs.
TEST_F(TypeLibraries, StandInTheDocumentationWithTheirRealMessages) {
    const std::string page = readFile(sourceFolder() / "docs/station.md");
    const auto documented = [&](const std::string& name) {
        const Result result = station({"types", "--components", name});
        std::string text = result.err.substr(0, result.err.find('\n'));
        text.replace(0, name.size(), "LIB");
        for (const auto& [what, word] : std::vector<std::pair<std::string, std::string>>{
                 {" in (/[^;]*);", " in FOLDERS;"},
                 {"types \\(.*\\);", "types (REASON);"},
                 {"function \\w+;", "function NAME;"},
                 {"layout \\d+, this program has \\d+", "layout N, this program has M"},
                 {"type \"\\w+\", which \\S+", "type \"NAME\", which OTHER"},
                 {"types: [^;]*; its", "types: REASON; its"},
                 {"with \"[^\"]*\" while", "with \"REASON\" while"}})
            text = std::regex_replace(text, std::regex(what), word);
        EXPECT_THAT(page, HasSubstr("| `" + text + "` |"));
    };
    documented(path("none.so"));
    documented("none");
    documented(write("text.so", "no library"));
    for (const std::string name :
         {"Nothing", "OtherLayout", "Empty", "Twice", "Failing", "Crashing"})
        documented(library(name));
}

TEST_F(TypeLibraries, AnUnknownTypeIsAnsweredWithTheLibraryThatBringsIt) {
    copied("Crashing", "a.so");
    copied("Nothing", "b.so");
    const std::string odd = copied("Odd", "c.so");
    nameFolder();
    const Result result = station({"check", oneOf("Bare")});
    EXPECT_EQ(result.code, 2);
    EXPECT_THAT(result.out, HasSubstr("no library that is loaded brings the type \"Bare\"; load " +
                                      odd + " with --components, which brings it [type-unknown]"));
    EXPECT_THAT(station({"run", oneOf("Bare")}).err, HasSubstr("load " + odd));
    EXPECT_EQ(station({"check", oneOf("Bare"), "--components", "c"}).code, 0);
}

}  // namespace trel::test
