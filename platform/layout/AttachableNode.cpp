#include "platform/layout/AttachableNode.h"

#include <utility>

namespace trel::layout {

AttachableNode::AttachableNode(std::shared_ptr<sdf::Element> element, sdf::ObjectType type)
    : SdfContainer(std::move(element), type) {}

AttachableNode::AttachableNode(const AttachableNode&) = default;
AttachableNode& AttachableNode::operator=(const AttachableNode&) = default;
AttachableNode::~AttachableNode() = default;

void AttachableNode::setPose(const rob::PoseTemplate<double>& pose) { SdfContainer::setPose(pose); }

bool AttachableNode::canAttachTo(sdf::SdfNode* node) const {
    return node != nullptr && node != this;
}

}  // namespace trel::layout
