#include <gmock/gmock.h>

#include <fmt/format.h>

#include <string>

#include "tests/host/Program.h"
#include "tests/host/Row.h"

// Stations that nobody draws, given to the program as files.

namespace trel::test {

namespace {

using ::testing::HasSubstr;

constexpr unsigned depth = 100'000;
constexpr unsigned first = 10;

// One group in the other, each handing its input on to the one in it.
std::string nestedText() {
    std::string text;
    for (unsigned i = 0; i != depth; ++i) {
        const unsigned id = first + i;
        fmt::format_to(std::back_inserter(text),
                       "  <smart_component id=\"{}\" name=\"G\">\n"
                       "    <type string=\"Group\" />\n    <parent uint=\"{}\" />\n"
                       "    <signal id=\"1\">\n      <name string=\"In\" />\n"
                       "      <type string=\"DigitalInput\" />\n      <value int=\"0\" />\n"
                       "    </signal>\n    <role_object uint=\"0\" />\n",
                       id, i == 0 ? 2 : id - 1);
        if (i + 1 != depth)
            fmt::format_to(std::back_inserter(text),
                           "    <connection id=\"1\">\n      <source uint64=\"{}\" />\n"
                           "      <destination uint64=\"{}\" />\n      <index uint=\"0\" />\n"
                           "    </connection>\n    <child uint=\"{}\" />\n",
                           (static_cast<unsigned long long>(id) << 32) | 1,
                           (static_cast<unsigned long long>(id + 1) << 32) | 1, id + 1);
        text += "  </smart_component>\n";
    }
    return stationText(text, "    <child uint=\"10\" />\n");
}

class HostileTest : public FolderTest {};

}  // namespace

TEST_F(HostileTest, GroupsAHundredThousandDeepAreShownRunAndSaved) {
    const std::string file = write("deep.xml", nestedText());
    const Result shown = station({"show", file});
    ASSERT_EQ(shown.code, 0) << shown.err;
    EXPECT_THAT(shown.out, HasSubstr("G  Group  #10\n"));
    EXPECT_THAT(shown.out, HasSubstr(fmt::format("G  Group  #{}\n", first + depth - 1)));

    const Result ran = station({"run", file, "--until", "10ms", "--save", path("saved.xml")});
    ASSERT_EQ(ran.code, 0) << ran.err;
    EXPECT_EQ(readFile(path("saved.xml")), readFile(file));
}

TEST_F(HostileTest, AValuePassesAHundredThousandComponentsInARow) {
    const std::string file = write("row.xml", rowText(depth, first, false));
    const std::string scenario = write("row.yaml", fmt::format("timeline:\n"
                                                               "  - at: 0s\n"
                                                               "    set: {{B{}.In: 1}}\n"
                                                               "    expect: {{B{}.Out: 1}}\n",
                                                               first, first + depth - 1));
    const Result ran = station({"run", file, "--scenario", scenario});
    EXPECT_EQ(ran.code, 0) << ran.err;
}

}  // namespace trel::test
