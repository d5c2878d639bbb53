#include "platform/sdf/ObjectTable.h"

#include <random>
#include <stdexcept>
#include <string>

namespace sdf {

namespace {

constexpr unsigned wordBits = 64;
constexpr unsigned fewestBits = 4;  // of a table that has nothing yet

// Ids mostly follow each other, and multiplied they step round the row. How evenly the
// steps divide it depends on the factor as a fraction of 2^64: no two homes lie close where
// the terms of its continued fraction are small, and otherwise the terms are free (three-gap
// theorem: V. T. Sós, 1958).
std::uint64_t drawFactor() {
    constexpr unsigned half = wordBits / 2;
    std::random_device random;
    std::uint64_t numerator = 0;
    std::uint64_t denominator = 1;
    while (denominator >> (half - 2) == 0) {
        const std::uint64_t term = 1 + random() % 3;
        numerator = std::exchange(denominator, term * denominator + numerator);
    }
    const std::uint64_t rest = (numerator << half) % denominator;
    return ((numerator << half) / denominator) << half | (rest << half) / denominator | 1;
}

std::uint64_t processFactor() {
    static const std::uint64_t factor = drawFactor();
    return factor;
}

}  // namespace

ObjectTable::ObjectTable() : factor_(processFactor()) { resize(fewestBits); }

SdfObject* ObjectTable::at(unsigned id) const {
    const const_iterator entry = find(id);
    if (entry == end()) throw std::out_of_range("no object has the id " + std::to_string(id));
    return entry->second;
}

SdfObject*& ObjectTable::operator[](unsigned id) {
    emplace(id, nullptr);
    return places_[placeOf(id)].second;
}

std::pair<ObjectTable::const_iterator, bool> ObjectTable::emplace(unsigned id, SdfObject* object) {
    if (2 * (size_ + 1) > mask_) resize(wordBits - shift_ + 1);
    Entry& place = places_[placeOf(id)];
    const bool isNew = isVacant(place);
    if (isNew) {
        place = {id, object};
        ++size_;
    }
    return {const_iterator(&place), isNew};
}

// Knuth, 6.4, algorithm R: what stands behind the hole moves into it, unless its home does, too.
std::size_t ObjectTable::erase(unsigned id) noexcept {
    std::size_t hole = placeOf(id);
    if (isVacant(places_[hole])) return 0;
    for (std::size_t place = behind(hole); !isVacant(places_[place]); place = behind(place)) {
        const std::size_t fromHome = (place - home(places_[place].first)) & mask_;
        const std::size_t fromHole = (place - hole) & mask_;
        if (fromHome < fromHole) continue;
        places_[hole] = places_[place];
        hole = place;
    }
    places_[hole] = {0, vacant()};
    --size_;
    return 1;
}

void ObjectTable::clear() { *this = ObjectTable(); }

// All of it or nothing.
void ObjectTable::resize(unsigned bits) {
    const std::size_t count = std::size_t{1} << bits;
    std::vector<Entry> before(count + 1, {0, vacant()});
    before.back() = {0, nullptr};
    places_.swap(before);
    mask_ = count - 1;
    shift_ = wordBits - bits;
    before.pop_back();
    for (const Entry& entry : before)
        if (!isVacant(entry)) places_[placeOf(entry.first)] = entry;
}

}  // namespace sdf
