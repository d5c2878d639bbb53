#pragma once

#include <charconv>
#include <optional>
#include <string_view>
#include <system_error>

namespace trel::host {

/// The number that a text is; "true" is 1 and "false" 0. Empty for any other text, and
/// for a number that does not fit.
template <typename Number>
std::optional<Number> readNumber(std::string_view text) {
    if (text == "true") return Number{1};
    if (text == "false") return Number{0};
    Number number{};
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc{} || stop != end) return std::nullopt;
    return number;
}

}  // namespace trel::host
