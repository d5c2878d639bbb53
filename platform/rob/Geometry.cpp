#include <Eigen/Geometry>
#include <cmath>
#include <numbers>

#include "platform/rob/RotationTemplate.h"
#include "platform/rob/Transform.h"

namespace trel::rob {

namespace {

Eigen::Vector3d toEigen(const Vec3Template<double>& v) { return {v.x, v.y, v.z}; }

Vec3Template<double> fromEigen(const Eigen::Vector3d& v) { return {v.x(), v.y(), v.z()}; }

// Of length 1; the components are scaled before they are squared, so that
// neither very long nor very short quaternions overflow.
Eigen::Quaterniond toEigen(const RotationTemplate<double>& r) {
    const Eigen::Vector4d xyzw(r.x, r.y, r.z, r.w);
    if (xyzw.isZero(0.0)) return Eigen::Quaterniond::Identity();
    return Eigen::Quaterniond(Eigen::Vector4d(xyzw.stableNormalized()));
}

RotationTemplate<double> fromEigen(const Eigen::Quaterniond& q) {
    return {q.w(), q.x(), q.y(), q.z()};
}

}  // namespace

template <>
Vec3Template<double> RotationTemplate<double>::toEulerDegree() const {
    // Below this cosine of ry the other two angles turn about one axis and
    // their share cannot be told apart from rounding.
    constexpr double gimbal = 1e-8;
    constexpr double degrees = 180.0 / std::numbers::pi;

    const Eigen::Matrix3d r = toEigen(*this).toRotationMatrix();
    const double cosY = std::hypot(r(0, 0), r(1, 0));
    const double ry = std::atan2(-r(2, 0), cosY);
    if (cosY < gimbal) return {std::atan2(-r(1, 2), r(1, 1)) * degrees, ry * degrees, 0.0};
    return {std::atan2(r(2, 1), r(2, 2)) * degrees, ry * degrees,
            std::atan2(r(1, 0), r(0, 0)) * degrees};
}

Vec3Template<double> Transform::apply(const Vec3Template<double>& point) const {
    return fromEigen(toEigen(pose_.rotation) * toEigen(point) + toEigen(pose_.position));
}

Transform Transform::operator*(const Transform& first) const {
    return Transform({apply(first.pose_.position),
                      fromEigen(toEigen(pose_.rotation) * toEigen(first.pose_.rotation))});
}

Transform Transform::inverse() const {
    const Eigen::Quaterniond back = toEigen(pose_.rotation).conjugate();
    return Transform({fromEigen(back * -toEigen(pose_.position)), fromEigen(back)});
}

}  // namespace trel::rob
