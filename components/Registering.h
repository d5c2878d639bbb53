#pragma once

#include <QString>

#include <memory>
#include <utility>

#include "components/Furnisher.h"
#include "smartcomp/Manager.h"

namespace trel::components {

/// Registers a component type. `Type` has the texts `typeName` and `description`,
/// a constructor from an element, and `furnish`, which gives a new component
/// what the type starts with.
template <typename Type>
void registerType() {
    smartcomp::Manager::inst()->registerType(
        Type::typeName,
        [](std::shared_ptr<sdf::Element> element) -> smartcomp::SmartComponent* {
            return new Type(std::move(element));
        },
        [](std::shared_ptr<sdf::Element> element) -> smartcomp::SmartComponent* {
            Furnisher furnisher(*element);
            Type::furnish(furnisher);
            return new Type(std::move(element));
        },
        [] { return QString::fromUtf8(Type::description); });
}

}  // namespace trel::components
