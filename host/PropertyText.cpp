#include "host/PropertyText.h"

#include <algorithm>
#include <array>
#include <stdexcept>

#include "platform/sdf/ValueText.h"

namespace trel::host {

namespace {

bool isValue(std::string_view type, std::string_view text) {
    try {
        sdf::valuetext::parse(type, text);
        return true;
    } catch (const std::invalid_argument&) {
        return false;
    }
}

bool areNumbers(std::string_view text, unsigned wanted) {
    constexpr std::string_view blanks = " \t\r\n";
    for (unsigned found = 0;; ++found) {
        text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
        if (text.empty()) return found == wanted;
        const std::string_view word = text.substr(0, text.find_first_of(blanks));
        if (!isValue("double", word)) return false;
        text.remove_prefix(word.size());
    }
}

// What a text of a property type must be, and whether one is.
struct TextRule {
    std::string_view type;
    std::string_view wanted;
    bool (*holds)(std::string_view);
};
constexpr std::array textRules = {
    TextRule{"ObjectId", "the id of an object, 0 for none",
             [](std::string_view t) { return isValue("uint", t); }},
    TextRule{"Int32", "a whole number", [](std::string_view t) { return isValue("int", t); }},
    TextRule{"Index", "a whole number", [](std::string_view t) { return isValue("int", t); }},
    TextRule{"Double", "a number such as -0.5",
             [](std::string_view t) { return isValue("double", t); }},
    TextRule{"Bool", "1 or 0", [](std::string_view t) { return isValue("bool", t); }},
    TextRule{"Vector3", "three numbers with blanks between them",
             [](std::string_view t) { return areNumbers(t, 3); }},
    TextRule{"Orient", "the four numbers of a quaternion, w x y z",
             [](std::string_view t) { return areNumbers(t, 4); }},
};

}  // namespace

std::string_view wantedFor(std::string_view type, std::string_view text) {
    const auto rule = std::ranges::find(textRules, type, &TextRule::type);
    return rule == textRules.end() || rule->holds(text) ? "" : rule->wanted;
}

}  // namespace trel::host
