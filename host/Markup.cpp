#include "host/Markup.h"

#include <algorithm>

#include "platform/sdf/XmlText.h"

namespace trel::host {

std::string escapedMarkup(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const auto [code, length] = sdf::xml::decode(text);
        const std::string_view character = text.substr(0, std::max<std::size_t>(length, 1));
        text.remove_prefix(character.size());
        switch (length == 0 ? 0 : code) {
            case '<': result += "&lt;"; break;
            case '>': result += "&gt;"; break;
            case '&': result += "&amp;"; break;
            case '"': result += "&quot;"; break;
            case '\n': result += "&#10;"; break;
            case '\t': result += "&#9;"; break;
            default:
                if (length != 0 && sdf::xml::isAllowed(code)) result += character;
        }
    }
    return result;
}

}  // namespace trel::host
