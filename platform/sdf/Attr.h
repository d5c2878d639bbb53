#pragma once

#include <any>
#include <string>
#include <string_view>
#include <typeinfo>

#include "platform/Export.h"

namespace sdf {

/// A typed value with a name. It holds one of the program types that the document can hold,
/// `std::string`, `bool`, `int`, `unsigned`, `unsigned long long`, `double`,
/// `trel::rob::Vec3Template<double>` and `trel::rob::PoseTemplate<double>`.
class TREL_PLATFORM_API Attr {
public:
    /// `type` must be the document's name of the value's type; a value that is
    /// not persistent is left out of the file.
    /// \throws std::invalid_argument for a value of another type than `type`
    /// says, or of a type that the document cannot hold.
    Attr(std::string_view name, std::string_view type, std::any value, bool persistent);

    /// Takes a new value, which may be of another type.
    /// \throws std::invalid_argument if the document cannot hold such a value;
    /// the old one stays.
    void set(const std::any& value) { Assign(value_, value); }

    const std::string& name() const { return name_; }
    const std::string& type() const { return Type(value_.type()); }
    const std::any& value() const { return value_; }
    bool isPersistent() const { return isPersistent_; }

    /// What `set` does, for a value that stands elsewhere. One of the same type keeps
    /// its place.
    static void Assign(std::any& held, const std::any& value);

    /// The same without a copy.
    static void Assign(std::any& held, std::any&& value);

    /// Takes a text in the place of a text; false, and nothing done, where anything
    /// else is held.
    static bool AssignText(std::any& held, std::string_view text);

    /// The document's name of a program type: "string", "bool", "int", "uint",
    /// "uint64", "double", "vec3" or "pose".
    /// \throws std::invalid_argument for any other type.
    static const std::string& Type(const std::type_info& type);

private:
    std::any value_;
    std::string name_;
    bool isPersistent_;
};

}  // namespace sdf
