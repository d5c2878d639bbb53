#pragma once

#include <chrono>
#include <mutex>

#include "platform/sdf/SdfManager.h"

namespace trel::test {

/// Whether the object table stays locked, asked wherever the library calls a
/// component, a controller or a listener: it must hold no lock there, since what
/// it calls may look objects up, make and remove them. Another thread may be
/// looking something up, for a moment.
///
/// The thread that asks may be the one that holds the lock: a lock of POSIX then
/// refuses to be taken, as it does for others.
inline bool isTableLocked() {
    using Clock = std::chrono::steady_clock;
    std::unique_lock lock(sdf::SdfManager::inst()->mutex(), std::try_to_lock);
    if (lock) return false;
    for (const auto end = Clock::now() + std::chrono::seconds(1); Clock::now() < end;)
        if (lock.try_lock()) return false;
    return true;
}

}  // namespace trel::test
