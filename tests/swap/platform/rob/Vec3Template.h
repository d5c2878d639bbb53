#pragma once

namespace trel::rob {

template <typename T>
struct [[gnu::visibility("default")]] Vec3Template {
    T x{}, y{}, z{};
    friend bool operator==(const Vec3Template&, const Vec3Template&) = default;
};

}  // namespace trel::rob
