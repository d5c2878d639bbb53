#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <stdexcept>
#include <string_view>
#include <tuple>

#include "host/Faults.h"
#include "platform/station/Station.h"
#include "smartcomp/Property.h"

namespace trel::host {

namespace {

using ElementPtr = std::shared_ptr<sdf::Element>;

constexpr std::array<std::string_view, 6> signalTypes = {"AnalogInput",   "AnalogOutput",
                                                         "DigitalInput",  "DigitalOutput",
                                                         "GroupInput",    "GroupOutput"};

// The high half of a connection end names the component, the low half its
// signal or property.
unsigned componentOf(unsigned long long end) { return static_cast<unsigned>(end >> 32); }
unsigned memberOf(unsigned long long end) { return static_cast<unsigned>(end); }

class Inspection {
public:
    explicit Inspection(const sdf::Element& station) {
        for (const auto& element : station.children("smart_component")) enter(element);
        for (const auto& element : station.children("controller")) enter(element);
    }

    Faults run() {
        for (const ElementPtr& element : objects_) {
            inspectMembers(*element, "property");
            inspectMembers(*element, "signal");
        }
        for (const ElementPtr& element : objects_) {
            if (element->tag() == "controller") continue;
            inspectParent(element);
            inspectContents(*element);
        }
        return std::move(faults_);
    }

private:
    void add(const sdf::Element& at, std::string text) {
        faults_.push_back({at.place(), std::move(text)});
    }

    void enter(const ElementPtr& element) {
        objects_.push_back(element);
        const unsigned id = element->getId(true);
        if (id == 0)
            return add(*element, fmt::format("the {} \"{}\" has no id; give it one that is free",
                                             element->tag(), element->name()));
        if (id == Station::id)
            return add(*element, fmt::format("{} has the id of the station; give it one that is "
                                             "free",
                                             called(*element)));
        const auto [entry, fresh] = byId_.emplace(id, element);
        if (!fresh)
            add(*element, fmt::format("{} has the id of {} in line {}; give it one that is free",
                                      called(*element), called(*entry->second),
                                      entry->second->place().line));
    }

    // Reads a key as the library will, so that a value of another type is named
    // with its place.
    template <typename Read>
    void inspectValue(sdf::Element& element, std::string_view key, std::string_view wanted,
                      const Read& read) {
        const ElementPtr holder = element.get(key);
        if (!holder) return;
        try {
            read(*holder);
        } catch (const std::invalid_argument&) {
            add(*holder, fmt::format("\"{}\" holds \"{}\", which is no {}; write a {}",
                                     holder->tag(), holder->getStringFromValue(), wanted, wanted));
        }
    }
    void inspectFlag(sdf::Element& element, std::string_view key) {
        inspectValue(element, key, "bool", [](sdf::Element& held) { held.asBool(""); });
    }
    void inspectId(sdf::Element& element, std::string_view key) {
        inspectValue(element, key, "number of an object", [](sdf::Element& held) { held.asUInt(""); });
    }

    void inspectMembers(const sdf::Element& owner, std::string_view tag) {
        std::map<unsigned, unsigned> lines;  // of the ids
        for (const auto& member : owner.children(tag)) {
            const unsigned id = member->getId(true);
            if (id == 0)
                add(*member, fmt::format("a {} of {} has no id; give it one", tag, called(owner)));
            else if (const auto [line, fresh] = lines.emplace(id, member->place().line); !fresh)
                add(*member, fmt::format("a {} of {} has the id {} of the one in line {}; give "
                                         "each its own",
                                         tag, called(owner), id, line->second));
            members_.emplace(owner.getId(true), tag, id);
            inspectFlag(*member, "uivisible");
            if (tag == "property")
                inspectProperty(*member);
            else
                inspectSignal(*member, owner.tag() == "controller");
        }
    }

    void inspectProperty(sdf::Element& property) {
        inspectFlag(property, "read_only");
        const std::string type = property.asString("type");
        const ElementPtr at = property.get("type");
        if (!smartcomp::Property::typeIndexOf(type))
            add(at ? *at : property,
                fmt::format("\"{}\" is no property type; write ObjectId, Int32, Double, String, "
                            "Bool, Vector3, Orient, ReferenceFrame, Index or Error",
                            type));
    }

    void inspectSignal(sdf::Element& signal, bool ofController) {
        inspectFlag(signal, "auto_reset");
        const bool digital = signal.asString("type").starts_with("Digital");
        inspectValue(signal, "value", "number", [&](sdf::Element& held) {
            digital ? static_cast<double>(held.asInt("")) : held.asDouble("");
        });
        const ElementPtr name = signal.get("name");
        if (name && name->value().type() != typeid(std::string))
            add(*name, "the name of a signal is no text; write it as string=\"...\"");
        // A component takes another type for a group output; a controller has no
        // such rule.
        const std::string type = signal.asString("type");
        if (ofController && std::ranges::find(signalTypes, type) == signalTypes.end())
            add(signal, fmt::format("\"{}\" is no signal type; write DigitalInput, DigitalOutput, "
                                    "AnalogInput, AnalogOutput, GroupInput or GroupOutput",
                                    type));
    }

    unsigned parentOf(sdf::Element& element) const {
        try {
            return element.asUInt("parent");
        } catch (const std::invalid_argument&) {
            return 0;  // named by inspectId
        }
    }

    void inspectParent(const ElementPtr& element) {
        inspectId(*element, "parent");
        if (element->asString("type") == "StationLogic") return;
        const ElementPtr at = element->get("parent");
        const unsigned parent = parentOf(*element);
        const auto entry = byId_.find(parent);
        if (entry == byId_.end() || entry->second->tag() != "smart_component")
            return add(at ? *at : *element,
                       fmt::format("{} has the parent {}, which is no component; name the "
                                   "component that contains it, or the station logic",
                                   called(*element), parent));
        inspectRing(element);
    }

    // Walks up until it meets what an earlier walk went through, or itself.
    void inspectRing(const ElementPtr& element) {
        std::vector<ElementPtr> way;
        std::set<const sdf::Element*> onTheWay;
        for (ElementPtr here = element; settled_.insert(here.get()).second;) {
            way.push_back(here);
            onTheWay.insert(here.get());
            const auto above = byId_.find(parentOf(*here));
            if (above == byId_.end()) return;
            here = above->second;
            if (!onTheWay.contains(here.get())) continue;
            for (auto member = std::ranges::find(way, here); member != way.end(); ++member)
                add(*(*member)->get("parent"),
                    fmt::format("{} contains itself by way of its parents; give it a parent "
                                "outside",
                                called(**member)));
            return;
        }
    }

    void inspectContents(sdf::Element& element) {
        inspectId(element, "role_object");
        inspectValue(element, "pose", "pose", [](sdf::Element& held) { held.asPose(""); });
        for (const auto& xy : element.children("xy"))
            inspectValue(*xy, "", "vec3", [](sdf::Element& held) { held.asVec3(""); });
        for (const auto& child : element.children("child")) {
            inspectId(*child, "");
            const auto names = [&] { return byId_.contains(child->asUInt("")); };
            if (child->value().type() == typeid(unsigned) && !names())
                add(*child, fmt::format("{} lists the child {}, which is not there; take the line "
                                        "out",
                                        called(element), child->asUInt("")));
        }
        for (const auto& connection : element.children("connection"))
            inspectConnection(element, *connection);
    }

    void inspectConnection(const sdf::Element& owner, sdf::Element& connection) {
        if (connection.getId(true) == 0)
            add(connection, fmt::format("a connection in {} has no id; give it one", called(owner)));
        const ElementPtr index = connection.get("index");
        if (index && index->value().type() != typeid(unsigned))
            add(*index, "the index of a connection is no place; write it as uint=\"...\", or take "
                        "it out for a binding");
        const std::string_view tag = index ? "signal" : "property";
        inspectEnd(connection, "source", tag);
        inspectEnd(connection, "destination", tag);
    }

    void inspectEnd(sdf::Element& connection, std::string_view key, std::string_view tag) {
        const ElementPtr end = connection.get(key);
        unsigned long long ends = 0;
        try {
            if (!end || !end->value().has_value()) throw std::invalid_argument("no end");
            ends = end->asUInt64("");
        } catch (const std::invalid_argument&) {
            return add(end ? *end : connection,
                       fmt::format("the {} of a connection cannot be read; write it as "
                                   "uint64=\"...\"",
                                   key));
        }
        const auto object = byId_.find(componentOf(ends));
        if (object == byId_.end())
            return add(*end, fmt::format("the {} of a connection names the component {}, which is "
                                         "not there; name one that is, or delete the connection",
                                         key, componentOf(ends)));
        if (!members_.contains({componentOf(ends), tag, memberOf(ends)}))
            add(*end, fmt::format("the {} of a connection names the {} {} of {}, which has none "
                                  "with that id; name one that it has, or delete the connection",
                                  key, tag, memberOf(ends), called(*object->second)));
    }

    Faults faults_;
    std::vector<ElementPtr> objects_;
    std::map<unsigned, ElementPtr> byId_;
    std::set<std::tuple<unsigned, std::string_view, unsigned>> members_;  // owner, tag, id
    std::set<const sdf::Element*> settled_;                               // by inspectRing
};

}  // namespace

Faults faultsOfDocument(const sdf::Element& station) { return Inspection(station).run(); }

}  // namespace trel::host
