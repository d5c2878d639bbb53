#include <algorithm>
#include <utility>

#include "tests/network/Model.h"

namespace network {

namespace {

void renumber(Node& group) {
    for (std::size_t place = 0; place != group.order.size(); ++place)
        group.connections.at(group.order[place]).index = static_cast<int>(place);
}

}  // namespace

void Model::connect(Node& group, unsigned id, Connection connection) {
    connection.serial = nextSerial();
    group.connections.emplace(id, connection);
    if (connection.index < 0) return;
    const auto place = std::min(static_cast<std::size_t>(connection.index), group.order.size());
    group.order.insert(group.order.begin() + static_cast<std::ptrdiff_t>(place), id);
    renumber(group);
}

void Model::disconnect(Node& group, unsigned id) {
    group.connections.erase(id);
    std::erase(group.order, id);
    renumber(group);
}

bool Model::move(Node& group, unsigned id, int step) {
    const auto place = std::find(group.order.begin(), group.order.end(), id);
    if (place == group.order.end()) return false;
    const auto index = place - group.order.begin() + step;
    if (index < 0 || index >= std::ssize(group.order)) return false;
    std::swap(*place, group.order[static_cast<std::size_t>(index)]);
    renumber(group);
    return true;
}

void Model::deleteSignal(Node& node, unsigned id) {
    signalLost_[{node.id, id}] = ++clock_;
    node.goneSignals.insert(node.signals.extract(id));
}

void Model::deleteProperty(Node& node, unsigned id) {
    propertyLost_[{node.id, id}] = ++clock_;
    node.goneProperties.insert(node.properties.extract(id));
}

// The children of a removed group stay, as components without a group.
void Model::remove(unsigned id, bool tellsParent) {
    Node& node = component(id);
    if (tellsParent) std::erase(group(node.parent).children, id);
    node.removed = true;
    componentLost_[id] = ++clock_;
    gone_.insert(nodes.extract(id));
}

void Model::forgetTheGone() {
    gone_.clear();
    componentLost_.clear();
    signalLost_.clear();
    propertyLost_.clear();
    for (auto& [id, node] : nodes) {
        node.goneSignals.clear();
        node.goneProperties.clear();
    }
}

void Model::apply(const Edit& edit) {
    Node& node = nodes.at(edit.component);
    switch (edit.kind) {
        case EditKind::DeleteConnection:
        case EditKind::DeleteBinding: return disconnect(node, edit.member);
        case EditKind::AddConnection:
        case EditKind::AddBinding: return connect(node, edit.member, edit.ends);
        case EditKind::Move: move(node, edit.member, edit.step); return;
        case EditKind::ModifyConnection:
        case EditKind::ModifyBinding: {
            Connection& modified = node.connections.at(edit.member);
            const auto [index, serial] = std::pair(modified.index, modified.serial);
            modified = edit.ends;
            modified.index = index;
            modified.serial = serial;
            return;
        }
        case EditKind::DeleteSignal: return deleteSignal(node, edit.member);
        case EditKind::DeleteProperty: return deleteProperty(node, edit.member);
        case EditKind::SetSame:
        case EditKind::SetOther: return set(edit);
        default: return remove(edit.component, edit.tellsParent);
    }
}

// A setting of its own, in the middle of others.
void Model::set(const Edit& edit) {
    struct Apart {
        explicit Apart(std::vector<Walk>& all) : walks_(all) { walks_.emplace_back(); }
        ~Apart() { walks_.pop_back(); }
        std::vector<Walk>& walks_;
    } const apart(walks);
    switch (edit.path) {
        case Edit::Path::Static: return setStatic(edit.component, edit.member, edit.value);
        case Edit::Path::Dynamic:
            return handleSignal(edit.component, edit.member, std::get<int>(edit.value));
        default: return setText(edit.component, edit.member, edit.text);
    }
}

}  // namespace network
