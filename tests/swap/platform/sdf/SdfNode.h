#pragma once

#include "platform/rob/PoseTemplate.h"
#include "platform/sdf/SdfContainer.h"

namespace sdf {

/// Here every node may contain others.
class [[gnu::visibility("default")]] SdfNode : public SdfContainer {
public:
    using SdfContainer::SdfContainer;

    virtual trel::rob::PoseTemplate<double> getPose() const;
    virtual void setPose(const trel::rob::PoseTemplate<double>& pose);
    void setVisAndObjParent(unsigned id);
    unsigned getVisParentId() const { return visParentId_; }

private:
    unsigned visParentId_ = 0;
};

}  // namespace sdf
