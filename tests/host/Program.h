#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace trel::test {

/// What a run of the program came to.
struct Result {
    int code;  // exit code, or minus the signal that ended it
    std::string out;
    std::string err;
};

/// Runs the program `station` with these arguments, or one at another place.
Result station(const std::vector<std::string>& arguments);
Result stationAt(const std::string& program, const std::vector<std::string>& arguments);

std::string readFile(const std::filesystem::path& file);

/// The folder of the project's sources.
std::filesystem::path sourceFolder();

/// A test with a folder of its own, which goes with it.
class FolderTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    /// Writes a file into the folder and gives its path.
    std::string write(const std::string& name, const std::string& text) const;
    std::string path(const std::string& name) const { return (folder_ / name).string(); }
    const std::filesystem::path& folder() const { return folder_; }

private:
    std::filesystem::path folder_;
};

/// A station file around these components; the station logic has these
/// connections and the child 10.
std::string stationText(const std::string& components, const std::string& connections = "");

}  // namespace trel::test
