#include <fmt/format.h>
#include <gmock/gmock.h>

#include <filesystem>
#include <string>

#include "smartcomp/TypeLibrary.h"
#include "tests/host/Program.h"
#include "tests/host/TestLibrary.h"

namespace trel::test {

namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

// A buffer "A" with the id 11, and a component "Odd" with the id 10 of a type.
std::string twoText(const std::string& oddType) {
    return stationText("  <smart_component id=\"10\" name=\"Odd\">\n    <type string=\"" + oddType +
                           "\" />\n    <parent uint=\"2\" />\n"
                           "    <signal id=\"1\">\n      <name string=\"In\" />\n"
                           "      <type string=\"DigitalInput\" />\n      <value int=\"0\" />\n"
                           "    </signal>\n  </smart_component>\n"
                           "  <smart_component id=\"11\" name=\"A\">\n"
                           "    <type string=\"NotGate\" />\n    <parent uint=\"2\" />\n"
                           "    <signal id=\"1\">\n      <name string=\"In\" />\n"
                           "      <type string=\"DigitalInput\" />\n      <value int=\"0\" />\n"
                           "    </signal>\n    <signal id=\"2\">\n      <name string=\"Out\" />\n"
                           "      <type string=\"DigitalOutput\" />\n      <value int=\"0\" />\n"
                           "    </signal>\n  </smart_component>\n",
                       "    <child uint=\"10\" />\n    <child uint=\"11\" />\n");
}

class StationRun : public FolderTest {
protected:
    void SetUp() override {
        FolderTest::SetUp();
        file_ = write("s.xml", twoText("Buffer"));
    }
    const std::string& file() const { return file_; }
    std::string odd(const std::string& type) const { return write("odd.xml", twoText(type)); }
    std::string scenario(const std::string& text) const { return write("s.yaml", text); }

private:
    std::string file_;
};

}  // namespace

TEST_F(StationRun, PrintsEveryChangeWithTimeNameAndValue) {
    const Result result = station({"run", file(), "--scenario",
                                   scenario("timeline:\n  - at: 15ms\n    set: {A.In: 1}\n"
                                            "    expect: {A.Out: 0}\n")});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.out, "        0s  A.Out = 1\n"
                          "    0.015s  A.In = 1\n"
                          "    0.015s  A.Out = 0\n"
                          "    0.015s  -- ok: A.Out = 0\n"
                          "\n"
                          "ran 0.015s in 3 steps; changes: 3; expectations: 1 held, 0 failed\n");
}

TEST_F(StationRun, AFailedExpectationIsNamedWithWhatWasFoundAndExitCodeOne) {
    const std::string play = scenario("timeline:\n  - at: 1s\n    expect:\n      A.Out: 0\n");
    const Result result = station({"run", file(), "--scenario", play, "--save", path("after.xml")});
    EXPECT_EQ(result.code, 1);
    EXPECT_THAT(result.out,
                HasSubstr(play + ":4:7: at 1s A.Out was expected to be 0, and was 1\n"));
    EXPECT_THAT(result.out, HasSubstr("nothing is saved"));
    EXPECT_FALSE(std::filesystem::exists(path("after.xml")));
}

TEST_F(StationRun, SavesAfterAGoodRunAndNotOtherwise) {
    const std::string before = readFile(file());
    EXPECT_EQ(station({"run", file()}).code, 0);
    EXPECT_EQ(readFile(file()), before);
    EXPECT_EQ(station({"run", file(), "--save", file()}).code, 0);
    EXPECT_NE(readFile(file()), before);
    EXPECT_THAT(station({"show", file()}).out, HasSubstr("Out : DigitalOutput = 1"));
}

TEST_F(StationRun, WhatCannotBeSavedIsExitCodeSix) {
    const std::string target = path("no/such/folder.xml");
    const Result result = station({"run", file(), "--save", target});
    EXPECT_EQ(result.code, 6);
    EXPECT_THAT(result.err, StartsWith(target + ": "));
}

TEST_F(StationRun, WrongUsageIsExitCodeThree) {
    EXPECT_EQ(station({}).code, 3);
    EXPECT_EQ(station({"run"}).code, 3);
    EXPECT_EQ(station({"fly", file()}).code, 3);
    EXPECT_EQ(station({"run", file(), "--step", "0us"}).code, 3);
    const Result result = station({"run", file(), "--until", "soon"});
    EXPECT_EQ(result.code, 3);
    EXPECT_THAT(result.err, HasSubstr("--until: \"soon\" is no such time"));
}

TEST_F(StationRun, HelpIsNoFault) {
    const Result result = station({"run", "--help"});
    EXPECT_EQ(result.code, 0);
    EXPECT_THAT(result.out, HasSubstr("--scenario"));
}

TEST_F(StationRun, AFileThatIsNotThereIsExitCodeTwo) {
    const Result result = station({"run", path("none.xml")});
    EXPECT_EQ(result.code, 2);
    EXPECT_THAT(result.err, StartsWith(path("none.xml") + ": "));
}

TEST_F(StationRun, ASetWithAFaultyScenarioLeavesTheFile) {
    const std::string before = readFile(file());
    const Result result = station({"run", file(), "--save", file(), "--scenario",
                                   scenario("timeline:\n  - at: 0s\n    set: {B.In: 1}\n")});
    EXPECT_EQ(result.code, 2);
    EXPECT_THAT(result.err, HasSubstr("s.yaml:3:11: error: there is no B in the station"));
    EXPECT_EQ(readFile(file()), before);
}

TEST_F(StationRun, LastsAsLongAsItIsAskedTo) {
    EXPECT_THAT(station({"run", file()}).out, HasSubstr("ran 1s in 101 steps"));
    EXPECT_THAT(station({"run", file(), "--until", "50ms", "--step", "20ms"}).out,
                HasSubstr("ran 0.05s in 3 steps"));
    const std::string play = scenario("until: 2s\nstep: 1s\n");
    EXPECT_THAT(station({"run", file(), "--scenario", play}).out, HasSubstr("ran 2s in 3 steps"));
}

TEST_F(StationRun, AMomentBehindTheEndIsNotPassedOverInSilence) {
    const std::string play = scenario("until: 1s\ntimeline:\n  - at: 2s\n    say: late\n");
    const Result result = station({"run", file(), "--scenario", play});
    EXPECT_EQ(result.code, 2);
    EXPECT_THAT(result.err, HasSubstr(play + ":3:5: error: this moment comes after the end"));
    const Result cut = station({"run", file(), "--scenario", play, "--until", "1s"});
    EXPECT_EQ(cut.code, 0);
    EXPECT_THAT(cut.out, HasSubstr("left out, since they come later: 1 of the scenario's moments"));
}

TEST_F(StationRun, AComponentThatThrowsIsNamedAndExitCodeFour) {
    const Result result = station({"run", "--components", library("Odd"), odd("Thrower"), "--save",
                                   path("after.xml")});
    EXPECT_EQ(result.code, 4);
    EXPECT_EQ(result.err, "Odd (Thrower, #10) failed at 0.03s while executing: has had enough; it "
                          "was set aside for the rest of the run\n");
    EXPECT_THAT(result.out, HasSubstr("ran 1s in 101 steps"));
    EXPECT_THAT(result.out, HasSubstr("nothing is saved, since components failed\n"));
    EXPECT_THAT(result.out, HasSubstr("A.Out = 1"));
    EXPECT_FALSE(std::filesystem::exists(path("after.xml")));
}

TEST_F(StationRun, ASettingThatMakesAComponentThrowIsNamed) {
    const std::string play = scenario("timeline:\n  - at: 10ms\n    set: {Odd.In: 1}\n");
    const Result result =
        station({"run", odd("Thrower"), "--components", library("Odd"), "--scenario", play});
    EXPECT_EQ(result.code, 4);
    EXPECT_THAT(result.err, HasSubstr("failed at 0.01s while being set at Odd.In by " + play +
                                      ":3:11: does not like its input"));
}

TEST_F(StationRun, AComponentThatCannotBeMadeIsAFaultOfTheFile) {
    const Result result = station({"run", odd("Stillborn"), "--components", library("Odd")});
    EXPECT_EQ(result.code, 2);
    EXPECT_EQ(result.err,
              path("odd.xml") +
                  ":10:3: error: Odd: the type \"Stillborn\" cannot make the component: "
                  "misses its settings; look at its properties and signals "
                  "[type-fails]\n");
}

// Its pointer stays in the list of components; a new one comes under its id.
TEST_F(StationRun, AComponentMayRemoveAndMakeOthersWhileItRuns) {
    const std::string play = scenario("timeline:\n  - at: 50ms\n    set: {Odd.In: 1}\n");
    const Result result = station({"run", odd("Changer"), "--components", library("Odd"),
                                   "--scenario", play, "--save", path("after.xml")});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_THAT(station({"show", path("after.xml"), "--components", library("Odd")}).out,
                HasSubstr("New  NotGate  #11"));
}

TEST_F(StationRun, AnExpectationOfARemovedComponentFails) {
    const std::string play = scenario("timeline:\n  - at: 30ms\n    set: {A.In: 1}\n"
                                      "    expect: {A.Out: 1}\n");
    const Result result =
        station({"run", odd("Changer"), "--components", library("Odd"), "--scenario", play});
    EXPECT_EQ(result.code, 1);
    EXPECT_THAT(result.out, HasSubstr("cannot set #11.#1 at 0.03s: it has been removed"));
    EXPECT_THAT(result.out, HasSubstr("A.Out was expected to be 1, and was nothing"));
}

TEST_F(StationRun, ALibraryThatCannotServeIsNamedWithTheReason) {
    const auto fault = [&](const std::string& which) {
        const Result result = station({"run", file(), "--components", which});
        EXPECT_EQ(result.code, 3);
        EXPECT_THAT(result.err, StartsWith(which + ": "));
        return result.err;
    };
    EXPECT_THAT(fault(path("none.so")), HasSubstr("there is no such library"));
    EXPECT_THAT(fault("none"), HasSubstr("no library of that name is in "));
    EXPECT_THAT(fault(file()), HasSubstr("cannot be loaded as a library"));
    EXPECT_THAT(fault(library("Nothing")), HasSubstr("lacks the function trelRegisterComponents"));
    EXPECT_THAT(fault(library("OtherLayout")),
                HasSubstr(fmt::format("was built for class layout {}, this program has {}; build",
                                      smartcomp::typeLibraryAbi + 1, smartcomp::typeLibraryAbi)));
    EXPECT_THAT(fault(library("Failing")), HasSubstr("failed while registering its types: no "
                                                     "licence"));
}

TEST_F(StationRun, AProgramWithoutItsOwnLibraryNamesThePlaces) {
    std::filesystem::create_directory(path("bin"));
    std::filesystem::copy_file(STATION_PROGRAM, path("bin/station"));
    const Result result = stationAt(path("bin/station"), {"show", file()});
    EXPECT_EQ(result.code, 3);
    EXPECT_THAT(result.err, StartsWith(path("bin/libtrelcomponents.so") + ": the library"));
    EXPECT_THAT(result.err, HasSubstr(path("lib/station/libtrelcomponents.so")));
}

TEST_F(StationRun, FindsItsOwnLibraryBesideItself) {
    std::filesystem::create_directory(path("bin"));
    std::filesystem::copy_file(STATION_PROGRAM, path("bin/station"));
    std::filesystem::copy_file(OWN_LIBRARY, path("bin/libtrelcomponents.so"));
    EXPECT_EQ(stationAt(path("bin/station"), {"show", file()}).code, 0);
}

TEST_F(StationRun, TenRunsPrintTheSame) {
    const auto folder = sourceFolder() / "examples/pick_and_place";
    const auto once = [&] {
        return station({"run", (folder / "station.xml").string(), "--scenario",
                        (folder / "scenario.yaml").string()})
            .out;
    };
    const std::string first = once();
    for (int run = 1; run != 10; ++run) EXPECT_EQ(once(), first);
}

}  // namespace trel::test
