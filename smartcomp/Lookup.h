#pragma once

#include <any>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <stdexcept>
#include <typeinfo>
#include <utility>

#include "platform/sdf/Element.h"
#include "platform/sdf/SdfManager.h"
#include "platform/sdf/SdfObject.h"

/// Look-ups that fail the same way on every standard library, for the sources of
/// the library only.
namespace trel::smartcomp {

[[noreturn]] inline void throwUnknownKey() {
    throw std::out_of_range("invalid unordered_map<K, T> key");
}

/// The value under `key`.
/// \throws std::out_of_range "invalid unordered_map<K, T> key".
template <typename Table, typename Key>
const auto& at(const Table& table, const Key& key) {
    const auto entry = table.find(key);
    if (entry == table.end()) throwUnknownKey();
    return entry->second;
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

/// An object as the `T` that it has to be.
/// \throws std::bad_cast if it is null or something else.
template <typename T>
T& as(sdf::SdfObject* object) {
    if (auto* const wanted = dynamic_cast<T*>(object)) return *wanted;
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
