#pragma once

#include <any>
#include <string>
#include <string_view>
#include <typeinfo>

#include "platform/Export.h"

/// The text forms of the document's values. They never depend on a locale.
namespace sdf::valuetext {

/// Puts the value that a text stands for into `to`; false, and nothing done, where it
/// stands for none.
using Parser = bool (*)(std::string_view text, std::any& to);

/// The parser of a type of value, as `Attr::Type` names it; null for any other name.
TREL_PLATFORM_API Parser parserOf(std::string_view type);

/// Whether `type` names a type of value.
inline bool isTypeName(std::string_view type) { return parserOf(type) != nullptr; }

/// The text of a value: numbers in their shortest form that reads back equal,
/// a bool as 1 or 0, a vec3 as "x y z", a pose as "x y z w x y z" (position,
/// then the quaternion). A value that is empty gives empty text.
/// \throws std::invalid_argument for a type that the document cannot hold.
TREL_PLATFORM_API std::string render(const std::any& value);

/// The value that `text` stands for in the type named `type`. A bool reads 1,
/// 0, true and false; the numbers of a vec3 and a pose stand between single or
/// repeated blanks.
/// \throws std::invalid_argument for text that is no such value, and for a type
/// name that the document does not know.
TREL_PLATFORM_API std::any parse(std::string_view type, std::string_view text);

/// `value` as a `T`, one of the types that the document holds: the value itself
/// if it is one, otherwise its conversion. Numbers convert as numbers, cut
/// towards zero; text is parsed; an empty value or text gives T{}.
/// \throws std::invalid_argument when there is no such conversion, a number
/// beyond the range of T included.
template <typename T>
TREL_PLATFORM_API T convert(const std::any& value);

}  // namespace sdf::valuetext
