#pragma once

#include <CLI/CLI.hpp>
#include <filesystem>
#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "host/Clock.h"
#include "host/Failure.h"

namespace trel::host {

/// What the command line asks for. It prints to `out` and
/// \throws Failure when it cannot go on.
using Action = std::function<ExitCode(std::ostream& out)>;

// The subcommands of the program, each with its options and help. The one that
// the command line names becomes `chosen`.

void addCheck(CLI::App& app, Action& chosen);
void addGraph(CLI::App& app, Action& chosen);
void addDiff(CLI::App& app, Action& chosen);
void addRun(CLI::App& app, Action& chosen);
void addSet(CLI::App& app, Action& chosen);
void addShow(CLI::App& app, Action& chosen);
void addTypes(CLI::App& app, Action& chosen);
void addWiring(CLI::App& app, Action& chosen);   // connect, disconnect, move
void addObjects(CLI::App& app, Action& chosen);  // remove, rename

// What several of them share.

/// The option --components.
void addLibraries(CLI::App& command, std::vector<std::filesystem::path>& libraries);

/// An option that takes a time, such as "20ms".
void addTime(CLI::App& command, const std::string& name, std::optional<Time>& target, Time shortest,
             const std::string& help);

}  // namespace trel::host
