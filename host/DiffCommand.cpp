#include <fmt/ostream.h>

#include <memory>

#include "host/Command.h"
#include "host/Commands.h"
#include "host/Diff.h"
#include "host/Inspections.h"
#include "host/StationFile.h"

namespace trel::host {

namespace {

struct DiffOptions {
    std::filesystem::path a;
    std::filesystem::path b;
};

// \throws Failure (file invalid) naming what keeps it from being loaded, as far as
// its document shows.
sdf::Document read(const std::filesystem::path& file) {
    StationFile station = readStationFile(file);
    Faults faults = std::move(station.faults);
    if (station.document) {
        const StationMap map(*station.document->root());
        FaultList list(station.noted);
        inspectDocument(*station.document->root(), map, list);
        faults = joined(std::move(faults), list.take());
    }
    if (const Faults errors = errorsIn(faults); !errors.empty())
        throw Failure(ExitCode::FileInvalid, textOfFaults(file.string(), errors));
    return std::move(*station.document);
}

ExitCode diff(const DiffOptions& options, std::ostream& out) {
    const sdf::Document a = read(options.a);
    const sdf::Document b = read(options.b);
    const auto lines = differences(*a.root(), *b.root());
    for (const std::string& line : lines) out << line << '\n';
    return lines.empty() ? ExitCode::Good : ExitCode::ExpectationFailed;
}

}  // namespace

void addDiff(const CommandLine& line) {
    const auto options = std::make_shared<DiffOptions>();
    Command command(
        line, "diff",
        "Prints how two stations differ in what they mean: components, values, wiring and\n"
        "order, each by its path of names; - is of the first alone, + of the second, * of\n"
        "both. Layout, comments and ids say nothing. Exit code 1 where they differ.\n"
        "Example: station diff before.xml after.xml");
    command.argument("A", options->a, "A station file");
    command.argument("B", options->b, "Another one");
    command.does([options](std::ostream& out) { return diff(*options, out); });
}

}  // namespace trel::host
