#include "host/Faults.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>
#include <tuple>

namespace trel::host {

std::string textOfFaults(const std::string& file, Faults faults) {
    std::ranges::sort(faults, {}, [](const Fault& fault) {
        return std::tuple(fault.place.line, fault.place.column, fault.text);
    });
    std::string text;
    for (const Fault& fault : faults) {
        if (!text.empty()) text += '\n';
        text += fault.place.line == 0 ? fmt::format("{}: {}", file, fault.text)
                                      : fmt::format("{}:{}:{}: {}", file, fault.place.line,
                                                    fault.place.column, fault.text);
    }
    return text;
}

std::string called(const sdf::Element& element) {
    const std::string_view kind = element.tag() == "controller" ? "controller" : "component";
    return fmt::format("{} \"{}\" (id {})", kind, element.name(), element.getId(true));
}

}  // namespace trel::host
