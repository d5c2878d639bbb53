#pragma once

#include <vector>

#include "platform/sdf/SdfManager.h"
#include "platform/sdf/SdfObject.h"
#include "smartcomp/SmartComponent.h"

namespace trel::host {

// Ids are kept, pointers are not: whatever runs may remove a component.

/// The object that the object table holds under `id`, or null.
sdf::SdfObject* objectOf(unsigned id);

/// The component `id`, or null if there is none.
smartcomp::SmartComponent* componentOf(unsigned id);

/// All components in the object table now, the station logic among them, by id.
std::vector<smartcomp::SmartComponent*> componentsNow();

/// One of them that is not the station logic, or null. Allocates nothing.
smartcomp::SmartComponent* anyComponentButLogic();

/// Enters an object under its id.
/// \throws std::logic_error "object exists" if the id is taken.
void enterObject(sdf::SdfObject& object);

}  // namespace trel::host
