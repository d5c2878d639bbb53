#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "tests/host/Program.h"

namespace trel::test {

namespace {

// A station whose faults lie in its components: the file itself is well formed.
class FaultsOfAStation : public FolderTest {
protected:
    // The messages about a station around these components (from line 8 on),
    // without the folder.
    std::string faults(const std::string& components, const std::string& connections = "") const {
        const Result result = station({"show", write("s.xml", stationText(components, connections))});
        EXPECT_EQ(result.code, 2) << result.err;
        EXPECT_EQ(result.out, "");
        std::string text = result.err;
        const std::string prefix = folder().string() + "/";
        for (auto at = text.find(prefix); at != std::string::npos; at = text.find(prefix))
            text.erase(at, prefix.size());
        return text;
    }

    static std::string component(unsigned id, const std::string& name, const std::string& type,
                                 const std::string& keys, unsigned parent = 2) {
        return fmt::format("  <smart_component id=\"{}\" name=\"{}\">\n    <type string=\"{}\" />\n"
                           "    <parent uint=\"{}\" />\n{}  </smart_component>\n",
                           id, name, type, parent, keys);
    }
};

}  // namespace

TEST_F(FaultsOfAStation, AnUnknownTypeIsNamedWithItsPlace) {
    EXPECT_EQ(faults(component(10, "A", "Buffer", "") + component(11, "B", "Bufer", "")),
              "s.xml:12:3: component \"B\" (id 11) has the type \"Bufer\", which no library brings; "
              "load the one that does with --components, or correct the type\n");
}

TEST_F(FaultsOfAStation, AnIdThatIsTakenIsNamedWithTheOther) {
    EXPECT_EQ(faults(component(10, "A", "Buffer", "") + component(10, "B", "Buffer", "")),
              "s.xml:12:3: component \"B\" (id 10) has the id of component \"A\" (id 10) in line 8; "
              "give it one that is free\n");
    EXPECT_EQ(faults(component(1, "A", "Buffer", "")),
              "s.xml:8:3: component \"A\" (id 1) has the id of the station; give it one that is "
              "free\n");
}

TEST_F(FaultsOfAStation, AComponentWithoutAnIdIsNamed) {
    EXPECT_EQ(faults("  <smart_component name=\"A\">\n    <type string=\"Buffer\" />\n"
                     "    <parent uint=\"2\" />\n  </smart_component>\n"),
              "s.xml:8:3: the smart_component \"A\" has no id; give it one that is free\n");
}

TEST_F(FaultsOfAStation, APropertyOfAnUnknownTypeIsNamed) {
    EXPECT_EQ(faults(component(10, "A", "Buffer",
                               "    <property id=\"1\" name=\"P\" string=\"x\">\n"
                               "      <type string=\"Text\" />\n    </property>\n")),
              "s.xml:12:7: \"Text\" is no property type; write ObjectId, Int32, Double, String, "
              "Bool, Vector3, Orient, ReferenceFrame, Index or Error\n");
}

TEST_F(FaultsOfAStation, AParentThatIsNoneIsNamed) {
    EXPECT_EQ(faults(component(10, "A", "Buffer", "", 77)),
              "s.xml:10:5: component \"A\" (id 10) has the parent 77, which is no component; name "
              "the component that contains it, or the station logic\n");
    EXPECT_EQ(faults(component(10, "A", "Buffer", "") + component(11, "B", "Buffer", "", 10)),
              "s.xml:14:5: component \"B\" (id 11) has the parent 10, which cannot contain "
              "components; name an aggregation, or the station logic\n");
}

TEST_F(FaultsOfAStation, ComponentsThatContainEachOtherAreNamed) {
    const std::string text =
        faults(component(10, "A", "Group", "", 11) + component(11, "B", "Group", "", 10));
    EXPECT_NE(text.find("s.xml:10:5: component \"A\" (id 10) contains itself"), std::string::npos);
    EXPECT_NE(text.find("s.xml:14:5: component \"B\" (id 11) contains itself"), std::string::npos);
}

TEST_F(FaultsOfAStation, AConnectionThatLeadsNowhereIsNamed) {
    // 2:1 -> 10:9, of which the station logic has no signal 1 and 10 no signal 9.
    const std::string connection = "    <connection id=\"1\">\n"
                                   "      <source uint64=\"8589934593\" />\n"
                                   "      <destination uint64=\"42949672969\" />\n"
                                   "      <index uint=\"0\" />\n    </connection>\n";
    EXPECT_EQ(faults(component(10, "A", "Buffer", ""), connection),
              "s.xml:8:7: the source of a connection names the signal 1 of component \"Station "
              "Logic\" (id 2), which has none with that id; name one that it has, or delete the "
              "connection\n"
              "s.xml:9:7: the destination of a connection names the signal 9 of component \"A\" (id "
              "10), which has none with that id; name one that it has, or delete the connection\n");
    const std::string text = faults("", connection);
    EXPECT_NE(text.find("s.xml:9:7: the destination of a connection names the component 10, which "
                        "is not there"),
              std::string::npos)
        << text;
}

TEST_F(FaultsOfAStation, AnIndexThatIsNoPlaceIsNamed) {
    const std::string text = faults("", "    <connection id=\"1\">\n"
                                        "      <index string=\"first\" />\n    </connection>\n");
    EXPECT_NE(text.find("s.xml:8:7: the index of a connection is no place"), std::string::npos);
    EXPECT_NE(text.find("s.xml:7:5: the source of a connection cannot be read"), std::string::npos);
}

TEST_F(FaultsOfAStation, ASignalThatIsMalformedIsNamed) {
    EXPECT_EQ(faults(component(10, "A", "Buffer",
                               "    <signal id=\"1\">\n      <name int=\"1\" />\n"
                               "      <type string=\"DigitalInput\" />\n"
                               "      <value string=\"high\" />\n"
                               "      <auto_reset string=\"maybe\" />\n    </signal>\n"
                               "    <signal id=\"1\">\n    </signal>\n    <signal />\n")),
              "s.xml:12:7: the name of a signal is no text; write it as string=\"...\"\n"
              "s.xml:14:7: \"value\" holds \"high\", which is no number; write a number\n"
              "s.xml:15:7: \"auto_reset\" holds \"maybe\", which is no bool; write a bool\n"
              "s.xml:17:5: a signal of component \"A\" (id 10) has the id 1 of the one in line 11; "
              "give each its own\n"
              "s.xml:19:5: a signal of component \"A\" (id 10) has no id; give it one\n");
}

TEST_F(FaultsOfAStation, APropertyTextThatItsTypeCannotUseIsNamed) {
    EXPECT_EQ(faults(component(10, "T", "Timer",
                               "    <property id=\"1\" name=\"Mode\" string=\"Slow\">\n"
                               "      <type string=\"String\" />\n    </property>\n")),
              "s.xml:11:5: the property \"Mode\" of component \"T\" (id 10) holds \"Slow\", which its "
              "type cannot use; write one of OnDelay, OffDelay, Pulse\n");
}

TEST_F(FaultsOfAStation, AReferenceToNothingIsNamed) {
    const auto group = [](const std::string& value) {
        return component(10, "G", "Group",
                         "    <property id=\"11\" name=\"Part\" string=\"" + value +
                             "\">\n      <type string=\"ObjectId\" />\n    </property>\n");
    };
    EXPECT_EQ(faults(group("77")),
              "s.xml:11:5: the property \"Part\" of component \"G\" (id 10) names the object 77, "
              "which is not there; name one that is, or 0\n");
    EXPECT_EQ(faults(group("none")),
              "s.xml:11:5: the property \"Part\" of component \"G\" (id 10) holds \"none\", which is "
              "no object id; write a number, 0 for none\n");
}

TEST_F(FaultsOfAStation, AChildThatIsNotThereIsNamed) {
    EXPECT_EQ(faults("", "    <child uint=\"77\" />\n"),
              "s.xml:7:5: component \"Station Logic\" (id 2) lists the child 77, which is not there; "
              "take the line out\n");
}

TEST_F(FaultsOfAStation, AControllerIsInspectedToo) {
    EXPECT_EQ(faults("  <controller id=\"2\" name=\"R\">\n    <signal id=\"1\">\n"
                     "      <type string=\"Digital\" />\n    </signal>\n  </controller>\n"),
              "s.xml:8:3: controller \"R\" (id 2) has the id of component \"Station Logic\" (id 2) in "
              "line 3; give it one that is free\n"
              "s.xml:9:5: \"Digital\" is no signal type; write DigitalInput, DigitalOutput, "
              "AnalogInput, AnalogOutput, GroupInput or GroupOutput\n");
}

TEST_F(FaultsOfAStation, AllFaultsAreReportedInTheOrderOfTheFile) {
    const std::string text = faults(component(10, "A", "Buffer", "", 77) +
                                    component(10, "B", "Buffer", "    <child uint=\"5\" />\n", 2));
    EXPECT_LT(text.find("s.xml:10:5"), text.find("s.xml:12:3"));
    EXPECT_LT(text.find("s.xml:12:3"), text.find("s.xml:15:5"));
}

// Each line of the list: file, line, column, message.
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

}  // namespace trel::test
