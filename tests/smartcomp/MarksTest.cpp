#include "smartcomp/Marks.h"

#include <gtest/gtest.h>

#include <string>

// What is being set: mostly one member, whose mark stands apart from the others.

namespace trel::test {
namespace {

using smartcomp::Marks;

TEST(Marks, HoldNothingAtFirst) {
    const Marks<std::string> marks;
    EXPECT_TRUE(marks.empty());
    EXPECT_EQ(marks.find(1), nullptr);
}

TEST(Marks, KeepEachMemberAndItsValue) {
    Marks<std::string> marks;
    for (const unsigned id : {1u, 2u, 3u}) marks.begin(id, std::to_string(id));
    for (const unsigned id : {1u, 2u, 3u}) EXPECT_EQ(*marks.find(id), std::to_string(id));
    EXPECT_EQ(marks.find(4), nullptr);
    EXPECT_FALSE(marks.empty());
}

TEST(Marks, OneThatIsThereKeepsItsValue) {
    Marks<int> marks;
    for (const unsigned id : {1u, 2u}) {
        marks.begin(id, 10);
        marks.begin(id, 20);
        EXPECT_EQ(*marks.find(id), 10);
    }
}

TEST(Marks, EndInAnyOrder) {
    for (const unsigned first : {1u, 2u, 3u})
        for (const unsigned second : {1u, 2u, 3u}) {
            Marks<unsigned> marks;
            for (const unsigned id : {1u, 2u, 3u}) marks.begin(id, id);
            marks.end(first);
            marks.end(second);
            for (const unsigned id : {1u, 2u, 3u}) {
                const unsigned* const value = marks.find(id);
                EXPECT_EQ(value != nullptr, id != first && id != second) << id;
                EXPECT_TRUE(!value || *value == id) << id;
            }
            for (const unsigned id : {1u, 2u, 3u}) marks.end(id);
            EXPECT_TRUE(marks.empty());
        }
}

TEST(Marks, EndingWhatIsNotThereIsNothing) {
    Marks<int> marks;
    marks.end(1);
    marks.begin(1, 10);
    marks.begin(2, 20);
    marks.end(3);
    EXPECT_EQ(*marks.find(1), 10);
    EXPECT_EQ(*marks.find(2), 20);
}

TEST(Marks, AMemberIsMarkedOnceWhereverItsMarkStands) {
    Marks<int> marks;
    marks.begin(1, 10);
    marks.begin(2, 20);
    marks.end(1);
    marks.begin(2, 30);
    EXPECT_EQ(*marks.find(2), 20);
    marks.end(2);
    EXPECT_TRUE(marks.empty());
}

TEST(Marks, AreAllClearedAtOnce) {
    Marks<int> marks;
    for (const unsigned id : {1u, 2u, 3u}) marks.begin(id, 10);
    marks.clear();
    EXPECT_TRUE(marks.empty());
    for (const unsigned id : {1u, 2u, 3u}) EXPECT_EQ(marks.find(id), nullptr) << id;
    marks.begin(2, 20);
    EXPECT_EQ(*marks.find(2), 20);
}

TEST(Marks, AreTakenAlongByACopyAndThenItsOwn) {
    Marks<int> marks;
    marks.begin(1, 10);
    marks.begin(2, 20);
    Marks<int> copy(marks);
    Marks<int> assigned;
    assigned.begin(3, 30);
    assigned = marks;
    marks.end(1);
    marks.end(2);
    for (const Marks<int>& other : {copy, assigned}) {
        EXPECT_EQ(*other.find(1), 10);
        EXPECT_EQ(*other.find(2), 20);
        EXPECT_EQ(other.find(3), nullptr);
    }
}

}  // namespace
}  // namespace trel::test
