#pragma once

#include <memory>

#include "platform/Export.h"
#include "platform/rob/PoseTemplate.h"
#include "platform/sdf/SdfObject.h"

namespace sdf {

/// A document object that stands somewhere. Its pose is kept in the key "pose";
/// without one it stands at the origin, unturned.
class TREL_PLATFORM_API SdfNode : public SdfObject {
public:
    using SdfObject::SdfObject;

    virtual trel::rob::PoseTemplate<double> getPose() const;

    /// Setting the pose that the document holds writes nothing.
    virtual void setPose(const trel::rob::PoseTemplate<double>& pose);

    /// Makes `id` the object that contains this one and the one that it is shown
    /// under.
    void setVisAndObjParent(unsigned id);

    unsigned getVisParentId() const { return visParentId_; }

private:
    unsigned visParentId_ = 0;
};

}  // namespace sdf
