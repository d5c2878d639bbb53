#pragma once

#include <gtest/gtest.h>

#include <unistd.h>
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace trel::test {

/// The line with which each document of ours begins.
inline const std::string xmlHead = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

inline std::filesystem::path testFiles() { return TREL_TEST_FILES; }

inline std::vector<std::filesystem::path> xmlFilesIn(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        if (entry.path().extension() == ".xml") files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

inline std::string bytesOf(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    EXPECT_TRUE(stream) << file;
    return {std::istreambuf_iterator<char>(stream), {}};
}

inline void writeBytes(const std::filesystem::path& file, std::string_view bytes) {
    std::ofstream(file, std::ios::binary) << bytes;
}

/// A folder that is there while the object lives.
class TemporaryFolder {
public:
    explicit TemporaryFolder(
        const std::filesystem::path& parent = std::filesystem::temp_directory_path()) {
        std::string name = (parent / "trel-test-XXXXXX").string();
        EXPECT_NE(::mkdtemp(name.data()), nullptr);
        path_ = name;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::filesystem::path operator/(std::string_view name) const { return path_ / name; }
    const std::filesystem::path& path() const { return path_; }

    /// The names of all that it holds, hidden files included.
    std::vector<std::string> names() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(path_))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }

private:
    std::filesystem::path path_;
};

}  // namespace trel::test
