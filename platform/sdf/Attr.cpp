#include "platform/sdf/Attr.h"

#include <array>
#include <stdexcept>
#include <utility>

#include "platform/rob/PoseTemplate.h"
#include "platform/rob/Vec3Template.h"

namespace sdf {

Attr::Attr(std::string_view name, std::string_view type, std::any value, bool persistent)
    : value_(std::move(value)),
      given_(std::make_unique<const Given>(Given{std::string(name), persistent})) {
    if (Type(value_.type()) != type)
        throw std::invalid_argument("a value of type " + Type(value_.type()) + " is no " +
                                    std::string(type));
}

Attr::~Attr() = default;
Attr& Attr::operator=(Attr&&) noexcept = default;

namespace {

// Whether both hold a T, and `to` has taken the value of `from` where it stands.
template <typename T>
bool assignAs(std::any& to, const std::any& from) {
    T* const held = std::any_cast<T>(&to);
    const T* const given = held ? std::any_cast<T>(&from) : nullptr;
    if (given) *held = *given;
    return given != nullptr;
}

}  // namespace

void Attr::set(const std::any& value) {
    // What changes again and again keeps its type, and then its place.
    if (assignAs<int>(value_, value) || assignAs<std::string>(value_, value) ||
        assignAs<double>(value_, value) ||
        assignAs<trel::rob::Vec3Template<double>>(value_, value) ||
        assignAs<trel::rob::PoseTemplate<double>>(value_, value))
        return;
    Type(value.type());  // may throw: the old value stays
    value_ = value;
}

void Attr::set(std::any&& value) {
    Type(value.type());  // may throw: the old value stays
    value_ = std::move(value);
}

bool Attr::setText(std::string_view text) {
    auto* const held = std::any_cast<std::string>(&value_);
    if (held && held->size() == text.size())  // as mostly, and then without a call
        text.copy(held->data(), text.size());
    else if (held)
        *held = text;
    return held != nullptr;
}

const std::string& Attr::Type(const std::type_info& type) {
    struct Entry {
        const std::type_info* type;
        std::string name;
    };
    // Never destroyed: elements are written to until the very end of a process.
    static const auto& names = *new std::array<Entry, 8>{{
        {&typeid(std::string), "string"},
        {&typeid(int), "int"},
        {&typeid(double), "double"},
        {&typeid(bool), "bool"},
        {&typeid(unsigned), "uint"},
        {&typeid(unsigned long long), "uint64"},
        {&typeid(trel::rob::Vec3Template<double>), "vec3"},
        {&typeid(trel::rob::PoseTemplate<double>), "pose"},
    }};
    for (const Entry& entry : names)
        if (entry.type == &type) return entry.name;
    for (const Entry& entry : names)  // another library may have its own
        if (*entry.type == type) return entry.name;
    throw std::invalid_argument(
        std::string("the document does not hold values of the program type ") + type.name());
}

}  // namespace sdf
