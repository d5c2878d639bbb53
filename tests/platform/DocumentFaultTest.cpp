#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "platform/sdf/Document.h"
#include "platform/station/Station.h"
#include "tests/platform/Files.h"
#include "tests/support/Expect.h"

namespace {

using sdf::Document;
using sdf::DocumentError;
using namespace trel::test;

std::string messageOf(std::string_view text) {
    try {
        Document::fromText(text, "cell.xml");
    } catch (const DocumentError& error) {
        return error.what();
    }
    return "loaded";
}

struct Fault {
    unsigned line;
    unsigned column;
    std::string message;
};

// The list beside the malformed files: name, line, column and message, with tabs
// between them.
std::map<std::string, Fault> expectedFaults() {
    std::map<std::string, Fault> faults;
    std::ifstream list(testFiles() / "malformed" / "expected.txt");
    for (std::string line; std::getline(list, line);) {
        std::istringstream fields(line);
        std::string name, number;
        Fault fault;
        std::getline(fields, name, '\t');
        std::getline(fields, number, '\t');
        fault.line = static_cast<unsigned>(std::stoul(number));
        std::getline(fields, number, '\t');
        fault.column = static_cast<unsigned>(std::stoul(number));
        std::getline(fields, fault.message);
        faults[name] = fault;
    }
    return faults;
}

TEST(MalformedFile, GivesItsOwnMessageAndPlaceAndChangesNothing) {
    const auto faults = expectedFaults();
    ASSERT_GE(faults.size(), 30u);
    trel::Station& station = trel::Station::inst();
    const auto element = station.element();
    const std::string before = station.text();
    std::size_t files = 0;
    for (const auto& file : xmlFilesIn(testFiles() / "malformed")) {
        ++files;
        const std::string name = file.filename().string();
        ASSERT_TRUE(faults.contains(name)) << name << " is not in the list";
        const Fault& fault = faults.at(name);
        try {
            station.open(file);
            ADD_FAILURE() << name << " was loaded";
        } catch (const DocumentError& error) {
            EXPECT_EQ(error.place().line, fault.line) << name;
            EXPECT_EQ(error.place().column, fault.column) << name;
            EXPECT_EQ(error.fault(), fault.message) << name;
            EXPECT_EQ(error.what(), file.string() + ":" + std::to_string(fault.line) + ":" +
                                        std::to_string(fault.column) + ": " + fault.message);
        }
        EXPECT_EQ(station.element(), element) << name;
        EXPECT_EQ(station.text(), before) << name;
    }
    EXPECT_EQ(files, faults.size()) << "the list names files that are not there";
}

TEST(MalformedFile, SaysInOneLineWhatIsWrongAndWhatIsExpected) {
    for (const auto& [name, fault] : expectedFaults()) {
        EXPECT_NE(fault.message.find("; "), std::string::npos) << name;
        EXPECT_NE(fault.message.find("expected"), std::string::npos) << name;
    }
}

// Whoever wants to hear of all faults is told of each, and gets the rest.
TEST(MalformedFile, IsReadBehindIdsAndValuesThatAreNone) {
    std::vector<sdf::ValueFault> faults;
    const Document document = Document::fromText("<station>\n"
                                                 "  <a id=\"x\" int=\"1\" />\n"
                                                 "  <b id=\"0\" int=\"one\" />\n"
                                                 "  <c int=\"1\" double=\"2\"><value int=\"3\" />"
                                                 "<d int=\"4\" /></c>\n"
                                                 "</station>\n",
                                                 "cell.xml", faults);
    using Kind = sdf::ValueFault::Kind;
    std::vector<std::tuple<Kind, unsigned, unsigned, std::string>> told;
    for (const auto& fault : faults)
        told.emplace_back(fault.kind, fault.place.line, fault.place.column, fault.element->tag());
    EXPECT_EQ(told, (std::vector<std::tuple<Kind, unsigned, unsigned, std::string>>{
                        {Kind::Id, 2, 10, "a"},
                        {Kind::NoId, 3, 10, "b"},
                        {Kind::Value, 3, 18, "b"},
                        {Kind::SecondValue, 4, 14, "c"},
                        {Kind::SecondValue, 4, 25, "c"}}));
    EXPECT_EQ(faults.at(2).fault, "\"one\" is no value of type int; a whole number from "
                                  "-2147483648 to 2147483647 is expected");
    EXPECT_EQ(document.text(), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                               "<station>\n  <a int=\"1\" />\n  <b />\n"
                               "  <c int=\"1\">\n    <d int=\"4\" />\n  </c>\n</station>\n");
}

TEST(MalformedFile, ThatIsLargeTellsOfEachFaultAtItsPlace) {
    constexpr unsigned lines = 5000;
    std::string text = "<station int='1'>\n";
    for (unsigned i = 0; i < lines; ++i) text += "  <a id='x'/><value int='2'/><b int='one'/>\n";
    std::vector<sdf::ValueFault> faults;
    Document::fromText(text + "</station>", "cell.xml", faults);
    ASSERT_EQ(faults.size(), 3 * lines);
    for (unsigned i = 0; i < lines; ++i)
        for (const auto& [fault, column] :
             {std::pair(faults[3 * i], 10u), {faults[3 * i + 1], 14u}, {faults[3 * i + 2], 38u}}) {
            ASSERT_EQ(fault.place.line, i + 2) << fault.fault;
            ASSERT_EQ(fault.place.column, column) << fault.fault << " of line " << i + 2;
        }
    EXPECT_EQ(messageOf(text + "</stat>").substr(0, 16), "cell.xml:5002:1:");
}

TEST(MalformedFile, IsTheSameWithForeignLineEnds) {
    EXPECT_EQ(messageOf("<a>\r\n\r<b x=1/></a>").substr(0, 13), "cell.xml:3:6:");
}

TEST(MalformedFile, CutAtAnyByteLoadsOrGivesAFault) {
    for (const char* name : {"mixed_content", "value_types", "non_ascii", "instructions"}) {
        const std::string sample =
            bytesOf(testFiles() / "roundtrip" / (std::string(name) + ".xml"));
        std::size_t loaded = 0;
        for (std::size_t length = 0; length <= sample.size(); ++length) {
            const std::string message = messageOf(sample.substr(0, length));
            if (message == "loaded")
                ++loaded;
            else
                ASSERT_EQ(message.substr(0, 9), "cell.xml:") << length;
        }
        EXPECT_GE(loaded, 1u) << "the whole file loads";
        EXPECT_LE(loaded, 40u) << "only what stands behind the root may be missing";
    }
}

// Whatever single byte is damaged, the file loads or is refused with a place.
TEST(MalformedFile, DamagedAtAnyByteLoadsOrGivesAFault) {
    const std::string sample = bytesOf(testFiles() / "roundtrip" / "mixed_content.xml");
    for (const char damage : {'\0', '<', '>', '&', '"', '\'', ' ', '\xC3', '-', ']', 'a', '/'})
        for (std::size_t at = 0; at < sample.size(); ++at) {
            std::string text = sample;
            text[at] = damage;
            const std::string message = messageOf(text);
            if (message == "loaded") {
                const std::string once = Document::fromText(text, "").text();
                ASSERT_EQ(Document::fromText(once, "").text(), once) << at << damage;
            }
        }
}

TEST(MalformedFile, WithAHundredThousandAttributesIsReadInPassing) {
    std::string text = "<a";
    for (int i = 0; i < 100000; ++i) text += " a" + std::to_string(i) + "='1'";
    EXPECT_EQ(messageOf(text + "/>"), "loaded");
    EXPECT_EQ(messageOf(text + " a5='2'/>"),
              "cell.xml:1:" + std::to_string(text.size() + 2) +
                  ": the attribute \"a5\" stands twice; attributes of different names "
                  "are expected");
}

TEST(MalformedFile, MayNestAsDeepAsTheLimit) {
    const auto nested = [](unsigned depth) {
        std::string text;
        for (unsigned i = 0; i < depth; ++i) text += "<a>";
        for (unsigned i = 0; i < depth; ++i) text += "</a>";
        return text;
    };
    EXPECT_EQ(messageOf(nested(Document::maxDepth)), "loaded");
    EXPECT_EQ(messageOf(nested(Document::maxDepth + 1)),
              "cell.xml:1:769: <a> stands too deep; at most 256 elements inside each other are "
              "expected");
}

TEST(MalformedFile, ThatIsMissingIsNamed) {
    const TemporaryFolder folder;
    const std::string file = folder / "none.xml";
    expectThrow<DocumentError>(file + ": the file cannot be opened: No such file or directory; a "
                                      "path that exists is expected",
                               [&] { Document::read(file); });
}

TEST(MalformedFile, ThatIsAFolderIsNamed) {
    const TemporaryFolder folder;
    expectThrow<DocumentError>(folder.path().string() +
                                   ": the file cannot be read: Is a directory; a file is expected",
                               [&] { Document::read(folder.path()); });
}

TEST(DocumentError, HasNoPlaceInItsTextWhereThereIsNone) {
    const DocumentError error("a.xml", {}, "wrong; right is expected");
    EXPECT_STREQ(error.what(), "a.xml: wrong; right is expected");
    EXPECT_EQ(error.file(), "a.xml");
    EXPECT_EQ(error.place().line, 0u);
}

}  // namespace
