#include "host/Diff.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "host/StationMap.h"

namespace trel::host {

namespace {

// What there is to say of one thing, such as a component, by what it is called.
using Values = std::map<std::string, std::string>;

struct Thing {
    std::string kind;  // "component"
    Values values;     // each as it is shown
};

// A station as things by path, and the orders of delivery by aggregation.
struct Meaning {
    std::map<std::string, Thing> things;
    std::map<std::string, std::vector<std::string>> orders;
};

std::string quotedText(const std::string& text) { return fmt::format("\"{}\"", text); }

class StationReader {
public:
    explicit StationReader(const sdf::Element& station) : map_(station) {
        for (const MappedObject& object : map_.objects()) ++taken_[map_.pathOf(object)];
    }

    Meaning read() {
        for (const MappedObject& object : map_.objects()) {
            Thing thing{object.isController() ? "controller" : "component", {}};
            keysOf(*object.element, {"type", "role_object", "pose"}, thing.values);
            if (!object.isLogic()) add(pathOf(object), std::move(thing));
            for (const auto* const tag : {"property", "signal"})
                for (const auto& member : object.element->children(tag))
                    readMember(object, *member);
            readConnections(object);
        }
        for (const MappedObject& object : map_.objects()) readPositions(object);
        return std::move(meaning_);
    }

private:
    // By its id, too, where several have the path.
    std::string pathOf(const MappedObject& object) const {
        const std::string path = map_.pathOf(object);
        return taken_.at(path) == 1 ? path : fmt::format("{} #{}", path, object.id);
    }

    std::string pathOf(std::string_view tag, MappedEnd end) const {
        const MappedObject* const owner = map_.find(end.object);
        sdf::Element* const member = map_.member(tag, end);
        if (!owner || !member) return map_.pathOf(tag, end);
        return memberPath(*owner, *member);
    }

    std::string memberPath(const MappedObject& owner, sdf::Element& member) const {
        const std::string name = nameOfMember(member);
        unsigned alike = 0;
        for (const auto& other : owner.element->children(member.tag()))
            alike += nameOfMember(*other) == name ? 1 : 0;
        return fmt::format(
            "{}.{}", pathOf(owner),
            name.empty() || alike > 1 ? fmt::format("{}#{}", name, member.getId(true)) : name);
    }

    void add(const std::string& path, Thing thing) {
        meaning_.things.emplace(path, std::move(thing));
    }

    // Numbers of objects are told by the paths of these.
    std::string shown(const sdf::Element& key, bool isObject) const {
        const std::string text = key.getStringFromValue();
        if (!isObject) return quotedText(text);
        try {
            const unsigned id = key.asUInt("");
            return id == 0 ? "nothing" : map_.pathOf(id);
        } catch (const std::invalid_argument&) {
            return quotedText(text);
        }
    }

    void keysOf(sdf::Element& element, std::initializer_list<const char*> keys,
                Values& values) const {
        for (const std::string_view key : keys)
            if (const ElementPtr held = element.get(key); held && held->value().has_value()) {
                const bool isObject = key == "role_object";
                const std::string value = shown(*held, isObject);
                // What reads the same as what is missing says nothing.
                if (value != "nothing" && value != quotedText("") && value != quotedText("0"))
                    values.emplace(key, value);
            }
    }

    void readMember(const MappedObject& owner, sdf::Element& member) {
        Thing thing{std::string(member.tag()), {}};
        keysOf(member, {"type", "unit", "description", "uivisible", "read_only", "auto_reset"},
               thing.values);
        const bool isReference = member.asString("type") == "ObjectId";
        const ElementPtr held = member.get("value");
        const sdf::Element& value = held ? *held : member;
        thing.values.emplace("value", shown(value, isReference));
        if (member.tag() == "signal" && thing.values["value"] == quotedText(""))
            thing.values["value"] = quotedText("0");
        add(memberPath(owner, member), std::move(thing));
    }

    void readConnections(const MappedObject& owner) {
        std::multimap<unsigned, std::string> order;
        for (const auto& connection : owner.element->children("connection")) {
            const auto source = endOf(*connection, "source");
            const auto destination = endOf(*connection, "destination");
            if (!source || !destination) continue;
            const bool isBinding = !connection->get("index");
            const std::string_view tag = isBinding ? "property" : "signal";
            const std::string ends =
                fmt::format("{} -> {}", pathOf(tag, *source), pathOf(tag, *destination));
            add(fmt::format("{} in {}", ends, map_.pathOf(owner)),
                Thing{isBinding ? "binding" : "connection", {}});
            if (!isBinding) order.emplace(connection->asUInt("index"), ends);
        }
        auto& places = meaning_.orders[map_.pathOf(owner)];
        for (const auto& [index, ends] : order) places.push_back(ends);
    }

    void readPositions(const MappedObject& owner) {
        for (const auto& xy : owner.element->children("xy")) {
            const auto at = xy->asVec3("");
            const MappedObject* const child = map_.find(static_cast<unsigned>(std::max(at.x, 0.0)));
            if (child && !child->isLogic())
                meaning_.things[pathOf(*child)].values.emplace("position",
                                                               fmt::format("{} {}", at.y, at.z));
        }
    }

    StationMap map_;
    std::map<std::string, unsigned> taken_;  // how often each path
    Meaning meaning_;
};

void compareValues(const std::string& path, const Values& a, const Values& b,
                   std::vector<std::string>& lines) {
    std::set<std::string> keys;
    for (const auto& [key, value] : a) keys.insert(key);
    for (const auto& [key, value] : b) keys.insert(key);
    for (const std::string& key : keys) {
        const auto in = [&](const Values& values) {
            const auto entry = values.find(key);
            return entry == values.end() ? "nothing" : entry->second;
        };
        if (in(a) != in(b))
            lines.push_back(fmt::format("* {}: {} {} -> {}", path, key, in(a), in(b)));
    }
}

std::string told(const std::string& path, const Thing& thing) {
    std::string text = fmt::format("{} {}", thing.kind, path);
    for (const auto& [key, value] : thing.values)
        if (key == "type" || key == "value") text += fmt::format(", {} {}", key, value);
    return text;
}

// Only of what both have: what came or went says so itself.
void compareOrders(const std::string& owner, std::vector<std::string> a, std::vector<std::string> b,
                   std::vector<std::string>& lines) {
    const auto keepCommon = [](std::vector<std::string>& order,
                               const std::multiset<std::string>& other) {
        std::multiset<std::string> left = other;
        std::erase_if(order, [&](const std::string& ends) {
            const auto entry = left.find(ends);
            if (entry == left.end()) return true;
            left.erase(entry);
            return false;
        });
    };
    const std::multiset<std::string> allA(a.begin(), a.end());
    const std::multiset<std::string> allB(b.begin(), b.end());
    keepCommon(a, allB);
    keepCommon(b, allA);
    const auto [first, second] = std::ranges::mismatch(a, b);
    if (first == a.end()) return;
    lines.push_back(fmt::format("* {}: the order of delivery differs from place {} on: {}, where "
                                "the other has {}",
                                owner, first - a.begin(), *first, *second));
}

}  // namespace

std::vector<std::string> differences(const sdf::Element& a, const sdf::Element& b) {
    const Meaning first = StationReader(a).read();
    const Meaning second = StationReader(b).read();
    std::vector<std::string> lines;
    for (const auto& [path, thing] : first.things) {
        const auto other = second.things.find(path);
        if (other == second.things.end() || other->second.kind != thing.kind)
            lines.push_back("- " + told(path, thing));
        else
            compareValues(path, thing.values, other->second.values, lines);
    }
    for (const auto& [path, thing] : second.things) {
        const auto other = first.things.find(path);
        if (other == first.things.end() || other->second.kind != thing.kind)
            lines.push_back("+ " + told(path, thing));
    }
    for (const auto& [owner, order] : first.orders)
        if (const auto other = second.orders.find(owner); other != second.orders.end())
            compareOrders(owner, order, other->second, lines);
    return lines;
}

}  // namespace trel::host
