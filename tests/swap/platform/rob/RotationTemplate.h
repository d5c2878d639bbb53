#pragma once

#include <algorithm>
#include <cmath>
#include <numbers>

#include "platform/rob/Vec3Template.h"

namespace trel::rob {

template <typename T>
struct [[gnu::visibility("default")]] RotationTemplate {
    T w{1}, x{}, y{}, z{};

    RotationTemplate() = default;
    RotationTemplate(T w_, T x_, T y_, T z_) : w(w_), x(x_), y(y_), z(z_) {}

    Vec3Template<double> toEulerDegree() const {
        const double length = std::sqrt(w * w + x * x + y * y + z * z);
        if (length == 0) return {};
        const double a = w / length, b = x / length, c = y / length, d = z / length;
        const double degrees = 180 / std::numbers::pi;
        const double sine = std::clamp(2 * (a * c - d * b), -1.0, 1.0);
        if (std::abs(sine) > 1 - 1e-12) {
            const double turn = 2 * std::atan2(b, a);
            return {turn * degrees, std::copysign(90.0, sine), 0};
        }
        return {std::atan2(2 * (a * b + c * d), 1 - 2 * (b * b + c * c)) * degrees,
                std::asin(sine) * degrees,
                std::atan2(2 * (a * d + b * c), 1 - 2 * (c * c + d * d)) * degrees};
    }

    friend bool operator==(const RotationTemplate&, const RotationTemplate&) = default;
};

}  // namespace trel::rob
