#include "bench/Work.h"

#include <string>
#include <utility>

namespace trel::bench {

std::shared_ptr<sdf::Element> signalElement(unsigned id, const char* name, const char* type,
                                            bool autoReset) {
    auto signal = sdf::Element::Create("signal")->setId(id);
    signal->touch("name")->setValue(std::string(name));
    signal->touch("type")->setValue(std::string(type));
    signal->touch("value")->setValue(0);
    signal->touch("auto_reset")->setValue(autoReset);
    signal->touch("uivisible")->setValue(true);
    signal->touch("description")->setValue(std::string());
    return signal;
}

std::shared_ptr<sdf::Element> textElement(unsigned id) {
    auto property = sdf::Element::Create("property")->setId(id);
    property->setName("Text");
    property->touch("type")->setValue(std::string("String"));
    property->touch("value")->setValue(std::string("the old text"));
    return property;
}

DocumentObject::DocumentObject(unsigned id, std::shared_ptr<sdf::Element> element)
    : SdfObject(std::move(element), sdf::ObjectType::None) {
    auto& manager = *sdf::SdfManager::inst();
    const std::unique_lock lock(manager.mutex());
    manager.objects().emplace(id, this);
}

DocumentObject::~DocumentObject() { sdf::SdfManager::Remove(id()); }

}  // namespace trel::bench
