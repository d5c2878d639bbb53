#include <fmt/format.h>

#include <algorithm>
#include <initializer_list>
#include <span>
#include <stdexcept>
#include <string_view>
#include <typeinfo>
#include <vector>

#include "host/Inspections.h"
#include "platform/sdf/Attr.h"

namespace trel::host {

namespace {

using sdf::Element;

// How the library reads a key.
enum class Read { Text, Flag, Id, Number, End, Place, Pose, Vector };

struct Key {
    std::string_view tag;
    Read read;
};

// What an element of the station may contain.
struct Form {
    std::initializer_list<Key> keys;
    std::initializer_list<std::string_view> elements;
};

const Form stationForm = {{}, {"smart_component", "controller"}};
const Form componentForm = {{{"type", Read::Text},
                             {"parent", Read::Id},
                             {"role_object", Read::Id},
                             {"pose", Read::Pose},
                             {"child", Read::Id},
                             {"xy", Read::Vector}},
                            {"property", "signal", "connection"}};
const Form controllerForm = {{}, {"signal"}};
const Form propertyForm = {{{"type", Read::Text},
                            {"unit", Read::Text},
                            {"description", Read::Text},
                            {"uivisible", Read::Flag},
                            {"read_only", Read::Flag},
                            {"value", Read::Text}},
                           {}};
const Form signalForm = {{{"name", Read::Text},
                          {"type", Read::Text},
                          {"description", Read::Text},
                          {"uivisible", Read::Flag},
                          {"auto_reset", Read::Flag},
                          {"value", Read::Number}},
                         {}};
const Form connectionForm = {
    {{"source", Read::End}, {"destination", Read::End}, {"index", Read::Place}}, {}};

// The names of the types that a key is written in, and what it is for.
struct Written {
    std::initializer_list<std::string_view> types;
    std::string_view meaning;
};

const Written& written(Read read) {
    static const Written text = {{"string"}, "text"};
    static const Written flag = {{"bool"}, "bool"};
    static const Written id = {{"uint"}, "number of an object"};
    static const Written number = {{"int", "double"}, "number"};
    static const Written end = {{"uint64"}, "end of a connection"};
    static const Written place = {{"uint"}, "place"};
    static const Written pose = {{"pose"}, "pose"};
    static const Written vector = {{"vec3"}, "vec3"};
    switch (read) {
        case Read::Text: return text;
        case Read::Flag: return flag;
        case Read::Id: return id;
        case Read::Number: return number;
        case Read::End: return end;
        case Read::Place: return place;
        case Read::Pose: return pose;
        case Read::Vector: break;
    }
    return vector;
}

// Whether the library can read the key's value.
bool isReadable(const Element& key, Read read, bool digital) {
    try {
        switch (read) {
            case Read::Text: key.asString(""); break;
            case Read::Flag: key.asBool(""); break;
            case Read::Id: key.asUInt(""); break;
            case Read::Number: digital ? key.asInt("") : key.asDouble(""); break;
            case Read::End: key.asUInt64(""); break;
            case Read::Place: key.asUInt(""); break;
            case Read::Pose: key.asPose(""); break;
            case Read::Vector: key.asVec3(""); break;
        }
        return true;
    } catch (const std::invalid_argument&) {
        return false;
    }
}

// Keys of which an aggregation has several.
bool maybeRepeated(std::string_view tag) { return tag == "child" || tag == "xy"; }

// Notes for people and other programs, and blanks beside text.
bool isPassedOver(const Element& node) {
    return node.kind() == Element::Kind::Comment || node.kind() == Element::Kind::Instruction ||
           (node.kind() == Element::Kind::Text &&
            node.getStringFromValue().find_first_not_of(" \t\r\n") == std::string::npos);
}

class KeyInspection {
public:
    KeyInspection(const StationMap& map, FaultList& faults) : map_(map), faults_(faults) {}

    void inspectStation(const Element& station) {
        contents(station, stationForm, [] { return std::string(); });
        for (const MappedObject& object : map_.objects()) inspectObject(object);
    }

private:
    template <typename Path>
    void contents(const Element& owner, const Form& form, const Path& path) {
        seen_.clear();
        for (const Element* node = owner.firstChild(); node; node = node->nextSibling()) {
            if (isPassedOver(*node)) continue;
            if (node->kind() == Element::Kind::Text) {
                faults_.add("text-unknown", *node, path(),
                            fmt::format("text stands in <{}>", owner.tag()));
                continue;
            }
            const auto key = std::ranges::find(form.keys, node->tag(), &Key::tag);
            if (key != form.keys.end())
                inspectKey(owner, *node, key->read, path);
            else if (node->kind() == Element::Kind::Attribute)
                faults_.add("attribute-unknown", *node, path(),
                            fmt::format("nothing reads the attribute \"{}\" of <{}>", node->tag(),
                                        owner.tag()));
            else if (std::ranges::find(form.elements, node->tag()) == form.elements.end())
                faults_.add("element-unknown", *node, path(),
                            fmt::format("nothing reads <{}> in <{}>", node->tag(), owner.tag()));
        }
    }

    template <typename Path>
    void inspectKey(const Element& owner, const Element& key, Read read, const Path& path) {
        if (!maybeRepeated(key.tag())) {
            if (std::ranges::find(seen_, key.tag()) != seen_.end())
                return faults_.addAndNote("key-twice", key, path(),
                                          fmt::format("<{}> has a second key \"{}\"", owner.tag(),
                                                      key.tag()));
            seen_.push_back(key.tag());
        }
        inspectValue(owner, key, read, path);
        for (const Element* node = key.firstChild(); node; node = node->nextSibling()) {
            if (isPassedOver(*node)) continue;
            const bool holdsValue = node->tag() == "value" &&
                                    node->kind() == Element::Kind::Element;
            if (holdsValue) continue;
            const FaultCode code = node->kind() == Element::Kind::Text ? FaultCode("text-unknown")
                                   : node->kind() == Element::Kind::Attribute
                                       ? FaultCode("attribute-unknown")
                                       : FaultCode("element-unknown");
            faults_.add(code, *node, path(),
                        node->kind() == Element::Kind::Text
                            ? fmt::format("text stands in the key \"{}\"", key.tag())
                            : fmt::format("nothing reads \"{}\" in the key \"{}\"", node->tag(),
                                          key.tag()));
        }
    }

    // Ends, indices and names of signals that are none have faults of their own.
    template <typename Path>
    void inspectValue(const Element& owner, const Element& key, Read read, const Path& path) {
        const std::any& value = key.value();
        if (!value.has_value()) return;
        const Written& wanted = written(read);
        const std::string& type = sdf::Attr::Type(value.type());
        if (std::ranges::find(wanted.types, type) != wanted.types.end()) return;
        if (read == Read::Place || (owner.tag() == "signal" && key.tag() == "name")) return;
        if (!isReadable(key, read, owner.asString("type").starts_with("Digital"))) {
            if (read == Read::End) return;
            return faults_.addAndNote("value-unreadable", key, path(),
                                      fmt::format("the key \"{}\" holds \"{}\", which is no {}",
                                                  key.tag(), key.getStringFromValue(),
                                                  wanted.meaning),
                                      fmt::format("write it as {}=\"...\"", *wanted.types.begin()));
        }
        faults_.add("value-type", key, path(),
                    fmt::format("the key \"{}\" holds its value as {}", key.tag(), type),
                    fmt::format("write it as {}=\"...\"", *wanted.types.begin()));
    }

    void inspectObject(const MappedObject& object) {
        const Element& element = *object.element;
        const auto path = [&] { return map_.pathOf(object); };
        contents(element, object.isController() ? controllerForm : componentForm, path);
        for (const auto& [tag, form] :
             {std::pair{"property", &propertyForm}, std::pair{"signal", &signalForm}})
            for (const auto& member : element.children(tag))
                contents(*member, *form, [&] { return map_.pathOf(object, *member); });
        for (const auto& connection : element.children("connection"))
            contents(*connection, connectionForm, path);
    }

    const StationMap& map_;
    FaultList& faults_;
    std::vector<std::string_view> seen_;  // keys of the element that is looked at
};

}  // namespace

void inspectKeys(const sdf::Element& station, const StationMap& map, FaultList& faults) {
    KeyInspection(map, faults).inspectStation(station);
}

}  // namespace trel::host
