#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gmock/gmock.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "tests/host/Program.h"

namespace trel::test {

namespace {

using ::testing::HasSubstr;

// The names under the heading of the subcommands.
std::vector<std::string> subcommands() {
    std::vector<std::string> names;
    std::istringstream help(station({"--help"}).out);
    bool behind = false;
    for (std::string line; std::getline(help, line);) {
        if (line.starts_with("Subcommands"))
            behind = true;
        else if (behind && line.starts_with("  ") && line[2] != ' ')
            names.push_back(line.substr(2, line.find(' ', 2) - 2));
    }
    return names;
}

// The arguments behind "Example: station" in a help.
std::vector<std::string> exampleIn(const std::string& help) {
    const std::string mark = "Example: station ";
    const auto start = help.find(mark);
    if (start == std::string::npos) return {};
    std::istringstream line(help.substr(start + mark.size(),
                                        help.find('\n', start) - start - mark.size()));
    std::vector<std::string> arguments;
    for (std::string argument; line >> argument;) arguments.push_back(argument);
    return arguments;
}

class Help : public FolderTest {};

}  // namespace

// And stands in the documentation. In a folder with the files that it names.
TEST_F(Help, OfEverySubcommandHasAnExampleThatRuns) {
    const auto files = sourceFolder() / "tests/files/help";
    const std::string page = readFile(sourceFolder() / "docs/station.md");
    const auto names = subcommands();
    EXPECT_GE(names.size(), 11u);
    for (const std::string& name : names) {
        for (const std::string copy : {"station.xml", "before.xml", "after.xml"})
            std::filesystem::copy_file(files / "station.xml", path(copy),
                                       std::filesystem::copy_options::overwrite_existing);
        std::filesystem::copy_file(files / "scenario.yaml", path("scenario.yaml"),
                                   std::filesystem::copy_options::overwrite_existing);
        const auto example = exampleIn(station({name, "--help"}).out);
        ASSERT_FALSE(example.empty()) << name;
        EXPECT_EQ(example.front(), name);
        EXPECT_THAT(page, HasSubstr(fmt::format("| `station {}` |\n", fmt::join(example, " "))));
        std::filesystem::current_path(folder());
        const Result result = station(example);
        std::filesystem::current_path("/");
        EXPECT_EQ(result.code, 0) << name << '\n' << result.out << result.err;
    }
}

}  // namespace trel::test
