#include <memory>

#include "host/Commands.h"
#include "host/LiveStation.h"
#include "host/Show.h"
#include "host/TypeLibraries.h"

namespace trel::host {

namespace {

struct Options {
    std::filesystem::path file;
    std::vector<std::filesystem::path> libraries;
};

ExitCode show(const Options& options, std::ostream& out) {
    loadTypeLibraries(options.libraries);
    const LiveStation station(options.file);
    out << textOfStation();
    return ExitCode::Good;
}

}  // namespace

void addShow(CLI::App& app, Action& chosen) {
    const auto options = std::make_shared<Options>();
    CLI::App& command = *app.add_subcommand(
        "show", "Prints the components of a station with their properties, signals, connections\n"
                "and bindings. Example: station show station.xml");
    command.add_option("FILE", options->file, "The station file")->required();
    addLibraries(command, options->libraries);
    command.callback([&chosen, options] {
        chosen = [options](std::ostream& out) { return show(*options, out); };
    });
}

}  // namespace trel::host
