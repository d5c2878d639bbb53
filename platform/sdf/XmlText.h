#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "platform/Export.h"

/// The characters and names of XML 1.0, as UTF-8.
namespace sdf::xml {

inline constexpr std::string_view blanks = " \t\r\n";

/// What a byte may be, as an ASCII character by itself; any other byte is none of it.
enum ByteKind : unsigned char {
    nameStart = 1,
    namePart = 2,
    allowed = 4,
    blank = 8,
    mayEndValue = 16  // a quotation mark, or what needs a look inside of a value
};

inline constexpr std::array<unsigned char, 256> byteKinds = [] {
    std::array<unsigned char, 256> kinds{};
    const auto range = [&](unsigned char first, unsigned char last, unsigned kind) {
        for (std::size_t c = first; c <= last; ++c)
            kinds[c] = static_cast<unsigned char>(kinds[c] | kind);
    };
    range(0x20, 0x7F, allowed);
    range('a', 'z', nameStart | namePart);
    range('A', 'Z', nameStart | namePart);
    range('_', '_', nameStart | namePart);
    range(':', ':', nameStart | namePart);
    range('0', '9', namePart);
    range('-', '.', namePart);
    for (const char c : blanks) kinds[static_cast<unsigned char>(c)] |= allowed | blank;
    for (const char c : {'"', '\'', '<', '&'}) kinds[static_cast<unsigned char>(c)] |= mayEndValue;
    return kinds;
}();

constexpr bool is(unsigned char kind, char c) {
    return (byteKinds[static_cast<unsigned char>(c)] & kind) != 0;
}

constexpr bool isBlank(char c) { return is(blank, c); }

/// The first place from `at` on that holds no blank; the end if there is none.
constexpr std::size_t behindBlanks(std::string_view text, std::size_t at) {
    while (at < text.size() && isBlank(text[at])) ++at;
    return at;
}

/// Whether both are equal; a comparison of known length takes no call.
template <std::size_t n>
constexpr bool is(std::string_view text, const char (&literal)[n]) {
    return text.size() == n - 1 &&
           std::char_traits<char>::compare(text.data(), literal, n - 1) == 0;
}

/// One character and the number of bytes that it takes.
struct Character {
    char32_t code;
    std::size_t length;
};

/// The first character of a text that is not empty; with length 0 if it is not
/// well-formed UTF-8.
TREL_PLATFORM_API Character decode(std::string_view text);

/// Whether XML can hold the character at all.
TREL_PLATFORM_API bool isAllowed(char32_t code);

/// Bytes of the longest prefix that XML can hold.
TREL_PLATFORM_API std::size_t allowedLength(std::string_view text);

/// Bytes of the longest prefix of good ones, of which eight at a time are looked at.
template <typename AreGood, typename IsGood>
std::size_t goodLength(std::string_view text, const AreGood& areGood, const IsGood& isGood) {
    std::uint64_t word;
    std::size_t length = 0;
    for (; text.size() - length >= sizeof word; length += sizeof word) {
        std::memcpy(&word, text.data() + length, sizeof word);
        if (!areGood(word)) break;
    }
    while (length < text.size() && isGood(text[length])) ++length;
    return length;
}

inline constexpr std::uint64_t eachByte = ~std::uint64_t{0} / 0xFF;

/// Bytes of the longest prefix of printable ASCII and line ends, which is most of a file.
inline std::size_t plainLength(std::string_view text) {
    const auto arePlain = [](std::uint64_t word) {
        const std::uint64_t low = word & eachByte * 0x7F;  // so that no sum is carried on
        const std::uint64_t isPrintable = low + eachByte * (0x80 - ' ');
        const std::uint64_t isNoLineEnd = (low ^ eachByte * '\n') + eachByte * 0x7F;
        return (((~isPrintable & isNoLineEnd) | word) & eachByte * 0x80) == 0;
    };
    return goodLength(text, arePlain, [](char c) { return c >= ' ' || c == '\n'; });
}

/// Bytes of the longest prefix of ASCII.
inline std::size_t asciiLength(std::string_view text) {
    return goodLength(
        text, [](std::uint64_t word) { return (word & eachByte * 0x80) == 0; },
        [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/// Bytes of the name that a text begins with, whose first `length` are known to be of it.
TREL_PLATFORM_API std::size_t nameLength(std::string_view text, std::size_t length);

/// Bytes of the name that the text begins with; 0 if it begins with none.
inline std::size_t nameLength(std::string_view text) {
    std::size_t length = 0;
    if (!text.empty() && is(nameStart, text[0])) ++length;
    while (length != 0 && length < text.size() && is(namePart, text[length])) ++length;
    const bool isWhole = length == text.size() || static_cast<unsigned char>(text[length]) < 0x80;
    return isWhole ? length : nameLength(text, length);
}

TREL_PLATFORM_API bool isName(std::string_view text);

/// The text in double quotes for a message: on one line, and cut behind `longest`
/// bytes.
TREL_PLATFORM_API std::string quoted(std::string_view text, std::size_t longest = 60);

}  // namespace sdf::xml
