#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "platform/Export.h"

/// The characters and names of XML 1.0, as UTF-8.
namespace sdf::xml {

inline constexpr std::string_view blanks = " \t\r\n";

constexpr bool isBlank(char c) { return c == ' ' || c == '\n' || c == '\t' || c == '\r'; }

/// The first place from `at` on that holds no blank; the end if there is none.
constexpr std::size_t behindBlanks(std::string_view text, std::size_t at) {
    while (at < text.size() && isBlank(text[at])) ++at;
    return at;
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

/// Bytes of the longest prefix of printable ASCII, which is most of a file.
inline std::size_t plainLength(std::string_view text) {
    using Word = std::uint64_t;
    constexpr Word each = ~Word{0} / 0xFF;  // 1 in each byte
    std::size_t length = 0;
    for (; text.size() - length >= sizeof(Word); length += sizeof(Word)) {
        Word word;
        std::memcpy(&word, text.data() + length, sizeof word);
        if (((word - each * ' ') | word) & each * 0x80) break;
    }
    while (length < text.size() && text[length] >= ' ') ++length;
    return length;
}

/// Bytes of the name that the text begins with; 0 if it begins with none.
TREL_PLATFORM_API std::size_t nameLength(std::string_view text);

TREL_PLATFORM_API bool isName(std::string_view text);

/// The text in double quotes for a message: on one line, and cut behind `longest`
/// bytes.
TREL_PLATFORM_API std::string quoted(std::string_view text, std::size_t longest = 60);

}  // namespace sdf::xml
