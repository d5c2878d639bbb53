#include <algorithm>
#include <any>
#include <mutex>

#include "platform/station/Station.h"
#include "smartcomp/Aggregation.h"
#include "smartcomp/Property.h"
#include "smartcomp/SCSignal.h"
#include "tests/network/Live.h"
#include "tests/network/Station.h"

namespace network {

namespace {

using trel::smartcomp::Aggregation;
using trel::smartcomp::SmartComponent;

using Ids = std::vector<unsigned>;

template <typename Table>
Ids idsOf(const Table& table) {
    Ids ids;
    for (const auto& [id, entry] : table) ids.push_back(id);
    std::ranges::sort(ids);
    return ids;
}

Ids componentsInTable() {
    auto& manager = *sdf::SdfManager::inst();
    const std::unique_lock lock(manager.mutex());
    Ids ids;
    for (const auto& [id, object] : manager.objects())
        if (dynamic_cast<SmartComponent*>(object)) ids.push_back(id);
    std::ranges::sort(ids);
    return ids;
}

Ids idsOfElements(sdf::Element& parent, const char* tag) {
    Ids ids;
    for (const auto& child : parent.children(tag)) ids.push_back(child->getId(true));
    std::ranges::sort(ids);
    return ids;
}

unsigned long long packed(unsigned component, unsigned member) {
    return (static_cast<unsigned long long>(component) << 32) | member;
}

bool holds(const std::any& held, const Value& value) {
    return std::visit(
        [&]<typename T>(T expected) {
            const T* const number = std::any_cast<T>(&held);
            return number && *number == expected;
        },
        value);
}

bool isMirror(const trel::smartcomp::Connection& real, const Connection& connection) {
    return real.matchSrc(connection.srcComponent, connection.src) &&
           real.matchDst(connection.dstComponent, connection.dst) &&
           real.isBinding() == (connection.index < 0) &&
           real.element()->asUInt64("source") == packed(connection.srcComponent, connection.src) &&
           real.element()->asUInt64("destination") ==
               packed(connection.dstComponent, connection.dst);
}

// Writes down what of a component differs.
class Comparison {
public:
    explicit Comparison(const Node& node) : node_(node), component_(live<SmartComponent>(node.id)) {
        members();
        if (node.isAggregation()) group(dynamic_cast<Aggregation&>(component_));
    }

    std::string text;

private:
    void expect(bool same, const std::string& what) {
        if (!same) text += "  " + node_.name + ": " + what + " differs\n";
    }

    void members() {
        expect(idsOf(component_.getSignals()) == idsOf(node_.signals), "the table of signals");
        expect(idsOf(component_.getProperties()) == idsOf(node_.properties),
               "the table of properties");
        // A deleted signal's element goes, a deleted property's stays.
        expect(idsOfElements(*component_.element(), "signal") == idsOf(node_.signals),
               "signals in the document");
        if (!text.empty()) return;
        for (const auto& [id, signal] : node_.signals) {
            auto& real = dynamic_cast<trel::smartcomp::SCSignal&>(*component_.getSignal(id));
            expect(real.getValue() == signal.value, signal.name);
            expect(holds(real.element()->get("value")->value(), signal.value),
                   signal.name + " in the document");
        }
        for (const auto& [id, property] : node_.properties) {
            const trel::smartcomp::Property& real = *component_.getProperty(id);
            expect(real.value() == property.text, property.name);
            expect(real.element()->getStringFromValue() == property.text,
                   property.name + " in the document");
        }
    }

    void group(Aggregation& real) {
        std::size_t count = 0;
        for ([[maybe_unused]] const auto& entry : real.connections()) ++count;
        expect(count == node_.order.size(), "the number of connections");
        for ([[maybe_unused]] const auto& entry : real.bindings()) ++count;
        expect(count == node_.connections.size(), "the number of bindings");
        if (!text.empty()) return;
        for (std::size_t place = 0; place != node_.order.size(); ++place) {
            const auto* const connection = real.getConnection(node_.order[place]);
            expect(connection && connection->getIndex() == place &&
                       connection->element()->asUInt("index") == place,
                   "the order");
        }
        for (const auto& [id, connection] : node_.connections)
            expect(isMirror(connection.index < 0 ? *real.getBinding(id) : *real.getConnection(id),
                            connection),
                   "connection " + std::to_string(id));
        Ids children;
        for (const auto& child : real.element()->children("child"))
            children.push_back(child->asUInt(""));
        expect(children == node_.children, "the list of children");
        for (const unsigned id : node_.children)
            expect(real.hasObjChild(id), "child " + std::to_string(id));
    }

    const Node& node_;
    SmartComponent& component_;
};

}  // namespace

// What the live objects and the document hold other than the model.
std::string TwinStation::differences() const {
    Ids expected;
    for (const auto& [id, node] : model_.nodes)
        if (id == logicId || id >= firstId) expected.push_back(id);
    if (componentsInTable() != expected) return "  the object table differs\n";
    if (idsOfElements(*trel::GetStationElem(), "smart_component") != expected)
        return "  the components in the document differ\n";
    std::string text;
    for (const unsigned id : expected) text += Comparison(model_.nodes.at(id)).text;
    return text;
}

}  // namespace network
