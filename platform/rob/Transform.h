#pragma once

#include "platform/Export.h"
#include "platform/rob/PoseTemplate.h"

namespace trel::rob {

/// A rigid motion: a rotation about the origin followed by a translation.
class TREL_PLATFORM_API Transform {
public:
    /// The motion that leaves everything where it is.
    Transform() = default;

    /// The motion that takes the origin, unturned, to `pose`.
    explicit Transform(const PoseTemplate<double>& pose) : pose_(pose) {}

    /// Where the motion takes a point.
    Vec3Template<double> apply(const Vec3Template<double>& point) const;

    /// This motion after `first`.
    Transform operator*(const Transform& first) const;

    /// The motion that undoes this one.
    Transform inverse() const;

    /// Where the motion takes the origin, unturned.
    const PoseTemplate<double>& pose() const { return pose_; }

private:
    PoseTemplate<double> pose_;
};

}  // namespace trel::rob
