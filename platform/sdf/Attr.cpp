#include "platform/sdf/Attr.h"

#include <array>
#include <stdexcept>
#include <utility>

#include "platform/rob/PoseTemplate.h"
#include "platform/rob/Vec3Template.h"

namespace sdf {

Attr::Attr(std::string_view name, std::string_view type, std::any value, bool persistent)
    : value_(std::move(value)), name_(name), isPersistent_(persistent) {
    if (Type(value_.type()) != type)
        throw std::invalid_argument("a value of type " + Type(value_.type()) + " is no " +
                                    std::string(type));
}

namespace {

// Whether both hold a T, and `to` has taken the value of `from` where it stands.
template <typename T>
bool assignAs(std::any& to, const std::any& from) {
    T* const held = std::any_cast<T>(&to);
    const T* const given = held ? std::any_cast<T>(&from) : nullptr;
    if (given) *held = *given;
    return given != nullptr;
}

// Any but a number that stays one: apart, so that such a one needs no registers for it.
[[gnu::flatten, gnu::noinline]] void assignOther(std::any& held, const std::any& value) {
    if (assignAs<std::string>(held, value) || assignAs<double>(held, value) ||
        assignAs<trel::rob::Vec3Template<double>>(held, value) ||
        assignAs<trel::rob::PoseTemplate<double>>(held, value))
        return;
    Attr::Type(value.type());  // may throw: the old value stays
    held = value;
}

}  // namespace

// What changes again and again keeps its type, and then its place. Flattened: asking a std::any
// what it holds would be a call, and each as long as all of this.
[[gnu::flatten]] void Attr::Assign(std::any& held, const std::any& value) {
    if (!assignAs<int>(held, value)) assignOther(held, value);
}

void Attr::Assign(std::any& held, std::any&& value) {
    Type(value.type());  // may throw: the old value stays
    held = std::move(value);
}

bool Attr::AssignText(std::any& held, std::string_view text) {
    auto* const own = std::any_cast<std::string>(&held);
    if (own && own->size() == text.size())  // as mostly, and then without a call
        text.copy(own->data(), text.size());
    else if (own)
        *own = text;
    return own != nullptr;
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
