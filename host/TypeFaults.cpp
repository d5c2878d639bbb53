#include <fmt/format.h>

#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "host/Inspections.h"
#include "host/TypeLibraries.h"
#include "smartcomp/Manager.h"

namespace trel::host {

namespace {

std::string remedyFor(const std::string& type) {
    if (const auto library = libraryThatBrings(type))
        return fmt::format("load {} with --components, which brings it", library->string());
    if (const std::string_view near = nearestType(type); !near.empty())
        return fmt::format("write \"{}\" if that is meant, or load the library that brings it with "
                           "--components",
                           near);
    return "load the library that brings it with --components, or correct the type";
}

}  // namespace

void inspectTypes(const StationMap& map, FaultList& faults) {
    std::unordered_set<std::string_view> known = {"", "StationLogic"};
    for (const auto& type : smartcomp::Manager::inst()->types()) known.insert(type.name);
    std::unordered_map<std::string, std::string> remedies;
    for (const MappedObject& object : map.objects()) {
        if (object.isController()) continue;
        const std::string type = object.element->asString("type");
        if (known.contains(type)) continue;
        auto [remedy, fresh] = remedies.try_emplace(type);
        if (fresh) remedy->second = remedyFor(type);
        const ElementPtr key = object.element->get("type");
        faults.addAndNote("type-unknown", *key, map.pathOf(object),
                          fmt::format("no library that is loaded brings the type \"{}\"", type),
                          remedy->second);
    }
}

void addFailedType(const StationMap& map, const MappedObject& object, const std::string& reason,
                   FaultList& faults) {
    faults.add("type-fails", *object.element, map.pathOf(object),
               fmt::format("the type \"{}\" cannot make the component: {}",
                           object.element->asString("type"), reason));
}

}  // namespace trel::host
