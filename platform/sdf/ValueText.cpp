#include "platform/sdf/ValueText.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <type_traits>
#include <utility>

#include "platform/rob/PoseTemplate.h"
#include "platform/rob/Vec3Template.h"
#include "platform/sdf/Attr.h"
#include "platform/sdf/XmlText.h"

namespace sdf::valuetext {

namespace {

using Vec3 = trel::rob::Vec3Template<double>;
using Pose = trel::rob::PoseTemplate<double>;

template <typename Number>
void append(std::string& text, Number number) {
    std::array<char, 32> buffer;
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number).ptr;
    text.append(buffer.data(), end);
}

template <std::size_t n>
std::string join(const std::array<double, n>& numbers) {
    std::string text;
    for (const double number : numbers) {
        if (!text.empty()) text += ' ';
        append(text, number);
    }
    return text;
}

std::string textOf(const std::string& value) { return value; }
std::string textOf(bool value) { return value ? "1" : "0"; }
std::string textOf(const Vec3& v) { return join(std::array{v.x, v.y, v.z}); }
std::string textOf(const Pose& p) {
    const auto& [v, q] = p;
    return join(std::array{v.x, v.y, v.z, q.w, q.x, q.y, q.z});
}
template <typename Number>
    requires std::is_arithmetic_v<Number>
std::string textOf(Number value) {
    std::string text;
    append(text, value);
    return text;
}

template <typename Number>
std::optional<Number> numberOf(std::string_view text) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    return number;
}

// Exactly n numbers with blanks between them.
template <std::size_t n>
std::optional<std::array<double, n>> numbersOf(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    std::array<double, n> numbers;
    for (double& number : numbers) {
        text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
        const std::size_t length = std::min(text.find_first_of(blanks), text.size());
        const auto read = numberOf<double>(text.substr(0, length));
        if (!read) return std::nullopt;
        number = *read;
        text.remove_prefix(length);
    }
    if (text.find_first_not_of(blanks) != std::string_view::npos) return std::nullopt;
    return numbers;
}

template <typename T>
std::optional<T> valueOf(std::string_view text) {
    if constexpr (std::is_same_v<T, std::string>) {
        return std::string(text);
    } else if constexpr (std::is_same_v<T, bool>) {
        if (text == "1" || text == "true") return true;
        if (text == "0" || text == "false") return false;
        return std::nullopt;
    } else if constexpr (std::is_same_v<T, Vec3>) {
        const auto n = numbersOf<3>(text);
        if (!n) return std::nullopt;
        return Vec3{(*n)[0], (*n)[1], (*n)[2]};
    } else if constexpr (std::is_same_v<T, Pose>) {
        const auto n = numbersOf<7>(text);
        if (!n) return std::nullopt;
        return Pose{{(*n)[0], (*n)[1], (*n)[2]}, {(*n)[3], (*n)[4], (*n)[5], (*n)[6]}};
    } else {
        return numberOf<T>(text);
    }
}

[[noreturn]] void refuse(std::string_view text, std::string_view type) {
    throw std::invalid_argument("\"" + std::string(text) + "\" is not a value of type " +
                                std::string(type));
}

// Numbers among themselves; nothing when the target cannot hold the source.
template <typename To, typename From>
std::optional<To> cut(From from) {
    if constexpr (std::is_same_v<To, bool>) {
        return from != From{};
    } else if constexpr (std::is_same_v<To, double> || std::is_same_v<From, bool>) {
        return static_cast<To>(from);
    } else if constexpr (std::is_same_v<From, double>) {
        // Both bounds are exact doubles; a NaN fails the comparison.
        const double whole = std::trunc(from);
        const double beyond = std::ldexp(1.0, std::numeric_limits<To>::digits);
        const double least = std::is_signed_v<To> ? -beyond : 0.0;
        if (!(whole >= least && whole < beyond)) return std::nullopt;
        return static_cast<To>(whole);
    } else {
        if (!std::in_range<To>(from)) return std::nullopt;
        return static_cast<To>(from);
    }
}

template <typename To, typename From>
std::optional<To> convertFrom(const From& from) {
    if constexpr (std::is_same_v<To, std::string>)
        return textOf(from);
    else if constexpr (std::is_same_v<From, std::string>)
        return from.empty() ? To{} : valueOf<To>(from);
    else if constexpr (std::is_arithmetic_v<To> && std::is_arithmetic_v<From>)
        return cut<To>(from);
    else
        return std::nullopt;
}

// Calls `visit` with the value in its own type; false for a type that the
// document does not hold.
template <typename Visit>
bool visitValue(const std::any& value, const Visit& visit) {
    const auto as = [&]<typename T>(std::type_identity<T>) {
        const T* const held = std::any_cast<T>(&value);
        if (held) visit(*held);
        return held != nullptr;
    };
    return as(std::type_identity<std::string>{}) || as(std::type_identity<int>{}) ||
           as(std::type_identity<double>{}) || as(std::type_identity<bool>{}) ||
           as(std::type_identity<unsigned>{}) || as(std::type_identity<unsigned long long>{}) ||
           as(std::type_identity<Vec3>{}) || as(std::type_identity<Pose>{});
}

template <typename T>
bool parseAs(std::string_view text, std::any& to) {
    if constexpr (std::is_same_v<T, std::string>) {
        to.emplace<T>(text);
        return true;
    } else {
        const auto value = valueOf<T>(text);
        if (value) to.emplace<T>(*value);
        return value.has_value();
    }
}

}  // namespace

Parser parserOf(std::string_view type) {
    using xml::is;
    if (is(type, "string")) return parseAs<std::string>;
    if (is(type, "bool")) return parseAs<bool>;
    if (is(type, "int")) return parseAs<int>;
    if (is(type, "uint")) return parseAs<unsigned>;
    if (is(type, "uint64")) return parseAs<unsigned long long>;
    if (is(type, "double")) return parseAs<double>;
    if (is(type, "vec3")) return parseAs<Vec3>;
    if (is(type, "pose")) return parseAs<Pose>;
    return nullptr;
}

std::string render(const std::any& value) {
    if (const auto* const held = std::any_cast<std::string>(&value)) return *held;
    std::string text;
    if (value.has_value() && !visitValue(value, [&](const auto& held) { text = textOf(held); }))
        throw std::invalid_argument("the document does not hold values of this program type");
    return text;
}

std::any parse(std::string_view type, std::string_view text) {
    const Parser parser = parserOf(type);
    if (!parser)
        throw std::invalid_argument("\"" + std::string(type) + "\" is no type of the document");
    std::any value;
    if (!parser(text, value)) refuse(text, type);
    return value;
}

template <typename T>
T convert(const std::any& value) {
    if (const T* const held = std::any_cast<T>(&value)) return *held;
    if (!value.has_value()) return T{};
    std::optional<T> converted;
    visitValue(value, [&](const auto& held) { converted = convertFrom<T>(held); });
    if (!converted) refuse(render(value), Attr::Type(typeid(T)));
    return *std::move(converted);
}

template std::string convert(const std::any&);
template bool convert(const std::any&);
template int convert(const std::any&);
template unsigned convert(const std::any&);
template unsigned long long convert(const std::any&);
template double convert(const std::any&);
template Vec3 convert(const std::any&);
template Pose convert(const std::any&);

}  // namespace sdf::valuetext
