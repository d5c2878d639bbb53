#include "platform/sdf/Pages.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <memory>
#include <numeric>
#include <optional>
#include <thread>
#include <vector>

namespace trel::test {

namespace {

using sdf::PageAllocator;
using sdf::Pages;

// Notices when anybody else writes where it stands.
class Guest {
public:
    explicit Guest(unsigned number) { std::iota(words_.begin(), words_.end(), number); }
    bool isUntouched() const {
        for (std::size_t i = 1; i != words_.size(); ++i)
            if (words_[i] != words_[0] + i) return false;
        return true;
    }
    unsigned number() const { return words_[0]; }

private:
    std::array<unsigned, 43> words_{};
};

using Guests = std::vector<std::shared_ptr<Guest>>;

Guests guestsOf(Pages& pages, unsigned number) {
    Guests guests;
    for (unsigned i = 0; i != number; ++i)
        guests.push_back(std::allocate_shared<Guest>(PageAllocator<Guest>(pages), i));
    return guests;
}

constexpr unsigned many = 5'000;  // fill several pages

}  // namespace

TEST(Pages, HaveRoomsOfTheirOwnForAll) {
    Pages pages;
    const Guests guests = guestsOf(pages, many);
    for (unsigned i = 0; i != many; ++i) {
        EXPECT_EQ(guests[i]->number(), i);
        EXPECT_TRUE(guests[i]->isUntouched());
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(guests[i].get()) % alignof(Guest), 0u);
    }
}

TEST(Pages, RoomsThatFollowEachOtherStandSideBySide) {
    Pages pages;
    const auto* const first = static_cast<char*>(pages.take(181));
    const auto* const second = static_cast<char*>(pages.take(176));
    const auto* const third = static_cast<char*>(pages.take(1));
    EXPECT_EQ(second - first, 184);
    EXPECT_EQ(third - second, 176);
    Pages::giveBack(const_cast<char*>(second), 176);
    Pages::giveBack(const_cast<char*>(first), 181);
    Pages::giveBack(const_cast<char*>(third), 1);
}

TEST(Pages, MayGoBeforeWhatStandsInThem) {
    auto pages = std::make_optional<Pages>();
    Guests guests = guestsOf(*pages, many);
    for (unsigned i = 0; i < many; i += 2) guests[i].reset();
    pages.reset();
    for (unsigned i = 1; i < many; i += 2) EXPECT_TRUE(guests[i]->isUntouched());
}

TEST(Pages, WithNobodyInThemCostNothing) { const Pages pages; }

TEST(Pages, AnyThreadMayDropWhatStandsInThem) {
    Guests evens, odds;
    {
        Pages pages;
        Guests all = guestsOf(pages, many);
        for (unsigned i = 0; i != many; ++i)
            (i % 2 == 0 ? evens : odds).push_back(std::move(all[i]));
    }
    std::thread other([&] { evens.clear(); });
    odds.clear();
    other.join();
}

}  // namespace trel::test
