#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <vector>

namespace trel::test {

/// The place of a virtual operation in the virtual table, as the Itanium ABI
/// keeps it in a pointer to member.
template <typename Member>
std::size_t slotOf(Member member) {
    std::size_t word = 0;
    static_assert(sizeof member >= sizeof word);
    std::memcpy(&word, &member, sizeof word);
    EXPECT_EQ(word % 2, 1u) << "not virtual";
    return (word - 1) / sizeof(void*);
}

/// Expects that these places follow each other.
inline void expectConsecutive(const std::vector<std::size_t>& places) {
    for (std::size_t i = 1; i < places.size(); ++i)
        EXPECT_EQ(places[i], places[i - 1] + 1) << "the one at " << i;
}

}  // namespace trel::test
