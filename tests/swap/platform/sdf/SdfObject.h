#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/sdf/Element.h"
#include "platform/sdf/ObjectType.h"

namespace sdf {

class [[gnu::visibility("default")]] SdfObject {
public:
    SdfObject(std::shared_ptr<Element> element, ObjectType type);
    SdfObject(const SdfObject&) = default;
    SdfObject& operator=(const SdfObject&) = default;
    virtual ~SdfObject();

    virtual std::string getDisplayString() const { return name(); }
    virtual void setName(std::string name) { element_->setName(std::move(name)); }
    virtual bool anyOfDescendant(const std::function<bool(const SdfObject*)>& predicate,
                                 bool itself) const {
        return itself && predicate(this);
    }
    static bool AnyOfDescendant(unsigned id, const std::function<bool(const SdfObject*)>& predicate,
                                bool itself);

    unsigned id() const { return id_; }
    ObjectType objectType() const { return type_; }
    const std::string& name() const { return element_->name(); }
    const std::shared_ptr<Element>& element() const { return element_; }
    bool asType(ObjectType type) const { return type_ == type; }
    unsigned getObjParentId() const { return objParentId_; }
    void setObjParentAsDefault() { objParentId_ = 0; }

protected:
    unsigned objParentId_ = 0;

private:
    unsigned id_;
    ObjectType type_;
    std::shared_ptr<Element> element_;
};

}  // namespace sdf
