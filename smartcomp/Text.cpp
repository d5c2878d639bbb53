#include "smartcomp/Text.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <iomanip>
#include <limits>
#include <locale>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>

namespace trel::smartcomp::text {

namespace {

constexpr std::string_view whiteSpace = " \t\n\v\f\r";

// A number's text without white space before it and without its sign.
struct Magnitude {
    bool negative;
    std::string_view digits;
};

Magnitude magnitudeOf(std::string_view text) {
    const std::size_t start = text.find_first_not_of(whiteSpace);
    if (start == std::string_view::npos) return {};
    text.remove_prefix(start);
    const bool isNegative = text.front() == '-';
    if (isNegative || text.front() == '+') text.remove_prefix(1);
    return {isNegative, text};
}

bool startsWithSign(std::string_view text) {
    return !text.empty() && (text.front() == '-' || text.front() == '+');
}

#ifdef __cpp_lib_to_chars
std::from_chars_result readChars(std::string_view text, double& number,
                                 std::chars_format format = std::chars_format::general) {
    return std::from_chars(text.data(), text.data() + text.size(), number, format);
}
#else
// For a standard library whose from_chars reads no floating-point numbers: by strtod in the
// classic locale, less what that takes and from_chars does not.
std::from_chars_result readChars(std::string_view text, double& number,
                                 std::chars_format format = std::chars_format::general) {
    static const locale_t classic = newlocale(LC_ALL_MASK, "C", nullptr);
    const bool isHex = format == std::chars_format::hex;
    const std::string prefixed = (isHex ? "0x" : "") + std::string(text);
    const bool isBlank = text.empty() || whiteSpace.find(text.front()) != text.npos;
    const std::size_t start = text.starts_with('-') ? 1 : 0;
    const auto prefix = text.substr(start, 2);
    if (!isHex && (prefix == "0x" || prefix == "0X")) {  // the 0 is the number
        number = start == 0 ? 0.0 : -0.0;
        return {text.data() + start + 1, std::errc()};
    }
    char* end = nullptr;
    errno = 0;
    const double read = strtod_l(prefixed.c_str(), &end, classic);
    const auto length = static_cast<std::size_t>(end - prefixed.c_str());
    const std::size_t before = isHex ? 2 : 0;
    if (isBlank || text.front() == '+' || length <= before)
        return {text.data(), std::errc::invalid_argument};
    const char* const stop = text.data() + (length - before);
    if (errno == ERANGE && (read == 0 || std::isinf(read)))
        return {stop, std::errc::result_out_of_range};
    number = read;
    return {stop, std::errc()};
}
#endif

std::from_chars_result readHex(std::string_view digits, double& number) {
    const std::string_view mantissa = digits.substr(2);
    if (startsWithSign(mantissa)) return {mantissa.data(), std::errc::invalid_argument};
    return readChars(mantissa, number, std::chars_format::hex);
}

constexpr bool isDigit(char c) { return '0' <= c && c <= '9'; }

// What a stream takes for the text of a number: a sign, digits with a point among
// them, and an exponent.
std::string_view numeralAt(std::string_view text) {
    std::size_t end = startsWithSign(text) ? 1 : 0;
    bool hasDigits = false;
    bool hasPoint = false;
    bool hasExponent = false;
    for (; end != text.size(); ++end) {
        const char c = text[end];
        if (isDigit(c)) {
            hasDigits = true;
        } else if (c == '.' && !hasPoint && !hasExponent) {
            hasPoint = true;
        } else if ((c == 'e' || c == 'E') && hasDigits && !hasExponent) {
            hasExponent = true;
            if (startsWithSign(text.substr(end + 1))) ++end;
        } else {
            break;
        }
    }
    return text.substr(0, end);
}

// A number that is too large is none; one that is too small is what is nearest.
bool readExtreme(std::string_view numeral, double& number) {
    std::istringstream stream{std::string(numeral)};
    stream.exceptions(std::ios::badbit);  // else a number counts as none where memory ends
    stream.imbue(std::locale::classic());
    double read = 0;
    if (!(stream >> read)) return false;
    number = read;
    return true;
}

// As a stream of the classic locale reads the number at the start of `text`, which
// is then taken off. False, and `number` as it was, where there is none.
bool readNumber(std::string_view& text, double& number) {
    const std::size_t start = text.find_first_not_of(whiteSpace);
    if (start == std::string_view::npos) return false;
    std::string_view numeral = numeralAt(text.substr(start));
    text.remove_prefix(start + numeral.size());
    if (numeral.starts_with('+')) numeral.remove_prefix(1);
    double read = 0;
    const char* const end = numeral.data() + numeral.size();
    const auto [stop, error] = readChars(numeral, read);
    if (error == std::errc::result_out_of_range) return readExtreme(numeral, number);
    if (error != std::errc() || stop != end) return false;
    number = read;
    return true;
}

}  // namespace

unsigned toUnsigned(const std::string& text) {
    const auto [negative, digits] = magnitudeOf(text);
    unsigned number = 0;
    const auto error = std::from_chars(digits.data(), digits.data() + digits.size(), number).ec;
    if (error == std::errc::invalid_argument) throw std::invalid_argument("invalid stoul argument");
    if (error != std::errc{}) throw std::out_of_range("stoul argument out of range");
    return negative ? 0u - number : number;
}

double toDouble(const std::string& text) {
    const auto [negative, digits] = magnitudeOf(text);
    double number = 0;
    std::errc error = std::errc::invalid_argument;
    if (!startsWithSign(digits)) error = readChars(digits, number).ec;
    // Behind "0x" stands a hexadecimal number; without one, the 0 is the number.
    if (digits.starts_with("0x") || digits.starts_with("0X")) {
        double hex = 0;
        const std::errc hexError = readHex(digits, hex).ec;
        if (hexError != std::errc::invalid_argument) {
            error = hexError;
            number = hex;
        }
    }
    if (error == std::errc::invalid_argument) throw std::invalid_argument("invalid stod argument");
    if (error != std::errc{}) throw std::out_of_range("stod argument out of range");
    return negative ? -number : number;
}

void readNumbers(const std::string& text, std::span<double> numbers) {
    std::string_view rest = text;
    for (double& number : numbers)
        if (!readNumber(rest, number)) return;
}

std::string fixed(double number, int decimals) {
    // The longest: a sign, 309 digits, the point, the decimals.
    std::array<char, std::numeric_limits<double>::max_exponent10 + 64> buffer;
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number,
                                   std::chars_format::fixed, decimals)
                         .ptr;
    return std::string(buffer.data(), end);
}

std::string shown(double number, int decimals) {
    if (std::locale() == std::locale::classic()) return fixed(number, decimals);
    std::ostringstream stream;
    stream.exceptions(std::ios::badbit);  // else text is cut off where memory ends
    stream << std::fixed << std::setprecision(decimals) << number;
    return std::move(stream).str();
}

}  // namespace trel::smartcomp::text
