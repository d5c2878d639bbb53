#include <algorithm>
#include <exception>
#include <functional>
#include <optional>
#include <stdexcept>
#include <typeinfo>

#include "smartcomp/Aggregation.h"
#include "tests/network/Live.h"
#include "tests/network/LiveEdits.h"
#include "tests/network/Recorder.h"
#include "tests/network/Station.h"

namespace network {

namespace {

using trel::smartcomp::Aggregation;
using trel::smartcomp::SmartComponent;

// What `operation` throws, in the words of the model.
std::string thrownBy(const std::function<void()>& operation) {
    try {
        operation();
        return {};
    } catch (const std::bad_variant_access&) {
        return "bad_variant_access";
    } catch (const std::bad_cast&) {
        return "bad_cast";
    } catch (const std::out_of_range& error) {
        return std::string("out_of_range: ") + error.what();
    } catch (const std::invalid_argument& error) {
        // The document words its refusals itself.
        const std::string what = error.what();
        return what.starts_with("invalid sto") ? "invalid_argument: " + what : "invalid_argument";
    }
}

std::string thrownBy(Model& model, const std::function<void(Model&)>& operation) {
    try {
        operation(model);
        return {};
    } catch (const Thrown& thrown) {
        return thrown.what;
    }
}

std::string joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) text += "    " + line + "\n";
    return text;
}

}  // namespace

const Node& TwinStation::anyComponent() {
    while (true) {
        auto node = model_.nodes.begin();
        std::advance(node, random_.below(static_cast<unsigned>(model_.nodes.size())));
        if (node->second.kind != Kind::Station && node->second.kind != Kind::Controller)
            return node->second;
    }
}

std::string TwinStation::act() {
    if (!script_) return random_.oneIn(6) ? edit() : drive();
    std::string difference = tidy();
    if (difference.empty() && (model_.nodes.size() < 14 || random_.oneIn(12 * script_->calm)))
        difference = grow();
    if (difference.empty()) difference = random_.oneIn(6 * script_->calm) ? edit() : drive();
    return difference;
}

// Takes out what removals left behind: components without a group, connections
// that lead to what is not there. Otherwise every later setting would end there.
std::string TwinStation::tidy() {
    std::vector<Edit> edits;
    std::vector<unsigned> gone;
    for (const auto& [id, node] : model_.nodes)
        if (id >= firstId && !model_.nodes.contains(node.parent))
            edits.push_back(
                {.kind = EditKind::RemoveSibling, .component = id, .tellsParent = false});
    for (const auto& [id, node] : model_.nodes)
        for (const auto& [connectionId, connection] : node.connections)
            if (!leadsSomewhere(connection) && !random_.oneIn(10))
                edits.push_back(
                    {.kind = EditKind::DeleteConnection, .component = id, .member = connectionId});
    for (const Edit& edit : edits) {
        if (!model_.nodes.contains(edit.component)) continue;
        model_.apply(edit);
        LiveEdits::apply(edit);
    }
    return edits.empty() ? std::string() : differences();
}

bool TwinStation::leadsSomewhere(const Connection& connection) const {
    const auto node = model_.nodes.find(connection.dstComponent);
    if (node == model_.nodes.end()) return false;
    if (node->second.kind == Kind::Controller) return true;
    return connection.index < 0 ? node->second.properties.contains(connection.dst)
                                : node->second.signals.contains(connection.dst);
}

// A new connection or binding of a group that has a new child. Half of them begin
// where another does: a value shall have many ways to go.
Edit TwinStation::wire(const Node& group, const Node& child, bool binding) {
    Edit edit{.kind = binding ? EditKind::AddBinding : EditKind::AddConnection,
              .component = group.id,
              .member = 1};
    edit.ends = Script::randomEnds(random_, model_, group);
    if (random_.oneIn(2)) edit.ends.srcComponent = random_.oneIn(2) ? group.id : child.id;
    if (!random_.oneIn(3)) edit.ends.dstComponent = child.id;
    std::vector<unsigned> others;
    for (const auto& [id, connection] : group.connections) {
        edit.member = std::max(edit.member, id + 1);
        if ((connection.index < 0) == binding) others.push_back(id);
    }
    std::ranges::sort(others);
    if (!others.empty() && random_.oneIn(2)) {
        const Connection& other = group.connections.at(random_.from(others));
        edit.ends.srcComponent = other.srcComponent;
        edit.ends.src = other.src;
    }
    // Few texts find their way into a user group otherwise.
    if (binding && group.kind == Kind::UserGroup && !random_.oneIn(4))
        edit.ends.srcComponent = group.id;
    edit.ends.index =
        binding ? -1
                : static_cast<int>(random_.below(static_cast<unsigned>(group.order.size()) + 1));
    return edit;
}

// One more component, wired into its group.
std::string TwinStation::grow() {
    std::vector<unsigned> groups;
    for (const auto& [id, node] : model_.nodes)
        if (node.isAggregation() && (id != logicId || random_.oneIn(3))) groups.push_back(id);
    Node& parent = model_.nodes.at(groups.empty() ? logicId : random_.from(groups));
    Node& node = planNode(nextId_++, parent.id);
    planMembers(node);
    parent.children.push_back(node.id);
    make(node);
    live<Aggregation>(parent.id).addChildComponent(node.id, std::nullopt);
    for (unsigned i = 0; i != 7; ++i) {
        const Edit edit = wire(parent, node, i < 3);
        model_.apply(edit);
        LiveEdits::apply(edit);
    }
    return differences();
}

// Where scripts delete members, one that is there, most of the time.
unsigned TwinStation::anyMember(const Node& node, bool ofTexts) {
    if (random_.oneIn(40)) return 77;
    const unsigned any = 1 + random_.below(3);
    if (!script_ || random_.oneIn(40)) return any;
    std::vector<unsigned> ids;
    if (ofTexts)
        for (const auto& [id, property] : node.properties) ids.push_back(id);
    else
        for (const auto& [id, signal] : node.signals) ids.push_back(id);
    return ids.empty() ? any : random_.from(ids);
}

std::string TwinStation::drive() {
    const Node& node = anyComponent();
    const unsigned id = node.id;
    const bool sendsText = random_.oneIn(3);
    const unsigned member = anyMember(node, sendsText);
    std::function<void(Model&)> planned;
    std::function<void()> operation;
    std::string what = node.name + " " + std::to_string(member);
    SmartComponent& component = live<SmartComponent>(id);

    switch (sendsText ? 2 : random_.below(2)) {
        case 0: {
            const Value value = random_.oneIn(5) ? Value(random_.below(3) / 2.0)
                                                 : Value(static_cast<int>(random_.below(3)));
            what = "static " + what + " " + show(value);
            planned = [=](Model& model) { model.setStatic(id, member, value); };
            operation = [&component, member, value] {
                component.setStaticSignalValue(member, value);
            };
            break;
        }
        case 1: {
            const int value = static_cast<int>(random_.below(3));
            what = "dynamic " + what + " " + std::to_string(value);
            planned = [=](Model& model) { model.handleSignal(id, member, value); };
            operation = [&component, member, value] {
                component.handleSignalValue(member, value, 17);
            };
            break;
        }
        default: {
            const auto property = node.properties.find(member);
            const bool number = property != node.properties.end() && property->second.holdsDouble;
            std::vector<std::string> texts = {"", "abc", "0", "2", "10", "9999", "99999999999"};
            if (number) {
                texts.clear();
                for (const auto& [text, rendered] : numberTexts()) texts.push_back(text);
            }
            const std::string text = random_.from(texts);
            what = "text " + what + " \"" + text + "\"";
            planned = [=](Model& model) { model.setText(id, member, text); };
            operation = [&component, member, text] { component.setPropertyValue(member, text); };
        }
    }

    return carryOut(what, planned, operation);
}

// First in the model, which may find that it would not end; what a script does
// meanwhile is then known.
std::string TwinStation::carryOut(const std::string& what,
                                  const std::function<void(Model&)>& planned,
                                  const std::function<void()>& operation) {
    Model trial = model_;
    std::optional<Script> script;
    if (script_) {
        script = *script_;
        script->begin();
        trial.outsider = &*script;
    }
    trial.log.clear();
    recorder_->log.clear();
    std::string expected;
    try {
        expected = thrownBy(trial, planned);
    } catch (const TooMuch&) {
        return {};
    }
    trial.outsider = nullptr;
    model_ = std::move(trial);
    if (!script) return compare(what, thrownBy(operation), expected);
    *script_ = std::move(*script);
    LiveEdits::follow(*script_, recorder_->log);
    const std::string thrown = thrownBy(operation);
    LiveEdits::rest();
    return compare(what, thrown, expected);
}

std::string TwinStation::edit() {
    const Node& any = random_.oneIn(2) ? model_.nodes.at(logicId) : anyComponent();
    if (!any.isAggregation()) return {};
    Node& group = model_.nodes.at(any.id);
    Aggregation& real = live<Aggregation>(group.id);
    std::vector<unsigned> ids;
    for (const auto& [id, connection] : group.connections) ids.push_back(id);
    std::ranges::sort(ids);
    model_.log.clear();
    recorder_->log.clear();

    std::string what = "edit " + group.name;
    std::string thrown;
    std::string expected;
    const unsigned choice = random_.below(4);
    if (choice < 2 || ids.empty()) {
        std::vector<unsigned> ends = {group.id};
        for (const auto& [id, node] : model_.nodes)
            if (node.parent == group.id && id >= firstId) ends.push_back(id);
        Connection made = random_.oneIn(2) ? randomBinding(ends)
                                           : randomSignalConnection(group, ends);
        if (made.index >= 0)
            made.index =
                static_cast<int>(random_.below(static_cast<unsigned>(group.order.size()) + 1));
        const unsigned id = ids.empty() ? 1 : ids.back() + 1;
        model_.connect(group, id, made);
        trel::smartcomp::Connection::Build(&real, real.getNextSgConnId(), made.srcComponent,
                                           made.src, made.dstComponent, made.dst, made.index);
    } else if (choice == 2) {
        const unsigned id = random_.from(ids);
        model_.disconnect(group, id);
        real.deleteConnection(id);
    } else {
        const unsigned id = random_.from(ids);
        const int step = random_.oneIn(2) ? 1 : -1;
        if (!model_.move(group, id, step)) expected = "out_of_range: invalid vector subscript";
        thrown = thrownBy([&] {
            if (step > 0)
                real.moveSgConnOrderBackward(id);
            else
                real.moveSgConnOrderForward(id);
        });
    }
    return compare(what, thrown, expected);
}

std::string TwinStation::compare(const std::string& what, const std::string& thrown,
                                 const std::string& expected) {
    std::string text;
    if (thrown != expected) text += "  threw \"" + thrown + "\", expected \"" + expected + "\"\n";
    if (recorder_->log != model_.log)
        text += "  happened:\n" + joined(recorder_->log) + "  expected:\n" + joined(model_.log);
    text += differences();
    return text.empty() ? text : what + "\n" + text;
}

}  // namespace network
