#include "tests/network/Model.h"

#include <algorithm>
#include <cstdlib>

namespace network {

namespace {

constexpr std::size_t mostSteps = 1'500;
constexpr const char* unknownKey = "out_of_range: invalid unordered_map<K, T> key";

}  // namespace

const std::map<std::string, std::string>& numberTexts() {
    static const std::map<std::string, std::string> texts = {{"1", "1"},
                                                             {"1.0", "1"},
                                                             {"2.50", "2.5"},
                                                             {"2.5", "2.5"},
                                                             {"-0.0", "-0"},
                                                             {"-0", "-0"},
                                                             {"1e3", "1000"},
                                                             {"1000", "1000"},
                                                             {"0", "0"},
                                                             {"0.1", "0.1"},
                                                             {"2", "2"},
                                                             {"10", "10"},
                                                             {"9999", "9999"},
                                                             {"x", ""},
                                                             {"", ""},
                                                             {"1,5", ""},
                                                             {"7 mm", ""},
                                                             {"abc", ""},
                                                             {"99999999999", "99999999999"}};
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

// Counts how deep the model is; settings nest. What was removed is kept until
// the outermost has ended.
class Model::Deeper {
public:
    explicit Deeper(Model& model) : model_(model) { ++model_.depth_; }
    ~Deeper() {
        if (--model_.depth_ == 0) model_.forgetTheGone();
    }
    Deeper(const Deeper&) = delete;
    Deeper& operator=(const Deeper&) = delete;

private:
    Model& model_;
};

// A walk is under way.
class Model::Walking {
public:
    Walking(Model& model, const Walk& walk) : model_(model) { model_.walks.push_back(walk); }
    ~Walking() { model_.walks.pop_back(); }
    Walking(const Walking&) = delete;
    Walking& operator=(const Walking&) = delete;

private:
    Model& model_;
};

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

void Model::call(Place place, Node& node) {
    if (outsider) outsider->called(*this, place, node);
}

void Model::notifySignal(Node& node, unsigned id) {
    log.push_back("signal " + std::to_string(id) + " of " + std::to_string(node.id));
    call(Place::Listener, node);
}

// Walks.

bool Model::lostComponent(unsigned component, std::size_t since) const {
    const auto lost = componentLost_.find(component);
    return lost != componentLost_.end() && lost->second > since;
}

bool Model::lostMember(WalkKind kind, unsigned component, unsigned member,
                       std::size_t since) const {
    const bool texts = kind == WalkKind::BindingOut || kind == WalkKind::BindingIn;
    const auto& table = texts ? propertyLost_ : signalLost_;
    const auto lost = table.find({component, member});
    return lostComponent(component, since) || (lost != table.end() && lost->second > since);
}

template <typename Deliver>
void Model::along(WalkKind kind, Node& group, unsigned component, unsigned member,
                  const Deliver& deliver) {
    const bool texts = kind == WalkKind::BindingOut || kind == WalkKind::BindingIn;
    const std::size_t began = clock_;
    struct Stood {
        unsigned id;
        unsigned long serial;
        bool began;  // where the walk does
    };
    std::vector<Stood> all;
    const auto add = [&](unsigned id, const Connection& connection) {
        all.push_back({id, connection.serial,
                       connection.srcComponent == component && connection.src == member});
    };
    if (texts) {
        for (const auto& [id, connection] : group.connections)
            if (connection.index < 0) add(id, connection);
    } else {
        for (const unsigned id : group.order) add(id, group.connections.at(id));
    }
    for (const Stood& stood : all) {
        if (lostMember(kind, component, member, began)) return meet(EditRule::SourceEndsWalk);
        if (group.removed) return meet(EditRule::GroupEndsWalk);
        const auto now = group.connections.find(stood.id);
        if (now == group.connections.end() || now->second.serial != stood.serial) {
            if (stood.began) meet(EditRule::DeletedGetsNothing);
            continue;
        }
        const Connection serving = now->second;
        const bool begins = serving.srcComponent == component && serving.src == member;
        if (begins != stood.began)
            meet(begins ? EditRule::ModifiedBeginsHere : EditRule::ModifiedBeginsElsewhere);
        if (!begins) continue;
        const Walking walking(*this, {kind, &group, component, member, serving});
        deliver(serving, began);
    }
}

template <typename Deliver>
void Model::pulseAlong(WalkKind kind, Node& group, const Node& source, const Signal& signal,
                       unsigned id, Value value, const Deliver& deliver) {
    along(kind, group, source.id, id, [&](const Connection& serving, std::size_t began) {
        const auto isThere = [&](unsigned component, unsigned member) {
            return !lostMember(kind, component, member, began);
        };
        if (!isThere(serving.dstComponent, serving.dst))
            return meet(EditRule::GoneDestinationIsPassedOver);
        deliver(serving, value);
        if (!signal.autoReset) return;
        if (!isThere(source.id, id)) return meet(EditRule::PulseLosesItsSource);
        if (!isThere(serving.dstComponent, serving.dst))
            return meet(EditRule::PulseLosesItsDestination);
        deliver(serving, 0);
    });
}

// A setting that has told of itself sends nothing when its signal, its component
// or its group is gone by then.
bool Model::isCutOff(WalkKind kind, const Node& node, unsigned member, std::size_t began) {
    if (lostMember(kind, node.id, member, began)) {
        meet(EditRule::NothingSentFromGoneSource);
        return true;
    }
    if (!lostComponent(node.parent, began)) return false;
    meet(EditRule::NothingSentIntoGoneGroup);
    return true;
}

// Static values.

void Model::setStatic(unsigned id, unsigned signalId, Value value) {
    const Deeper deeper(*this);
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
    const std::size_t began = clock_;
    const Signal& source = signal(node, id);
    baseStaticInput(node, id, value);
    if (!lostMember(WalkKind::StaticIn, node.id, id, began))
        pulseAlong(WalkKind::StaticIn, node, node, source, id, value,
                   [&](const Connection& connection, Value delivered) {
                       reach(Rule::NestedStaticInput);
                       deliverStatic(connection, delivered);
                   });
    node.settingSignals.erase(id);
}

void Model::staticOutput(Node& node, unsigned id, Value value) {
    if (isSet(node, id, value, Rule::StaticRingEnds)) return;
    const std::size_t began = clock_;
    const Signal& source = signal(node, id);
    if (source.value == value) return reach(Rule::EqualValueSkipped);
    store(node, id, value);
    if (source.autoReset) store(node, id, 0);
    notifySignal(node, id);
    if (isCutOff(WalkKind::StaticOut, node, id, began)) return;
    node.settingSignals.try_emplace(id, value);
    if (node.parent != 0)
        pulseAlong(WalkKind::StaticOut, group(node.parent), node, source, id, value,
                   [&](const Connection& connection, Value delivered) {
                       if (source.autoReset) reach(Rule::StaticPulse);
                       deliverStatic(connection, delivered);
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
    const Deeper deeper(*this);
    step();
    Node& node = component(id);
    if (signal(node, signalId).input)
        input(node, signalId, value);
    else
        output(node, signalId, value);
}

void Model::input(Node& node, unsigned id, int value) {
    if (node.kind == Kind::Logic) return reach(Rule::LogicIgnoresInput);
    const std::size_t began = clock_;
    const Signal& source = signal(node, id);
    store(node, id, value);
    if (source.autoReset) store(node, id, 0);
    notifySignal(node, id);
    if (node.isAggregation()) {
        if (lostMember(WalkKind::DynamicIn, node.id, id, began)) return;
        pulseAlong(WalkKind::DynamicIn, node, node, source, id, value,
                   [&](const Connection& connection, Value delivered) {
                       reach(Rule::NestedDynamicInput);
                       handleSignal(connection.dstComponent, connection.dst,
                                    std::get<int>(delivered));
                   });
        return;
    }
    call(Place::Reaction, node);
    for (const Reaction& reaction : node.reactions)
        if (reaction.input == id && node.signals.contains(reaction.output))
            output(node, reaction.output, reaction.factor * (value % 1000) + reaction.offset);
}

void Model::output(Node& node, unsigned id, int value) {
    if (node.removed || isSet(node, id, value, Rule::DynamicRingEnds)) return;
    const std::size_t began = clock_;
    const Signal& source = signal(node, id);
    const Value held = source.value;
    if (!std::holds_alternative<int>(held)) fail(Rule::OutputHoldsDouble, "bad_variant_access");
    if (held == Value(value)) return reach(Rule::EqualValueSkipped);
    store(node, id, value);
    if (source.autoReset) store(node, id, held);
    notifySignal(node, id);
    if (isCutOff(WalkKind::DynamicOut, node, id, began)) return;
    node.settingSignals.try_emplace(id, value);
    if (node.kind == Kind::Logic)
        reach(Rule::LogicSendsNothing);
    else
        pulseAlong(WalkKind::DynamicOut, group(node.parent), node, source, id, value,
                   [&](const Connection& connection, Value delivered) {
                       if (source.autoReset) reach(Rule::DynamicPulse);
                       deliverDynamic(connection, std::get<int>(delivered));
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
    const Deeper deeper(*this);
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
    if (node.kind == Kind::Plain) call(Place::Override, node);
    node.settingTexts.erase(propertyId);
}

void Model::baseSetText(Node& node, unsigned id, const std::string& text) {
    const std::size_t began = clock_;
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
    call(Place::Listener, node);
    if (isCutOff(WalkKind::BindingOut, node, id, began)) return;

    if (node.kind == Kind::Logic) return reach(Rule::LogicSendsNothing);
    const auto offer = [&](WalkKind kind, const Connection& binding, std::size_t walkBegan) {
        const auto isGone = [&] {
            return lostMember(kind, binding.dstComponent, binding.dst, walkBegan);
        };
        if (isGone()) return meet(EditRule::GoneDestinationIsPassedOver);
        const bool outwards = kind == WalkKind::BindingOut;
        reach(outwards ? Rule::BindingOutwards : Rule::BindingInwards);
        component(binding.dstComponent);
        if (outwards && refuses(node, id, binding, text)) return;
        if (isGone()) return meet(EditRule::AcceptedAndGone);
        if (lostMember(kind, node.id, id, walkBegan)) return;
        setText(binding.dstComponent, binding.dst, text);
    };
    const auto offerAlong = [&](WalkKind kind, Node& owner) {
        along(kind, owner, node.id, id, [&](const Connection& binding, std::size_t walkBegan) {
            offer(kind, binding, walkBegan);
        });
    };
    offerAlong(WalkKind::BindingOut, group(node.parent));
    if (node.kind != Kind::UserGroup) return;
    if (lostMember(WalkKind::BindingIn, node.id, id, began))
        return meet(EditRule::NothingSentInwards);
    offerAlong(WalkKind::BindingIn, node);
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
    if (destination.isAggregation()) return false;
    const std::size_t asked = clock_;
    call(Place::Question, destination);
    if (destination.acceptsObjects) return false;
    reach(Rule::ObjectRefused);
    if (lostMember(WalkKind::BindingOut, destination.id, binding.dst, asked)) {
        meet(EditRule::RefusedAndGone);
        return true;
    }
    log.push_back("event 10007 " + destination.name + " " +
                  property(destination, binding.dst).name + " " + text);
    return true;
}

}  // namespace network
