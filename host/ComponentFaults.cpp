#include <fmt/format.h>

#include <stdexcept>

#include "host/Faults.h"
#include "host/Objects.h"
#include "smartcomp/Aggregation.h"
#include "smartcomp/Property.h"
#include "smartcomp/StationLogic.h"

namespace trel::host {

namespace {

using smartcomp::Aggregation;
using smartcomp::Property;
using smartcomp::SmartComponent;

void inspectParent(const SmartComponent& component, Faults& faults) {
    if (dynamic_cast<Aggregation*>(objectOf(component.getObjParentId()))) return;
    const auto key = component.element()->get("parent");
    faults.push_back({key->place(),
                      fmt::format("{} has the parent {}, which cannot contain components; name "
                                  "an aggregation, or the station logic",
                                  called(*component.element()), component.getObjParentId())});
}

void inspectReference(const SmartComponent& component, Property& property, Faults& faults) {
    if (!property.isObjectId() || property.value().empty()) return;
    const auto at = property.element()->place();
    try {
        const unsigned id = property.getObjectId();
        if (id != 0 && !objectOf(id))
            faults.push_back({at, fmt::format("the property \"{}\" of {} names the object {}, "
                                              "which is not there; name one that is, or 0",
                                              property.name(), called(*component.element()), id)});
    } catch (const std::logic_error&) {  // memory that ends is no fault of the file
        faults.push_back({at, fmt::format("the property \"{}\" of {} holds \"{}\", which is no "
                                          "object id; write a number, 0 for none",
                                          property.name(), called(*component.element()),
                                          property.value())});
    }
}

void inspectText(SmartComponent& component, const Property& property, Faults& faults) {
    if (component.validatePropertyValue(property.id(), property.value())) return;
    std::string choices;
    for (const std::string& choice : component.getEnumPropertyList(property.id(), ""))
        choices += (choices.empty() ? "one of " : ", ") + choice;
    if (choices.empty()) choices = "what its description says";
    faults.push_back({property.element()->place(),
                      fmt::format("the property \"{}\" of {} holds \"{}\", which its type cannot "
                                  "use; write {}",
                                  property.name(), called(*component.element()), property.value(),
                                  choices)});
}

}  // namespace

Faults faultsOfComponents() {
    Faults faults;
    for (SmartComponent* const component : componentsNow()) {
        if (!component->isStationLogic()) inspectParent(*component, faults);
        for (const auto& [id, property] : component->getProperties()) {
            inspectReference(*component, *property, faults);
            inspectText(*component, *property, faults);
        }
    }
    return faults;
}

}  // namespace trel::host
