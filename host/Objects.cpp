#include "host/Objects.h"

#include <algorithm>
#include <mutex>
#include <shared_mutex>
#include <stdexcept>

namespace trel::host {

using smartcomp::SmartComponent;

sdf::SdfObject* objectOf(unsigned id) { return sdf::SdfManager::inst()->find(id); }

SmartComponent* componentOf(unsigned id) { return dynamic_cast<SmartComponent*>(objectOf(id)); }

std::vector<SmartComponent*> componentsNow() {
    std::vector<SmartComponent*> result;
    auto& manager = *sdf::SdfManager::inst();
    {
        const std::shared_lock lock(manager.mutex());
        for (const auto& [id, object] : manager.objects())
            if (auto* const component = dynamic_cast<SmartComponent*>(object))
                result.push_back(component);
    }
    std::ranges::sort(result, {}, [](const SmartComponent* component) { return component->id(); });
    return result;
}

SmartComponent* anyComponentButLogic() {
    auto& manager = *sdf::SdfManager::inst();
    const std::shared_lock lock(manager.mutex());
    for (const auto& [id, object] : manager.objects())
        if (auto* const component = dynamic_cast<SmartComponent*>(object))
            if (!component->isStationLogic()) return component;
    return nullptr;
}

void enterObject(sdf::SdfObject& object) {
    auto& manager = *sdf::SdfManager::inst();
    const std::unique_lock lock(manager.mutex());
    if (!manager.objects().emplace(object.id(), &object).second)
        throw std::logic_error("object exists");
}

}  // namespace trel::host
