#include "host/OutputFile.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "host/Failure.h"

namespace trel::host {

OutputFile::OutputFile(std::filesystem::path file)
    : file_(std::move(file)), stream_(file_, std::ios::binary) {
    if (!stream_) refuse();
}

void OutputFile::finish() {
    errno = 0;
    stream_.close();
    if (!stream_) refuse();
}

void OutputFile::refuse() const {
    throw Failure(ExitCode::CannotSave,
                  fmt::format("{}: cannot be written ({}); check the folder and the room on the "
                              "disk",
                              file_.string(), std::strerror(errno)));
}

void writeFile(const std::filesystem::path& file, const std::string& text) {
    OutputFile output(file);
    output.stream() << text;
    output.finish();
}

}  // namespace trel::host
