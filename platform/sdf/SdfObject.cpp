#include "platform/sdf/SdfObject.h"

#include <utility>

#include "platform/sdf/SdfManager.h"

namespace sdf {

SdfObject::SdfObject(std::shared_ptr<Element> element, ObjectType type)
    : element_(std::move(element)), type_(type), id_(element_.get()->getId(true)) {}

SdfObject::SdfObject(const SdfObject&) = default;
SdfObject& SdfObject::operator=(const SdfObject&) = default;
SdfObject::~SdfObject() = default;

std::string SdfObject::getDisplayString() const { return name(); }

void SdfObject::setName(std::string name) { element()->setName(std::move(name)); }

bool SdfObject::anyOfDescendant(const std::function<bool(const SdfObject*)>& predicate,
                                bool itself) const {
    return itself && predicate(this);
}

bool SdfObject::AnyOfDescendant(unsigned id, const std::function<bool(const SdfObject*)>& predicate,
                                bool itself) {
    const SdfObject* const object = SdfManager::inst()->find(id);
    return object && object->anyOfDescendant(predicate, itself);
}

}  // namespace sdf
