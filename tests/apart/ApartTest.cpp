#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

// Stations taken apart until nothing is left: in one process in random order, and
// as they were saved before in a new process, in reverse order. All of them, under
// the sanitizers:
//
//   TREL_APART_STATIONS=200 build/asan/bin/apart_tests

namespace trel::test {
namespace {

unsigned stations() {
    const char* const wanted = std::getenv("TREL_APART_STATIONS");
    return wanted ? static_cast<unsigned>(std::strtoul(wanted, nullptr, 10)) : 40;
}

class Apart : public ::testing::Test {
protected:
    void TearDown() override { std::filesystem::remove(file_); }

    // Whether a process of its own ends well, without a report.
    static bool takeApart(const char* how, const std::string& file, unsigned seed) {
        const std::string command =
            std::string(TAKE_APART) + " " + how + " '" + file + "' " + std::to_string(seed);
        return std::system(command.c_str()) == 0;
    }

    const std::string file_ =
        std::filesystem::temp_directory_path() / ("apart" + std::to_string(::getpid()) + ".xml");
};

}  // namespace

TEST_F(Apart, TheExampleLeavesNothingInWhateverOrder) {
    for (unsigned seed = 1; seed <= stations() / 10; ++seed) {
        EXPECT_TRUE(takeApart("forwards", EXAMPLE, seed));
        EXPECT_TRUE(takeApart("backwards", EXAMPLE, seed));
    }
}

TEST_F(Apart, RandomStationsLeaveNothingAndTheirFilesNeither) {
    for (unsigned seed = 1; seed <= stations(); ++seed) {
        ASSERT_TRUE(takeApart("grow", file_, seed));
        ASSERT_TRUE(takeApart("backwards", file_, seed));
    }
}

}  // namespace trel::test
