#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>

#include "host/Inspections.h"
#include "host/PropertyText.h"
#include "platform/station/Station.h"
#include "smartcomp/Property.h"

namespace trel::host {

namespace {

constexpr std::array<std::string_view, 6> signalTypes = {"AnalogInput",  "AnalogOutput",
                                                         "DigitalInput", "DigitalOutput",
                                                         "GroupInput",   "GroupOutput"};

// The codes of what properties and signals share.
struct MemberCodes {
    std::string_view tag;
    FaultCode idMissing;
    FaultCode idTwice;
    FaultCode nameMissing;
    FaultCode nameTwice;
};
const MemberCodes propertyCodes = {"property", "property-id-missing", "property-id-twice",
                                   "property-name-missing", "property-name-twice"};
const MemberCodes signalCodes = {"signal", "signal-id-missing", "signal-id-twice",
                                 "signal-name-missing", "signal-name-twice"};

// What was made and not read has no line.
std::string theOneIn(unsigned line) {
    return line == 0 ? "another one" : fmt::format("the one in line {}", line);
}

class ObjectInspection {
public:
    ObjectInspection(const StationMap& map, FaultList& faults) : map_(map), faults_(faults) {}

    void run() {
        for (const MappedObject& object : map_.objects()) {
            inspectId(object);
            inspectName(object);
            if (!object.isController() && object.element->asString("type").empty())
                faults_.add("type-missing", *object.element, map_.pathOf(object),
                            "the component has no type");
            inspectMembers(object, propertyCodes);
            inspectMembers(object, signalCodes);
        }
    }

private:
    static std::string kindOf(const MappedObject& object) {
        return object.isController() ? "controller" : "component";
    }

    void inspectId(const MappedObject& object) {
        const sdf::Element& element = *object.element;
        if (object.isLogic() && (object.id == 0 || object.id == Station::id)) return;
        if (object.id == 0)
            return faults_.add("object-id-missing", element, map_.pathOf(object),
                               fmt::format("the {} has no id", kindOf(object)));
        if (object.id == Station::id)
            return faults_.addAndNote("object-id-twice", element, map_.pathOf(object),
                                      fmt::format("the {} has the id of the station",
                                                  kindOf(object)));
        const MappedObject& first = *map_.find(object.id);
        if (first.element != object.element)
            faults_.addAndNote("object-id-twice", element, map_.pathOf(object),
                               fmt::format("the {} has the id {} of {} in line {}", kindOf(object),
                                           object.id, map_.pathOf(first),
                                           first.element->place().line));
    }

    void inspectName(const MappedObject& object) {
        const std::string& name = object.element->name();
        if (name.empty())
            return faults_.add("name-missing", *object.element, map_.pathOf(object),
                               fmt::format("the {} has no name", kindOf(object)));
        if (object.isLogic()) return;
        const auto [entry, fresh] =
            names_.try_emplace(std::pair(object.parent, name), object.element->place().line);
        if (!fresh)
            faults_.add("name-twice", *object.element, map_.pathOf(object),
                        fmt::format("the {} has the name of the one in line {}", kindOf(object),
                                    entry->second));
    }

    void inspectMembers(const MappedObject& owner, const MemberCodes& codes) {
        std::map<unsigned, unsigned> ids;  // with their lines
        std::map<std::string, unsigned> names;
        for (const auto& member : owner.element->children(codes.tag)) {
            const unsigned line = member->place().line;
            const auto path = [&] { return map_.pathOf(owner, *member); };
            if (const unsigned id = member->getId(true); id == 0)
                faults_.add(codes.idMissing, *member, path(),
                            fmt::format("the {} has no id", codes.tag));
            else if (const auto [entry, fresh] = ids.emplace(id, line); !fresh)
                faults_.add(codes.idTwice, *member, path(),
                            fmt::format("the {} has the id {} of {}", codes.tag, id,
                                        theOneIn(entry->second)));
            if (codes.tag == "signal" && !inspectSignalName(*member, path())) continue;
            if (const std::string name = nameOfMember(*member); name.empty())
                faults_.add(codes.nameMissing, *member, path(),
                            fmt::format("the {} has no name", codes.tag));
            else if (const auto [entry, fresh] = names.emplace(name, line); !fresh)
                faults_.add(codes.nameTwice, *member, path(),
                            fmt::format("the {} has the name of {}", codes.tag,
                                        theOneIn(entry->second)));
            if (codes.tag == "property")
                inspectProperty(owner, *member);
            else
                inspectSignalType(owner, *member);
        }
    }

    bool inspectSignalName(sdf::Element& signal, const std::string& path) {
        const ElementPtr name = signal.get("name");
        if (!name || name->value().type() == typeid(std::string)) return true;
        faults_.addAndNote("signal-name-text", *name, path, "the name of the signal is no text");
        return false;
    }

    void inspectSignalType(const MappedObject& owner, sdf::Element& signal) {
        const std::string type = signal.asString("type");
        if (std::ranges::find(signalTypes, type) != signalTypes.end()) return;
        const ElementPtr at = signal.get("type");
        faults_.add(owner.isController() ? FaultCode("controller-signal-type")
                                         : FaultCode("signal-type"),
                    at ? *at : signal, map_.pathOf(owner, signal),
                    fmt::format("\"{}\" is no signal type", type));
    }

    void inspectProperty(const MappedObject& owner, sdf::Element& property) {
        const std::string type = property.asString("type");
        const std::string path = map_.pathOf(owner, property);
        if (!smartcomp::Property::typeIndexOf(type)) {
            const ElementPtr at = property.get("type");
            return faults_.addAndNote("property-type", at ? *at : property, path,
                                      fmt::format("\"{}\" is no property type", type));
        }
        const std::string text = property.asString("value");
        if (type == "ObjectId") return inspectReference(property, text, path);
        const std::string_view wanted = wantedFor(type, text);
        if (wanted.empty()) return;
        if (text.empty())
            faults_.add("property-empty", property, path,
                        fmt::format("the property is empty, which is no {}", type),
                        fmt::format("write {}", wanted));
        else
            faults_.addAndNote("property-text", property, path,
                               fmt::format("the property holds \"{}\", which is no {}", text, type),
                               fmt::format("write {}", wanted));
    }

    void inspectReference(const sdf::Element& property, const std::string& text,
                          const std::string& path) {
        if (text.empty())
            return faults_.add("object-id-empty", property, path, "the property names no object");
        if (!wantedFor("ObjectId", text).empty())
            return faults_.addAndNote("object-id-text", property, path,
                                      fmt::format("the property holds \"{}\", which is no object "
                                                  "id",
                                                  text));
        unsigned id = 0;
        std::from_chars(text.data(), text.data() + text.size(), id);
        if (id != 0 && id != Station::id && !map_.find(id))
            faults_.addAndNote("object-id-unknown", property, path,
                               fmt::format("the property names the object {}, which is not there",
                                           id));
    }

    const StationMap& map_;
    FaultList& faults_;
    std::map<std::pair<unsigned, std::string>, unsigned> names_;  // by parent, with their lines
};

}  // namespace

void inspectObjects(const StationMap& map, FaultList& faults) {
    ObjectInspection(map, faults).run();
}

}  // namespace trel::host
