#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/Export.h"
#include "platform/sdf/Element.h"
#include "platform/sdf/ObjectType.h"

namespace sdf {

/// A document object: the live side of one element. Which table holds it, and
/// who owns it, is its maker's affair.
class TREL_PLATFORM_API SdfObject {
public:
    /// \throws std::invalid_argument for a null element.
    SdfObject(std::shared_ptr<Element> element, ObjectType type);
    SdfObject(const SdfObject&);
    SdfObject& operator=(const SdfObject&);
    virtual ~SdfObject();

    virtual std::string getDisplayString() const;

    /// Writes the object name into the element.
    virtual void setName(std::string name);

    /// Whether `predicate` holds for a descendant, or for the object itself if
    /// that is asked too.
    virtual bool anyOfDescendant(const std::function<bool(const SdfObject*)>& predicate,
                                 bool itself) const;

    /// The same search from the object `id`; false when there is no such object.
    static bool AnyOfDescendant(unsigned id, const std::function<bool(const SdfObject*)>& predicate,
                                bool itself);

    /// 0 when the element had none at construction.
    unsigned id() const { return id_; }
    ObjectType objectType() const { return type_; }
    const std::string& name() const { return element_.get()->name(); }
    const std::shared_ptr<Element>& element() const { return element_.get(); }

    bool asType(ObjectType type) const { return type_ == type; }

    /// The object that contains this one; 0 for none.
    unsigned getObjParentId() const { return objParentId_; }
    void setObjParentAsDefault() { objParentId_ = 0; }

protected:
    void setObjParent(unsigned id) { objParentId_ = id; }

private:
    ElementMirror element_;
    ObjectType type_;
    unsigned id_;
    unsigned objParentId_ = 0;
};

}  // namespace sdf
