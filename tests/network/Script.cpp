#include "tests/network/Script.h"

#include <algorithm>

namespace network {

namespace {

constexpr std::size_t mostEdits = 8;
constexpr std::size_t deepest = 3;

bool overBindings(const Walk& walk) {
    return walk.kind == WalkKind::BindingOut || walk.kind == WalkKind::BindingIn;
}

bool isComponent(const Model& model, unsigned id) {
    const auto node = model.nodes.find(id);
    return node != model.nodes.end() && node->second.kind != Kind::Station &&
           node->second.kind != Kind::Controller;
}

std::vector<unsigned> childrenOf(const Model& model, unsigned group) {
    std::vector<unsigned> children;
    for (const auto& [id, node] : model.nodes)
        if (node.parent == group && node.kind != Kind::Logic && isComponent(model, id))
            children.push_back(id);
    return children;
}

template <typename Table>
std::vector<unsigned> keysOf(const Table& table) {
    std::vector<unsigned> keys;
    for (const auto& [key, value] : table) keys.push_back(key);
    return keys;
}

}  // namespace

const char* nameOf(EditKind kind) {
    static constexpr std::array names = {
        "delete a connection", "delete a binding",     "add a connection",     "add a binding",
        "move a connection",   "modify a connection",  "modify a binding",     "delete a signal",
        "delete a property",   "remove the sender",    "remove a destination", "remove a sibling",
        "remove the parent",   "remove a grandparent", "set the same",         "set another"};
    return names[static_cast<std::size_t>(kind)];
}

const char* nameOf(Place place) {
    static constexpr std::array names = {"reaction", "override", "question", "listener"};
    return names[static_cast<std::size_t>(place)];
}

const char* nameOf(WalkKind walk) {
    static constexpr std::array names = {"no walk",    "static out",  "static in", "dynamic out",
                                         "dynamic in", "binding out", "binding in"};
    return names[static_cast<std::size_t>(walk)];
}

// The call at which an edit is wanted.
struct Script::Called {
    const Model& model;
    const Node& node;
    Walk walk;

    // The aggregation whose walk it is; null if that is gone.
    const Node* group() const {
        const unsigned id = walk.group ? walk.group->id : node.parent;
        const auto found = model.nodes.find(id);
        return found == model.nodes.end() ? nullptr : &found->second;
    }
    unsigned groupId() const { return walk.group ? walk.group->id : node.parent; }
};

void Script::begin() {
    planned.clear();
    calls_ = 0;
    depth_ = 0;
}

void Script::called(Model& model, Place place, Node& node) {
    ++calls_;
    if (planned.size() == mostEdits || depth_ == deepest) return;
    // Components are called less than listeners.
    if (!random_->oneIn((place == Place::Listener ? 3 : 2) * calm)) return;
    const Called at{model, node, model.walks.empty() ? Walk{} : model.walks.back()};
    EditKind kind = random_->oneIn(4) ? rarest(place, at.walk.kind) : anyKind();
    std::optional<Edit> edit = choose(at, kind);
    if (!edit) edit = choose(at, kind = anyKind());
    if (!edit) return;

    ++count(kind, place, at.walk.kind);
    planned.push_back({calls_, *edit});
    model.log.push_back(std::string("edit: ") + nameOf(kind) + " " +
                        std::to_string(edit->component) + " " + std::to_string(edit->member));
    // What an edit throws ends the setting, and the script with it.
    ++depth_;
    model.apply(*edit);
    --depth_;
    std::size_t components = 0;
    for (const auto& [id, one] : model.nodes)
        if (isComponent(model, id)) ++components;
    model.log.push_back("components: " + std::to_string(components));
}

std::size_t& Script::count(EditKind kind, Place place, WalkKind walk) {
    return reached[static_cast<std::size_t>(kind)][static_cast<std::size_t>(place)]
                  [static_cast<std::size_t>(walk)];
}

// Removals are half as likely as the others: they leave little to edit.
EditKind Script::anyKind() {
    constexpr auto kinds = static_cast<unsigned>(EditKind::Count);
    const auto kind = static_cast<EditKind>(random_->below(kinds));
    const bool removes = kind >= EditKind::RemoveSender && kind <= EditKind::RemoveGrandparent;
    return removes && random_->oneIn(2) ? static_cast<EditKind>(random_->below(kinds)) : kind;
}

EditKind Script::rarest(Place place, WalkKind walk) {
    auto rarest = EditKind{};
    for (unsigned i = 1; i != static_cast<unsigned>(EditKind::Count); ++i)
        if (const auto kind = static_cast<EditKind>(i);
            count(kind, place, walk) < count(rarest, place, walk))
            rarest = kind;
    return rarest;
}

std::optional<Edit> Script::choose(const Called& at, EditKind kind) {
    switch (kind) {
        case EditKind::DeleteSignal:
        case EditKind::DeleteProperty: return editMember(at, kind);
        case EditKind::RemoveSender:
        case EditKind::RemoveDestination:
        case EditKind::RemoveSibling:
        case EditKind::RemoveParent:
        case EditKind::RemoveGrandparent: return removeComponent(at, kind);
        case EditKind::SetSame:
        case EditKind::SetOther: return setAgain(at, kind);
        default: return editConnection(at, kind);
    }
}

// Mostly one that begins where the walk does.
std::optional<unsigned> Script::anyConnection(const Called& at, const Node& group, bool bindings) {
    std::vector<unsigned> all;
    std::vector<unsigned> ofTheWalk;
    for (const auto& [id, connection] : group.connections) {
        if ((connection.index < 0) != bindings) continue;
        all.push_back(id);
        if (connection.srcComponent == at.walk.component && connection.src == at.walk.member)
            ofTheWalk.push_back(id);
    }
    if (all.empty()) return std::nullopt;
    // The table's order is not the same everywhere.
    auto& choices = !ofTheWalk.empty() && !random_->oneIn(3) ? ofTheWalk : all;
    std::ranges::sort(choices);
    return random_->from(choices);
}

Connection Script::randomEnds(Random& random, const Model& model, const Node& group) {
    std::vector<unsigned> ends = childrenOf(model, group.id);
    ends.push_back(group.id);
    return {random.from(ends), 1 + random.below(3), random.from(ends), 1 + random.below(3)};
}

std::optional<Edit> Script::editConnection(const Called& at, EditKind kind) {
    const Node* group = at.group();
    if (!group || random_->oneIn(5)) {
        std::vector<unsigned> groups;
        for (const auto& [id, node] : at.model.nodes)
            if (node.isAggregation()) groups.push_back(id);
        group = &at.model.nodes.at(random_->from(groups));
    }
    const bool bindings = kind == EditKind::DeleteBinding || kind == EditKind::AddBinding ||
                          kind == EditKind::ModifyBinding;
    Edit edit{kind, group->id};
    edit.ends = randomEnds(*random_, at.model, *group);
    // Bindings and connections lead on from the walk's own source now and then.
    if (at.walk.group == group && bindings == overBindings(at.walk) && !random_->oneIn(3)) {
        edit.ends.srcComponent = at.walk.component;
        edit.ends.src = at.walk.member;
    }
    if (kind == EditKind::AddConnection || kind == EditKind::AddBinding) {
        edit.member = 1;
        for (const auto& [id, connection] : group->connections)
            edit.member = std::max(edit.member, id + 1);
        if (!bindings)
            edit.ends.index =
                static_cast<int>(random_->below(static_cast<unsigned>(group->order.size()) + 1));
        return edit;
    }
    const auto connection = anyConnection(at, *group, bindings);
    if (!connection) return std::nullopt;
    edit.member = *connection;
    if (kind != EditKind::Move) return edit;
    edit.step = random_->oneIn(2) ? 1 : -1;
    const int place = group->connections.at(edit.member).index + edit.step;
    if (place < 0 || place >= std::ssize(group->order)) return std::nullopt;
    return edit;
}

std::optional<Edit> Script::editMember(const Called& at, EditKind kind) {
    Edit edit{kind};
    const Connection& serving = at.walk.serving;
    switch (random_->below(at.walk.group ? 4 : 1)) {
        case 1:
            edit.component = at.walk.component;
            edit.member = at.walk.member;
            break;
        case 2:
            edit.component = serving.dstComponent;
            edit.member = serving.dst;
            break;
        case 3: {
            // A destination that is perhaps yet to come.
            const Node* const group = at.group();
            const auto id = group ? anyConnection(at, *group, overBindings(at.walk)) : std::nullopt;
            if (!id) return std::nullopt;
            edit.component = group->connections.at(*id).dstComponent;
            edit.member = group->connections.at(*id).dst;
            break;
        }
        default: edit.component = at.node.id; edit.member = 1 + random_->below(3);
    }
    if (!isComponent(at.model, edit.component)) return std::nullopt;
    const Node& node = at.model.nodes.at(edit.component);
    const bool isThere = kind == EditKind::DeleteSignal ? node.signals.contains(edit.member)
                                                        : node.properties.contains(edit.member);
    return isThere ? std::optional(edit) : std::nullopt;
}

// Which component an edit of this kind removes here; 0 for none.
unsigned Script::removed(const Called& at, EditKind kind) {
    const Node* const group = at.group();
    switch (kind) {
        case EditKind::RemoveSender: return at.walk.group ? at.walk.component : at.node.id;
        case EditKind::RemoveDestination: {
            if (!at.walk.group || !group || random_->oneIn(2)) return at.node.id;
            const auto id = anyConnection(at, *group, overBindings(at.walk));
            return id ? group->connections.at(*id).dstComponent : 0;
        }
        case EditKind::RemoveSibling: {
            std::vector<unsigned> siblings = childrenOf(at.model, at.groupId());
            std::erase(siblings, at.node.id);
            std::erase(siblings, at.walk.component);
            return siblings.empty() ? 0 : random_->from(siblings);
        }
        case EditKind::RemoveParent: return at.groupId();
        default: return group ? group->parent : 0;
    }
}

std::optional<Edit> Script::removeComponent(const Called& at, EditKind kind) {
    Edit edit{kind, removed(at, kind)};
    if (!isComponent(at.model, edit.component)) return std::nullopt;
    const Node& node = at.model.nodes.at(edit.component);
    if (node.kind == Kind::Logic) return std::nullopt;
    edit.tellsParent = at.model.nodes.contains(node.parent) && !random_->oneIn(3);
    return edit;
}

std::optional<Edit> Script::setAgain(const Called& at, EditKind kind) {
    const bool fromSource = at.walk.group && random_->oneIn(2);
    Edit edit{kind, fromSource ? at.walk.component : at.node.id};
    if (!isComponent(at.model, edit.component)) return std::nullopt;
    const Node& node = at.model.nodes.at(edit.component);
    const bool text = fromSource ? overBindings(at.walk) : random_->oneIn(2);
    if (text) {
        const auto ids = keysOf(node.properties);
        if (ids.empty()) return std::nullopt;
        edit.member = fromSource ? at.walk.member : random_->from(ids);
        const auto property = node.properties.find(edit.member);
        if (property == node.properties.end()) return std::nullopt;
        edit.path = Edit::Path::Text;
        edit.text = kind == EditKind::SetSame
                        ? property->second.text
                        : random_->from<std::string>({"0", "1", "1.0", "2", "2.5", "10", "1000"});
        return edit;
    }
    const auto ids = keysOf(node.signals);
    if (ids.empty()) return std::nullopt;
    edit.member = fromSource ? at.walk.member : random_->from(ids);
    const auto signal = node.signals.find(edit.member);
    if (signal == node.signals.end()) return std::nullopt;
    edit.value = kind == EditKind::SetSame ? signal->second.value
                                           : Value(static_cast<int>(random_->below(4)));
    if (std::holds_alternative<int>(signal->second.value) && random_->oneIn(2))
        edit.path = Edit::Path::Dynamic;
    return edit;
}

}  // namespace network
