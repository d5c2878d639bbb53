#include <fmt/format.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "tests/host/Program.h"
#include "tests/host/TestLibrary.h"

namespace trel::test {

namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

// A station file that is edited, and the one that it was.
class Editing : public FolderTest {
protected:
    void SetUp() override {
        FolderTest::SetUp();
        before_ = (sourceFolder() / "examples/pick_and_place/station.xml").string();
        file_ = path("s.xml");
        undo();
    }
    void undo() const {
        std::filesystem::copy_file(before_, file_,
                                   std::filesystem::copy_options::overwrite_existing);
    }
    const std::string& file() const { return file_; }
    bool isUnchanged() const { return readFile(file_) == readFile(before_); }

    // Edits the file, which stays loadable, and gives what is printed but for the
    // last line.
    std::string edit(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin() + 1, file_);
        const Result result = station(arguments);
        EXPECT_EQ(result.code, 0) << result.err;
        EXPECT_EQ(result.err, "");
        const std::string last = "saved to " + file_ + "\n";
        EXPECT_THAT(result.out, EndsWith(last));
        EXPECT_THAT(station({"check", file_}).out, HasSubstr("1 file: 0 errors, "));
        return result.out.substr(0, result.out.size() - last.size());
    }

    // Fails to edit the file, which stays as it is, and gives the message.
    std::string refusal(std::vector<std::string> arguments, int code = 3) const {
        arguments.insert(arguments.begin() + 1, file_);
        const std::string text = readFile(file_);
        const Result result = station(arguments);
        EXPECT_EQ(result.code, code) << result.out;
        EXPECT_EQ(readFile(file_), text);
        return result.err;
    }

    std::vector<std::string> differences() const {
        const Result result = station({"diff", before_, file_});
        EXPECT_EQ(result.err, "");
        std::vector<std::string> lines;
        std::istringstream text(result.out);
        for (std::string line; std::getline(text, line);) lines.push_back(line);
        EXPECT_EQ(result.code, lines.empty() ? 0 : 1);
        return lines;
    }

private:
    std::string before_;
    std::string file_;
};

}  // namespace

TEST_F(Editing, ASettingGoesAlongConnectionsAndBindings) {
    EXPECT_EQ(edit({"set", "Robot.Start", "1", "Feeding.Belt speed", "250"}),
              "Robot.Start = 1\nFeeding.Enable = 1\nFeeding/Run belt.In1 = 1\n"
              "Feeding.Belt speed = 250.00 mm/s\nFeeding/Belt.Speed = 250.00 mm/s\n");
    EXPECT_THAT(differences(), ElementsAre("* Feeding.Belt speed: value \"200\" -> \"250\"",
                                           "* Feeding.Enable: value \"0\" -> \"1\"",
                                           "* Feeding/Belt.Speed: value \"200\" -> \"250\"",
                                           "* Feeding/Run belt.In1: value \"0\" -> \"1\"",
                                           "* Robot.Start: value \"0\" -> \"1\""));
}

TEST_F(Editing, AnAnalogSignalTakesAnyNumber) {
    EXPECT_EQ(edit({"set", "Handling.Load", "2.5"}), "Handling.Load = 2.5\nRobot.Load = 2.5\n");
}

TEST_F(Editing, AnEqualValueChangesNothing) {
    EXPECT_EQ(edit({"set", "Robot.Start", "0"}), "nothing changes\n");
    EXPECT_TRUE(isUnchanged());
}

TEST_F(Editing, AValueThatItsTypeCannotHoldIsRefused) {
    EXPECT_EQ(refusal({"set", "Feeding.Enable", "2"}),
              "Feeding.Enable cannot be \"2\"; write 0 or 1\n");
    EXPECT_EQ(refusal({"set", "Handling.Load", "heavy"}),
              "Handling.Load cannot be \"heavy\"; write a number\n");
    EXPECT_EQ(refusal({"set", "Handling/Settle.Mode", "Slow"}),
              "Handling/Settle.Mode cannot be \"Slow\"; write one of OnDelay, OffDelay, Pulse\n");
    EXPECT_EQ(refusal({"set", "Robot.Start", "1", "Feeding.Enable"}),
              "Feeding.Enable is given no value; write NAME VALUE pairs\n");
    EXPECT_EQ(refusal({"set", "Robot.Stop", "1"}),
              "Robot has no signal or property Stop; it has Start, ResetCount, PartPlaced, Load, "
              "Count, Done\n");
}

TEST_F(Editing, IsSavedElsewhereWhereThatIsAsked) {
    const Result result = station({"set", file(), "Robot.Start", "1", "--save", path("other.xml")});
    EXPECT_EQ(result.code, 0);
    EXPECT_THAT(result.out, EndsWith("saved to " + path("other.xml") + "\n"));
    EXPECT_TRUE(isUnchanged());
    EXPECT_FALSE(readFile(path("other.xml")) == readFile(file()));
}

TEST_F(Editing, WhatCannotBeSavedIsExitCodeSixAndLeavesTheFile) {
    EXPECT_THAT(refusal({"set", "Robot.Start", "1", "--save", path("no/folder.xml")}, 6),
                StartsWith(path("no/folder.xml") + ": "));
}

TEST_F(Editing, AConnectionTakesItsPlaceInTheOrder) {
    EXPECT_EQ(
        edit({"connect", "Feeding/Sensor.Detected", "Feeding/Belt.Backward", "--at", "first"}),
        "connection 0 of Feeding: Feeding/Sensor.Detected -> Feeding/Belt.Backward\n");
    EXPECT_THAT(differences(), ElementsAre("+ connection Feeding/Sensor.Detected -> "
                                           "Feeding/Belt.Backward in Feeding"));
    EXPECT_THAT(station({"show", file()}).out,
                HasSubstr("connection 0: Feeding/Sensor.Detected -> Feeding/Belt.Backward\n"
                          "    connection 1: Feeding.Enable -> Feeding/Run belt.In1\n"));
}

TEST_F(Editing, ABindingHasNoPlace) {
    EXPECT_EQ(edit({"connect", "Feeding.Belt speed", "Feeding/Belt.Width"}),
              "binding of Feeding: Feeding.Belt speed -> Feeding/Belt.Width\n");
    EXPECT_EQ(edit({"disconnect", "Feeding.Belt speed", "Feeding/Belt.Width"}),
              "binding of Feeding is deleted: Feeding.Belt speed -> Feeding/Belt.Width\n");
    EXPECT_TRUE(isUnchanged());
}

TEST_F(Editing, AnEditTellsTheWarningsThatItBrings) {
    EXPECT_THAT(edit({"connect", "Feeding/Sensor.Distance", "Feeding/Clear.In"}),
                EndsWith("Feeding/Clear.In is DigitalInput; put a conversion between them "
                         "[signal-classes]\n"));
    // Once: it is there already.
    EXPECT_EQ(edit({"set", "Robot.Start", "0"}), "nothing changes\n");
}

TEST_F(Editing, WhatCannotBeConnectedIsRefused) {
    EXPECT_EQ(
        refusal({"connect", "Feeding/Sensor.Distance", "Tally.Placed"}),
        "Feeding/Sensor.Distance and Tally.Placed are not in one aggregation; connect them by "
        "way of signals of the aggregations between\n");
    EXPECT_EQ(refusal({"connect", "Robot.Start", "Feeding.Enable"}),
              "Robot.Start and Feeding.Enable are connected already; nothing is to be done\n");
    EXPECT_EQ(refusal({"connect", "Robot.Start", "Feeding.Belt speed"}),
              "one of Robot.Start and Feeding.Belt speed is a signal, and one a property; name two "
              "of a kind\n");
    EXPECT_EQ(refusal({"connect", "Robot.Start", "Tally.Reset", "--at", "10"}),
              "10 is no place of a connection; write first, last or a number from 0 to 9\n");
}

// The element of the deleted connection leaves the file.
TEST_F(Editing, ADeletedConnectionClosesTheGapAndLeavesTheFile) {
    EXPECT_EQ(edit({"disconnect", "Handling.Placed", "Tally.Placed"}),
              "connection 3 of Station Logic is deleted: Handling.Placed -> Tally.Placed\n");
    EXPECT_THAT(differences(),
                ElementsAre("- connection Handling.Placed -> Tally.Placed in Station Logic"));
    EXPECT_EQ(edit({"connect", "Handling.Placed", "Tally.Placed", "--at", "3"}),
              "connection 3 of Station Logic: Handling.Placed -> Tally.Placed\n");
    EXPECT_THAT(differences(), ElementsAre());
    EXPECT_EQ(refusal({"disconnect", "Robot.Start", "Tally.Reset"}),
              "Robot.Start and Tally.Reset are not connected; see the connections with station "
              "show\n");
}

TEST_F(Editing, AConnectionMovesInTheOrder) {
    EXPECT_EQ(edit({"move", "Robot.Start", "Feeding.Enable", "last"}),
              "connection 0 of Station Logic is connection 8: Robot.Start -> Feeding.Enable\n");
    EXPECT_THAT(differences(),
                ElementsAre("* Station Logic: the order of delivery differs from place 0 on: "
                            "Robot.Start -> Feeding.Enable, where the other has Feeding.PartReady "
                            "-> Handling.PartReady"));
    edit({"move", "Robot.Start", "Feeding.Enable", "0"});
    EXPECT_TRUE(isUnchanged());
    EXPECT_THAT(refusal({"move", "Robot.Start", "Feeding.Enable", "9"}),
                HasSubstr("9 is no place of a connection"));
    EXPECT_THAT(refusal({"move", "Feeding.Found part", "Handling.Target", "0"}),
                HasSubstr("bindings have no order"));
}

TEST_F(Editing, ARemovedComponentTakesItsConnectionsAndContentsAlong) {
    const std::string printed = edit({"remove", "Feeding"});
    EXPECT_THAT(printed, HasSubstr("connection is deleted: Robot.Start -> Feeding.Enable\n"));
    EXPECT_THAT(printed, HasSubstr("binding is deleted: Feeding.Found part -> Handling.Target\n"));
    EXPECT_THAT(printed, HasSubstr("Feeding/Belt is removed\n"));
    EXPECT_THAT(printed, EndsWith("Feeding is removed\n"
                                  "a diagram position of #10 in Station Logic is taken out\n"));
    EXPECT_THAT(readFile(file()), Not(HasSubstr("smart_component id=\"11\"")));
    for (const std::string& line : differences())
        EXPECT_THAT(line, ::testing::AllOf(StartsWith("- "), HasSubstr("Feeding")));
}

// Its parent holds what leads from it to itself.
TEST_F(Editing, ARemovedComponentTakesAConnectionToItselfAlong) {
    edit({"connect", "Feeding/Clear.Out", "Feeding/Clear.In"});
    EXPECT_THAT(edit({"remove", "Feeding/Clear"}),
                HasSubstr("connection is deleted: Feeding/Clear.Out -> Feeding/Clear.In\n"));
}

TEST_F(Editing, WhatNamesARemovedComponentNamesNothing) {
    edit({"set", "Handling.Target", "60"});
    EXPECT_THAT(edit({"remove", "Part A"}), HasSubstr("Handling.Target named Part A and is 0\n"));
}

TEST_F(Editing, AControllerAndMembersAreRemovedToo) {
    EXPECT_THAT(edit({"remove", "Robot.Start", "Feeding.Found part", "Tally.Reset"}),
                HasSubstr("binding is deleted: Feeding/Sensor.Object -> Feeding.Found part\n"));
    EXPECT_THAT(edit({"remove", "Robot"}),
                HasSubstr("connection is deleted: Tally.Done -> Robot.Done\n"));
    EXPECT_THAT(station({"show", file()}).out, Not(HasSubstr("Robot")));
}

// One after the other, until nothing is left.
TEST_F(Editing, EveryComponentCanBeRemovedByItself) {
    for (const unsigned id : {10u, 11u, 12u, 14u, 20u, 21u, 30u, 31u, 40u, 60u, 90u}) {
        undo();
        edit({"remove", fmt::format("#{}", id)});
    }
    undo();
    edit({"remove", "#10", "#20", "#40", "#60", "#61", "#62", "#90"});
    EXPECT_EQ(station({"show", file()}).out, "station Pick and place\n");
    EXPECT_EQ(refusal({"remove", "Station Logic"}),
              "the station logic cannot be removed; remove what it contains\n");
}

TEST_F(Editing, RemovingNothingTidiesDiagramPositions) {
    const auto faults = sourceFolder() / "tests/files/faults";
    for (const std::string code : {"xy-twice", "xy-no-child", "child-twice"}) {
        const auto target = path(code + ".xml");
        EXPECT_EQ(station({"remove", (faults / (code + ".xml")).string(), "--save", target}).code,
                  0);
        EXPECT_EQ(station({"check", "--strict", target}).code, 0) << code;
    }
}

TEST_F(Editing, ARenamedObjectKeepsItsWiring) {
    EXPECT_EQ(edit({"rename", "Feeding/Belt", "Conveyor 1.2"}),
              "Feeding/Belt is Feeding/\"Conveyor 1.2\"\n");
    EXPECT_EQ(edit({"rename", "Feeding.Enable", "On"}), "Feeding.Enable is Feeding.On\n");
    EXPECT_EQ(edit({"rename", "Feeding.Belt speed", "Speed"}),
              "Feeding.Belt speed is Feeding.Speed\n");
    EXPECT_EQ(edit({"rename", "Robot.Start", "Go"}), "Robot.Start is Robot.Go\n");
    EXPECT_EQ(edit({"rename", "Robot", "R"}), "Robot is R\n");
    EXPECT_THAT(station({"show", file()}).out, HasSubstr("  connection 0: R.Go -> Feeding.On\n"));
    EXPECT_THAT(edit({"rename", "Part A", "Part B"}), HasSubstr("[name-twice]\n"));
    EXPECT_THAT(refusal({"rename", "Part B", "Part C"}),
                HasSubstr("Part B is ambiguous in Part B; write one of #60 (Part B), #61"));
}

TEST_F(Editing, AComponentThatFailsLeavesTheFile) {
    const std::string text =
        stationText("  <smart_component id=\"10\" name=\"A\">\n    <type string=\"Touchy\" />\n"
                    "    <parent uint=\"2\" />\n    <property id=\"11\" name=\"P\" string=\"1\">\n"
                    "      <type string=\"Int32\" />\n    </property>\n  </smart_component>\n");
    const std::string touchy = write("touchy.xml", text);
    const Result result = station({"set", touchy, "A.P", "2", "--components", library("Odd")});
    EXPECT_EQ(result.code, 4);
    EXPECT_EQ(result.err, "the edit made a component fail: does not like it; the fault is in its "
                          "type, and nothing is saved\n");
    EXPECT_EQ(readFile(touchy), text);
}

TEST_F(Editing, FilesThatCannotBeLoadedAreNotCompared) {
    const auto faulty = (sourceFolder() / "tests/files/faults/end-no-signal.xml").string();
    const Result result = station({"diff", file(), faulty});
    EXPECT_EQ(result.code, 2);
    EXPECT_THAT(result.err, HasSubstr("[end-no-signal]"));
}

TEST_F(Editing, LayoutCommentsAndIdsAreNoDifference) {
    const auto buffers = [](unsigned first, unsigned second, const std::string& comment) {
        const auto one = [](unsigned id, const std::string& name) {
            return fmt::format("  <smart_component id=\"{}\" name=\"{}\">\n"
                               "    <type string=\"Buffer\" />\n    <parent uint=\"2\" />\n"
                               "    <signal id=\"1\">\n      <name string=\"In\" />\n"
                               "      <type string=\"DigitalInput\" />\n    </signal>\n"
                               "    <signal id=\"2\">\n      <name string=\"Out\" />\n"
                               "      <type string=\"DigitalOutput\" />\n    </signal>\n"
                               "  </smart_component>\n",
                               id, name);
        };
        return stationText(
            comment + one(first, "A") + one(second, "B"),
            fmt::format("    <connection id=\"{}\">\n      <source uint64=\"{}\" />\n"
                        "      <destination uint64=\"{}\" />\n"
                        "      <index uint=\"0\" />\n    </connection>\n",
                        first, (static_cast<unsigned long long>(first) << 32) | 2,
                        (static_cast<unsigned long long>(second) << 32) | 1));
    };
    const std::string a = write("a.xml", buffers(10, 11, ""));
    const std::string b = write("b.xml", buffers(30, 20, "\n\n<!-- others -->\n"));
    EXPECT_EQ(station({"diff", a, b}).out, "");
    EXPECT_EQ(station({"diff", a, b}).code, 0);
}

}  // namespace trel::test
