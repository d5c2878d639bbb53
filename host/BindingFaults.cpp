#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "host/Inspections.h"
#include "host/Objects.h"
#include "host/Rings.h"
#include "platform/broker/SignalBroker.h"
#include "platform/station/Station.h"
#include "smartcomp/Aggregation.h"
#include "smartcomp/Property.h"

namespace trel::host {

namespace {

using smartcomp::Aggregation;
using smartcomp::Connection;
using smartcomp::Property;
using smartcomp::SmartComponent;

// A binding that carries texts.
struct Bond {
    const Aggregation* owner;
    const Connection* binding;
    MappedEnd source;
    MappedEnd destination;
};

const Property* propertyAt(MappedEnd end) {
    const SmartComponent* const component = componentOf(end.object);
    return component && component->hasProperty(end.member) ? component->getProperty(end.member)
                                                           : nullptr;
}

// Outwards from a child, or inwards from a user's aggregation. The station logic
// sends nothing.
bool carries(const Bond& bond) {
    const SmartComponent& source = *componentOf(bond.source.object);
    return source.id() == bond.owner->id() ? source.isUser()
                                           : source.getObjParentId() == bond.owner->id();
}

std::vector<Bond> allBonds() {
    std::vector<Bond> bonds;
    for (const SmartComponent* const component : componentsNow()) {
        const auto* const owner = dynamic_cast<const Aggregation*>(component);
        if (!owner) continue;
        const std::size_t first = bonds.size();
        for (const auto& [id, binding] : owner->bindings()) {
            const Bond bond{owner,
                            binding,
                            {binding->getSrcComponentId(), binding->getSrcPropertyId()},
                            {binding->getDstComponentId(), binding->getDstPropertyId()}};
            if (propertyAt(bond.source) && propertyAt(bond.destination) && carries(bond))
                bonds.push_back(bond);
        }
        std::sort(bonds.begin() + static_cast<std::ptrdiff_t>(first), bonds.end(),
                  [](const Bond& a, const Bond& b) { return a.binding->id() < b.binding->id(); });
    }
    return bonds;
}

// Stops a setting as soon as it is told.
class Stop : public broker::Listener {
public:
    struct Told {};
    Stop() { broker::SignalBroker::subscribe(*this); }
    ~Stop() override { broker::SignalBroker::unsubscribe(*this); }
    void scPropertyValueChanged(unsigned, unsigned) override { throw Told(); }
};

// Whether the component's type passes over the text that the property holds, as
// one does that frames its settings.
bool isFramed(MappedEnd end) {
    const std::string text = propertyAt(end)->value();
    try {
        const Stop stop;
        componentOf(end.object)->setPropertyValue(end.member, text);
        return true;
    } catch (const Stop::Told&) {
        return false;
    } catch (const std::exception&) {
        return true;  // it does more than to set: that ends a ring too
    }
}

// The object that a text names for a destination, or null.
sdf::SdfObject* objectNamed(const std::string& text) {
    unsigned id = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), id);
    if (text.empty() || error != std::errc{} || end != text.data() + text.size()) return nullptr;
    return objectOf(id == 0 ? Station::id : id);
}

// Only outwards is a destination asked.
void inspectReference(const StationMap& map, const Bond& bond, FaultList& faults) {
    const Property& source = *propertyAt(bond.source);
    if (!source.isObjectId() || bond.source.object == bond.owner->id()) return;
    sdf::SdfObject* const object = objectNamed(source.value());
    const SmartComponent& taker = *componentOf(bond.destination.object);
    if (!object || taker.checkPropertyObjectType(bond.destination.member, object)) return;
    faults.add("object-id-refused", *source.element(), map.pathOf("property", bond.source),
               fmt::format("the property names {}, which {} refuses",
                           object->id() == Station::id ? "no object" : map.pathOf(object->id()),
                           map.pathOf("property", bond.destination)));
}

// Only properties that are led to and lead on can be in a ring, and only those
// let it go round that are not framed.
std::unordered_set<std::uint64_t> unframed(const std::vector<Bond>& bonds) {
    std::unordered_set<std::uint64_t> sources;
    for (const Bond& bond : bonds) sources.insert(bond.source.packed());
    std::unordered_set<std::uint64_t> found;
    for (const Bond& bond : bonds) {
        const std::uint64_t end = bond.destination.packed();
        if (sources.erase(end) != 0 && !isFramed(bond.destination)) found.insert(end);
    }
    return found;
}

void inspectRings(const StationMap& map, const std::vector<Bond>& bonds, FaultList& faults) {
    const auto open = unframed(bonds);
    Rings rings;
    for (std::size_t i = 0; i != bonds.size(); ++i) {
        const std::uint64_t from = bonds[i].source.packed();
        const std::uint64_t to = bonds[i].destination.packed();
        if (open.contains(from) && open.contains(to))
            rings.arc(rings.node(from), rings.node(to), i);
    }
    for (const Rings::Ring& ring : rings.find()) {
        std::string members;
        for (const Rings::Arc& arc : ring.arcs)
            members += fmt::format("{}{} -> {}", members.empty() ? "" : ", ",
                                   map.pathOf("property", bonds[arc.label].source),
                                   map.pathOf("property", bonds[arc.label].destination));
        const Bond& first = bonds[ring.arcs.front().label];
        faults.add("binding-ring", *first.binding->element(), map.pathOf(first.owner->id()),
                   fmt::format("properties drive each other in a ring, which no guard ends: {}",
                               members));
    }
}

}  // namespace

void inspectBindings(const StationMap& map, FaultList& faults) {
    const std::vector<Bond> bonds = allBonds();
    for (const Bond& bond : bonds) inspectReference(map, bond, faults);
    inspectRings(map, bonds, faults);
}

}  // namespace trel::host
