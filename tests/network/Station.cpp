#include "tests/network/Station.h"

#include <algorithm>
#include <exception>
#include <functional>
#include <stdexcept>
#include <typeinfo>

#include "platform/sdf/SdfManager.h"
#include "platform/station/Station.h"
#include "smartcomp/Lifecycle.h"
#include "smartcomp/Property.h"
#include "smartcomp/SCSignal.h"
#include "smartcomp/StationLogic.h"
#include "tests/network/Components.h"
#include "tests/network/Recorder.h"

namespace network {

namespace {

using trel::Station;
using trel::smartcomp::Aggregation;
using trel::smartcomp::SmartComponent;
using trel::smartcomp::StationLogic;

constexpr unsigned controllerId = 3;
constexpr unsigned firstId = 10;
constexpr unsigned nobody = 9'999;

template <typename T>
T& live(unsigned id) {
    return dynamic_cast<T&>(*sdf::SdfManager::inst()->find(id));
}

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

TwinStation::TwinStation(Random& random, Model& model) : random_(random), model_(model) {
    plan();
    recorder_ = std::make_unique<Recorder>();
    recorder_->addController(controllerId);
    build();
    recorder_->log.clear();
}

TwinStation::~TwinStation() {
    for (const auto& [id, node] : model_.nodes)
        if (id >= firstId) trel::smartcomp::RemoveSubSmartComponent(id);

    // The station logic lives on, emptied; so does the order of its table.
    StationLogic& logic = *StationLogic::inst();
    Node& node = model_.nodes.at(Station::logicId);
    std::vector<unsigned> ids;
    for (const auto& [id, connection] : node.connections) ids.push_back(id);
    for (const unsigned id : ids) {
        logic.deleteConnection(id);
        model_.disconnect(node, id);
    }
    for (const auto& [id, property] : node.properties) logic.deleteProperty(id);
    for (const auto& [id, signal] : node.signals) logic.deleteSignal(id);
    for (const char* const tag : {"connection", "property"})
        for (const auto& element : logic.element()->children(tag)) element->removeFromParent();
}

// Planning.

void TwinStation::plan() {
    // The station logic outlives one station, with the marks of settings that a
    // throw interrupted.
    auto& nodes = model_.nodes;
    Node logic = std::move(nodes[Station::logicId]);
    nodes.clear();
    logic.kind = Kind::Logic;
    logic.id = Station::logicId;
    logic.name = "Station Logic";
    logic.signals.clear();
    logic.properties.clear();
    nodes.emplace(Station::logicId, std::move(logic));
    nodes[Station::id].kind = Kind::Station;
    nodes[controllerId].kind = Kind::Controller;
    nodes[controllerId].id = controllerId;

    std::vector<unsigned> groups = {Station::logicId};
    const unsigned count = 3 + random_.below(8);
    for (unsigned id = firstId; id != firstId + count; ++id) {
        Node& node = nodes[id];
        node.id = id;
        node.name = "C" + std::to_string(id);
        node.parent = random_.from(groups);
        node.kind = random_.from<Kind>({Kind::Plain, Kind::Plain, Kind::Group, Kind::UserGroup});
        node.framed = !random_.oneIn(3);
        node.acceptsObjects = !random_.oneIn(2);
        if (node.isAggregation()) groups.push_back(id);
    }
    for (auto& [id, node] : nodes)
        if (id == Station::logicId || id >= firstId) planMembers(node);
    for (const unsigned id : groups)
        if (id != Station::logicId) planWiring(nodes[id]);
}

void TwinStation::planMembers(Node& node) {
    // Ids of the station logic's members are never used again, as in an editor.
    const unsigned signals = 2 + random_.below(3);
    for (unsigned id = 1; id <= signals; ++id) {
        Signal& signal = node.signals[id];
        signal.name = "s" + std::to_string(id);
        signal.input = id == 1 || random_.oneIn(2);
        signal.analog = random_.oneIn(8);
        signal.autoReset = random_.oneIn(5);
        signal.value = signal.analog ? Value(0.0) : Value(static_cast<int>(random_.below(2)));
        if (signal.input && node.kind == Kind::Plain && !random_.oneIn(3))
            node.reactions.push_back({id, 1 + random_.below(signals),
                                      random_.from<int>({1, 1, -1}),
                                      random_.from<int>({0, 0, 1})});
    }
    const unsigned properties = 1 + random_.below(3);
    for (unsigned id = 1; id <= properties; ++id) {
        Property& property = node.properties[id];
        property.name = "p" + std::to_string(id);
        property.objectId = random_.oneIn(3);
        property.holdsDouble = !property.objectId && random_.oneIn(2);
        property.text = property.holdsDouble ? "0.1" : "";
    }
    // What reacts sets outputs.
    std::erase_if(node.reactions,
                  [&](const Reaction& r) { return node.signals.at(r.output).input; });
}

Connection TwinStation::randomSignalConnection(const Node& group,
                                               const std::vector<unsigned>& ends) {
    Connection connection{random_.from(ends), 1 + random_.below(4), random_.from(ends),
                          1 + random_.below(4), 0};
    if (random_.oneIn(4)) connection.srcComponent = group.id;
    if (group.kind == Kind::Logic && random_.oneIn(5)) connection.dstComponent = controllerId;
    if (random_.oneIn(60)) connection.dstComponent = nobody;
    if (random_.oneIn(60)) connection.dstComponent = Station::id;
    return connection;
}

Connection TwinStation::randomBinding(const std::vector<unsigned>& ends) {
    Connection binding{random_.from(ends), 1 + random_.below(3), random_.from(ends),
                       1 + random_.below(3), -1};
    if (random_.oneIn(60)) binding.dstComponent = random_.oneIn(2) ? nobody : controllerId;
    // A number property would meet texts that the model has no word for.
    const auto holdsDouble = [&](unsigned component, unsigned id) {
        const auto node = model_.nodes.find(component);
        if (node == model_.nodes.end()) return false;
        const auto property = node->second.properties.find(id);
        return property != node->second.properties.end() && property->second.holdsDouble;
    };
    if (holdsDouble(binding.dstComponent, binding.dst) &&
        !holdsDouble(binding.srcComponent, binding.src))
        std::swap(binding.srcComponent, binding.dstComponent), std::swap(binding.src, binding.dst);
    return binding;
}

void TwinStation::planWiring(Node& group) {
    std::vector<unsigned> ends = {group.id};
    for (const auto& [id, node] : model_.nodes)
        if (node.parent == group.id && id >= firstId) ends.push_back(id);

    const unsigned signals = random_.below(2 + 2 * static_cast<unsigned>(ends.size()));
    const unsigned bindings = random_.below(2 + 2 * static_cast<unsigned>(ends.size()));
    // In the document the connections stand in no order of their indices.
    std::vector<unsigned> indices;
    for (unsigned i = 0; i != signals; ++i)
        indices.insert(indices.begin() + random_.below(i + 1), i);
    group.order.resize(signals);
    for (unsigned i = 0; i != signals + bindings; ++i) {
        Connection connection =
            i < signals ? randomSignalConnection(group, ends) : randomBinding(ends);
        const unsigned id = 100 + 7 * i;
        if (i < signals) {
            connection.index = static_cast<int>(indices[i]);
            group.order[indices[i]] = id;
        }
        group.connections.emplace(id, connection);
    }
}

// Building.

void TwinStation::build() {
    registerTypes(model_);
    const auto station = trel::GetStationElem();
    StationLogic& logic = *StationLogic::inst();
    for (const auto& [id, node] : model_.nodes) {
        if (id < firstId) continue;
        const auto element = station->appendObject("smart_component", id, node.name);
        element->touch("type")->setValue(std::string(typeName(node.kind)));
        element->touch("parent")->setValue(node.parent);
        appendMembers(*element, node);
        for (unsigned i = 0; i != node.connections.size(); ++i)
            appendConnection(*element, 100 + 7 * i, node.connections.at(100 + 7 * i));
        trel::smartcomp::Create(element);
    }

    Node& node = model_.nodes.at(Station::logicId);
    appendMembers(*logic.element(), node);
    for (const auto& element : logic.element()->children("signal"))
        trel::smartcomp::SCSignal::Create(&logic, element);
    for (const auto& element : logic.element()->children("property"))
        trel::smartcomp::Property::Create(&logic, element);
    for (unsigned i = 0; i != 6; ++i) edit();
}

// Acting.

const Node& TwinStation::anyComponent() {
    while (true) {
        auto node = model_.nodes.begin();
        std::advance(node, random_.below(static_cast<unsigned>(model_.nodes.size())));
        if (node->second.kind != Kind::Station && node->second.kind != Kind::Controller)
            return node->second;
    }
}

std::string TwinStation::act() { return random_.oneIn(6) ? edit() : drive(); }

std::string TwinStation::drive() {
    const Node& node = anyComponent();
    const unsigned id = node.id;
    const unsigned member = random_.oneIn(40) ? 77 : 1 + random_.below(3);
    std::function<void(Model&)> planned;
    std::function<void()> operation;
    std::string what = node.name + " " + std::to_string(member);
    SmartComponent& component = live<SmartComponent>(id);

    switch (random_.below(3)) {
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

    Model trial = model_;
    try {
        thrownBy(trial, planned);
    } catch (const TooMuch&) {
        return {};
    }
    model_.log.clear();
    recorder_->log.clear();
    const std::string expected = thrownBy(model_, planned);
    return compare(what, thrownBy(operation), expected);
}

std::string TwinStation::edit() {
    const Node& any = random_.oneIn(2) ? model_.nodes.at(Station::logicId) : anyComponent();
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
            made.index = static_cast<int>(
                random_.below(static_cast<unsigned>(group.order.size()) + 1));
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
    if (thrown != expected)
        text += "  threw \"" + thrown + "\", expected \"" + expected + "\"\n";
    if (recorder_->log != model_.log)
        text += "  happened:\n" + joined(recorder_->log) + "  expected:\n" + joined(model_.log);
    text += differences();
    return text.empty() ? text : what + "\n" + text;
}

// What the live objects and the document hold other than the model.
std::string TwinStation::differences() const {
    std::string text;
    const auto expect = [&](bool same, const Node& node, const std::string& what) {
        if (!same) text += "  " + node.name + ": " + what + " differs\n";
    };
    for (const auto& [id, node] : model_.nodes) {
        if (id != Station::logicId && id < firstId) continue;
        auto& component = live<SmartComponent>(id);
        for (const auto& [signalId, signal] : node.signals) {
            expect(component.getSignal(signalId)->getValue() == signal.value, node, signal.name);
            const auto& element = dynamic_cast<trel::smartcomp::SCSignal&>(
                                      *component.getSignal(signalId))
                                      .element();
            const std::any& held = element->get("value")->value();
            const bool same = std::visit(
                [&]<typename T>(T value) {
                    const T* const number = std::any_cast<T>(&held);
                    return number && *number == value;
                },
                signal.value);
            expect(same, node, signal.name + " in the document");
        }
        for (const auto& [propertyId, property] : node.properties) {
            trel::smartcomp::Property& mirror = *component.getProperty(propertyId);
            expect(mirror.value() == property.text, node, property.name);
            expect(mirror.element()->getStringFromValue() == property.text, node,
                   property.name + " in the document");
        }
        if (!node.isAggregation()) continue;
        auto& group = dynamic_cast<Aggregation&>(component);
        std::size_t count = 0;
        for ([[maybe_unused]] const auto& entry : group.connections()) ++count;
        expect(count == node.order.size(), node, "the number of connections");
        for (std::size_t place = 0; place != node.order.size(); ++place) {
            const auto* const connection = group.getConnection(node.order[place]);
            expect(connection && connection->getIndex() == place &&
                       connection->element()->asUInt("index") == place,
                   node, "the order");
        }
    }
    return text;
}

}  // namespace network
