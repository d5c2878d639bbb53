#pragma once

#include <filesystem>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "host/Clock.h"
#include "host/Failure.h"

namespace trel::host {

struct RunOptions {
    std::filesystem::path file;
    std::optional<std::filesystem::path> scenario;
    std::optional<Time> until;
    std::optional<Time> step;
    std::vector<std::filesystem::path> libraries;
    std::optional<std::filesystem::path> save;
    bool show = false;  // the station after the run
};

struct ShowOptions {
    std::filesystem::path file;
    std::vector<std::filesystem::path> libraries;
};

// The subcommands of the program. They print to `out` and
// \throws Failure when they cannot go on.

ExitCode run(const RunOptions& options, std::ostream& out);
ExitCode show(const ShowOptions& options, std::ostream& out);

}  // namespace trel::host
