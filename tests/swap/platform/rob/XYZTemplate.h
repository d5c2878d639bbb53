#pragma once

namespace trel::rob {

template <typename T>
struct XYZTemplate {
    T x{}, y{}, z{};
    friend bool operator==(const XYZTemplate&, const XYZTemplate&) = default;
};

}  // namespace trel::rob
