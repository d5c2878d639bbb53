#pragma once

#include <typeinfo>

#include "platform/sdf/SdfManager.h"
#include "platform/sdf/SdfObject.h"

namespace network {

/// The object of the library under an id.
/// \throws std::bad_cast where the model expects one and there is none.
template <typename T>
T& live(unsigned id) {
    if (auto* const object = dynamic_cast<T*>(sdf::SdfManager::inst()->find(id))) return *object;
    throw std::bad_cast();
}

}  // namespace network
