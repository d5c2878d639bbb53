#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/host/Program.h"

namespace trel::test {

namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;

// A block of code in a page, and the comment before it that says what it is.
struct Block {
    std::string what;  // "file: NAME", "run", "prints"
    std::string code;
};

std::vector<Block> blocksOf(const std::string& page) {
    const std::string text = readFile(sourceFolder() / page);
    std::vector<Block> blocks;
    for (std::size_t at = text.find("<!-- "); at != text.npos; at = text.find("<!-- ", at)) {
        at += 5;
        const std::size_t end = text.find(" -->\n```", at);
        const std::size_t code = text.find('\n', end + 5) + 1;
        const std::size_t behind = text.find("\n```", code) + 1;
        blocks.push_back({text.substr(at, end - at), text.substr(code, behind - code)});
        at = behind;
    }
    return blocks;
}

class Installed : public FolderTest {
protected:
    // The reader of a page has nothing of the tree but what is installed in $HOME/trel.
    void SetUp() override {
        FolderTest::SetUp();
        setenv("HOME", folder().c_str(), 1);
        setenv("CXX", COMPILER, 1);
        setenv("CXXFLAGS", COMPILER_FLAGS, 1);
        setenv("CMAKE_GENERATOR", "Ninja", 1);
        carryOut("cmake --install " BUILD_FOLDER " --prefix " + path("trel"));
    }

    // Runs commands of the shell in the folder, and gives what they print.
    std::string carryOut(const std::string& commands) const {
        const std::string script = write("commands", "set -e; cd " + path("") + "\n" + commands);
        const int status = std::system(("sh " + script + " >" + path("log") + " 2>&1").c_str());
        const std::string printed = readFile(path("log"));
        EXPECT_EQ(status, 0) << commands << '\n' << printed;
        return printed;
    }
};

}  // namespace

TEST_F(Installed, WhoFollowsThePageOnComponentTypesHasOneThatRuns) {
    std::string printed;
    unsigned steps = 0;
    for (const auto& [what, code] : blocksOf("docs/component-types.md")) {
        if (what == "run")
            printed = carryOut(code);
        else if (what == "prints")
            EXPECT_THAT(printed, EndsWith(code));
        else
            write(what.substr(std::string("file: ").size()), code);
        ++steps;
    }
    EXPECT_EQ(steps, 7u);
    EXPECT_THAT(printed, HasSubstr("expectations: 2 held, 0 failed"));

    // By its name; and without it, the program knows who brings the type.
    const std::string installed = path("trel/lib/station/libcounting.so");
    std::filesystem::create_directory(path("trel/lib/station"));
    std::filesystem::rename(path("build/libcounting.so"), installed);
    EXPECT_THAT(carryOut("trel/bin/station types Adder --components counting"),
                HasSubstr("Adder  (libcounting.so)"));
    EXPECT_THAT(stationAt(path("trel/bin/station"), {"check", path("station.xml")}).out,
                HasSubstr("load " + installed + " with --components"));
}

TEST_F(Installed, AProgramFindsTheLibraryByPkgConfig) {
    write("main.cpp",
          "#include \"smartcomp/StationLogic.h\"\n"
          "int main() { return trel::smartcomp::StationLogic::inst()->id() == 2 ? 0 : 1; }\n");
    carryOut("export PKG_CONFIG_PATH=trel/lib/pkgconfig\n"
             "test $(pkg-config --modversion trelsmartcomp) = " VERSION "\n"
             "$CXX $CXXFLAGS main.cpp -o main $(pkg-config --cflags --libs trelsmartcomp) "
             "-Wl,-rpath,$HOME/trel/lib\n"
             "./main");
}

TEST_F(Installed, TheLibrariesHaveVersionedNames) {
    EXPECT_TRUE(std::filesystem::is_symlink(path("trel/lib/libtrelsmartcomp.so")));
    EXPECT_TRUE(std::filesystem::exists(path("trel/lib/libtrelsmartcomp.so." VERSION)));
}

}  // namespace trel::test
