#pragma once

#include <memory>

#include "platform/Export.h"
#include "platform/sdf/SdfContainer.h"

namespace trel::layout {

/// A node that can be attached to another one, as a tool is to a flange.
class TREL_PLATFORM_API AttachableNode : public sdf::SdfContainer {
public:
    AttachableNode(const AttachableNode&);
    AttachableNode& operator=(const AttachableNode&);
    ~AttachableNode() override;

    /// Where the node stands; what is attached to nothing stands where it was
    /// put.
    void setPose(const rob::PoseTemplate<double>& pose) override;

    /// Whether it may be attached to `node`: to any other one.
    virtual bool canAttachTo(sdf::SdfNode* node) const;

protected:
    AttachableNode(std::shared_ptr<sdf::Element> element, sdf::ObjectType type);
};

}  // namespace trel::layout
