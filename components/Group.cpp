#include "components/Group.h"

#include <utility>

#include "components/Reacting.h"

namespace trel::components {

Group::Group(std::shared_ptr<sdf::Element> element)
    : Aggregation(std::move(element), sdf::ObjectType::UserComponent) {}

void Group::initialize() { holdWholeNumbers(*this); }

}  // namespace trel::components
