#include "tests/network/Station.h"

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
using trel::smartcomp::StationLogic;

constexpr unsigned controllerId = 3;
constexpr unsigned nobody = 9'999;

}  // namespace

TwinStation::TwinStation(Random& random, Model& model, Script* script)
    : random_(random), model_(model), script_(script) {
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
    for (const unsigned id : node.children) logic.removeChildComponent(id);
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
    logic.children.clear();
    nodes.emplace(Station::logicId, std::move(logic));
    nodes[Station::id].kind = Kind::Station;
    nodes[controllerId].kind = Kind::Controller;
    nodes[controllerId].id = controllerId;

    std::vector<unsigned> groups = {Station::logicId};
    const unsigned count = 3 + random_.below(8);
    for (nextId_ = firstId; nextId_ != firstId + count; ++nextId_) {
        const Node& node = planNode(nextId_, random_.from(groups));
        if (node.isAggregation()) groups.push_back(node.id);
    }
    for (auto& [id, node] : nodes)
        if (id == Station::logicId || id >= firstId) planMembers(node);
    for (const unsigned id : groups)
        if (id != Station::logicId) planWiring(nodes[id]);
}

Node& TwinStation::planNode(unsigned id, unsigned parent) {
    Node& node = model_.nodes[id];
    node.id = id;
    node.name = "C" + std::to_string(id);
    node.parent = parent;
    node.kind = random_.from<Kind>({Kind::Plain, Kind::Plain, Kind::Group, Kind::UserGroup});
    node.framed = !random_.oneIn(3);
    node.acceptsObjects = !random_.oneIn(2);
    return node;
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
            node.reactions.push_back({id, 1 + random_.below(signals), random_.from<int>({1, 1, -1}),
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
        Connection connection = i < signals ? randomSignalConnection(group, ends)
                                            : randomBinding(ends);
        const unsigned id = 100 + 7 * i;
        if (i < signals) {
            connection.index = static_cast<int>(indices[i]);
            group.order[indices[i]] = id;
        }
        connection.serial = model_.nextSerial();
        group.connections.emplace(id, connection);
    }
}

// Building.

void TwinStation::make(const Node& node) {
    const auto element =
        trel::GetStationElem()->appendObject("smart_component", node.id, node.name);
    element->touch("type")->setValue(std::string(typeName(node.kind)));
    element->touch("parent")->setValue(node.parent);
    appendMembers(*element, node);
    for (unsigned i = 0; i != node.connections.size(); ++i)
        appendConnection(*element, 100 + 7 * i, node.connections.at(100 + 7 * i));
    trel::smartcomp::Create(element);
}

void TwinStation::build() {
    registerTypes(model_);
    StationLogic& logic = *StationLogic::inst();
    for (const auto& [id, node] : model_.nodes)
        if (id >= firstId) make(node);

    Node& node = model_.nodes.at(Station::logicId);
    appendMembers(*logic.element(), node);
    for (const auto& element : logic.element()->children("signal"))
        trel::smartcomp::SCSignal::Create(&logic, element);
    for (const auto& element : logic.element()->children("property"))
        trel::smartcomp::Property::Create(&logic, element);
    for (unsigned i = 0; i != 6; ++i) edit();
}

}  // namespace network
