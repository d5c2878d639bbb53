#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "tests/host/Program.h"

namespace trel::test {

namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

class Installed : public FolderTest {
protected:
    // Runs a command of the shell, and shows what it printed if it fails.
    void carryOut(const std::string& command) const {
        const std::string log = path("log");
        ASSERT_EQ(std::system((command + " >" + log + " 2>&1").c_str()), 0)
            << command << '\n' << readFile(log);
    }
    std::string source(const std::string& name) const {
        return (sourceFolder() / "tests/installed" / name).string();
    }
};

}  // namespace

// With nothing of the tree but what is installed: the library is found by its name.
TEST_F(Installed, ALibraryThatIsBuiltOutsideTheTreeLoadsAndRuns) {
    const std::string prefix = path("prefix");
    carryOut("cmake --install " BUILD_FOLDER " --prefix " + prefix);
    carryOut("cmake -S " + source("library") + " -G Ninja -B " + path("build") +
             " -DCMAKE_PREFIX_PATH=" + prefix +
             " -DCMAKE_CXX_COMPILER=" COMPILER " -DCMAKE_CXX_FLAGS='" COMPILER_FLAGS "'");
    carryOut("cmake --build " + path("build"));

    std::filesystem::create_directory(prefix + "/lib/station");
    std::filesystem::rename(path("build/libcounting.so"), prefix + "/lib/station/libcounting.so");
    const std::string program = prefix + "/bin/station";
    const Result types = stationAt(program, {"types", "Adder", "--components", "counting"});
    EXPECT_EQ(types.out, "Adder  (libcounting.so)\n"
                         "  Adder: adds Increment to Total whenever Add is switched on.\n"
                         "  properties\n    Increment : Int32 = 2\n"
                         "  signals\n    Add : DigitalInput\n    Total : GroupOutput\n")
        << types.err;
    const Result run =
        stationAt(program, {"run", source("station.xml"), "--scenario", source("scenario.yaml"),
                            "--components", "counting"});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_THAT(run.out, HasSubstr("expectations: 2 held, 0 failed"));
    // Without it, the program knows who brings the type.
    EXPECT_THAT(stationAt(program, {"check", source("station.xml")}).out,
                HasSubstr("load " + prefix + "/lib/station/libcounting.so with --components"));
}

}  // namespace trel::test
