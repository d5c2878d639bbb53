#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <type_traits>
#include <utility>
#include <vector>

#include "platform/Export.h"

namespace sdf {

/// What the ids of every table of this process are multiplied by.
TREL_PLATFORM_API std::uint64_t idFactor();

/// Values by id, in no order: a hash table whose entries stand in one row, so that most
/// look-ups touch one place of memory. An entry stands at the home of its id or, where that
/// is taken, behind it with no vacant place in between (linear probing: Knuth, The Art of
/// Computer Programming 3, 6.4). At most half of the places are taken, and erasing leaves
/// their number as it is.
///
/// Where the ids of a file have their homes, nobody knows who writes the file: every
/// process multiplies them by a factor of its own.
///
/// A value is a plain pointer, which may be null, or a smart one, which may not; plain ones
/// can be gone through.
template <typename Value>
class IdTable {
public:
    /// An id and its value.
    struct Entry {
        unsigned first = 0;
        Value second = nullptr;
    };

    /// Good until the table changes.
    class const_iterator {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = Entry;
        using difference_type = std::ptrdiff_t;
        using pointer = const Entry*;
        using reference = const Entry&;

        const_iterator() = default;

        reference operator*() const { return *place_; }
        pointer operator->() const { return place_; }
        const_iterator& operator++() {
            do ++place_;
            while (isVacant(*place_));
            return *this;
        }
        const_iterator operator++(int) { return std::exchange(*this, std::next(*this)); }
        bool operator==(const const_iterator&) const = default;

    private:
        friend class IdTable;
        explicit const_iterator(const Entry* place) : place_(place) {}

        const Entry* place_ = nullptr;
    };

    IdTable() : factor_(idFactor()) { resize(fewestBits); }

    std::size_t size() const { return size_; }
    const_iterator begin() const
        requires std::is_pointer_v<Value>
    {
        const const_iterator first(places_.data());
        return isVacant(*first) ? std::next(first) : first;
    }
    const_iterator end() const { return const_iterator(&places_.back()); }

    // Always inline: the call would cost as much as the look-up.
    [[gnu::always_inline]] const_iterator find(unsigned id) const {
        const Entry& place = places_[placeOf(id)];
        if (isVacant(place)) return end();
        if (&place == &places_.back()) __builtin_unreachable();  // asking for the end is free
        return const_iterator(&place);
    }
    bool contains(unsigned id) const { return !isVacant(places_[placeOf(id)]); }

    /// Enters a value; where the id is taken, the entry stays and the second is false.
    std::pair<const_iterator, bool> emplace(unsigned id, Value value) {
        if (2 * (size_ + 1) > mask_) resize(wordBits - shift_ + 1);
        Entry& place = places_[placeOf(id)];
        const bool isNew = isVacant(place);
        if (isNew) {
            place = {id, std::move(value)};
            ++size_;
        }
        return {const_iterator(&place), isNew};
    }

    /// How many entries went, one or none (Knuth, 6.4, algorithm R: what stands behind the hole
    /// moves into it, unless its home does, too).
    std::size_t erase(unsigned id) noexcept {
        std::size_t hole = placeOf(id);
        if (isVacant(places_[hole])) return 0;
        for (std::size_t place = behind(hole); !isVacant(places_[place]); place = behind(place)) {
            const std::size_t fromHome = (place - home(places_[place].first)) & mask_;
            const std::size_t fromHole = (place - hole) & mask_;
            if (fromHome < fromHole) continue;
            places_[hole] = std::move(places_[place]);
            hole = place;
        }
        places_[hole] = {0, vacant()};
        --size_;
        return 1;
    }

    void clear() { *this = IdTable(); }

protected:
    // There is an entry.
    Value& entered(unsigned id) { return places_[placeOf(id)].second; }

private:
    static constexpr unsigned wordBits = 64;
    static constexpr unsigned fewestBits = 4;  // of a table that has nothing yet

    // A plain pointer to where no object can be, or a smart one to none.
    static Value vacant() {
        if constexpr (std::is_pointer_v<Value>)
            return reinterpret_cast<Value>(1);
        else
            return {};
    }
    static bool isVacant(const Entry& place) { return place.second == vacant(); }

    std::size_t home(unsigned id) const {
        return static_cast<std::size_t>((id * factor_) >> shift_);
    }
    std::size_t behind(std::size_t place) const { return (place + 1) & mask_; }

    // Where the id stands, or the vacant place where it would.
    std::size_t placeOf(unsigned id) const {
        std::size_t place = home(id);
        while (places_[place].first != id && !isVacant(places_[place])) place = behind(place);
        return place;
    }

    // All of it or nothing.
    void resize(unsigned bits) {
        const std::size_t count = std::size_t{1} << bits;
        std::vector<Entry> places(count + 1);
        for (Entry& place : places) place.second = vacant();
        places.back().second = nullptr;
        places_.swap(places);
        mask_ = count - 1;
        shift_ = wordBits - bits;
        places.pop_back();
        for (Entry& entry : places)
            if (!isVacant(entry)) places_[placeOf(entry.first)] = std::move(entry);
    }

    std::uint64_t factor_;
    unsigned shift_ = 0;
    std::size_t mask_ = 0;  // one less than there are places, a power of two
    std::size_t size_ = 0;
    std::vector<Entry> places_{1};  // and one behind them, not vacant: the end
};

}  // namespace sdf
