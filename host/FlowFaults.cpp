#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "host/Inspections.h"
#include "host/Rings.h"

namespace trel::host {

namespace {

// A signal connection that carries values.
struct Wire {
    const MappedObject* owner;
    sdf::Element* connection;
    MappedEnd source;
    MappedEnd destination;
};

class FlowInspection {
public:
    FlowInspection(const StationMap& map, const IsAggregation& isAggregation, FaultList& faults)
        : map_(map), isAggregation_(isAggregation), faults_(faults) {
        for (const MappedObject& object : map_.objects())
            if (!object.isController() && map_.find(object.id) == &object) collect(object);
    }

    void run() {
        inspectRings();
        inspectPulses();
    }

private:
    bool isInput(MappedEnd end) const {
        return map_.signal(end)->asString("type").ends_with("Input");
    }

    void collect(const MappedObject& owner) {
        for (const auto& connection : owner.element->children("connection")) {
            const auto source = endOf(*connection, "source");
            const auto destination = endOf(*connection, "destination");
            if (!connection->get("index") || !source || !destination) continue;
            if (!map_.signal(*source) || !map_.signal(*destination)) continue;
            const bool own = source->object == owner.id;
            const bool carries = own ? isInput(*source)
                                     : map_.find(source->object)->parent == owner.id &&
                                           !isInput(*source);
            if (carries) wires_.push_back({&owner, connection.get(), *source, *destination});
        }
    }

    // Every input drives every output of its component; those of an aggregation
    // drive what they are connected with.
    void inspectRings() {
        Rings rings;
        std::unordered_map<unsigned, std::set<unsigned>> outputs;  // that drive a wire
        for (std::size_t i = 0; i != wires_.size(); ++i) {
            const Wire& wire = wires_[i];
            rings.arc(rings.node(wire.source.packed()), rings.node(wire.destination.packed()), i);
            if (!isInput(wire.source)) outputs[wire.source.object].insert(wire.source.member);
        }
        std::unordered_set<std::uint64_t> entered;
        for (const Wire& wire : wires_) {
            const MappedEnd end = wire.destination;
            const bool reacts = isInput(end) && !map_.find(end.object)->isController() &&
                                !isAggregation_(end.object);
            if (!reacts || !outputs.contains(end.object)) continue;
            // By way of a node that stands for the component.
            const std::size_t whole = rings.node(MappedEnd(end.object, 0).packed());
            if (entered.insert(end.packed()).second)
                rings.arc(rings.node(end.packed()), whole, Rings::inner);
            if (!entered.insert(MappedEnd(end.object, 0).packed()).second) continue;
            for (const unsigned output : outputs[end.object])
                rings.arc(whole, rings.node(MappedEnd(end.object, output).packed()), Rings::inner);
        }
        for (const Rings::Ring& ring : rings.find()) tell(ring);
    }

    void tell(const Rings::Ring& ring) {
        std::string members;
        bool guarded = false;
        bool allowed = false;  // by a comment at any of them
        for (const Rings::Arc& arc : ring.arcs) {
            if (arc.label == Rings::inner) continue;
            const Wire& wire = wires_[arc.label];
            allowed = allowed || faults_.isAllowed("loop", *wire.connection);
            guarded = guarded || !isInput(wire.source) || !isInput(wire.destination);
            members += fmt::format("{}{} -> {}", members.empty() ? "" : ", ",
                                   map_.pathOf("signal", wire.source),
                                   map_.pathOf("signal", wire.destination));
        }
        if (allowed && guarded) return;
        if (ring.more != 0)
            members += fmt::format(", and {} more connections in rings with these", ring.more);
        const Wire& first = wires_[ring.arcs.front().label];
        faults_.add(guarded ? FaultCode("loop") : FaultCode("loop-unguarded"), *first.connection,
                    map_.pathOf(*first.owner),
                    fmt::format("signals drive each other in a ring, {}: {}",
                                guarded ? "which the guard of an output ends"
                                        : "which no guard ends",
                                members));
    }

    bool isPulsed(MappedEnd end) const {
        try {
            return map_.signal(end)->asBool("auto_reset");
        } catch (const std::invalid_argument&) {
            return false;
        }
    }

    void inspectPulses() {
        for (const Wire& wire : wires_)
            if (wire.source.object == wire.owner->id) onward_.insert(wire.source.packed());
        for (const Wire& wire : wires_)
            if (onward_.contains(wire.destination.packed()))
                feeding_[wire.destination.packed()].push_back(&wire);
        for (const Wire& wire : wires_) {
            if (!isPulsed(wire.source) || !isPulsed(wire.destination)) continue;
            if (!onward_.contains(wire.destination.packed())) continue;
            // Each value that comes leaves as two.
            faults_.add("pulse-multiplies", *wire.connection, map_.pathOf(*wire.owner),
                        fmt::format("a pulse of {} leaves {} as {} values",
                                    map_.pathOf("signal", wire.source),
                                    map_.pathOf("signal", wire.destination),
                                    2 * valuesFrom(wire.source, 0)));
        }
    }

    // How many values a signal sends when what feeds it is set once.
    unsigned long long valuesFrom(MappedEnd end, unsigned depth) {
        constexpr unsigned deepest = 1000;
        constexpr unsigned long long most = 1ull << 60;
        const auto [known, fresh] = values_.try_emplace(end.packed(), 1);  // in a ring
        if (!fresh) return known->second;
        unsigned long long coming = 1;
        const auto feeding = feeding_.find(end.packed());
        if (feeding != feeding_.end() && depth != deepest)
            for (const Wire* const wire : feeding->second)
                coming = std::max(coming, valuesFrom(wire->source, depth + 1));
        return values_[end.packed()] = std::min(coming * (isPulsed(end) ? 2 : 1), most);
    }

    const StationMap& map_;
    const IsAggregation& isAggregation_;
    FaultList& faults_;
    std::vector<Wire> wires_;
    std::unordered_set<std::uint64_t> onward_;  // inputs of aggregations that lead on
    std::unordered_map<std::uint64_t, std::vector<const Wire*>> feeding_;  // into these
    std::unordered_map<std::uint64_t, unsigned long long> values_;         // of valuesFrom
};

}  // namespace

void inspectFlow(const StationMap& map, const IsAggregation& isAggregation, FaultList& faults) {
    FlowInspection(map, isAggregation, faults).run();
}

}  // namespace trel::host
