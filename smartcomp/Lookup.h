#pragma once

#include <any>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <stdexcept>
#include <typeinfo>
#include <utility>

#include "platform/sdf/Element.h"
#include "platform/sdf/SdfManager.h"
#include "platform/sdf/SdfObject.h"
#include "smartcomp/Inlined.h"

/// Look-ups that fail the same way on every standard library, for the sources of
/// the library only.
namespace trel::smartcomp {

[[noreturn]] inline void throwUnknownKey() {
    throw std::out_of_range("invalid unordered_map<K, T> key");
}

/// The value under `key`.
/// \throws std::out_of_range "invalid unordered_map<K, T> key".
template <typename Table, typename Key>
TREL_INLINED inline const auto& at(const Table& table, const Key& key) {
    const auto entry = table.find(key);
    if (entry == table.end()) throwUnknownKey();
    return entry->second;
}

/// The same in a table that mostly has a few entries, which are compared sooner
/// than their keys are hashed.
template <typename Table, typename Key>
TREL_INLINED inline const auto& atFew(const Table& table, const Key& key) {
    constexpr std::size_t few = 4;
    if (table.size() > few) return at(table, key);
    for (const auto& [held, value] : table)
        if (held == key) return value;
    throwUnknownKey();
}

/// What the object table holds under `id`; null also when there is no entry. The
/// table's lock is held for the look-up only.
inline sdf::SdfObject* findObject(unsigned id) {
    auto& manager = *sdf::SdfManager::inst();
    const std::shared_lock lock(manager.mutex());
    const auto entry = manager.objects().find(id);
    return entry == manager.objects().end() ? nullptr : entry->second;
}

/// The same, where there has to be an entry.
/// \throws as `at`.
inline sdf::SdfObject* objectAt(unsigned id) {
    auto& manager = *sdf::SdfManager::inst();
    const std::shared_lock lock(manager.mutex());
    return at(manager.objects(), id);
}

/// The element of the object under `id`, which may be removed by another thread
/// as soon as the lock is free.
inline std::shared_ptr<sdf::Element> elementAt(unsigned id) {
    auto& manager = *sdf::SdfManager::inst();
    const std::shared_lock lock(manager.mutex());
    sdf::SdfObject* const object = at(manager.objects(), id);
    if (!object) throw std::bad_cast();
    return object->element();
}

/// Look-ups in the object table that follow each other without a call into any
/// object: its lock is held from the first to the last of them.
class TableReading {
public:
    TableReading() = default;
    TREL_INLINED ~TableReading() { end(); }
    TableReading(const TableReading&) = delete;
    TableReading& operator=(const TableReading&) = delete;

    /// \throws as `at`.
    TREL_INLINED sdf::SdfObject* next(unsigned id) {
        if (!manager_) manager_ = begin();
        return at(manager_->objects(), id);
    }

    /// The same, and lets the lock go.
    TREL_INLINED sdf::SdfObject* last(unsigned id) {
        sdf::SdfObject* const object = next(id);
        end();
        return object;
    }

    TREL_INLINED void end() {
        if (manager_) std::exchange(manager_, nullptr)->mutex().unlock_shared();
    }

private:
    TREL_INLINED static sdf::SdfManager* begin() {
        static sdf::SdfManager* const manager = sdf::SdfManager::inst();
        manager->mutex().lock_shared();
        return manager;
    }

    sdf::SdfManager* manager_ = nullptr;  // while its lock is held
};

/// An object as a `T`, or null if it is none: `dynamic_cast`, which alone would cost
/// more than the rest of a delivery. Objects that share a virtual table hold their T
/// at the same place, so what was found for one is kept for all.
template <typename T>
class Casts {
public:
    TREL_INLINED static T* of(sdf::SdfObject* object) {
        const void* table;
        std::memcpy(&table, static_cast<const void*>(object), sizeof table);
        Known& known = all_[reinterpret_cast<std::uintptr_t>(table) / 16 % all_.size()];
        if (known.table != table) [[unlikely]]
            return anew(object, table, known);
        return reinterpret_cast<T*>(reinterpret_cast<char*>(object) + known.offset);
    }

private:
    struct Known {
        const void* table = nullptr;
        std::ptrdiff_t offset = 0;  // of the T in the object
    };

    [[gnu::noinline]] static T* anew(sdf::SdfObject* object, const void* table, Known& known) {
        T* const cast = dynamic_cast<T*>(object);
        if (cast) known = {table, reinterpret_cast<char*>(cast) - reinterpret_cast<char*>(object)};
        return cast;
    }

    static inline constinit std::array<Known, 64> all_{};
};

template <typename T>
TREL_INLINED inline T* castTo(sdf::SdfObject* object) {
    return object ? Casts<T>::of(object) : nullptr;
}

/// An object as the `T` that it has to be.
/// \throws std::bad_cast if it is null or something else.
template <typename T>
TREL_INLINED inline T& as(sdf::SdfObject* object) {
    if (auto* const wanted = castTo<T>(object)) return *wanted;
    throw std::bad_cast();
}

/// The object under `id` as the `T` that it has to be.
template <typename T>
T& objectAs(unsigned id) {
    return as<T>(objectAt(id));
}

/// Enters an object under its own id, the table's lock held exclusively. Gives
/// false if the id is taken.
inline bool tryEnterObject(sdf::SdfObject* object) {
    auto& manager = *sdf::SdfManager::inst();
    const std::unique_lock lock(manager.mutex());
    return manager.objects().emplace(object->id(), object).second;
}

[[noreturn]] inline void throwTaken() { throw std::logic_error("object exists"); }

/// Writes a typed value into the key `name` of an element.
template <typename T>
void write(const std::shared_ptr<sdf::Element>& element, std::string_view name, const T& value) {
    element->touch(name)->setValue(std::any(value));
}

}  // namespace trel::smartcomp
