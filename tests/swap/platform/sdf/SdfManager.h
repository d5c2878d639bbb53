#pragma once

#include <map>
#include <shared_mutex>

namespace sdf {

class SdfObject;

class [[gnu::visibility("default")]] SdfManager {
public:
    static SdfManager* inst();
    static void Remove(unsigned id);

    SdfObject* find(unsigned id) {
        const std::shared_lock lock(mutex_);
        const auto entry = objects_.find(id);
        return entry == objects_.end() ? nullptr : entry->second;
    }

    std::map<unsigned, SdfObject*>& objects() { return objects_; }
    std::shared_mutex& mutex() { return mutex_; }

private:
    std::map<unsigned, SdfObject*> objects_;
    std::shared_mutex mutex_;
};

}  // namespace sdf
