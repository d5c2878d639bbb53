#include <gmock/gmock.h>

#include <sstream>
#include <string>

#include "host/Run.h"
#include "tests/host/Program.h"

// The messages that docs/run.md shows are expected, to the letter, from the program by the
// tests named here.

namespace trel::test {

namespace {

using ::testing::HasSubstr;

// A text without the quotes and line ends of string literals.
std::string joined(const std::string& source) {
    std::string text;
    std::istringstream words(source);
    for (std::string word; words >> word;) text += word;
    std::string result;
    for (std::size_t i = 0; i != text.size(); ++i)
        if (text[i] != '"' && text[i] != '\\') result += text[i];
    return result;
}

std::string expectedIn(const std::string& file) {
    return joined(readFile(sourceFolder() / "tests/host" / file));
}

}  // namespace

TEST(RunDocs, ShowsRealMessages) {
    std::istringstream lines(readFile(sourceFolder() / "docs/run.md"));
    const std::string tests = expectedIn("BudgetTest.cpp") + expectedIn("ContainedFaultTest.cpp");
    bool isInside = false;
    int shown = 0;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("```")) {
            isInside = !isInside;
        } else if (isInside) {
            ++shown;
            const auto at = line.find("!!");
            EXPECT_THAT(tests, HasSubstr(joined(at == line.npos ? line : line.substr(at)))) << line;
        }
    }
    EXPECT_EQ(shown, 5);
}

TEST(RunDocs, NamesEveryOptionAndTheUsualBudget) {
    const std::string docs = readFile(sourceFolder() / "docs/run.md");
    for (const char* const option : {"--watch PATTERN", "--json", "--csv FILE", "--vcd FILE",
                                     "--junit FILE", "--report FILE", "--save FILE"}) {
        EXPECT_THAT(docs, HasSubstr("| `" + std::string(option) + "` | "));
        EXPECT_THAT(station({"run", "--help"}).out, HasSubstr(option));
    }
    EXPECT_EQ(host::RunRules::usualBudget, 2'000'000u);
    EXPECT_THAT(docs, HasSubstr("(`--budget`, 2,000,000 where nothing is said)"));
}

}  // namespace trel::test
