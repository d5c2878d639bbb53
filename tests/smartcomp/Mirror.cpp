#include "tests/smartcomp/Mirror.h"

#include <algorithm>
#include <cmath>

#include "smartcomp/Aggregation.h"
#include "smartcomp/Connection.h"
#include "smartcomp/Property.h"
#include "smartcomp/SCSignal.h"
#include "tests/smartcomp/Draft.h"
#include "tests/support/Reach.h"

namespace trel::test {

namespace {

using smartcomp::Aggregation;
using smartcomp::Connection;
using smartcomp::Property;
using smartcomp::SCSignal;

std::vector<unsigned> sortedCopy(std::vector<unsigned> ids) {
    std::ranges::sort(ids);
    return ids;
}

class Mirror {
public:
    explicit Mirror(smartcomp::SmartComponent& component) {
        sdf::Element& element = *component.element();
        expect(component.id() == element.getId(true), element, "id");
        if (!component.isStationLogic())
            expect(component.getObjParentId() == element.asUInt("parent"), element, "parent");
        for (const auto& [id, property] : component.getProperties()) inspect(id, *property);
        for (const auto& [id, signal] : component.getSignals())
            inspect(id, dynamic_cast<SCSignal&>(*signal));
        if (auto* const aggregation = dynamic_cast<Aggregation*>(&component)) inspect(*aggregation);
    }

    Lines faults;

private:
    void expect(bool isSo, const sdf::Element& element, const char* what) {
        if (!isSo) faults.push_back(nameOf(element) + " " + what);
    }

    void inspect(unsigned id, const Property& property) {
        sdf::Element& e = *property.element();
        expect(id == property.id() && id == e.getId(true), e, "id");
        expect(property.value() == e.getStringFromValue(), e, "value");
        expect(property.type() == e.asString("type"), e, "type");
        expect(typeIndexOf(property) == Property::typeIndexOf(property.type()), e, "type index");
        expect(property.unit() == e.asString("unit"), e, "unit");
        expect(property.description() == e.asString("description"), e, "description");
        expect(property.isVisible() == e.asBool("uivisible"), e, "uivisible");
        expect(property.isReadOnly() == e.asBool("read_only"), e, "read_only");
    }

    // What is no number is the same, too.
    static bool same(double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }

    void inspect(unsigned id, SCSignal& signal) {
        sdf::Element& e = *signal.element();
        expect(id == signal.id() && id == e.getId(true), e, "id");
        expect(signal.getName() == e.asString("name"), e, "name");
        expect(signal.type() == e.asString("type"), e, "type");
        expect(signal.description() == e.asString("description"), e, "description");
        expect(signal.isVisible() == e.asBool("uivisible"), e, "uivisible");
        expect(signal.isAutoReset() == e.asBool("auto_reset"), e, "auto_reset");
        const SignalValue value = signal.getValue();
        expect(value.index() == 0 ? std::get<int>(value) == e.asInt("value")
                                  : same(std::get<double>(value), e.asDouble("value")),
               e, "value");
    }

    void inspect(const Connection& connection) {
        sdf::Element& e = *connection.element();
        expect(packed({connection.getSrcComponentId(), connection.getSrcSignalId()}) ==
                   e.asUInt64("source"),
               e, "source");
        expect(packed({connection.getDstComponentId(), connection.getDstSignalId()}) ==
                   e.asUInt64("destination"),
               e, "destination");
        const auto index = e.get("index");
        const bool none = !index || !index->value().has_value();
        // The largest indices wrap to negative ones and count as none.
        expect(connection.isBinding() ? none || static_cast<int>(e.asUInt("index")) < 0
                                      : connection.getIndex() == e.asUInt("index"),
               e, "index");
    }

    // A connection that was read with an index beyond the end keeps it, in the
    // last place.
    void inspect(Aggregation& aggregation) {
        sdf::Element& e = *aggregation.element();
        const auto& table = tableOf(aggregation);
        const auto& order = orderOf(aggregation);
        std::vector<unsigned> signalConnections;
        for (const auto& [id, connection] : table) {
            expect(id == connection->id(), *connection->element(), "id");
            inspect(*connection);
            if (!connection->isBinding()) signalConnections.push_back(id);
        }
        expect(sortedCopy(order) == sortedCopy(signalConnections), e, "order");
        for (std::size_t place = 0; place < order.size(); ++place)
            expect(table.contains(order[place]) && table.at(order[place])->getIndex() >= place, e,
                   "place in the order");
        expect(aggregation.getRoleObject() == e.asUInt("role_object"), e, "role_object");
        for (const auto& child : e.children("child"))
            expect(aggregation.hasObjChild(child->asUInt("")), e, "child");
    }
};

}  // namespace

Lines mirrorFaults(smartcomp::SmartComponent& component) { return Mirror(component).faults; }

}  // namespace trel::test
