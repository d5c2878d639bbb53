#include "platform/sdf/SdfManager.h"

#include <mutex>
#include <random>

namespace sdf {

std::uint64_t IdHash::processFactor() {
    static const std::uint64_t factor = [] {
        std::random_device random;
        return static_cast<std::uint64_t>(random()) << 32 | random() | 1;
    }();
    return factor;
}

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
