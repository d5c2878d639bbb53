#include <algorithm>
#include <utility>

#include "tests/network/LiveEdits.h"
#include "tests/network/Station.h"

namespace network {

std::vector<Edit> TwinStation::everyDeletion() {
    std::vector<Edit> edits;
    const auto add = [&](EditKind kind, unsigned component, unsigned member) {
        Edit edit{kind, component, member};
        edit.tellsParent = random_.oneIn(2);
        edits.push_back(edit);
    };
    for (const auto& [id, node] : model_.nodes) {
        for (const auto& [signal, entry] : node.signals) add(EditKind::DeleteSignal, id, signal);
        for (const auto& [property, entry] : node.properties)
            add(EditKind::DeleteProperty, id, property);
        for (const auto& [connection, entry] : node.connections)
            add(entry.index < 0 ? EditKind::DeleteBinding : EditKind::DeleteConnection, id,
                connection);
        if (id >= firstId) add(EditKind::RemoveSibling, id, 0);
    }
    for (std::size_t rest = edits.size(); rest > 1; --rest)
        std::swap(edits[rest - 1], edits[random_.below(static_cast<unsigned>(rest))]);
    return edits;
}

std::string TwinStation::takeApart() {
    for (Edit& edit : everyDeletion()) {
        const auto owner = model_.nodes.find(edit.component);
        // What a removed component had went with it.
        if (owner == model_.nodes.end()) continue;
        if (!model_.nodes.contains(owner->second.parent)) edit.tellsParent = false;
        model_.apply(edit);
        LiveEdits::apply(edit);
        if (std::string text = differences(); !text.empty())
            return std::string(nameOf(edit.kind)) + "\n" + text;
    }
    for (const auto& [id, node] : model_.nodes)
        if (id >= firstId || !node.signals.empty() || !node.properties.empty() ||
            !node.connections.empty())
            return "not everything was deleted";
    return {};
}

}  // namespace network
