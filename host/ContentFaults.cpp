#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "host/Inspections.h"
#include "platform/station/Station.h"

namespace trel::host {

namespace {

class ContentInspection {
public:
    ContentInspection(const StationMap& map, FaultList& faults) : map_(map), faults_(faults) {}

    void run() {
        for (const MappedObject& object : map_.objects()) {
            if (object.isController()) continue;
            inspectParent(object);
            inspectChildren(object);
            inspectPositions(object);
            inspectRoleObject(object);
        }
        for (const MappedObject& object : map_.objects()) inspectListing(object);
    }

private:
    void inspectParent(const MappedObject& object) {
        if (object.isLogic()) return;
        const ElementPtr key = object.element->get("parent");
        const sdf::Element& at = key ? *key : *object.element;
        if (object.parent == 0)
            return faults_.addAndNote("parent-missing", at, map_.pathOf(object),
                                      "the component names no parent");
        const MappedObject* const parent = map_.find(object.parent);
        if (!parent)
            return faults_.addAndNote("parent-unknown", at, map_.pathOf(object),
                                      fmt::format("the parent {} is not there", object.parent));
        if (parent->isController())
            return faults_.addAndNote("parent-unknown", at, map_.pathOf(object),
                                      fmt::format("the parent {} is a controller",
                                                  map_.pathOf(*parent)));
        inspectRing(object);
    }

    // Walks up until it meets what an earlier walk went through, or itself.
    void inspectRing(const MappedObject& object) {
        std::vector<const MappedObject*> way;
        const MappedObject* here = &object;
        while (here && !here->isLogic() && settled_.insert(here).second) {
            way.push_back(here);
            here = map_.find(here->parent);
        }
        const auto first = std::ranges::find(way, here);
        if (!here || first == way.end()) return;
        for (auto member = first; member != way.end(); ++member)
            faults_.addAndNote("parent-ring", *(*member)->element->get("parent"),
                               fmt::format("#{}", (*member)->id), textOfRing(first, way.end()));
    }

    using Way = std::vector<const MappedObject*>::const_iterator;

    static std::string textOfRing(Way first, Way last) {
        constexpr int most = 10;
        std::string ring;
        for (Way member = first; member != last && member - first != most; ++member)
            ring += fmt::format("{} in ", quoted(**member));
        if (last - first > most) ring += "... in ";
        return fmt::format("the component contains itself: {}{}", ring, quoted(**first));
    }

    static std::string quoted(const MappedObject& object) {
        return fmt::format("\"{}\"", object.element->name());
    }

    // A key's value as an id; empty if it is none, which is told elsewhere.
    static std::optional<unsigned> idIn(const sdf::Element& key) {
        try {
            if (key.value().has_value()) return key.asUInt("");
        } catch (const std::invalid_argument&) {}
        return std::nullopt;
    }

    void inspectChildren(const MappedObject& owner) {
        std::unordered_map<unsigned, unsigned> lines;
        for (const auto& child : owner.element->children("child")) {
            const auto id = idIn(*child);
            if (!id) {
                if (!child->value().has_value())
                    faults_.add("child-unknown", *child, map_.pathOf(owner),
                                "the aggregation lists a child without an id");
                continue;
            }
            const auto [entry, fresh] = lines.emplace(*id, child->place().line);
            const MappedObject* const object = map_.find(*id);
            if (!object)
                faults_.add("child-unknown", *child, map_.pathOf(owner),
                            fmt::format("the aggregation lists the child {}, which is not there",
                                        *id));
            else if (!fresh)
                faults_.add("child-twice", *child, map_.pathOf(owner),
                            fmt::format("the aggregation lists the child {} in line {} too",
                                        map_.pathOf(*object), entry->second));
            else if (object->parent != owner.id && !hasParentFault(*object))
                faults_.add("child-elsewhere", *child, map_.pathOf(owner),
                            fmt::format("the aggregation lists the child {}, whose parent is {}",
                                        map_.pathOf(*object), map_.pathOf(object->parent)));
            if (object && object->parent == owner.id) listed_.insert(*id);
        }
    }

    bool hasParentFault(const MappedObject& object) const {
        const ElementPtr key = object.element->get("parent");
        return faults_.isNoted(key ? *key : *object.element);
    }

    // A controller need not be listed.
    void inspectListing(const MappedObject& object) {
        if (object.isController() || object.isLogic() || object.id == 0) return;
        const MappedObject* const parent = map_.find(object.parent);
        if (!parent || listed_.contains(object.id) || hasParentFault(object)) return;
        faults_.add("child-nowhere", *object.element, map_.pathOf(object),
                    fmt::format("{} does not list the component as a child", map_.pathOf(*parent)),
                    fmt::format("add <child uint=\"{}\" /> to {}", object.id,
                                map_.pathOf(*parent)));
    }

    void inspectPositions(const MappedObject& owner) {
        std::unordered_map<double, unsigned> lines;  // by the child's id
        for (const auto& xy : owner.element->children("xy")) {
            double id = 0;
            try {
                id = std::trunc(xy->asVec3("").x);
            } catch (const std::invalid_argument&) {
                continue;
            }
            if (faults_.isNoted(*xy)) continue;
            const MappedObject* const child =
                id >= 1 && id <= 4294967295.0 ? map_.find(static_cast<unsigned>(id)) : nullptr;
            const auto [entry, fresh] = lines.emplace(id, xy->place().line);
            if (!child || child->parent != owner.id)
                faults_.add("xy-no-child", *xy, map_.pathOf(owner),
                            fmt::format("the diagram position is of the object {}, which is no "
                                        "child",
                                        id));
            else if (!fresh)
                faults_.add("xy-twice", *xy, map_.pathOf(owner),
                            fmt::format("the child {} has another diagram position in line {}",
                                        map_.pathOf(*child), entry->second));
        }
    }

    void inspectRoleObject(const MappedObject& owner) {
        const ElementPtr key = owner.element->get("role_object");
        const auto id = key ? idIn(*key) : std::nullopt;
        if (id && *id != 0 && *id != Station::id && !map_.find(*id))
            faults_.add("role-object-unknown", *key, map_.pathOf(owner),
                        fmt::format("the role object {} is not there", *id));
    }

    const StationMap& map_;
    FaultList& faults_;
    std::unordered_set<const MappedObject*> settled_;  // by inspectRing
    std::unordered_set<unsigned> listed_;              // by their parents
};

}  // namespace

void inspectContents(const StationMap& map, FaultList& faults) {
    ContentInspection(map, faults).run();
}

}  // namespace trel::host
