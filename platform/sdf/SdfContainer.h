#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "platform/Export.h"
#include "platform/sdf/IdTable.h"
#include "platform/sdf/SdfNode.h"

namespace sdf {

/// A document object that contains others, each kept by id in a key "child"; their order is
/// that of the document. Adding, finding and removing a child cost the same however many there
/// are.
class TREL_PLATFORM_API SdfContainer : public SdfNode {
public:
    using SdfNode::SdfNode;
    SdfContainer(const SdfContainer& other);
    SdfContainer& operator=(const SdfContainer& other);

    /// Takes in the child that a "child" element names. A second element for the
    /// same child is passed over.
    void addObjChild(std::shared_ptr<Element> child);

    /// Adds a child with a new "child" element; nothing if it is one already.
    void addObjChildWithSdf(unsigned id);

    /// Removes a child and its "child" element; nothing if it is none.
    void removeObjChildWithSdf(unsigned id);

    /// Moves child `id` to `place`, counted from 0, among the children and in
    /// the document; beyond the end it becomes the last. Nothing if it is none.
    virtual void moveChild(unsigned id, unsigned place);

    bool hasObjChild(unsigned id) const { return children_ && children_->contains(id); }

private:
    /// Each object is asked once, also where children form a ring.
    bool anyOfDescendant(const std::function<bool(const SdfObject*)>& predicate,
                         bool itself) const override;

    using Children = IdTable<std::shared_ptr<Element>>;

    struct Child {
        unsigned id;
        Element* element;
    };
    std::vector<Child> inOrder() const;
    Children& children();

    std::unique_ptr<Children> children_;  // once there is a child: most have none
};

}  // namespace sdf
