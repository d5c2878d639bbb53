#include "host/Clock.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>

namespace trel::host {

namespace {

struct Unit {
    std::string_view name;
    Time microseconds;
};
constexpr std::array<Unit, 4> units = {Unit{"us", 1}, Unit{"ms", 1'000}, Unit{"s", 1'000'000},
                                       Unit{"min", 60'000'000}};

constexpr std::string_view digits = "0123456789";
constexpr std::size_t mostDigits = 15;

// A run of digits as a number; empty for none, other text, or too many.
std::optional<Time> readDigits(std::string_view text) {
    Time value = 0;
    if (text.empty() || text.size() > mostDigits ||
        text.find_first_not_of(digits) != std::string_view::npos)
        return std::nullopt;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

// The decimals behind the point, as microseconds; empty for a part of one.
std::optional<Time> readDecimals(std::string_view text, Time unit) {
    if (text.empty()) return std::nullopt;
    Time result = 0;
    for (const char digit : text) {
        if (digits.find(digit) == std::string_view::npos) return std::nullopt;
        if (digit != '0' && unit % 10 != 0) return std::nullopt;
        unit /= 10;
        result += (digit - '0') * unit;
    }
    return result;
}

}  // namespace

std::optional<Time> readTime(std::string_view text) {
    if (text == "0") return 0;
    const std::string_view number = text.substr(0, text.find_first_not_of("0123456789."));
    const auto unit = std::ranges::find(units, text.substr(number.size()), &Unit::name);
    if (unit == units.end()) return std::nullopt;

    const auto point = number.find('.');
    const auto whole = readDigits(number.substr(0, point));
    if (!whole || *whole > longestTime / unit->microseconds) return std::nullopt;
    const auto rest = point == std::string_view::npos
                          ? Time{0}
                          : readDecimals(number.substr(point + 1), unit->microseconds);
    if (!rest) return std::nullopt;
    return *whole * unit->microseconds + *rest;
}

std::string textOfTime(Time time) {
    constexpr Time second = 1'000'000;
    std::string decimals = fmt::format("{:06}", time % second);
    decimals.erase(decimals.find_last_not_of('0') + 1);
    return fmt::format("{}{}{}s", time / second, decimals.empty() ? "" : ".", decimals);
}

}  // namespace trel::host
