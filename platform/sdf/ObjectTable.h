#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <utility>
#include <vector>

#include "platform/Export.h"

namespace sdf {

class SdfObject;

/// Objects by id, in no order: a hash table whose entries stand in one row, so that most
/// look-ups touch one place of memory. An entry stands at the home of its id or, where that
/// is taken, behind it with no vacant place in between (linear probing: Knuth, The Art of
/// Computer Programming 3, 6.4). At most half of the places are taken, and their number
/// never shrinks.
///
/// Where the ids of a file have their homes, nobody knows who writes the file: every
/// process multiplies them by a factor of its own.
class TREL_PLATFORM_API ObjectTable {
public:
    /// An id and its object, which may be null.
    struct Entry {
        unsigned first;
        SdfObject* second;
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
        friend class ObjectTable;
        explicit const_iterator(const Entry* place) : place_(place) {}

        const Entry* place_ = nullptr;
    };

    ObjectTable();

    std::size_t size() const { return size_; }
    const_iterator begin() const {
        const const_iterator first(places_.data());
        return isVacant(*first) ? std::next(first) : first;
    }
    const_iterator end() const { return const_iterator(&places_.back()); }

    const_iterator find(unsigned id) const {
        const Entry& place = places_[placeOf(id)];
        return isVacant(place) ? end() : const_iterator(&place);
    }
    bool contains(unsigned id) const { return !isVacant(places_[placeOf(id)]); }

    /// \throws std::out_of_range where there is none.
    SdfObject* at(unsigned id) const;

    /// The object under `id`, entered as null where there is none. Good until the table
    /// changes.
    SdfObject*& operator[](unsigned id);

    /// Enters an object; where the id is taken, the entry stays and the second is false.
    std::pair<const_iterator, bool> emplace(unsigned id, SdfObject* object);

    /// How many entries went, one or none.
    std::size_t erase(unsigned id) noexcept;

    void clear();

private:
    static SdfObject* vacant() { return reinterpret_cast<SdfObject*>(1); }  // where none can be
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
    void resize(unsigned bits);

    std::uint64_t factor_;
    unsigned shift_ = 0;
    std::size_t mask_ = 0;  // one less than there are places, a power of two
    std::size_t size_ = 0;
    std::vector<Entry> places_{Entry{0, nullptr}};  // and one behind them, not vacant: the end
};

}  // namespace sdf
