#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace trel::host {

/// Simulation time in microseconds.
using Time = long long;

/// What simulation times end at: a thousand hours.
constexpr Time longestTime = Time{1000} * 3600 * 1'000'000;

/// Reads "500us", "20ms", "1.5s", "2min", or "0". Empty for any other text, for a
/// part of a microsecond, and beyond `longestTime`.
std::optional<Time> readTime(std::string_view text);

/// In seconds, with as many decimals as it needs: "1.25s".
std::string textOfTime(Time time);

}  // namespace trel::host
