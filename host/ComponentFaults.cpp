#include <fmt/format.h>

#include <string>

#include "host/Inspections.h"
#include "host/Members.h"
#include "host/Objects.h"
#include "smartcomp/Aggregation.h"
#include "smartcomp/Property.h"

namespace trel::host {

namespace {

using smartcomp::Aggregation;
using smartcomp::Property;
using smartcomp::SmartComponent;

void inspectParent(const StationMap& map, const SmartComponent& component, FaultList& faults) {
    const SmartComponent* const parent = componentOf(component.getObjParentId());
    // One that is not made has another fault.
    if (!parent || dynamic_cast<const Aggregation*>(parent)) return;
    faults.add("parent-no-aggregation", *component.element()->get("parent"),
               map.pathOf(component.id()),
               fmt::format("the parent {} cannot contain components", map.pathOf(parent->id())));
}

void inspectText(const StationMap& map, const MappedObject& owner, SmartComponent& component,
                 const Property& property, FaultList& faults) {
    if (component.validatePropertyValue(property.id(), property.value())) return;
    const std::string choices = choicesOf({component.id(), Member::Kind::Property, property.id()});
    faults.add("property-refused", *property.element(), map.pathOf(owner, *property.element()),
               fmt::format("the property holds \"{}\", which the type \"{}\" cannot use",
                           property.value(), owner.element->asString("type")),
               choices.empty() ? "" : "write " + choices);
}

}  // namespace

void inspectComponents(const StationMap& map, FaultList& faults) {
    for (SmartComponent* const component : componentsNow()) {
        const MappedObject* const object = map.find(component->id());
        if (!object) continue;
        if (!component->isStationLogic()) inspectParent(map, *component, faults);
        for (const auto& [id, property] : component->getProperties())
            inspectText(map, *object, *component, *property, faults);
    }
}

}  // namespace trel::host
