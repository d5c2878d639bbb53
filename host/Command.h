#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "host/Clock.h"
#include "host/Failure.h"

namespace CLI {
class App;
}

namespace trel::host {

/// What the command line asks for. It prints to `out` and
/// \throws Failure when it cannot go on.
using Action = std::function<ExitCode(std::ostream& out)>;

/// The command line of the program, and what it is found to ask for.
struct CommandLine {
    CLI::App& app;
    Action& chosen;
};

/// A subcommand of the program. What it reads are the texts, paths and numbers that the
/// command line gives, each into a place that outlives the command line; a vector takes
/// several. It stands before the library that reads command lines, whose header takes
/// longer to compile than any of our sources.
class Command {
public:
    Command(const CommandLine& line, const std::string& name, const std::string& help);

    /// What stands on the command line by itself, and must.
    template <typename Value>
    void argument(const std::string& name, Value& value, const std::string& help);

    template <typename Value>
    void optionalArgument(const std::string& name, Value& value, const std::string& help);

    /// \param what of which kind the value is, for the help
    template <typename Value>
    void option(const std::string& name, Value& value, const std::string& what,
                const std::string& help);

    void flag(const std::string& name, bool& isGiven, const std::string& help);

    /// An option that takes a time, such as "20ms".
    void time(const std::string& name, std::optional<Time>& value, Time shortest,
              const std::string& help);

    /// The option --components.
    void libraries(std::vector<std::filesystem::path>& libraries);

    /// What is done where the command line names this subcommand.
    void does(Action action);

private:
    CLI::App& app_;
    Action& chosen_;
};

}  // namespace trel::host
