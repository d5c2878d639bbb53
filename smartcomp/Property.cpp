#include "smartcomp/Property.h"

#include <any>
#include <array>
#include <cmath>
#include <typeinfo>
#include <utility>

#include "platform/rob/RotationTemplate.h"
#include "smartcomp/Assign.h"
#include "smartcomp/Lookup.h"
#include "smartcomp/SmartComponent.h"
#include "smartcomp/Text.h"

namespace trel::smartcomp {

namespace {

// The place of a name is the number of its PropertyType.
constexpr std::array<std::string_view, 10> typeNames = {"ObjectId", "Int32",          "Double",
                                                        "String",   "Bool",           "Vector3",
                                                        "Orient",   "ReferenceFrame", "Index",
                                                        "Error"};

// Three numbers with the same decimals, and the unit.
std::string displayThree(double a, double b, double c, bool whole, const char* unit) {
    const int decimals = whole ? 0 : 2;
    return text::shown(a, decimals) + ", " + text::shown(b, decimals) + ", " +
           text::shown(c, decimals) + unit;
}

// The name of the document object that a value text names.
std::string displayObject(const std::string& value) {
    const unsigned id = text::toUnsigned(value);
    const sdf::SdfObject* const object = id == 0 ? nullptr : findObject(id);
    return object ? object->name() : "None";
}

}  // namespace

Property* Property::Create(SmartComponent* owner, std::shared_ptr<sdf::Element> element) {
    std::unique_ptr<Property> property(new Property(std::move(element)));
    owner->addProperty(property.get());
    return property.release();
}

Property::Property(std::shared_ptr<sdf::Element> element)
    : SdfObject(element, sdf::ObjectType::None),
      value_(element->getStringFromValue()),
      typeIndex_(static_cast<PropertyType>(typeIndexOf(element->asString("type")).value())),
      visible_(element->asBool("uivisible")),
      readOnly_(element->asBool("read_only")),
      description_(element->asString("description")),
      type_(element->asString("type")),
      unit_(element->asString("unit")) {}

Property::Property(const Property&) = default;
Property::Property(Property&&) = default;
// All of it or nothing.
Property& Property::operator=(const Property& other) { return *this = Property(other); }
Property& Property::operator=(Property&&) = default;
Property::~Property() = default;

unsigned Property::getObjectId() { return isObjectId() ? text::toUnsigned(value_) : 0; }

Property* Property::setDescription(const std::string& description) {
    std::string kept = description;
    write(element(), "description", description);
    description_ = std::move(kept);
    return this;
}

Property* Property::setReadOnly(bool readOnly) {
    if (readOnly == readOnly_) return this;
    write(element(), "read_only", readOnly);
    readOnly_ = readOnly;
    return this;
}

Property* Property::setType(const std::string& type) {
    const auto index = typeIndexOf(type);
    if (!index) return this;
    std::string kept = type;
    write(element(), "type", type);
    type_ = std::move(kept);
    typeIndex_ = static_cast<PropertyType>(*index);
    return this;
}

Property* Property::setUnit(const std::string& unit) {
    if (unit == unit_) return this;
    std::string kept = unit;
    write(element(), "unit", unit);
    unit_ = std::move(kept);
    return this;
}

Property* Property::setValue(const std::string& value) {
    return wasText_ ? setText(value) : setOther(value);
}

// Has the element take the text and keeps what it made of it; `putBack` undoes that
// where there is no memory to keep it.
template <typename PutBack>
Property* Property::take(const std::string& value, const PutBack& putBack) {
    element()->setValueFromString(value);
    try {
        readValue();
    } catch (...) {
        putBack();
        throw;
    }
    return this;
}

// A text is put back from its mirror, without a copy.
Property* Property::setText(const std::string& value) {
    return take(value, [this] { element()->setValueFromString(value_); });
}

// Apart from the deliveries of texts, which nest and have no stack to spare for a value.
[[gnu::noinline]] Property* Property::setOther(const std::string& value) {
    const std::any old = element()->value();
    if (old.type() == typeid(std::string)) {
        wasText_ = true;
        return setText(value);
    }
    return take(value, [&] { element()->setValue(old); });
}

void Property::readValue() {
    if (const auto* const text = std::any_cast<std::string>(&element()->value())) [[likely]]
        assign(value_, *text);
    else
        readOther();
}

[[gnu::noinline]] void Property::readOther() { value_ = element()->getStringFromValue(); }

Property* Property::setVisible(bool visible) {
    if (visible == visible_) return this;
    write(element(), "uivisible", visible);
    visible_ = visible;
    return this;
}

std::string Property::getDisplayValue() {
    switch (typeIndex_) {
        case PropertyType::ObjectId: return displayObject(value_);
        case PropertyType::Double: return getDoubleDisplayValue(value_);
        case PropertyType::Bool: return getBoolDisplayValue(value_);
        case PropertyType::Vector3: return getVector3DisplayValue(value_);
        case PropertyType::Orient: return getOrientDisplayValue(value_);
        default: return value_;
    }
}

std::optional<unsigned> Property::typeIndexOf(std::string_view name) {
    for (unsigned i = 0; i != typeNames.size(); ++i)
        if (typeNames[i] == name) return i;
    return std::nullopt;
}

std::string Property::getDoubleDisplayValue(const std::string& value) {
    // The blank stands also before an empty unit.
    return text::shown(text::toDouble(value), 2) + ' ' + unit_;
}

std::string Property::getBoolDisplayValue(const std::string& value) {
    return value == "0" ? "False" : "True";
}

std::string Property::getVector3DisplayValue(const std::string& value) {
    std::array<double, 3> v = {0, 0, 0};
    text::readNumbers(value, v);
    const bool whole = isInt(v[0], 0) && isInt(v[1], 0) && isInt(v[2], 0);
    // A negative zero keeps its sign here, other than in a rotation.
    return displayThree(v[0], v[1], v[2], whole, " mm");
}

std::string Property::getOrientDisplayValue(const std::string& value) {
    constexpr double tolerance = 0.001;  // degrees
    std::array<double, 4> q = {1, 0, 0, 0};
    text::readNumbers(value, q);
    const rob::RotationTemplate<double> rotation(q[0], q[1], q[2], q[3]);
    auto angles = rotation.toEulerDegree();
    // Decided before small angles become 0.
    const bool whole = isInt(angles.x, tolerance) && isInt(angles.y, tolerance) &&
                       isInt(angles.z, tolerance);
    for (double* angle : {&angles.x, &angles.y, &angles.z})
        if (std::abs(*angle) <= tolerance) *angle = 0;
    return displayThree(angles.x, angles.y, angles.z, whole, " deg");
}

bool Property::isInt(double x, double tolerance) {
    return std::abs(x - std::round(x)) <= tolerance;
}

}  // namespace trel::smartcomp
