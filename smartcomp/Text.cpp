#include "smartcomp/Text.h"

#include <array>
#include <charconv>
#include <limits>
#include <locale>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <system_error>

namespace trel::smartcomp::text {

namespace {

// A number's text without white space before it and without its sign.
struct Magnitude {
    bool negative;
    std::string_view digits;
};

Magnitude magnitudeOf(std::string_view text) {
    const std::size_t start = text.find_first_not_of(" \t\n\v\f\r");
    if (start == std::string_view::npos) return {};
    text.remove_prefix(start);
    const bool isNegative = text.front() == '-';
    if (isNegative || text.front() == '+') text.remove_prefix(1);
    return {isNegative, text};
}

bool startsWithSign(std::string_view text) {
    return !text.empty() && (text.front() == '-' || text.front() == '+');
}

std::from_chars_result readHex(std::string_view digits, double& number) {
    const std::string_view mantissa = digits.substr(2);
    if (startsWithSign(mantissa)) return {mantissa.data(), std::errc::invalid_argument};
    return std::from_chars(mantissa.data(), mantissa.data() + mantissa.size(), number,
                           std::chars_format::hex);
}

}  // namespace

unsigned toUnsigned(const std::string& text) {
    const auto [negative, digits] = magnitudeOf(text);
    unsigned number = 0;
    const auto error = std::from_chars(digits.data(), digits.data() + digits.size(), number).ec;
    if (error == std::errc::invalid_argument)
        throw std::invalid_argument("invalid stoul argument");
    if (error != std::errc{}) throw std::out_of_range("stoul argument out of range");
    return negative ? 0u - number : number;
}

double toDouble(const std::string& text) {
    const auto [negative, digits] = magnitudeOf(text);
    double number = 0;
    std::errc error = std::errc::invalid_argument;
    if (!startsWithSign(digits))
        error = std::from_chars(digits.data(), digits.data() + digits.size(), number).ec;
    // Behind "0x" stands a hexadecimal number; without one, the 0 is the number.
    if (digits.starts_with("0x") || digits.starts_with("0X")) {
        double hex = 0;
        const std::errc hexError = readHex(digits, hex).ec;
        if (hexError != std::errc::invalid_argument) {
            error = hexError;
            number = hex;
        }
    }
    if (error == std::errc::invalid_argument)
        throw std::invalid_argument("invalid stod argument");
    if (error != std::errc{}) throw std::out_of_range("stod argument out of range");
    return negative ? -number : number;
}

void readNumbers(const std::string& text, std::span<double> numbers) {
    std::istringstream stream(text);
    stream.exceptions(std::ios::badbit);  // else a number counts as none where memory ends
    stream.imbue(std::locale::classic());
    for (double& number : numbers) {
        double read = 0;
        if (!(stream >> read)) return;
        number = read;
    }
}

std::string fixed(double number, int decimals) {
    // The longest: a sign, 309 digits, the point, the decimals.
    std::array<char, std::numeric_limits<double>::max_exponent10 + 64> buffer;
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number,
                                   std::chars_format::fixed, decimals)
                         .ptr;
    return std::string(buffer.data(), end);
}

}  // namespace trel::smartcomp::text
