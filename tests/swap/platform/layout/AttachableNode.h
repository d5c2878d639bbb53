#pragma once

#include <memory>

#include "platform/sdf/SdfNode.h"

namespace trel::layout {

/// Stands before the document object, which so begins in the middle of the whole.
class [[gnu::visibility("default")]] Mount {
public:
    virtual ~Mount() = default;
    unsigned attachedTo = 0;
};

class [[gnu::visibility("default")]] AttachableNode : public Mount, public sdf::SdfNode {
public:
    AttachableNode(const AttachableNode&);
    AttachableNode& operator=(const AttachableNode&);
    ~AttachableNode() override;

    void setPose(const rob::PoseTemplate<double>& pose) override;
    virtual bool canAttachTo(sdf::SdfNode* node) const;

protected:
    AttachableNode(std::shared_ptr<sdf::Element> element, sdf::ObjectType type);
};

}  // namespace trel::layout
