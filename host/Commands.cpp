#include "host/Commands.h"

#include <fmt/format.h>

namespace trel::host {

void addLibraries(CLI::App& command, std::vector<std::filesystem::path>& libraries) {
    command
        .add_option(
            "--components", libraries,
            "A further library of component types, by its path, or by its name where it is in\n"
            "a folder that STATION_COMPONENTS names; may be given more than once")
        ->type_name("LIB")
        ->allow_extra_args(false);  // FILE may follow it
}

void addTime(CLI::App& command, const std::string& name, std::optional<Time>& target, Time shortest,
             const std::string& help) {
    command
        .add_option_function<std::string>(
            name,
            [&target, name, shortest](const std::string& text) {
                target = readTime(text);
                if (!target || *target < shortest)
                    throw CLI::ValidationError(
                        name, fmt::format("\"{}\" is no such time; write a number and us, ms, s "
                                          "or min, as in 20ms",
                                          text));
            },
            help)
        ->type_name("TIME");
}

}  // namespace trel::host
