#pragma once

#include <string>
#include <typeinfo>

namespace sdf {

/// Elements keep values as text; only the names of the types are left of this.
struct [[gnu::visibility("default")]] Attr {
    static const std::string& Type(const std::type_info& type);
};

}  // namespace sdf
