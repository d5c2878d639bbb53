#include "host/Command.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstdint>
#include <type_traits>
#include <utility>

namespace trel::host {

namespace {

template <typename Value>
constexpr bool isList = false;
template <typename Item>
constexpr bool isList<std::vector<Item>> = true;

}  // namespace

Command::Command(const CommandLine& line, const std::string& name, const std::string& help)
    : app_(*line.app.add_subcommand(name, help)), chosen_(line.chosen) {}

template <typename Value>
void Command::argument(const std::string& name, Value& value, const std::string& help) {
    app_.add_option(name, value, help)->required();
}

template <typename Value>
void Command::optionalArgument(const std::string& name, Value& value, const std::string& help) {
    app_.add_option(name, value, help);
}

template <typename Value>
void Command::option(const std::string& name, Value& value, const std::string& what,
                     const std::string& help) {
    CLI::Option* const option = app_.add_option(name, value, help)->type_name(what);
    if constexpr (isList<Value>) option->allow_extra_args(false);  // FILE may follow it
    if constexpr (std::is_arithmetic_v<Value>) option->capture_default_str();
}

void Command::flag(const std::string& name, bool& isGiven, const std::string& help) {
    app_.add_flag(name, isGiven, help);
}

void Command::time(const std::string& name, std::optional<Time>& value, Time shortest,
                   const std::string& help) {
    const auto read = [&value, name, shortest](const std::string& text) {
        value = readTime(text);
        if (!value || *value < shortest)
            throw CLI::ValidationError(
                name, fmt::format("\"{}\" is no such time; write a number and us, ms, s or min, as "
                                  "in 20ms",
                                  text));
    };
    app_.add_option_function<std::string>(name, read, help)->type_name("TIME");
}

void Command::libraries(std::vector<std::filesystem::path>& libraries) {
    option("--components", libraries, "LIB",
           "A further library of component types, by its path, or by its name where it is in\n"
           "a folder that STATION_COMPONENTS names; may be given more than once");
}

void Command::does(Action action) {
    app_.callback([&chosen = chosen_, action = std::move(action)] { chosen = action; });
}

using FilePath = std::filesystem::path;
using Text = std::string;

template void Command::argument(const Text&, FilePath&, const Text&);
template void Command::argument(const Text&, std::vector<FilePath>&, const Text&);
template void Command::argument(const Text&, Text&, const Text&);
template void Command::argument(const Text&, std::vector<Text>&, const Text&);
template void Command::optionalArgument(const Text&, Text&, const Text&);
template void Command::optionalArgument(const Text&, std::vector<Text>&, const Text&);
template void Command::option(const Text&, std::optional<FilePath>&, const Text&, const Text&);
template void Command::option(const Text&, Text&, const Text&, const Text&);
template void Command::option(const Text&, std::vector<Text>&, const Text&, const Text&);
template void Command::option(const Text&, unsigned long long&, const Text&, const Text&);
template void Command::option(const Text&, std::optional<unsigned>&, const Text&, const Text&);
template void Command::option(const Text&, std::optional<std::uint64_t>&, const Text&, const Text&);

}  // namespace trel::host
