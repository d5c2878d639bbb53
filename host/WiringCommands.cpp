#include <fmt/ostream.h>

#include <memory>
#include <string>

#include "host/Commands.h"
#include "host/Edges.h"
#include "host/Edit.h"
#include "host/Numbers.h"
#include "host/Objects.h"
#include "smartcomp/StationLogic.h"

namespace trel::host {

namespace {

using smartcomp::Aggregation;
using smartcomp::Connection;

struct WiringOptions {
    EditOptions edit;
    std::string source;
    std::string destination;
    std::string place;
};

struct Ends {
    Member source;
    Member destination;
};

Ends endsOf(const WiringOptions& options, const Names& names) {
    const Ends ends{names.member(options.source), names.member(options.destination)};
    if (ends.source.kind != ends.destination.kind)
        throw Failure(ExitCode::Usage,
                      fmt::format("one of {} and {} is a signal, and one a property; name two of a "
                                  "kind",
                                  options.source, options.destination));
    return ends;
}

// A controller is the station logic's.
unsigned parentOf(unsigned id) {
    const auto* const component = componentOf(id);
    if (!component) return smartcomp::StationLogic::inst()->id();
    return component->getObjParentId();
}

// The aggregation in which both ends are, or are its own.
Aggregation* ownerOf(const Ends& ends) {
    const unsigned source = ends.source.object;
    const unsigned destination = ends.destination.object;
    const auto holds = [](unsigned owner, unsigned object) {
        return object == owner || parentOf(object) == owner;
    };
    for (const unsigned owner : {parentOf(source), source, destination})
        if (holds(owner, source) && holds(owner, destination))
            if (auto* const aggregation = dynamic_cast<Aggregation*>(objectOf(owner)))
                return aggregation;
    return nullptr;
}

std::vector<Edge> edgesBetween(const Ends& ends) {
    return edgesThat([&](const Connection& connection) {
        return sourceOf(connection) == ends.source && destinationOf(connection) == ends.destination;
    });
}

std::vector<Edge> edgesToEdit(const WiringOptions& options, const Names& names) {
    auto edges = edgesBetween(endsOf(options, names));
    if (edges.empty())
        throw Failure(ExitCode::Usage,
                      fmt::format("{} and {} are not connected; see the connections with station "
                                  "show",
                                  options.source, options.destination));
    return edges;
}

std::size_t lengthOf(const Aggregation& owner) {
    return static_cast<std::size_t>(std::ranges::distance(owner.connections()));
}

// Front to back, one place after the other.
void moveTo(Aggregation& owner, unsigned id, std::size_t place) {
    while (owner.getConnection(id)->getIndex() > place) owner.moveSgConnOrderForward(id);
    while (owner.getConnection(id)->getIndex() < place) owner.moveSgConnOrderBackward(id);
}

std::string what(const Connection& connection) {
    return connection.isBinding() ? "binding" : fmt::format("connection {}", connection.getIndex());
}

// Places count from 0, as station show prints them.
std::size_t placeIn(const std::string& text, std::size_t length) {
    if (text == "first") return 0;
    if (text == "last") return length - 1;
    const auto place = readNumber<std::size_t>(text);
    if (!place || *place >= length)
        throw Failure(ExitCode::Usage,
                      fmt::format("{} is no place of a connection; write first, last or a number "
                                  "from 0 to {}",
                                  text, length - 1));
    return *place;
}

ExitCode connect(const WiringOptions& options, std::ostream& out) {
    return edit(options.edit, out, [&](const Names& names) {
        const Ends ends = endsOf(options, names);
        if (!edgesBetween(ends).empty())
            throw Failure(ExitCode::Usage,
                          fmt::format("{} and {} are connected already; nothing is "
                                      "to be done",
                                      options.source, options.destination));
        Aggregation* const owner = ownerOf(ends);
        if (!owner)
            throw Failure(
                ExitCode::Usage,
                fmt::format("{} and {} are not in one aggregation; connect them by way of "
                            "signals of the aggregations between",
                            options.source, options.destination));
        const bool isBinding = ends.source.kind == Member::Kind::Property;
        const std::size_t end = lengthOf(*owner);
        const std::size_t place =
            options.place.empty() || isBinding ? end : placeIn(options.place, end + 1);
        const Connection* const made = Connection::Build(
            owner, owner->getNextSgConnId(), ends.source.object, ends.source.id,
            ends.destination.object, ends.destination.id, isBinding ? -1 : static_cast<int>(place));
        fmt::print(out, "{} of {}: {}\n", what(*made), pathOf(owner->id()), host::endsOf(*made));
    });
}

ExitCode disconnect(const WiringOptions& options, std::ostream& out) {
    return edit(options.edit, out, [&](const Names& names) {
        for (const Edge& edge : edgesToEdit(options, names)) {
            const Connection& connection = connectionOf(edge);
            fmt::print(out, "{} of {} is deleted: {}\n", what(connection), pathOf(edge.owner),
                       host::endsOf(connection));
            host::ownerOf(edge).deleteConnection(edge.id);
        }
    });
}

ExitCode move(const WiringOptions& options, std::ostream& out) {
    return edit(options.edit, out, [&](const Names& names) {
        const Edge edge = edgesToEdit(options, names).front();
        const Connection& connection = connectionOf(edge);
        if (connection.isBinding())
            throw Failure(ExitCode::Usage, fmt::format("{} is bound to {}, and bindings have no "
                                                       "order; move connections",
                                                       options.source, options.destination));
        Aggregation& owner = host::ownerOf(edge);
        const unsigned before = connection.getIndex();
        moveTo(owner, edge.id, placeIn(options.place, lengthOf(owner)));
        fmt::print(out, "connection {} of {} is connection {}: {}\n", before, pathOf(edge.owner),
                   connection.getIndex(), host::endsOf(connection));
    });
}

using Deed = ExitCode (*)(const WiringOptions&, std::ostream&);

Command add(const CommandLine& line, const std::string& name, const std::string& help, Deed deed,
            const std::shared_ptr<WiringOptions>& options) {
    Command command(line, name, help);
    addEditOptions(command, options->edit);
    command.argument("SOURCE", options->source, "Where it begins, as in Cell/Gripper.Holding");
    command.argument("DESTINATION", options->destination, "Where it ends");
    command.does([options, deed](std::ostream& out) { return deed(*options, out); });
    return command;
}

}  // namespace

void addWiring(const CommandLine& line) {
    auto options = std::make_shared<WiringOptions>();
    add(line, "connect",
        "Connects two signals, or binds two properties, in the aggregation that contains both.\n"
        "Example: station connect station.xml Cell.Closed Lamp.In --at first",
        connect, options)
        .option("--at", options->place, "PLACE",
                "The place in the order in which values are delivered: first, last, or a\n"
                "number from 0; else last");
    options = std::make_shared<WiringOptions>();
    add(line, "disconnect",
        "Deletes the connections or bindings from one to the other.\n"
        "Example: station disconnect station.xml Belt.Running Lamp.In",
        disconnect, options);
    options = std::make_shared<WiringOptions>();
    add(line, "move",
        "Gives a connection another place in the order in which values are delivered.\n"
        "Example: station move station.xml Belt.Running Lamp.In first",
        move, options)
        .argument("PLACE", options->place, "first, last, or a number from 0");
}

}  // namespace trel::host
