#pragma once

#include <filesystem>
#include <fstream>
#include <ostream>
#include <string>

namespace trel::host {

/// A file that a run writes as it goes, so that what was written stands there
/// however the run ends.
class OutputFile {
public:
    /// \throws Failure (cannot save) if it cannot be written.
    explicit OutputFile(std::filesystem::path file);

    std::ostream& stream() { return stream_; }

    /// \throws Failure (cannot save) if not all of it could be written.
    void finish();

private:
    [[noreturn]] void refuse() const;

    std::filesystem::path file_;
    std::ofstream stream_;
};

/// Writes a whole file at once.
/// \throws Failure (cannot save).
void writeFile(const std::filesystem::path& file, const std::string& text);

}  // namespace trel::host
