#pragma once

#include <any>
#include <string>
#include <string_view>
#include <typeinfo>

namespace sdf {

/// A typed value of the document. It holds one of the program types
/// `std::string`, `bool`, `int`, `unsigned`, `unsigned long long`, `double`,
/// `trel::rob::Vec3Template<double>` and `trel::rob::PoseTemplate<double>`.
class Attr {
public:
    /// `type` must be the document's name of the value's type; a value that is
    /// not persistent is left out of the file.
    /// \throws std::invalid_argument for a value of another type than `type`
    /// says, or of a type that the document cannot hold.
    Attr(std::string_view name, std::string_view type, std::any value, bool persistent);
    ~Attr();

    /// Takes a new value, which may be of another type.
    /// \throws std::invalid_argument if the document cannot hold such a value;
    /// the old one stays.
    void set(const std::any& value);

    const std::string& name() const { return name_; }
    const std::string& type() const { return Type(value_.type()); }
    const std::any& value() const { return value_; }
    bool isPersistent() const { return persistent_; }

    /// The document's name of a program type: "string", "bool", "int", "uint",
    /// "uint64", "double", "vec3" or "pose".
    /// \throws std::invalid_argument for any other type.
    static const std::string& Type(const std::type_info& type);

private:
    std::string name_;
    std::any value_;
    bool persistent_;
};

}  // namespace sdf
