#pragma once

#include "platform/Export.h"

namespace trel::rob {

/// Three numbers along the axes, in the unit of whoever reads them.
template <typename T>
struct TREL_PLATFORM_API XYZTemplate {
    T x{};
    T y{};
    T z{};

    friend bool operator==(const XYZTemplate&, const XYZTemplate&) = default;
};

}  // namespace trel::rob
