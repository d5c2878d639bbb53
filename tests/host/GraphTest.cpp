#include <fmt/format.h>
#include <gmock/gmock.h>

#include <locale>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>

#include "tests/host/Program.h"
#include "tests/host/StationFile.h"

namespace trel::test {

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class Graph : public FolderTest {
protected:
    static std::string example() {
        return (sourceFolder() / "examples/pick_and_place/station.xml").string();
    }
    static std::string dotOf(const std::string& file, std::vector<std::string> options = {}) {
        options.insert(options.begin(), {"graph", file});
        const Result result = station(options);
        EXPECT_EQ(result.code, 0) << result.err;
        return result.out;
    }

    // Where Graphviz puts the middle of each node, from the left.
    std::map<std::string, double> drawn(const std::string& dot) const {
        const Result plain = stationAt("/usr/bin/dot", {"-Tplain", write("graph.dot", dot)});
        EXPECT_EQ(plain.code, 0) << plain.err;
        EXPECT_EQ(plain.err, "");
        std::map<std::string, double> result;
        std::istringstream lines(plain.out);
        for (std::string line; std::getline(lines, line);) {
            std::istringstream words(line);
            words.imbue(std::locale::classic());
            std::string kind, name;
            double x = 0;
            if (words >> kind >> name >> x && kind == "node") result[name] = x;
        }
        return result;
    }
};

// Ten groups, each with 99 buffers in a row.
StationFile thousand() {
    StationFile file;
    for (unsigned group = 0; group != 10; ++group) {
        const unsigned id = 10'000 + group;
        file.add(id, fmt::format("Row {}", group), "Group",
                 {{"In", "DigitalInput"}, {"Out", "DigitalOutput"}});
        for (unsigned n = 0; n != 99; ++n) {
            const unsigned buffer = 100 * (group + 1) + n;
            file.gate(buffer, fmt::format("B{}", n), "Buffer", 1, id);
            if (n == 0)
                file.connect({id, 1}, {buffer, 1}, id);
            else
                file.connect({buffer - 1, 2}, {buffer, 1}, id);
        }
        file.connect({100 * (group + 1) + 98, 2}, {id, 2}, id);
        if (group > 0) file.connect({id - 1, 2}, {id, 1});
    }
    return file;
}

}  // namespace

TEST_F(Graph, ShowsFramesPortsAndTheOrderOfConnections) {
    const std::string dot = dotOf(example());
    EXPECT_THAT(dot, AllOf(StartsWith("digraph station {\n"),
                           HasSubstr("  subgraph cluster_10 {\n    label=\"Feeding\";"),
                           HasSubstr("<B>Belt</B><BR/><FONT POINT-SIZE=\"8\">Conveyor</FONT>"),
                           HasSubstr("<TD PORT=\"s1\" ALIGN=\"LEFT\">Run</TD>"),
                           HasSubstr("    c10i:s1 -> c14:s1 [label=\"0\"];\n"),
                           HasSubstr("    c12:p4 -> c10o:p11 [style=dashed, ")));
}

TEST_F(Graph, ShowsValuesWhereTheyAreAskedFor) {
    EXPECT_THAT(dotOf(example()), Not(HasSubstr("200.00 mm/s")));
    EXPECT_THAT(dotOf(example(), {"--values"}),
                AllOf(HasSubstr("Run = 0</TD>"), HasSubstr("Speed = 200.00 mm/s</TD>")));
}

TEST_F(Graph, IsDrawnByGraphvizAsAPictureWithAllNames) {
    const Result result = station({"graph", example(), "-o", path("cell.svg"), "--values"});
    ASSERT_EQ(result.code, 0) << result.err;
    const std::string svg = readFile(path("cell.svg"));
    for (const char* const name : {"Feeding", "Gripper", "Lamp 2", "ResetCount = 0", "controller"})
        EXPECT_THAT(svg, HasSubstr(">" + std::string(name) + "<"));
    EXPECT_EQ(stationAt("/usr/bin/xmllint", {"--noout", "--nonet", path("cell.svg")}).code, 0);
    ASSERT_EQ(station({"graph", example(), "-o", path("cell.png")}).code, 0);
    EXPECT_THAT(readFile(path("cell.png")), StartsWith("\x89PNG"));
}

// Drawn with --depth 1. Where things stand depends on the fonts of a machine.
TEST_F(Graph, ThePictureOfTheReadmeShowsTheExampleAsItIs) {
    const auto texts = [](const std::string& file) {
        std::multiset<std::string> found;
        const std::string svg = readFile(file);
        const std::regex text(R"(<(text|title)[^>]*>([^<]*)<)");
        for (std::sregex_iterator match(svg.begin(), svg.end(), text), end; match != end; ++match)
            found.insert((*match)[2]);
        return found;
    };
    ASSERT_EQ(station({"graph", example(), "-o", path("cell.svg"), "--depth", "1"}).code, 0);
    const auto shown = texts((sourceFolder() / "docs/pick_and_place.svg").string());
    EXPECT_GT(shown.size(), 30u);
    EXPECT_EQ(shown, texts(path("cell.svg")));
}

TEST_F(Graph, AnyNameCanBeShown) {
    StationFile file;
    file.add(10, "a \\ &lt;b&gt; &amp; {c} &quot;d&quot; | ü", "Group",
             {{"&lt;in&gt;", "DigitalInput"}});
    file.gate(11, "", "Buffer", 1, 10);
    file.connect({10, 1}, {11, 1}, 10);
    const auto nodes = drawn(dotOf(write("s.xml", file.text())));
    EXPECT_TRUE(nodes.contains("c11"));
    EXPECT_TRUE(nodes.contains("c10i"));
}

TEST_F(Graph, ChildrenStandInTheColumnsOfTheDiagram) {
    StationFile file;
    file.gate(10, "Right", "Buffer");
    file.gate(11, "Middle", "Buffer");
    file.gate(12, "Left", "Buffer");
    const auto withPositions = [&](const std::string& keys) {
        std::string text = file.text();
        return text.insert(text.find("    <child uint=\"10\" />"), keys);
    };
    const std::string dot = dotOf(write(
        "s.xml", withPositions("    <xy vec3=\"10 300 40\" />\n    <xy vec3=\"11 200 40\" />\n"
                               "    <xy vec3=\"12 100 40\" />\n")));
    EXPECT_THAT(dot, HasSubstr("pos=\"300,-40!\""));
    auto nodes = drawn(dot);
    EXPECT_LT(nodes.at("c12"), nodes.at("c11"));
    EXPECT_LT(nodes.at("c11"), nodes.at("c10"));
}

TEST_F(Graph, OfAThousandComponentsTheGroupsAreClosedUnlessADepthIsGiven) {
    const std::string file = write("s.xml", thousand().text());
    const auto closed = drawn(dotOf(file));
    EXPECT_EQ(closed.size(), 10u);
    EXPECT_THAT(dotOf(file), HasSubstr("Group, 99 inside"));
    const std::string open = dotOf(file, {"--depth", "2"});
    EXPECT_THAT(open, AllOf(HasSubstr("<B>B98</B>"), Not(HasSubstr("inside"))));
}

TEST_F(Graph, ADepthClosesWhatLiesBelow) {
    const std::string dot = dotOf(example(), {"--depth", "2"});
    EXPECT_THAT(dot, AllOf(HasSubstr("subgraph cluster_20 {"), HasSubstr("Group, 2 inside"),
                           Not(HasSubstr("<B>Gripper</B>"))));
}

TEST_F(Graph, WithoutGraphvizThereIsAMessageAndTheTextStillWorks) {
    const auto run = [&](const std::string& picture) {
        return stationAt("/usr/bin/env", {"-i", "PATH=/nowhere", STATION_PROGRAM, "graph",
                                          example(), "-o", picture});
    };
    const Result result = run(path("cell.svg"));
    EXPECT_EQ(result.code, 6);
    EXPECT_EQ(result.err, path("cell.svg") + ": cannot be drawn without Graphviz; install its "
                                             "package graphviz, or let the name end in .dot\n");
    EXPECT_EQ(run(path("cell.dot")).code, 0);
    EXPECT_EQ(readFile(path("cell.dot")), dotOf(example()));
    EXPECT_EQ(station({"graph", example(), "-o", path("cell.bmp")}).code, 3);
}

}  // namespace trel::test
