#include <fmt/format.h>

#include <algorithm>
#include <any>
#include <array>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include "host/Inspections.h"
#include "platform/sdf/Attr.h"

namespace trel::host {

namespace {

// A connection as far as it can be read.
struct MappedEdge {
    sdf::Element& element;
    bool isBinding;
    std::optional<MappedEnd> source = {};  // of something that is there
    std::optional<MappedEnd> destination = {};

    std::string_view tag() const { return isBinding ? "property" : "signal"; }
};

// Whether a value of one property type can be held by another.
bool carries(std::string_view from, std::string_view to) {
    const auto isWhole = [](std::string_view type) { return type == "Int32" || type == "Index"; };
    const bool isNumber = isWhole(from) || from == "Bool";
    return from == to || to == "String" || (isNumber && (isWhole(to) || to == "Double")) ||
           (isWhole(from) && to == "Bool");
}

class ConnectionInspection {
public:
    ConnectionInspection(const StationMap& map, FaultList& faults) : map_(map), faults_(faults) {}

    void run() {
        for (const MappedObject& object : map_.objects())
            if (!object.isController()) inspectConnections(object);
    }

private:
    void inspectConnections(const MappedObject& owner) {
        std::map<unsigned, unsigned> ids;  // with their lines
        std::map<std::pair<std::uint64_t, std::uint64_t>, unsigned> ends;
        std::multimap<unsigned, sdf::Element*> indices;
        bool allRead = true;
        for (const auto& connection : owner.element->children("connection")) {
            inspectId(owner, *connection, ids);
            const ElementPtr key = connection->get("index");
            MappedEdge edge{*connection,
                            !key || (!key->value().has_value() && !faults_.isNoted(*key))};
            const auto index = key ? indexOf(owner, *connection, *key) : std::nullopt;
            if (index) indices.emplace(*index, key.get());
            allRead = allRead && (!key || index);
            edge.source = inspectEnd(owner, edge, "source");
            edge.destination = inspectEnd(owner, edge, "destination");
            if (!edge.source || !edge.destination) continue;
            inspectRepetition(owner, edge, ends);
            if (edge.isBinding)
                inspectBinding(owner, edge);
            else
                inspectSignals(owner, edge);
        }
        inspectOrder(owner, indices, allRead);
    }

    std::string pathOf(const MappedObject& owner, const sdf::Element& connection) const {
        return fmt::format("{}, connection {}", map_.pathOf(owner), connection.getId(true));
    }

    void inspectId(const MappedObject& owner, const sdf::Element& connection,
                   std::map<unsigned, unsigned>& ids) {
        const unsigned id = connection.getId(true);
        if (id == 0)
            return faults_.add("connection-id-missing", connection, map_.pathOf(owner),
                               "a connection has no id");
        const auto [entry, fresh] = ids.emplace(id, connection.place().line);
        if (!fresh)
            faults_.add("connection-id-twice", connection, pathOf(owner, connection),
                        fmt::format("the connection has the id of the one in line {}",
                                    entry->second));
    }

    std::optional<unsigned> indexOf(const MappedObject& owner, const sdf::Element& connection,
                                    const sdf::Element& key) {
        constexpr unsigned largest = std::numeric_limits<int>::max();
        const auto* const index = std::any_cast<unsigned>(&key.value());
        if (index && *index <= largest) return *index;
        if (!key.value().has_value())
            faults_.addAndNote("index-empty", key, pathOf(owner, connection),
                               "the index of the connection holds nothing");
        else if (!index)
            faults_.addAndNote("index-type", key, pathOf(owner, connection),
                               fmt::format("the index of the connection, {} \"{}\", is no place",
                                           sdf::Attr::Type(key.value().type()),
                                           key.getStringFromValue()));
        else
            faults_.addAndNote("index-too-large", key, pathOf(owner, connection),
                               fmt::format("the index of the connection is {}", *index));
        return std::nullopt;
    }

    std::optional<MappedEnd> inspectEnd(const MappedObject& owner, const MappedEdge& edge,
                                        std::string_view key) {
        const ElementPtr at = edge.element.get(key);
        const auto end = endOf(edge.element, key);
        if (!end) {
            faults_.add("end-unreadable", at ? *at : edge.element, pathOf(owner, edge.element),
                        fmt::format("the {} cannot be read", key));
            return std::nullopt;
        }
        const MappedObject* const object = map_.find(end->object);
        if (!object) {
            faults_.add("end-no-component", *at, pathOf(owner, edge.element),
                        fmt::format("the {} names the component {}, which is not there", key,
                                    end->object));
            return std::nullopt;
        }
        if (!map_.member(edge.tag(), *end)) {
            const FaultCode code = edge.isBinding ? FaultCode("end-no-property")
                                                  : FaultCode("end-no-signal");
            faults_.add(code, *at, pathOf(owner, edge.element),
                        fmt::format("the {} names the {} {} of {}, which has none with that id",
                                    key, edge.tag(), end->member, map_.pathOf(*object)));
            return std::nullopt;
        }
        if (object->id != owner.id && object->parent != owner.id) {
            faults_.add("end-not-sibling", *at, pathOf(owner, edge.element),
                        fmt::format("the {} is {}, which is not in {}", key,
                                    map_.pathOf(edge.tag(), *end), map_.pathOf(owner)));
            return std::nullopt;
        }
        return end;
    }

    void inspectRepetition(const MappedObject& owner, const MappedEdge& edge,
                           std::map<std::pair<std::uint64_t, std::uint64_t>, unsigned>& ends) {
        if (edge.isBinding) return;
        const auto [entry, fresh] =
            ends.emplace(std::pair(edge.source->packed(), edge.destination->packed()),
                         edge.element.place().line);
        if (!fresh)
            faults_.add("connection-twice", edge.element, pathOf(owner, edge.element),
                        fmt::format("the connection has the ends of the one in line {}, {} -> {}",
                                    entry->second, map_.pathOf("signal", *edge.source),
                                    map_.pathOf("signal", *edge.destination)));
    }

    std::string typeOf(const MappedEdge& edge, MappedEnd end) const {
        return map_.member(edge.tag(), end)->asString("type");
    }

    void inspectBinding(const MappedObject& owner, const MappedEdge& edge) {
        const std::string from = typeOf(edge, *edge.source);
        const std::string to = typeOf(edge, *edge.destination);
        if (!carries(from, to) && !hasTypeFault(*edge.source) && !hasTypeFault(*edge.destination))
            faults_.add("binding-types", edge.element, pathOf(owner, edge.element),
                        fmt::format("{} is {}, and {} is {}", map_.pathOf("property", *edge.source),
                                    from, map_.pathOf("property", *edge.destination), to));
    }

    bool hasTypeFault(MappedEnd property) const {
        sdf::Element& element = *map_.property(property);
        const ElementPtr type = element.get("type");
        return faults_.isNoted(type ? *type : element);
    }

    // Inside an aggregation its inputs and the outputs of its children drive.
    void inspectSignals(const MappedObject& owner, const MappedEdge& edge) {
        const std::string from = typeOf(edge, *edge.source);
        const std::string to = typeOf(edge, *edge.destination);
        const bool ownSource = edge.source->object == owner.id;
        const bool ownDestination = edge.destination->object == owner.id;
        const auto end = [&](FaultCode code, std::string_view key, MappedEnd which,
                             std::string_view fault) {
            faults_.add(code, *edge.element.get(key), pathOf(owner, edge.element),
                        fmt::format("the connection {} {}, {}",
                                    key == "source" ? "begins at" : "ends at",
                                    map_.pathOf("signal", which), fault));
        };
        if (!ownSource && from.ends_with("Input"))
            end("source-is-input", "source", *edge.source, "an input");
        if (ownSource && !from.ends_with("Input"))
            end("source-is-own-output", "source", *edge.source,
                "an output of the aggregation itself");
        if (!ownDestination && !to.ends_with("Input"))
            end("destination-is-output", "destination", *edge.destination, "an output");
        if (ownDestination && to.ends_with("Input") && !isSame(edge))
            end("destination-is-own-input", "destination", *edge.destination,
                "an input of the aggregation itself");
        const auto isDigital = [](const std::string& type) { return type.starts_with("Digital"); };
        if (isDigital(from) != isDigital(to) && isSignalType(from) && isSignalType(to))
            faults_.add("signal-classes", edge.element, pathOf(owner, edge.element),
                        fmt::format("{} is {}, and {} is {}", map_.pathOf("signal", *edge.source),
                                    from, map_.pathOf("signal", *edge.destination), to));
    }

    // An input wired to itself is a ring, and told as one.
    static bool isSame(const MappedEdge& edge) {
        return edge.source->packed() == edge.destination->packed();
    }

    static bool isSignalType(std::string_view type) {
        return type.ends_with("Input") || type.ends_with("Output");
    }

    // Indices are to be 0, 1, 2 and so on, in any order of the file. One that could
    // not be read may be the one that is missing.
    void inspectOrder(const MappedObject& owner,
                      const std::multimap<unsigned, sdf::Element*>& indices, bool allRead) {
        unsigned place = 0;
        for (auto entry = indices.begin(); entry != indices.end(); ++entry) {
            const auto [index, key] = *entry;
            const bool repeats = entry != indices.begin() && std::prev(entry)->first == index;
            const auto connection = key->parent();
            if (repeats)
                faults_.add("index-twice", *key, pathOf(owner, *connection),
                            fmt::format("the connection has the index {} of the one in line {}",
                                        index, std::prev(entry)->second->place().line));
            else if (index != place && allRead)
                faults_.add("index-gap", *key, pathOf(owner, *connection),
                            fmt::format("the connection has the index {}, and none has {}", index,
                                        place));
            place = index + 1;
        }
    }

    const StationMap& map_;
    FaultList& faults_;
};

}  // namespace

void inspectConnections(const StationMap& map, FaultList& faults) {
    ConnectionInspection(map, faults).run();
}

}  // namespace trel::host
