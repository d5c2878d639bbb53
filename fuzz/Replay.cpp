#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

// Runs a fuzzer's function once on the given files and those of the given
// folders, in a build without libFuzzer. Behind --cut each file is also cut off at every byte.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

std::vector<std::filesystem::path> filesIn(const std::filesystem::path& folder) {
    if (!std::filesystem::is_directory(folder)) return {folder};
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        files.push_back(entry.path());
    std::ranges::sort(files);
    return files;
}

std::string bytesOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void run(const std::string& bytes, std::size_t length) {
    // A copy of its own, so that the sanitizers see a read behind its end.
    const std::vector<std::uint8_t> input(bytes.begin(),
                                          bytes.begin() + static_cast<std::ptrdiff_t>(length));
    LLVMFuzzerTestOneInput(input.data(), input.size());
}

// A file that is large to be too large is cut at some thousand places only.
std::size_t step(std::size_t size) {
    constexpr std::size_t large = 40'000;
    return size > large ? size / 5'000 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    bool cut = false;
    std::size_t inputs = 0;
    for (int i = 1; i < argc; ++i) {
        if (argv[i] == std::string_view("--cut")) {
            cut = true;
            continue;
        }
        for (const auto& file : filesIn(argv[i])) {
            if (!std::filesystem::exists(file)) return 1;
            // What ends the process is this input.
            std::cout << file.string() << std::endl;
            const std::string bytes = bytesOf(file);
            const std::size_t whole = bytes.size();
            for (std::size_t length = cut ? 0 : whole; length < whole; length += step(whole)) {
                run(bytes, length);
                ++inputs;
            }
            run(bytes, whole);
            ++inputs;
        }
    }
    std::cout << inputs << " inputs\n";
    return inputs == 0 ? 1 : 0;
}
