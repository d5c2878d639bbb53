#pragma once

#include <cstddef>
#include <cstdint>
#include <shared_mutex>
#include <unordered_map>

namespace sdf {

class SdfObject;

/// Spreads neighbouring ids, and ids chosen to differ by the size of a table,
/// over the whole of it.
struct IdHash {
    std::size_t operator()(unsigned id) const {
        std::uint64_t x = id * 0x9E3779B97F4A7C15ull;
        x ^= x >> 32;
        x *= 0xD6E8FEB86659FD93ull;
        return static_cast<std::size_t>(x ^ (x >> 32));
    }
};

/// The document manager: the table of all document objects by id. It owns none
/// of them. The table is read under its lock taken shared and changed under it
/// taken exclusively; the lock is never held across a call into an object.
class SdfManager {
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
