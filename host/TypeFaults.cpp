#include <fmt/format.h>

#include <algorithm>
#include <numeric>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "host/Inspections.h"
#include "host/TypeLibraries.h"
#include "smartcomp/Manager.h"

namespace trel::host {

namespace {

// How many letters are to be added, taken away or replaced.
std::size_t distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i != a.size(); ++i) {
        std::size_t corner = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j != b.size(); ++j) {
            const std::size_t replaced = corner + (a[i] == b[j] ? 0 : 1);
            corner = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, corner + 1});
        }
    }
    return row.back();
}

// The registered type whose name is nearest; empty if none is near.
std::string_view nearest(std::string_view name) {
    constexpr std::size_t longest = 100;
    std::string_view best;
    std::size_t least = std::min(name.size(), longest) / 2 + 1;
    if (name.size() > longest) return best;
    for (const auto& type : smartcomp::Manager::inst()->types()) {
        const std::size_t far = distance(name, type.name);
        if (far >= least) continue;
        least = far;
        best = type.name;
    }
    return best;
}

std::string remedyFor(const std::string& type) {
    if (const auto library = libraryThatBrings(type))
        return fmt::format("load {} with --components, which brings it", library->string());
    if (const std::string_view near = nearest(type); !near.empty())
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
