#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <mutex>
#include <new>
#include <sstream>
#include <string>

#include "platform/sdf/Document.h"
#include "tests/faults/FailingMemory.h"
#include "tests/faults/Operations.h"

// Every operation, with memory that ends at its first allocation, at its second
// and so on, once and from there on, until it gets by.

namespace trel::test {

void PrintTo(const Operation& operation, std::ostream* stream) { *stream << operation.name; }

namespace {

using When = FailingMemory::When;

// The lines that only one of the two has, until there are a few.
std::string differing(const std::string& seen, const std::string& expected) {
    std::istringstream lines(seen);
    std::istringstream others(expected);
    std::string text;
    for (int count = 0; count < 8 && (lines || others);) {
        std::string line;
        std::string other;
        std::getline(lines, line);
        std::getline(others, other);
        if (line == other) continue;
        text += line + "  instead of  " + other + "\n";
        ++count;
    }
    return text;
}

class MemoryThatEnds : public testing::TestWithParam<Operation> {
protected:
    void SetUp() override {
        registerTypes();
        logic();
    }

    static void TearDownTestSuite() {
        std::cout << points << " allocations failed, each was survived\n";
    }

    // Whether it came to its end; without memory it did not.
    static bool carryOut(Scene& scene) {
        try {
            if (GetParam().losesRecords)
                loseRecordsOfThrowingConstructor([&] { GetParam().act(scene); });
            else
                GetParam().act(scene);
        } catch (const std::bad_alloc&) {
            return false;
        } catch (const std::exception& error) {
            const SafeMemory safe;
            scene.answer = error.what();
        }
        return true;
    }

    static void expectWhatHoldsAfterAFailure(const std::string& answerBefore, Scene& scene) {
        ASSERT_TRUE(sdf::SdfManager::inst()->mutex().try_lock()) << "the lock is held";
        sdf::SdfManager::inst()->mutex().unlock();
        Lines differences = Scene::differences();
        std::erase_if(differences, [](const std::string& line) {
            return std::ranges::find(GetParam().mayDiffer, line) != GetParam().mayDiffer.end();
        });
        EXPECT_EQ(differences, Lines{});
        const std::string saved = Station::inst().text();
        EXPECT_EQ(sdf::Document::fromText(saved, "saved").text(), saved);
        scene.answer = answerBefore;
    }

    // Gives false when nothing failed.
    static bool tryWithout(When when, std::size_t n, const std::string& expected) {
        Scene scene;
        GetParam().prepare(scene);
        const std::string answerBefore = scene.answer;
        bool isDone;
        bool hasFailed;
        {
            const FailingMemory memory(when, n);
            isDone = carryOut(scene);
            hasFailed = memory.hasFailed();
        }
        if (!isDone) {
            expectWhatHoldsAfterAFailure(answerBefore, scene);
            Scene::restore();
            GetParam().repair(scene);
            EXPECT_TRUE(carryOut(scene));
        }
        EXPECT_EQ(differing(scene.state(), expected), "");
        return hasFailed;
    }

    static inline std::size_t points = 0;
};

TEST_P(MemoryThatEnds, LeavesWhatTheRulesSayAndTheSameWorksLater) {
    std::string expected;
    for (int warm = 0; warm < 2; ++warm) {
        Scene scene;
        GetParam().prepare(scene);
        ASSERT_TRUE(carryOut(scene));
        expected = scene.state();
    }
    for (const When when : {When::Once, When::FromThenOn})
        for (std::size_t n = 1;; ++n) {
            SCOPED_TRACE((when == When::Once ? "once, at " : "from there on, at ") +
                         std::to_string(n));
            const long before = blocksInUse();
            const bool hasFailed = tryWithout(when, n, expected);
            if (!GetParam().losesRecords) {
                EXPECT_EQ(blocksLeaked(before), 0);
            }
            ASSERT_FALSE(HasFailure());
            if (!hasFailed) break;
            ++points;
        }
}

std::string nameOfTest(const testing::TestParamInfo<Operation>& info) {
    std::string name;
    bool startsWord = true;
    for (const char c : std::string(info.param.name)) {
        if (std::isalnum(static_cast<unsigned char>(c)))
            name += startsWord ? static_cast<char>(std::toupper(static_cast<unsigned char>(c))) : c;
        startsWord = !std::isalnum(static_cast<unsigned char>(c));
    }
    return name;
}

INSTANTIATE_TEST_SUITE_P(Records, MemoryThatEnds, testing::ValuesIn(operationsOfRecords()),
                         nameOfTest);
INSTANTIATE_TEST_SUITE_P(Components, MemoryThatEnds, testing::ValuesIn(operationsOfComponents()),
                         nameOfTest);
INSTANTIATE_TEST_SUITE_P(Aggregations, MemoryThatEnds,
                         testing::ValuesIn(operationsOfAggregations()), nameOfTest);
INSTANTIATE_TEST_SUITE_P(Deliveries, MemoryThatEnds, testing::ValuesIn(operationsOfDeliveries()),
                         nameOfTest);
INSTANTIATE_TEST_SUITE_P(Lifecycle, MemoryThatEnds, testing::ValuesIn(operationsOfLifecycle()),
                         nameOfTest);
INSTANTIATE_TEST_SUITE_P(Documents, MemoryThatEnds, testing::ValuesIn(operationsOfDocuments()),
                         nameOfTest);

}  // namespace
}  // namespace trel::test
