#include "platform/sdf/SdfNode.h"

namespace sdf {

trel::rob::PoseTemplate<double> SdfNode::getPose() const { return element()->asPose("pose"); }

void SdfNode::setPose(const trel::rob::PoseTemplate<double>& pose) {
    if (element()->asPose("pose") == pose) return;
    element()->touch("pose")->setValue(pose);
}

void SdfNode::setVisAndObjParent(unsigned id) {
    setObjParent(id);
    visParentId_ = id;
}

}  // namespace sdf
