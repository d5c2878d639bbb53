#pragma once

#include <map>

#include "platform/sdf/SdfObject.h"

namespace sdf {

class [[gnu::visibility("default")]] SdfContainer : public SdfObject {
public:
    using SdfObject::SdfObject;

    void addObjChild(std::shared_ptr<Element> child);
    void addObjChildWithSdf(unsigned id);
    void removeObjChildWithSdf(unsigned id);
    virtual void moveChild(unsigned id, unsigned place);
    bool hasObjChild(unsigned id) const { return children_.contains(id); }

private:
    bool anyOfDescendant(const std::function<bool(const SdfObject*)>& predicate,
                         bool itself) const override;

    std::map<unsigned, std::shared_ptr<Element>> children_;
};

}  // namespace sdf
