#include <memory>

#include "host/Command.h"
#include "host/Commands.h"
#include "host/LiveStation.h"
#include "host/Show.h"
#include "host/TypeLibraries.h"

namespace trel::host {

namespace {

struct ShowOptions {
    std::filesystem::path file;
    std::vector<std::filesystem::path> libraries;
};

ExitCode show(const ShowOptions& options, std::ostream& out) {
    loadTypeLibraries(options.libraries);
    const LiveStation station(options.file);
    out << textOfStation();
    return ExitCode::Good;
}

}  // namespace

void addShow(const CommandLine& line) {
    const auto options = std::make_shared<ShowOptions>();
    Command command(
        line, "show",
        "Prints the components of a station with their properties, signals, connections\n"
        "and bindings. Example: station show station.xml");
    command.argument("FILE", options->file, "The station file");
    command.libraries(options->libraries);
    command.does([options](std::ostream& out) { return show(*options, out); });
}

}  // namespace trel::host
