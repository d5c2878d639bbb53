#pragma once

#include <cstddef>
#include <cstdint>
#include <shared_mutex>
#include <unordered_map>

namespace sdf {

class SdfObject;

/// Spreads ids over the whole of a table, whichever they are: who chooses the ids
/// of a file does not know the salt, which every process has for itself.
struct IdHash {
    std::uint64_t salt = processSalt();

    std::size_t operator()(unsigned id) const {
        std::uint64_t x = (id + salt) * 0x9E3779B97F4A7C15ull;
        x ^= x >> 32;
        x *= 0xD6E8FEB86659FD93ull;
        return static_cast<std::size_t>(x ^ (x >> 32));
    }

    static std::uint64_t processSalt();
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
