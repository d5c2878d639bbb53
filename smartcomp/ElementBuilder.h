#pragma once

#include <memory>

#include "platform/sdf/Element.h"
#include "smartcomp/Export.h"

namespace trel::smartcomp {

class SmartComponent;

/// Gives the element that persists a component.
class TREL_API ElementBuilder {
public:
    /// The element that the component was made from; nothing new is built.
    static std::shared_ptr<sdf::Element> Build(SmartComponent* component);
};

}  // namespace trel::smartcomp
