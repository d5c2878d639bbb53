#include "platform/sdf/SdfManager.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <functional>
#include <iostream>
#include <limits>
#include <mutex>
#include <random>
#include <vector>

#include "platform/sdf/SdfObject.h"
#include "tests/platform/LeastTime.h"

namespace {

using sdf::Element;
using sdf::SdfManager;
using sdf::SdfObject;

TEST(SdfManager, IsOne) { EXPECT_EQ(SdfManager::inst(), SdfManager::inst()); }

TEST(SdfManager, FindsWhatStandsInTheTable) {
    SdfObject object(Element::Create("part"), sdf::ObjectType::None);
    SdfManager& manager = *SdfManager::inst();
    EXPECT_EQ(manager.find(7), nullptr);
    manager.objects()[7] = &object;
    EXPECT_EQ(manager.find(7), &object);
    SdfManager::Remove(7);
    EXPECT_EQ(manager.find(7), nullptr);
    EXPECT_FALSE(manager.objects().contains(7));
    SdfManager::Remove(7);
}

TEST(SdfManager, RemovingLeavesTheObjectAlive) {
    SdfObject object(Element::Create("part"), sdf::ObjectType::None);
    SdfManager::inst()->objects()[7] = &object;
    SdfManager::Remove(7);
    EXPECT_TRUE(object.element()->isMirrored());
}

TEST(SdfManager, TheLockIsFreeAfterEveryOperation) {
    SdfManager::inst()->find(1);
    SdfManager::Remove(1);
    const std::unique_lock lock(SdfManager::inst()->mutex(), std::try_to_lock);
    EXPECT_TRUE(lock.owns_lock());
}

TEST(SdfManager, TheLockIsTakenSharedByManyReaders) {
    const std::shared_lock first(SdfManager::inst()->mutex());
    const std::shared_lock second(SdfManager::inst()->mutex(), std::try_to_lock);
    EXPECT_TRUE(second.owns_lock());
    EXPECT_FALSE(std::unique_lock(SdfManager::inst()->mutex(), std::try_to_lock).owns_lock());
}

// Ids chosen to fall into one bucket of a table of any usual size.
TEST(SdfManager, IdsThatDifferByAMultipleOfTheTableAreSpread) {
    auto& table = SdfManager::inst()->objects();
    constexpr unsigned count = 4000;
    for (unsigned i = 1; i <= count; ++i) table[i] = nullptr;
    const auto buckets = static_cast<unsigned>(table.bucket_count());
    table.clear();
    for (unsigned i = 1; i <= count; ++i) table[i * buckets] = nullptr;
    std::size_t fullest = 0;
    for (std::size_t b = 0; b < table.bucket_count(); ++b)
        fullest = std::max(fullest, table.bucket_size(b));
    table.clear();
    EXPECT_LT(fullest, 20u);
}

// As many ids as wanted that fall into few of `buckets` under a hash.
template <typename Hash>
std::vector<unsigned> colliding(const Hash& hash, std::size_t buckets, std::size_t count) {
    constexpr std::size_t few = 32;
    std::vector<unsigned> ids;
    for (unsigned id = 1; ids.size() != count && id != 0; ++id)
        if (hash(id) % buckets < few) ids.push_back(id);
    return ids;
}

// The ids of a file may be chosen by somebody who knows how large the table will
// be and how it spreads ids, but not the factor of the process.
TEST(SdfManager, IdsChosenToCollideCostNoMoreThanOthers) {
    constexpr std::size_t count = 50'000;
    auto& table = SdfManager::inst()->objects();
    const auto fill = [&](const std::vector<unsigned>& ids) {
        for (const unsigned id : ids) table.emplace(id, nullptr);
        for (const unsigned id : ids) SdfManager::inst()->find(id);
        for (const unsigned id : ids) SdfManager::Remove(id);
    };
    const auto costOf = [&](const std::vector<unsigned>& ids) {
        // Of the processor: whoever else is at work does not count.
        std::clock_t least = std::numeric_limits<std::clock_t>::max();
        for (int i = 0; i != 7; ++i) {
            const std::clock_t start = std::clock();
            fill(ids);
            least = std::min(least, std::clock() - start);
        }
        return static_cast<double>(least);
    };
    std::mt19937 random(1);
    std::vector<unsigned> others(count);
    std::ranges::generate(others, [&] { return static_cast<unsigned>(random()); });
    const double usual = costOf(others);

    sdf::IdHash ofAnotherProcess;
    ofAnotherProcess.factor = 0x9E3779B97F4A7C15;
    const std::size_t buckets = table.bucket_count();
    const double chosen = costOf(colliding(ofAnotherProcess, buckets, count));
    const double plain = costOf(colliding(std::hash<unsigned>(), buckets, count));
    std::cout << "of the cost of random ids: " << chosen / usual << " where they collide with "
              << "another factor, " << plain / usual << " where they are equal modulo the table\n";
    EXPECT_LT(chosen, 5 * usual);
    EXPECT_LT(plain, 5 * usual);
}

TEST(SdfManager, DroppingAnObjectDoesNotGrowWithTheTable) {
    const auto table = [](unsigned size) {
        return [size] {
            auto& objects = SdfManager::inst()->objects();
            objects.clear();
            for (unsigned id = 1; id <= size; ++id) objects[id] = nullptr;
            return size / 2;
        };
    };
    const auto dropSome = [](unsigned first) {
        for (unsigned id = first; id < first + 1000; ++id) SdfManager::Remove(id);
    };
    const double few = trel::test::leastTime(table(2000), dropSome);
    const double many = trel::test::leastTime(table(200000), dropSome);
    SdfManager::inst()->objects().clear();
    // The entries of a large table lie scattered in memory, and how many share a bucket
    // differs by the factor of the process: that alone costs up to some twelve times as
    // much, where looking through the table would cost a hundred times.
    std::cout << many / few << " times as long among a hundred times as many\n";
    EXPECT_LT(many, 10 * trel::test::generous * few);
}

}  // namespace
