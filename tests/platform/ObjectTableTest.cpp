#include "platform/sdf/ObjectTable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <iostream>
#include <iterator>
#include <limits>
#include <map>
#include <memory>
#include <random>
#include <stdexcept>
#include <vector>

#include "platform/sdf/Element.h"
#include "platform/sdf/SdfObject.h"

namespace {

using sdf::ObjectTable;
using sdf::SdfObject;

constexpr unsigned greatest = std::numeric_limits<unsigned>::max();

class ObjectTableTest : public testing::Test {
protected:
    ObjectTable table_;
    SdfObject lamp_{sdf::Element::Create("part"), sdf::ObjectType::None};
    SdfObject door_{sdf::Element::Create("part"), sdf::ObjectType::None};
};

TEST_F(ObjectTableTest, IsEmptyAtFirst) {
    EXPECT_EQ(table_.size(), 0u);
    EXPECT_EQ(table_.begin(), table_.end());
    for (const unsigned id : {0u, 1u, greatest}) {
        EXPECT_EQ(table_.find(id), table_.end());
        EXPECT_FALSE(table_.contains(id));
        EXPECT_EQ(table_.erase(id), 0u);
    }
}

TEST_F(ObjectTableTest, FindsWhatWasEnteredUnderAnyId) {
    for (const unsigned id : {0u, 1u, greatest}) table_[id] = &lamp_;
    table_[1] = &door_;
    EXPECT_EQ(table_.size(), 3u);
    EXPECT_EQ(table_.find(0)->second, &lamp_);
    EXPECT_EQ(table_.find(1)->second, &door_);
    EXPECT_EQ(table_.at(greatest), &lamp_);
    EXPECT_FALSE(table_.contains(2));
    EXPECT_EQ(table_.erase(0), 1u);
    EXPECT_FALSE(table_.contains(0));
    EXPECT_TRUE(table_.contains(greatest));
}

TEST_F(ObjectTableTest, EnteringUnderATakenIdChangesNothing) {
    EXPECT_TRUE(table_.emplace(7, &lamp_).second);
    const auto [entry, isNew] = table_.emplace(7, &door_);
    EXPECT_FALSE(isNew);
    EXPECT_EQ(entry->first, 7u);
    EXPECT_EQ(entry->second, &lamp_);
    EXPECT_EQ(table_.size(), 1u);
}

TEST_F(ObjectTableTest, HoldsNullAsAnObjectLikeAnyOther) {
    table_[0];
    table_.emplace(5, nullptr);
    EXPECT_EQ(table_.size(), 2u);
    EXPECT_TRUE(table_.contains(0));
    EXPECT_EQ(table_.at(5), nullptr);
    EXPECT_FALSE(table_.emplace(5, &lamp_).second);
    table_.clear();
    EXPECT_FALSE(table_.contains(0));
    EXPECT_EQ(table_.begin(), table_.end());
}

TEST_F(ObjectTableTest, HasToHaveWhatIsAskedForWithoutFinding) {
    table_[7] = &lamp_;
    EXPECT_THROW(table_.at(8), std::out_of_range);
}

// Few ids, so that they come and go all the time and stand in each other's way, and the table
// grows when they do not.
TEST_F(ObjectTableTest, HoldsWhatAMapHoldsAfterAnyEdits) {
    std::mt19937 numbers(1);
    const auto random = [&] { return static_cast<unsigned>(numbers()); };
    for (const unsigned ids : {3u, 20u, 300u, 5000u, greatest}) {
        std::map<unsigned, SdfObject*> map;
        table_.clear();
        for (int edit = 0; edit != 20'000; ++edit) {
            const unsigned id = random() % ids;
            SdfObject* const object = random() % 2 ? &lamp_ : nullptr;
            switch (random() % 3) {
                case 0:
                    ASSERT_EQ(table_.emplace(id, object).second, map.emplace(id, object).second);
                    break;
                case 1: table_[id] = map[id] = object; break;
                default: ASSERT_EQ(table_.erase(id), map.erase(id));
            }
            ASSERT_EQ(table_.size(), map.size());
            const unsigned other = random() % ids;
            ASSERT_EQ(table_.contains(other), map.contains(other));
            if (map.contains(other)) {
                ASSERT_EQ(table_.find(other)->second, map.at(other));
            }
            if (edit % 500 != 0) continue;
            std::map<unsigned, SdfObject*> all;
            for (const auto& [key, held] : table_) ASSERT_TRUE(all.emplace(key, held).second);
            ASSERT_EQ(all, map);
        }
    }
}

using Shared = std::shared_ptr<int>;

// What the table holds beside `own`, which is held here.
long holdersIn(const Shared& own) { return own.use_count() - 1; }

TEST(IdTable, OfOwnersHoldsEachOnceUntilItIsErased) {
    sdf::IdTable<Shared> table;
    std::vector<Shared> values;
    for (int i = 0; i != 1000; ++i) {
        values.push_back(std::make_shared<int>(i));
        EXPECT_TRUE(table.emplace(static_cast<unsigned>(i), values.back()).second);
    }
    EXPECT_FALSE(table.emplace(7, std::make_shared<int>(0)).second);
    for (unsigned id = 0; id != 1000; ++id) {
        ASSERT_EQ(table.find(id)->second, values[id]);
        ASSERT_EQ(holdersIn(values[id]), 1);
    }
    for (unsigned id = 0; id != 1000; id += 2) EXPECT_EQ(table.erase(id), 1u);
    for (unsigned id = 0; id != 1000; ++id) {
        ASSERT_EQ(table.contains(id), id % 2 == 1);
        ASSERT_EQ(holdersIn(values[id]), id % 2);
    }
}

TEST(IdTable, ACopyOfOwnersHoldsThemToo) {
    const auto value = std::make_shared<int>(5);
    sdf::IdTable<Shared> table;
    table.emplace(1, value);
    sdf::IdTable<Shared> copy(table);
    EXPECT_EQ(holdersIn(value), 2);
    table.clear();
    EXPECT_EQ(holdersIn(value), 1);
    EXPECT_EQ(copy.find(1)->second, value);
}

// As many ids as wanted whose numbers lie close together.
template <typename Number>
std::vector<unsigned> colliding(const Number& number, std::size_t count) {
    constexpr unsigned few = 32;
    std::vector<unsigned> ids;
    for (unsigned id = 1; ids.size() != count && id != 0; ++id)
        if (number(id) < few) ids.push_back(id);
    return ids;
}

// The ids of a file may be chosen by somebody who knows how large the table will be and how
// it spreads ids, but not the factor of the process.
TEST_F(ObjectTableTest, IdsChosenToCollideCostNoMoreThanOthers) {
    constexpr std::size_t count = 50'000;
    constexpr unsigned bits = 17;  // of the table that has so many
    const auto costOf = [&](const std::vector<unsigned>& ids) {
        // Of the processor: whoever else is at work does not count.
        std::clock_t least = std::numeric_limits<std::clock_t>::max();
        std::ptrdiff_t found = 0;
        for (int i = 0; i != 7; ++i) {
            const std::clock_t start = std::clock();
            for (const unsigned id : ids) table_.emplace(id, nullptr);
            found += std::ranges::count_if(ids, [&](unsigned id) { return table_.contains(id); });
            for (const unsigned id : ids) table_.erase(id);
            least = std::min(least, std::clock() - start);
        }
        EXPECT_EQ(ids.size(), count);
        EXPECT_EQ(found, 7 * std::ssize(ids));
        EXPECT_EQ(table_.size(), 0u);
        return static_cast<double>(least);
    };
    std::mt19937 random(1);
    std::vector<unsigned> others;
    for (unsigned i = 0; i != count; ++i)
        others.push_back(static_cast<unsigned>(random() / 2 / count * count) + i);
    std::vector<unsigned> inTurn;
    for (unsigned i = 1; i <= count; ++i) inTurn.push_back(i);

    const double usual = costOf(others);
    const double another = costOf(colliding(
        [](unsigned id) { return id * std::uint64_t{0x9E3779B97F4A7C15} >> (64 - bits); }, count));
    const double plain = costOf(colliding([](unsigned id) { return id % (1u << bits); }, count));
    const double inOrder = costOf(inTurn);
    std::cout << "of the cost of random ids: " << another / usual << " where they collide with "
              << "another factor, " << plain / usual << " where they are equal modulo the table, "
              << inOrder / usual << " where they follow each other\n";
    EXPECT_LT(another, 5 * usual);
    EXPECT_LT(plain, 5 * usual);
    EXPECT_LT(inOrder, 5 * usual);
}

}  // namespace
