#include "platform/sdf/XmlText.h"

#include <algorithm>
#include <array>

namespace sdf::xml {

namespace {

bool isAscii(char c) { return static_cast<unsigned char>(c) < 0x80; }

struct Range {
    char32_t first;
    char32_t last;
};

constexpr std::array<Range, 12> nameStarts{{{0xC0, 0xD6},
                                            {0xD8, 0xF6},
                                            {0xF8, 0x2FF},
                                            {0x370, 0x37D},
                                            {0x37F, 0x1FFF},
                                            {0x200C, 0x200D},
                                            {0x2070, 0x218F},
                                            {0x2C00, 0x2FEF},
                                            {0x3001, 0xD7FF},
                                            {0xF900, 0xFDCF},
                                            {0xFDF0, 0xFFFD},
                                            {0x10000, 0xEFFFF}}};
constexpr std::array<Range, 3> nameParts{{{0xB7, 0xB7}, {0x300, 0x36F}, {0x203F, 0x2040}}};

template <std::size_t n>
bool isIn(const std::array<Range, n>& ranges, char32_t code) {
    return std::any_of(ranges.begin(), ranges.end(), [&](const Range& range) {
        return range.first <= code && code <= range.last;
    });
}

// Beyond ASCII.
bool mayStandInName(char32_t code, bool first) {
    return isIn(nameStarts, code) || (!first && isIn(nameParts, code));
}

}  // namespace

Character decode(std::string_view text) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const char32_t lead = byte(0);
    if (lead < 0x80) return {lead, 1};
    const std::size_t length = lead < 0xC2   ? 0
                               : lead < 0xE0 ? 2
                               : lead < 0xF0 ? 3
                               : lead < 0xF5 ? 4
                                             : 0;
    if (length == 0 || length > text.size()) return {lead, 0};
    char32_t code = lead & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0u) != 0x80u) return {lead, 0};
        code = (code << 6) | (byte(i) & 0x3Fu);
    }
    // Longer than needed, half of a pair, or beyond the last character.
    constexpr std::array<char32_t, 5> least{0, 0, 0x80, 0x800, 0x10000};
    if (code < least[length] || (code >= 0xD800 && code < 0xE000) || code > 0x10FFFF)
        return {lead, 0};
    return {code, length};
}

bool isAllowed(char32_t code) {
    if (code < 0x80) return is(allowed, static_cast<char>(code));
    return code < 0xD800 || (code >= 0xE000 && code < 0xFFFE) ||
           (code >= 0x10000 && code <= 0x10FFFF);
}

std::size_t allowedLength(std::string_view text) {
    std::size_t i = 0;
    while (true) {
        i += plainLength(text.substr(i));
        if (i == text.size()) return i;
        if (is(allowed, text[i])) {
            ++i;
            continue;
        }
        if (isAscii(text[i])) return i;
        const auto [code, length] = decode(text.substr(i));
        if (length == 0 || !isAllowed(code)) return i;
        i += length;
    }
}

std::size_t nameLength(std::string_view text, std::size_t length) {
    while (length < text.size()) {
        const auto [code, size] = decode(text.substr(length));
        const bool isPart = code < 0x80 ? is(length == 0 ? nameStart : namePart, text[length])
                                        : size != 0 && mayStandInName(code, length == 0);
        if (!isPart) break;
        length += size;
    }
    return length;
}

bool isName(std::string_view text) { return !text.empty() && nameLength(text) == text.size(); }

std::string quoted(std::string_view text, std::size_t longest) {
    std::string shown = "\"";
    while (!text.empty()) {
        if (shown.size() > longest) {
            shown += "...";
            break;
        }
        const auto [code, length] = decode(text);
        const bool isPlain = length > 0 && code >= 0x20 && isAllowed(code);
        if (isPlain)
            shown += text.substr(0, length);
        else
            shown += '?';
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return shown + '"';
}

}  // namespace sdf::xml
