#pragma once

#include <algorithm>
#include <chrono>

namespace trel::test {

/// How much longer something may take among a hundred times as many others, and
/// still count as not growing with them: a walk over all would take a hundred
/// times as long.
constexpr double generous = 4.0;

/// The least time that `action` took, in seconds, of several times on a state
/// that `prepare` made anew.
template <typename Prepare, typename Action>
double leastTime(const Prepare& prepare, const Action& action) {
    using Clock = std::chrono::steady_clock;
    double least = 1e9;
    for (int i = 0; i < 5; ++i) {
        auto state = prepare();
        const auto start = Clock::now();
        action(state);
        least = std::min(least, std::chrono::duration<double>(Clock::now() - start).count());
    }
    return least;
}

}  // namespace trel::test
