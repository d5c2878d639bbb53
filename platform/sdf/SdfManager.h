#pragma once

#include <cstddef>
#include <cstdint>
#include <shared_mutex>
#include <unordered_map>

#include "platform/Export.h"

namespace sdf {

class SdfObject;

/// Spreads ids over the whole of a table, whichever they are: who chooses the ids
/// of a file does not know the factor, which every process has for itself.
/// Multiply and shift: Dietzfelbinger et al., "A Reliable Randomized Algorithm for the
/// Closest-Pair Problem", 1997.
struct TREL_PLATFORM_API IdHash {
    std::uint64_t factor = processFactor();

    std::size_t operator()(unsigned id) const {
        return static_cast<std::size_t>((id * factor) >> 32);
    }

    /// Odd, and else random.
    static std::uint64_t processFactor();
};

/// The object table: all document objects by id. It owns none
/// of them. The table is read under its lock taken shared and changed under it
/// taken exclusively; the lock is never held across a call into an object.
class TREL_PLATFORM_API SdfManager {
public:
    using Table = std::unordered_map<unsigned, SdfObject*, IdHash>;

    /// The one manager, which outlives every static object.
    static SdfManager* inst();

    /// Drops the entry of `id`, if there is one; the object lives on.
    static void Remove(unsigned id);

    /// The object `id`, or null; takes the lock shared.
    SdfObject* find(unsigned id);

    Table& objects() { return objects_; }
    std::shared_mutex& mutex() { return mutex_; }

private:
    SdfManager() = default;

    Table objects_;
    std::shared_mutex mutex_;
};

}  // namespace sdf
