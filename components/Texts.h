#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "components/Space.h"

/// Property texts as values. A text that is not wholly such a value gives an
/// empty answer; nothing here depends on a locale.
namespace trel::components {

std::optional<int> readWhole(std::string_view text);
std::optional<double> readNumber(std::string_view text);  // finite
std::optional<Point> readPoint(std::string_view text);    // three numbers between blanks
std::optional<unsigned> readId(std::string_view text);

std::string textOf(const Point& point);

/// Takes an answer into `target`, or leaves it for an empty one; gives whether
/// there was one.
template <typename T>
bool take(T& target, const std::optional<T>& answer) {
    if (answer) target = *answer;
    return answer.has_value();
}

/// The same for a number that must not be below 0.
bool takeAtLeastZero(double& target, const std::optional<double>& answer);

}  // namespace trel::components
