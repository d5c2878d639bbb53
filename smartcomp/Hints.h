#pragma once

#include <cstdint>

/// What a delivery found the last time, kept where the next one comes by. A hint
/// holds a number that was given once, to the state in which it was found; it is
/// good for as long as that state has the number. State that changes takes a new
/// number, and nobody has to find its hints.
namespace trel::smartcomp {

/// Counts from 1.
std::uint64_t nextNumber();

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

/// Whether a signal is an input, while its component has the same signals.
struct InputHint {
    std::uint64_t state = 0;  // of the signals of the component
    bool isInput = false;
};

}  // namespace trel::smartcomp
