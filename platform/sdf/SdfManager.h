#pragma once

#include <shared_mutex>

#include "platform/Export.h"
#include "platform/sdf/ObjectTable.h"

namespace sdf {

class SdfObject;

/// The object table: all document objects by id. It owns none of them. The table is read
/// under its lock taken shared and changed under it taken exclusively; the lock is never
/// held across a call into an object.
class TREL_PLATFORM_API SdfManager {
public:
    /// The one manager, which outlives every static object.
    static SdfManager* inst();

    /// Drops the entry of `id`, if there is one; the object lives on.
    static void Remove(unsigned id);

    /// The object `id`, or null; takes the lock shared.
    SdfObject* find(unsigned id);

    ObjectTable& objects() { return objects_; }
    std::shared_mutex& mutex() { return mutex_; }

private:
    SdfManager() = default;

    ObjectTable objects_;
    std::shared_mutex mutex_;
};

}  // namespace sdf
