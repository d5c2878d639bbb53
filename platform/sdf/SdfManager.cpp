#include "platform/sdf/SdfManager.h"

#include <mutex>

namespace sdf {

SdfManager* SdfManager::inst() {
    static auto* const manager = new SdfManager;
    return manager;
}

void SdfManager::Remove(unsigned id) {
    const std::unique_lock lock(inst()->mutex_);
    inst()->objects_.erase(id);
}

SdfObject* SdfManager::find(unsigned id) {
    const std::shared_lock lock(mutex_);
    const auto entry = objects_.find(id);
    return entry == objects_.end() ? nullptr : entry->second;
}

}  // namespace sdf
