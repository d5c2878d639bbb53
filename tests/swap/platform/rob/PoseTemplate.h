#pragma once

#include "platform/rob/RotationTemplate.h"
#include "platform/rob/Vec3Template.h"

namespace trel::rob {

template <typename T>
struct [[gnu::visibility("default")]] PoseTemplate {
    Vec3Template<T> position{};
    RotationTemplate<T> rotation{};
    friend bool operator==(const PoseTemplate&, const PoseTemplate&) = default;
};

}  // namespace trel::rob
