#pragma once

#include <cstddef>
#include <cstdint>

#include "smartcomp/Export.h"
#include "smartcomp/Prefetch.h"

/// What a delivery found the last time, kept where the next one comes by. A hint
/// holds a number that was given once, to the state in which it was found; it is
/// good for as long as that state has the number. State that changes takes a new
/// number, and nobody has to find its hints.
namespace trel::smartcomp {

/// Counts from 1.
TREL_API std::uint64_t nextNumber();

/// Where the connections of a signal or property stand in a wiring. A copy of the
/// signal or property starts without.
struct RouteHint {
    RouteHint() = default;
    RouteHint(const RouteHint&) {}
    RouteHint& operator=(const RouteHint&) {
        wiring = 0;
        return *this;
    }

    std::uint64_t wiring = 0;
    std::uint32_t first = 0;
    std::uint32_t end = 0;
};

/// What the next delivery to a component will read. Its parts lie anywhere in memory,
/// and each is only found through the one before; all are asked for as soon as the
/// delivery is on its way. Addresses only: what stood there may be gone, and nobody looks.
class Ahead {
public:
    Ahead() = default;
    Ahead(const void* component, const void* member, const void* element, const void* key)
        : component_(component), member_(member), element_(element), key_(key) {}

    bool isOf(const void* member) const { return member == member_; }

    // What a delivery needs stands in the first lines, wherever they begin.
    [[gnu::always_inline]] void fetch() const {
        prefetch(component_, 3 * line);
        prefetch(member_, 2 * line);
        prefetch(element_, 2 * line);
        prefetch(key_, 2 * line);
    }

private:
    static constexpr std::size_t line = 64;  // bytes

    const void* component_ = nullptr;
    const void* member_ = nullptr;   // the signal or property that it asked for last
    const void* element_ = nullptr;  // of the member
    const void* key_ = nullptr;      // "value" of the element
};

/// Whether a signal is an input, while its component has the same signals.
struct InputHint {
    std::uint64_t state = 0;  // of the signals of the component
    bool isInput = false;
    Ahead ahead = {};
};

}  // namespace trel::smartcomp
