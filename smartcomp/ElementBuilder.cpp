#include "smartcomp/ElementBuilder.h"

#include "smartcomp/SmartComponent.h"

namespace trel::smartcomp {

std::shared_ptr<sdf::Element> ElementBuilder::Build(SmartComponent* component) {
    return component->element();
}

}  // namespace trel::smartcomp
