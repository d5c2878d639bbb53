#pragma once

#include <any>
#include <memory>
#include <string>
#include <string_view>
#include <typeinfo>

#include "platform/Export.h"

namespace sdf {

/// A typed value of the document. It holds one of the program types
/// `std::string`, `bool`, `int`, `unsigned`, `unsigned long long`, `double`,
/// `trel::rob::Vec3Template<double>` and `trel::rob::PoseTemplate<double>`.
class TREL_PLATFORM_API Attr {
public:
    /// `type` must be the document's name of the value's type; a value that is
    /// not persistent is left out of the file. The own value of an element has no
    /// name: it goes by the element's tag.
    /// \throws std::invalid_argument for a value of another type than `type`
    /// says, or of a type that the document cannot hold.
    Attr(std::string_view name, std::string_view type, std::any value, bool persistent);
    ~Attr();
    Attr& operator=(Attr&&) noexcept;

    /// Takes a new value, which may be of another type.
    /// \throws std::invalid_argument if the document cannot hold such a value;
    /// the old one stays.
    void set(const std::any& value);

    /// The same without a copy.
    void set(std::any&& value);

    /// Takes a text in the place of a text; false, and nothing done, where it holds
    /// anything else.
    bool setText(std::string_view text);

    std::string_view name() const { return given_ ? given_->name : std::string_view(); }
    const std::string& type() const { return Type(value_.type()); }
    const std::any& value() const { return value_; }
    bool isPersistent() const { return !given_ || given_->isPersistent; }

    /// The document's name of a program type: "string", "bool", "int", "uint",
    /// "uint64", "double", "vec3" or "pose".
    /// \throws std::invalid_argument for any other type.
    static const std::string& Type(const std::type_info& type);

private:
    friend class DocumentReader;
    friend class Element;

    struct Given {
        std::string name;
        bool isPersistent;
    };

    Attr() = default;  // the own value of an element that has none

    std::any value_;
    std::unique_ptr<const Given> given_;  // null for an own value
};

}  // namespace sdf
