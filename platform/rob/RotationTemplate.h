#pragma once

#include "platform/Export.h"
#include "platform/rob/Vec3Template.h"

namespace trel::rob {

/// A rotation as a quaternion, scalar part first. It need not have length 1:
/// whoever uses it as a rotation normalises it first, and 0 0 0 0 counts as no
/// rotation.
template <typename T>
struct TREL_PLATFORM_API RotationTemplate {
    T w{1};
    T x{};
    T y{};
    T z{};

    RotationTemplate() = default;
    RotationTemplate(T w_, T x_, T y_, T z_) : w(w_), x(x_), y(y_), z(z_) {}

    /// The angles (rx, ry, rz) in degrees for which R = Rz(rz) Ry(ry) Rx(rx):
    /// turn about the fixed x axis first, then y, then z. With ry at +-90 only
    /// one of the other two is determined; rz is then 0.
    Vec3Template<double> toEulerDegree() const;

    friend bool operator==(const RotationTemplate&, const RotationTemplate&) = default;
};

template <>
TREL_PLATFORM_API Vec3Template<double> RotationTemplate<double>::toEulerDegree() const;

}  // namespace trel::rob
