#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>

namespace sdf {

/// Why a file could not be read or written; what() says it, and what is expected.
class FileFault : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// All bytes of a file.
/// \throws FileFault
std::string readFile(const std::filesystem::path& file);

/// Puts `text` in place of the file's content, or makes the file, in the way that
/// Document::save promises.
/// \throws FileFault
void replaceFile(const std::filesystem::path& file, std::string_view text);

}  // namespace sdf
