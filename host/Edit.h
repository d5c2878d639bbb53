#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <ostream>
#include <vector>

#include "host/Command.h"
#include "host/Names.h"

namespace trel::host {

/// What the subcommands that edit a station file have in common.
struct EditOptions {
    std::filesystem::path file;
    std::vector<std::filesystem::path> libraries;
    std::optional<std::filesystem::path> save;
};

/// FILE, --components and --save.
void addEditOptions(Command& command, EditOptions& options);

/// Opens the station, has it edited, and saves it in the place of the file or as
/// --save says. Prints the warnings that the edit brings.
/// \throws Failure, and nothing is saved, for a path that names nothing, an edit
/// that fails, or one that would leave a station that cannot be loaded.
ExitCode edit(const EditOptions& options, std::ostream& out,
              const std::function<void(const Names& names)>& change);

}  // namespace trel::host
