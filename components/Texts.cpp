#include "components/Texts.h"

#include <array>
#include <charconv>
#include <cmath>

namespace trel::components {

namespace {

template <typename T>
std::optional<T> read(std::string_view text) {
    T value{};
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc{} || stop != end) return std::nullopt;
    return value;
}

constexpr std::string_view blanks = " \t\r\n";

// The next word of `text`, which is taken off its front.
std::string_view nextWord(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    const std::string_view word = text.substr(0, text.find_first_of(blanks));
    text.remove_prefix(word.size());
    return word;
}

void append(std::string& text, double number) {
    std::array<char, 32> buffer;
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number).ptr;
    text.append(buffer.data(), end);
}

}  // namespace

std::optional<int> readWhole(std::string_view text) { return read<int>(text); }

std::optional<double> readNumber(std::string_view text) {
    const auto number = read<double>(text);
    return number && std::isfinite(*number) ? number : std::nullopt;
}

std::optional<Point> readPoint(std::string_view text) {
    std::array<double, 3> numbers{};
    for (double& number : numbers)
        if (!take(number, readNumber(nextWord(text)))) return std::nullopt;
    if (!nextWord(text).empty()) return std::nullopt;
    return Point{numbers[0], numbers[1], numbers[2]};
}

std::optional<unsigned> readId(std::string_view text) { return read<unsigned>(text); }

std::string textOf(const Point& point) {
    std::string text;
    append(text, point.x);
    append(text += ' ', point.y);
    append(text += ' ', point.z);
    return text;
}

bool takeAtLeastZero(double& target, const std::optional<double>& answer) {
    return answer && *answer >= 0 && take(target, answer);
}

}  // namespace trel::components
