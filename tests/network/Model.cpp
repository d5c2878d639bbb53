#include "tests/network/Model.h"

#include <algorithm>
#include <cstdlib>

namespace network {

namespace {

constexpr std::size_t mostSteps = 1'500;
constexpr const char* unknownKey = "out_of_range: invalid unordered_map<K, T> key";

// Counts how deep the model is; settings nest.
class Deeper {
public:
    explicit Deeper(std::size_t& depth) : depth_(depth) { ++depth_; }
    ~Deeper() { --depth_; }

private:
    std::size_t& depth_;
};

}  // namespace

const std::map<std::string, std::string>& numberTexts() {
    static const std::map<std::string, std::string> texts = {
        {"1", "1"},     {"1.0", "1"},      {"2.50", "2.5"}, {"2.5", "2.5"},
        {"-0.0", "-0"}, {"1e3", "1000"},   {"1000", "1000"}, {"0.1", "0.1"},
        {"x", ""},      {"", ""},          {"1,5", ""},     {"7 mm", ""}};
    return texts;
}

std::string show(const Value& value) {
    if (const int* number = std::get_if<int>(&value)) return "int " + std::to_string(*number);
    return "double " + std::to_string(std::get<double>(value));
}

void Model::fail(Rule rule, const std::string& what) {
    reach(rule);
    throw Thrown{what};
}

void Model::step() {
    if (depth_ == 1) steps_ = 0;
    if (++steps_ > mostSteps || depth_ > 300) throw TooMuch{};
}

Node& Model::object(unsigned id) {
    const auto found = nodes.find(id);
    if (found == nodes.end()) fail(Rule::UnknownDestination, unknownKey);
    return found->second;
}

Node& Model::component(unsigned id) {
    Node& node = object(id);
    if (node.kind == Kind::Controller || node.kind == Kind::Station)
        fail(Rule::NotAnObjectOfThatKind, "bad_cast");
    return node;
}

Node& Model::group(unsigned id) {
    Node& node = component(id);
    if (!node.isAggregation()) fail(Rule::NotAnObjectOfThatKind, "bad_cast");
    return node;
}

Signal& Model::signal(Node& node, unsigned id) {
    const auto found = node.signals.find(id);
    if (found == node.signals.end()) fail(Rule::UnknownSignal, unknownKey);
    return found->second;
}

Property& Model::property(Node& node, unsigned id) {
    const auto found = node.properties.find(id);
    if (found == node.properties.end()) fail(Rule::UnknownSignal, unknownKey);
    return found->second;
}

void Model::store(Node& node, unsigned id, Value value) {
    signal(node, id).value = value;
    log.push_back("write " + std::to_string(node.id) + " signal " + std::to_string(id) + " " +
                  show(value));
}

void Model::notifySignal(const Node& node, unsigned id) {
    log.push_back("signal " + std::to_string(id) + " of " + std::to_string(node.id));
}

bool Model::isSet(Node& node, unsigned id, Value value, Rule same) {
    const auto entry = node.settingSignals.find(id);
    if (entry == node.settingSignals.end()) return false;
    if (entry->second == value) {
        reach(same);
    } else {
        reach(Rule::SignalConflict);
        log.push_back("event 10008 " + node.name + " " + signal(node, id).name + " ");
    }
    return true;
}

template <typename Deliver>
void Model::along(Node& group, unsigned component, unsigned id, const Deliver& deliver) {
    for (std::size_t place = 0; place < group.order.size(); ++place) {
        const Connection connection = group.connections.at(group.order[place]);
        if (connection.srcComponent == component && connection.src == id) deliver(connection);
    }
}

// Static values.

void Model::setStatic(unsigned id, unsigned signalId, Value value) {
    const Deeper deeper(depth_);
    step();
    Node& node = component(id);
    if (signal(node, signalId).input)
        staticInput(node, signalId, value);
    else
        staticOutput(node, signalId, value);
}

void Model::baseStaticInput(Node& node, unsigned id, Value value) {
    store(node, id, value);
    if (signal(node, id).autoReset) store(node, id, 0);
    notifySignal(node, id);
    node.settingSignals.try_emplace(id, value);
}

void Model::staticInput(Node& node, unsigned id, Value value) {
    if (!node.isAggregation()) return baseStaticInput(node, id, value);
    if (isSet(node, id, value, Rule::StaticRingEnds)) return;
    baseStaticInput(node, id, value);
    along(node, node.id, id, [&](const Connection& connection) {
        reach(Rule::NestedStaticInput);
        deliverStatic(connection, value);
        if (signal(node, id).autoReset) deliverStatic(connection, 0);
    });
    node.settingSignals.erase(id);
}

void Model::staticOutput(Node& node, unsigned id, Value value) {
    if (isSet(node, id, value, Rule::StaticRingEnds)) return;
    if (signal(node, id).value == value) return reach(Rule::EqualValueSkipped);
    store(node, id, value);
    if (signal(node, id).autoReset) store(node, id, 0);
    notifySignal(node, id);
    node.settingSignals.try_emplace(id, value);
    if (node.parent != 0)
        along(group(node.parent), node.id, id, [&](const Connection& connection) {
            deliverStatic(connection, value);
            if (!signal(node, id).autoReset) return;
            reach(Rule::StaticPulse);
            deliverStatic(connection, 0);
        });
    node.settingSignals.erase(id);
}

void Model::deliverStatic(const Connection& connection, Value value) {
    Node& destination = object(connection.dstComponent);
    if (destination.kind != Kind::Controller)
        return setStatic(connection.dstComponent, connection.dst, value);
    reach(Rule::ControllerStatic);
    log.push_back("controller " + std::to_string(destination.id) + " " +
                  std::to_string(connection.dst) + " " + show(value) + " static");
}

// Dynamic values.

void Model::handleSignal(unsigned id, unsigned signalId, int value) {
    const Deeper deeper(depth_);
    step();
    Node& node = component(id);
    if (signal(node, signalId).input)
        input(node, signalId, value);
    else
        output(node, signalId, value);
}

void Model::input(Node& node, unsigned id, int value) {
    if (node.kind == Kind::Logic) return reach(Rule::LogicIgnoresInput);
    store(node, id, value);
    if (signal(node, id).autoReset) store(node, id, 0);
    notifySignal(node, id);
    if (node.isAggregation()) {
        along(node, node.id, id, [&](const Connection& connection) {
            reach(Rule::NestedDynamicInput);
            handleSignal(connection.dstComponent, connection.dst, value);
            if (signal(node, id).autoReset)
                handleSignal(connection.dstComponent, connection.dst, 0);
        });
        return;
    }
    for (const Reaction& reaction : node.reactions)
        if (reaction.input == id)
            output(node, reaction.output, reaction.factor * (value % 1000) + reaction.offset);
}

void Model::output(Node& node, unsigned id, int value) {
    if (isSet(node, id, value, Rule::DynamicRingEnds)) return;
    const Value held = signal(node, id).value;
    if (!std::holds_alternative<int>(held)) fail(Rule::OutputHoldsDouble, "bad_variant_access");
    if (held == Value(value)) return reach(Rule::EqualValueSkipped);
    store(node, id, value);
    if (signal(node, id).autoReset) store(node, id, held);
    notifySignal(node, id);
    node.settingSignals.try_emplace(id, value);
    if (node.kind == Kind::Logic)
        reach(Rule::LogicSendsNothing);
    else
        along(group(node.parent), node.id, id, [&](const Connection& connection) {
            deliverDynamic(connection, value);
            if (!signal(node, id).autoReset) return;
            reach(Rule::DynamicPulse);
            deliverDynamic(connection, 0);
        });
    node.settingSignals.erase(id);
}

void Model::deliverDynamic(const Connection& connection, int value) {
    Node& destination = object(connection.dstComponent);
    if (destination.kind != Kind::Controller)
        return handleSignal(connection.dstComponent, connection.dst, value);
    reach(Rule::ControllerDynamic);
    log.push_back("controller " + std::to_string(destination.id) + " " +
                  std::to_string(connection.dst) + " " + show(value) + " dynamic");
}

// Texts.

void Model::setText(unsigned id, unsigned propertyId, const std::string& text) {
    const Deeper deeper(depth_);
    step();
    Node& node = component(id);
    if (!node.framed && !node.isAggregation()) return baseSetText(node, propertyId, text);
    const Property& target = property(node, propertyId);
    if (target.text == text) return reach(Rule::EqualTextSkipped);
    if (node.settingTexts.contains(propertyId)) {
        reach(Rule::TextConflict);
        log.push_back("event 10007 " + node.name + " " + target.name + " " + text);
        return;
    }
    baseSetText(node, propertyId, text);
    node.settingTexts.erase(propertyId);
}

void Model::baseSetText(Node& node, unsigned id, const std::string& text) {
    Property& target = property(node, id);
    std::string rendered = text;
    if (target.holdsDouble) {
        rendered = numberTexts().at(text);
        if (rendered.empty()) fail(Rule::TextRefusedByDocument, "invalid_argument");
    }
    target.text = rendered;
    log.push_back("write " + std::to_string(node.id) + " property " + std::to_string(id) + " " +
                  rendered);
    node.settingTexts.try_emplace(id, text);
    log.push_back("property " + std::to_string(id) + " of " + std::to_string(node.id));

    if (node.kind == Kind::Logic) return reach(Rule::LogicSendsNothing);
    for (const auto& [bindingId, binding] : group(node.parent).connections) {
        if (binding.index >= 0 || binding.srcComponent != node.id || binding.src != id) continue;
        reach(Rule::BindingOutwards);
        component(binding.dstComponent);
        if (!refuses(node, id, binding, text)) setText(binding.dstComponent, binding.dst, text);
    }
    if (node.kind != Kind::UserGroup) return;
    for (const auto& [bindingId, binding] : node.connections) {
        if (binding.index >= 0 || binding.srcComponent != node.id || binding.src != id) continue;
        reach(Rule::BindingInwards);
        setText(binding.dstComponent, binding.dst, text);
    }
}

bool Model::refuses(Node& node, unsigned id, const Connection& binding, const std::string& text) {
    if (!property(node, id).objectId) return false;
    // No text of the test has a minus before another number than 0.
    const std::string digits = text.substr(text.starts_with('-') ? 1 : 0);
    if (digits.find_first_of("0123456789") != 0)
        fail(Rule::NoObjectId, "invalid_argument: invalid stoul argument");
    unsigned long long named = std::strtoull(digits.c_str(), nullptr, 10);
    if (named > 4294967295ull)
        fail(Rule::ObjectIdOutOfRange, "out_of_range: stoul argument out of range");
    if (named == 0) {
        reach(Rule::ObjectZeroIsStation);
        named = 1;
    }
    if (!nodes.contains(static_cast<unsigned>(named))) fail(Rule::UnknownObject, unknownKey);
    Node& destination = component(binding.dstComponent);
    if (destination.isAggregation() || destination.acceptsObjects) return false;
    reach(Rule::ObjectRefused);
    log.push_back("event 10007 " + destination.name + " " +
                  property(destination, binding.dst).name + " " + text);
    return true;
}

// Edits.

void Model::renumber(Node& group) {
    for (std::size_t place = 0; place != group.order.size(); ++place)
        group.connections.at(group.order[place]).index = static_cast<int>(place);
}

void Model::connect(Node& group, unsigned id, const Connection& connection) {
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

}  // namespace network
