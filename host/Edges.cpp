#include "host/Edges.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/Objects.h"

namespace trel::host {

using smartcomp::Aggregation;
using smartcomp::Connection;

namespace {

Member::Kind kindOf(const Connection& connection) {
    return connection.isBinding() ? Member::Kind::Property : Member::Kind::Signal;
}

}  // namespace

Member sourceOf(const Connection& connection) {
    return {connection.getSrcComponentId(), kindOf(connection), connection.getSrcSignalId()};
}

Member destinationOf(const Connection& connection) {
    return {connection.getDstComponentId(), kindOf(connection), connection.getDstSignalId()};
}

std::string endsOf(const Connection& connection) {
    return fmt::format("{} -> {}", pathOf(sourceOf(connection)), pathOf(destinationOf(connection)));
}

std::vector<Edge> edgesThat(const std::function<bool(const Connection&)>& suit) {
    std::vector<Edge> edges;
    const auto collect = [&](unsigned owner, auto entries) {
        for (const auto& [id, connection] : entries)
            if (suit(*connection)) edges.push_back({owner, id});
    };
    for (const auto* const component : componentsNow())
        if (const auto* const owner = dynamic_cast<const Aggregation*>(component)) {
            const std::size_t first = edges.size();
            collect(owner->id(), owner->connections());
            collect(owner->id(), owner->bindings());
            std::sort(edges.begin() + static_cast<std::ptrdiff_t>(first), edges.end(),
                      [](const Edge& a, const Edge& b) { return a.id < b.id; });
        }
    return edges;
}

Aggregation& ownerOf(const Edge& edge) {
    return dynamic_cast<Aggregation&>(*componentOf(edge.owner));
}

Connection& connectionOf(const Edge& edge) {
    const Aggregation& owner = ownerOf(edge);
    Connection* const connection = owner.getConnection(edge.id);
    return connection ? *connection : *owner.getBinding(edge.id);
}

}  // namespace trel::host
