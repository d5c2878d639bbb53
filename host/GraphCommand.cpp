#include <fmt/format.h>

#include <memory>

#include "host/Command.h"
#include "host/Commands.h"
#include "host/Graph.h"
#include "host/Graphviz.h"
#include "host/LiveStation.h"
#include "host/OutputFile.h"
#include "host/TypeLibraries.h"

namespace trel::host {

namespace {

struct GraphOptions {
    std::filesystem::path file;
    std::optional<std::filesystem::path> picture;
    std::vector<std::filesystem::path> libraries;
    GraphView view;
};

// What the name of a picture ends in, if it can be drawn.
std::string formatOf(const std::filesystem::path& picture) {
    const std::string ending = picture.extension().string();
    for (const char* const known : {".svg", ".png", ".dot"})
        if (ending == known) return ending.substr(1);
    throw Failure(ExitCode::Usage,
                  fmt::format("-o: \"{}\" ends in no format that can be drawn; let it end in .svg, "
                              ".png or .dot",
                              picture.string()));
}

ExitCode graph(const GraphOptions& options, std::ostream& out) {
    const std::string format = options.picture ? formatOf(*options.picture) : "dot";
    loadTypeLibraries(options.libraries);
    const LiveStation station(options.file);
    const std::string dot = dotOfStation(options.view);
    if (!options.picture) {
        out << dot;
        return ExitCode::Good;
    }
    const auto picture = format == "dot" ? dot : drawn(dot, format);
    if (!picture)
        throw Failure(ExitCode::CannotSave,
                      fmt::format("{}: cannot be drawn without Graphviz; install its package "
                                  "graphviz, or let the name end in .dot",
                                  options.picture->string()));
    writeFile(*options.picture, *picture);
    return ExitCode::Good;
}

}  // namespace

void addGraph(const CommandLine& line) {
    const auto options = std::make_shared<GraphOptions>();
    Command command(line, "graph",
                    "Draws how a station is wired, or prints the graph in the DOT language.\n"
                    "Example: station graph station.xml -o station.svg --values");
    command.argument("FILE", options->file, "The station file");
    command.option("-o", options->picture, "FILE",
                   "The picture; its name ends in .svg or .png, for which Graphviz is needed, or "
                   "in .dot");
    command.flag("--values", options->view.values, "With the values of signals and properties");
    command.option("--depth", options->view.depth, "NUMBER",
                   "How deep aggregations are opened; else as deep as the picture stays readable");
    command.libraries(options->libraries);
    command.does([options](std::ostream& out) { return graph(*options, out); });
}

}  // namespace trel::host
