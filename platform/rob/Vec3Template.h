#pragma once

#include "platform/Export.h"

namespace trel::rob {

/// A point or a direction in space. Positions of a station are in mm.
template <typename T>
struct TREL_PLATFORM_API Vec3Template {
    T x{};
    T y{};
    T z{};

    friend bool operator==(const Vec3Template&, const Vec3Template&) = default;
};

}  // namespace trel::rob
