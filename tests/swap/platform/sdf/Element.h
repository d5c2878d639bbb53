#pragma once

#include <any>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/rob/PoseTemplate.h"
#include "platform/rob/Vec3Template.h"
#include "platform/sdf/Attr.h"

namespace sdf {

class Element;

class [[gnu::visibility("default")]] ValueObserver {
public:
    virtual ~ValueObserver() = default;
    virtual void valueWritten(Element& element, const std::any& value) = 0;
};

/// A node that keeps its value as text beside the name of its type.
class [[gnu::visibility("default")]] Element : public std::enable_shared_from_this<Element> {
    struct Key {};

public:
    static std::shared_ptr<Element> Create(std::string_view tag);
    Element(Key, std::string_view tag) : tag_(tag) {}

    const std::string& tag() const { return tag_; }
    const std::string& name() const { return name_; }
    void setName(std::string name) { name_ = std::move(name); }
    std::shared_ptr<Element> parent() const;

    unsigned getId(bool orZero) const;
    std::shared_ptr<Element> setId(unsigned id);

    std::shared_ptr<Element> touch(std::string_view name);
    std::shared_ptr<Element> get(std::string_view name);
    std::vector<std::shared_ptr<Element>> children(std::string_view name) const;
    std::shared_ptr<Element> append(std::string_view tag);
    std::shared_ptr<Element> append(std::shared_ptr<Element> child);
    std::shared_ptr<Element> appendObject(std::string_view tag, unsigned id, std::string_view name);
    void moveTo(std::size_t place, const Element& child);
    void removeFromParent();

    int asInt(std::string_view name) const;
    unsigned asUInt(std::string_view name) const;
    unsigned long long asUInt64(std::string_view name) const;
    double asDouble(std::string_view name) const;
    bool asBool(std::string_view name) const;
    std::string asString(std::string_view name) const;
    trel::rob::Vec3Template<double> asVec3(std::string_view name) const;
    trel::rob::PoseTemplate<double> asPose(std::string_view name) const;

    const std::any& value() const;
    void setValue(const std::any& value);
    void setValueFromString(std::string_view text);
    std::string getStringFromValue() const;
    void addAttribute(std::string_view name, std::string_view type, std::string_view value);

    static void Subscribe(ValueObserver& observer);
    static void Unsubscribe(ValueObserver& observer);

private:
    Element* child(std::string_view name) const;
    const Element& holder() const;
    const Element* keyed(std::string_view name) const;
    double number(std::string_view name) const;
    void put(std::string type, std::string text);

    std::vector<std::shared_ptr<Element>> children_;
    std::string tag_;
    std::string name_;
    std::string type_;  // of the value; empty without one
    std::string text_;
    mutable std::any read_;  // what value() gave last
    std::weak_ptr<Element> parent_;
    unsigned id_ = 0;
};

}  // namespace sdf
