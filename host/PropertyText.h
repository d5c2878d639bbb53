#pragma once

#include <string_view>

namespace trel::host {

/// What a property of the type is to hold instead of the text: "a whole number". Empty where
/// the text is one, and for types that take any text.
std::string_view wantedFor(std::string_view type, std::string_view text);

}  // namespace trel::host
