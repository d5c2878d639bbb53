#include "platform/sdf/SdfManager.h"

#include <gtest/gtest.h>

#include <iostream>
#include <mutex>

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
    // The entries of a large table lie scattered in memory, which alone costs some times as
    // much, where looking through the table would cost a hundred times.
    std::cout << many / few << " times as long among a hundred times as many\n";
    EXPECT_LT(many, 10 * trel::test::generous * few);
}

}  // namespace
