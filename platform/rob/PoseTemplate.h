#pragma once

#include "platform/Export.h"
#include "platform/rob/RotationTemplate.h"
#include "platform/rob/Vec3Template.h"

namespace trel::rob {

/// Where an object stands and how it is turned. Positions are in mm; a pose
/// made without arguments is the origin, unturned.
template <typename T>
struct TREL_PLATFORM_API PoseTemplate {
    Vec3Template<T> position{};
    RotationTemplate<T> rotation{};

    friend bool operator==(const PoseTemplate&, const PoseTemplate&) = default;
};

}  // namespace trel::rob
