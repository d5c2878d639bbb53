#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/sdf/SdfObject.h"
#include "smartcomp/Export.h"
#include "smartcomp/Hints.h"

namespace trel::smartcomp {

class SmartComponent;
class Walk;

/// The types of a property: the places of their names in the table of type
/// names.
enum class PropertyType : unsigned {
    ObjectId,  // the id of a document object; 0 for none
    Int32,
    Double,
    String,
    Bool,
    Vector3,  // three numbers, in mm
    Orient,   // a quaternion, scalar part first
    ReferenceFrame,
    Index,
    Error,
};

/// One named, typed parameter of a component, mirrored from its "property"
/// element. Its value is text, in the form in which the document renders it.
/// Owned by its component.
///
/// Setters write the document first; when that throws, the field is unchanged.
/// They tell nobody: a value that shall be seen and passed on goes through
/// SmartComponent::setPropertyValue.
class TREL_API Property : public sdf::SdfObject {
public:
    /// Reads `element` and hands the property to `owner`.
    /// \throws std::bad_optional_access if "type" is no property type; the owner
    /// is unchanged.
    static Property* Create(SmartComponent* owner, std::shared_ptr<sdf::Element> element);

    Property(const Property&);
    Property(Property&&);
    Property& operator=(const Property&);
    Property& operator=(Property&&);
    ~Property() override;

    const std::string& description() const { return description_; }
    const std::string& type() const { return type_; }
    const std::string& value() const { return value_; }
    const std::string& unit() const { return unit_; }
    bool isVisible() const { return visible_; }
    bool isReadOnly() const { return readOnly_; }

    bool isObjectId() const { return typeIndex_ == PropertyType::ObjectId; }

    /// The id that an "ObjectId" names; 0 for every other type. Leading blanks
    /// and what follows the number are passed over, and "-1" is 4294967295.
    /// \throws std::invalid_argument "invalid stoul argument" for text without a
    /// leading number, std::out_of_range "stoul argument out of range" for one
    /// that does not fit into 32 bits.
    unsigned getObjectId();

    /// Writes also when nothing changes.
    Property* setDescription(const std::string& description);
    Property* setReadOnly(bool readOnly);
    /// A name that is no property type is ignored.
    Property* setType(const std::string& type);
    Property* setUnit(const std::string& unit);
    /// Writes also when nothing changes, and then holds what the document makes
    /// of the text. The text is not checked against the type.
    /// \throws std::invalid_argument if the document holds a value of a type
    /// that cannot take the text; nothing has changed.
    Property* setValue(const std::string& value);
    Property* setVisible(bool visible);

    /// The value as a user sees it: numbers rounded and with their unit, angles
    /// for a quaternion, a name for an object id ("None" for an id that names
    /// nothing). Numbers are written as the global locale writes them.
    /// \throws std::invalid_argument "invalid stoul argument" or "invalid stod
    /// argument", std::out_of_range "stoul argument out of range" or "stod
    /// argument out of range" for an "ObjectId" or a "Double" whose text is no
    /// such number.
    std::string getDisplayValue();

    /// The place of `name` in the table of type names; empty for any other text.
    static std::optional<unsigned> typeIndexOf(std::string_view name);

private:
    friend class Walk;

    explicit Property(std::shared_ptr<sdf::Element> element);

    template <typename PutBack>
    Property* take(const std::string& value, const PutBack& putBack);
    Property* setText(const std::string& value);
    Property* setOther(const std::string& value);
    void readValue();
    void readOther();
    std::string getDoubleDisplayValue(const std::string& value);
    static std::string getBoolDisplayValue(const std::string& value);
    static std::string getVector3DisplayValue(const std::string& value);
    static std::string getOrientDisplayValue(const std::string& value);
    static bool isInt(double x, double tolerance);

    // What setting a value needs stands together.
    std::string value_;
    RouteHint routeHint_;
    PropertyType typeIndex_;
    bool visible_;
    bool readOnly_;
    bool wasText_ = false;  // what the document held when it was looked at
    std::string description_;
    std::string type_;
    std::string unit_;
};

}  // namespace trel::smartcomp
