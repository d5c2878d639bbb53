#include <gtest/gtest.h>

#include <QString>
#include <deque>
#include <iostream>
#include <new>
#include <string>

#include "host/LiveStation.h"
#include "platform/sdf/SdfManager.h"
#include "platform/station/Station.h"
#include "smartcomp/Hold.h"
#include "smartcomp/Lifecycle.h"
#include "smartcomp/Manager.h"
#include "smartcomp/StationLogic.h"
#include "tests/faults/FailingMemory.h"
#include "tests/faults/Process.h"
#include "tests/platform/Files.h"
#include "tests/smartcomp/Leaks.h"
#include "tests/smartcomp/Mirror.h"
#include "tests/support/Expect.h"
#include "tests/support/Reach.h"

// What a process does once, with memory that ends at each of its allocations.

namespace trel::test {
namespace {

using When = FailingMemory::When;
using smartcomp::Aggregation;
using smartcomp::SmartComponent;
using smartcomp::StationLogic;

// Whole, so that nothing is to be added to it.
const std::string stationText = R"(<?xml version="1.0" encoding="UTF-8"?>
<station id="1" name="Station">
  <smart_component id="2" name="Station Logic">
    <type string="StationLogic" />
    <parent uint="0" />
    <role_object uint="0" />
    <child uint="10" />
    <xy vec3="10 1 2" />
    <connection id="1">
      <source uint64="42949672961" />
      <destination uint64="47244640257" />
      <index uint="0" />
    </connection>
    <connection id="2">
      <source uint64="42949672961" />
      <destination uint64="42949672961" />
      <index uint="1" />
    </connection>
    <connection id="3">
      <source uint64="42949672961" />
      <destination uint64="47244640257" />
    </connection>
  </smart_component>
  <smart_component id="10" name="a group with a name that is rather long">
    <type string="Bare group" />
    <parent uint="2" />
    <property id="1" name="Note" string="a text that is longer than what fits into a string">
      <type string="String" />
    </property>
    <property id="2" name="Part" string="11">
      <type string="ObjectId" />
    </property>
    <signal id="1">
      <name string="in" />
      <type string="DigitalInput" />
      <value int="0" />
    </signal>
    <role_object uint="0" />
    <connection id="1">
      <source uint64="42949672961" />
      <destination uint64="47244640257" />
      <index uint="0" />
    </connection>
    <child uint="11" />
    <xy vec3="11 1 2" />
  </smart_component>
  <smart_component id="11" name="Part">
    <type string="Bare" />
    <parent uint="10" />
    <property id="1" name="Speed" double="2.5">
      <type string="Double" />
    </property>
    <signal id="1">
      <name string="in" />
      <type string="DigitalInput" />
      <value int="0" />
    </signal>
  </smart_component>
</station>
)";

// Types that allocate nothing of their own.
class Bare : public SmartComponent {
public:
    explicit Bare(std::shared_ptr<sdf::Element> element)
        : SmartComponent(std::move(element), sdf::ObjectType::Component) {}
    void handleInputSignal(unsigned, int, long long) override {}
    void execute(long long) override {}
    void readPropertyValues() override {}
};

class BareGroup : public Aggregation {
public:
    explicit BareGroup(std::shared_ptr<sdf::Element> element)
        : Aggregation(std::move(element), sdf::ObjectType::UserComponent) {}
    void execute(long long) override {}
};

template <typename Type>
SmartComponent* make(std::shared_ptr<sdf::Element> element) {
    return new Type(std::move(element));
}

QString describe() { return {}; }

template <typename Type>
void registerType(std::string_view name) {
    smartcomp::Manager::inst()->registerType(name, make<Type>, make<Type>, describe);
}

// Whether it got by with the memory that there was.
bool getsBy(When when, std::size_t n, bool& hasFailed, const std::function<void()>& action) {
    const FailingMemory memory(when, n);
    bool isDone = false;
    try {
        loseRecordsOfThrowingConstructor(action);
        isDone = true;
    } catch (const std::bad_alloc&) {}
    hasFailed = memory.hasFailed();
    return isDone;
}

class StartingWithoutMemory : public testing::Test {
protected:
    void SetUp() override {
        registerType<Bare>("Bare");
        registerType<BareGroup>("Bare group");
        Station::inst().openText(stationText, "station");
    }

    // The attempt, at every allocation, both ways.
    static void everywhere(const std::function<Attempt(When when, std::size_t n)>& attempt) {
        std::size_t points = 0;
        for (const When when : {When::Once, When::FromThenOn})
            for (std::size_t n = 1;; ++n, ++points) {
                SCOPED_TRACE((when == When::Once ? "once, at " : "from there on, at ") +
                             std::to_string(n));
                if (inAnotherProcess([&] { return attempt(when, n); }) == Attempt::NothingFailed)
                    break;
                ASSERT_FALSE(HasFailure());
            }
        std::cout << points << " allocations failed, each was survived\n";
    }

    static void expectLockIsFree() {
        ASSERT_TRUE(sdf::SdfManager::inst()->mutex().try_lock());
        sdf::SdfManager::inst()->mutex().unlock();
    }

    static void expectMirrors(std::size_t components) {
        std::size_t count = 0;
        for (const auto& [id, object] : sdf::SdfManager::inst()->objects())
            if (auto* const component = dynamic_cast<SmartComponent*>(object)) {
                ++count;
                EXPECT_EQ(mirrorFaults(*component), Lines{});
            }
        EXPECT_EQ(count, components);
    }
};

TEST_F(StartingWithoutMemory, TheStationLogicIsMadeByALaterCall) {
    everywhere([](When when, std::size_t n) {
        const long before = blocksInUse();
        bool hasFailed;
        const bool isDone = getsBy(when, n, hasFailed, [] { StationLogic::inst(); });
        if (!isDone) {
            EXPECT_EQ(blocksLeaked(before), 0);
            expectLockIsFree();
            EXPECT_EQ(sdf::SdfManager::inst()->find(Station::logicId), nullptr);
            EXPECT_EQ(Station::inst().text(), stationText) << "the document has all of it";
        }
        EXPECT_EQ(orderOf(*StationLogic::inst()), (std::vector<unsigned>{1, 2}));
        EXPECT_TRUE(StationLogic::inst()->hasObjChild(10));
        EXPECT_EQ(Station::inst().text(), stationText);
        expectMirrors(1);
        return hasFailed ? Attempt::Survived : Attempt::NothingFailed;
    });
}

TEST_F(StartingWithoutMemory, LoadLeavesTheDocumentWholeAndMakesAllLater) {
    everywhere([](When when, std::size_t n) {
        bool hasFailed;
        const bool isDone = getsBy(when, n, hasFailed, [] { smartcomp::Load(); });
        EXPECT_EQ(Station::inst().text(), stationText);
        expectLockIsFree();
        if (!isDone) {
            // One after the other: what is made is whole.
            expectMirrors(smartcomp::GetAllSmartComponents().size());
            for (const unsigned id : {10u, 11u})
                if (sdf::SdfManager::inst()->find(id)) smartcomp::RemoveSubSmartComponent(id);
            Station::inst().openText(stationText, "station");
            smartcomp::Load();
        }
        expectMirrors(2);
        EXPECT_EQ(Station::inst().text(), stationText);
        return hasFailed ? Attempt::Survived : Attempt::NothingFailed;
    });
}

TEST_F(StartingWithoutMemory, TheFirstRemovalUnderAHoldIsWholeOrIsNone) {
    everywhere([](When when, std::size_t n) {
        smartcomp::Load();
        auto& group = dynamic_cast<Aggregation&>(*sdf::SdfManager::inst()->find(10));
        auto& part = dynamic_cast<SmartComponent&>(*sdf::SdfManager::inst()->find(11));
        const smartcomp::Hold hold(part);
        const std::string before = Station::inst().text();
        bool hasFailed;
        if (!getsBy(when, n, hasFailed, [] { smartcomp::RemoveSmartComponent(11); })) {
            EXPECT_EQ(Station::inst().text(), before);
            EXPECT_EQ(sdf::SdfManager::inst()->find(11), &part);
            EXPECT_TRUE(group.hasObjChild(11));
            expectMirrors(2);
            smartcomp::RemoveSmartComponent(11);
        }
        EXPECT_EQ(sdf::SdfManager::inst()->find(11), nullptr);
        EXPECT_FALSE(group.hasObjChild(11));
        expectMirrors(1);
        return hasFailed ? Attempt::Survived : Attempt::NothingFailed;
    });
}

TEST_F(StartingWithoutMemory, AStationThatCannotBeOpenedLeavesTheOtherOpen) {
    const std::string other =
        stationText.substr(0, stationText.find("  <smart_component id=\"10\"")) + "</station>\n";
    everywhere([&](When when, std::size_t n) {
        const long before = blocksInUse();
        bool hasFailed;
        const bool isDone =
            getsBy(when, n, hasFailed, [&] { Station::inst().openText(other, "other"); });
        if (!isDone) {
            EXPECT_EQ(blocksLeaked(before), 0);
        }
        EXPECT_EQ(Station::inst().text(), isDone ? other : stationText);
        expectLockIsFree();
        EXPECT_EQ(sdf::SdfManager::inst()->find(Station::id)->element(), GetStationElem());
        Station::inst().openText(other, "other");
        EXPECT_EQ(Station::inst().text(), other);
        return hasFailed ? Attempt::Survived : Attempt::NothingFailed;
    });
}

TEST_F(StartingWithoutMemory, TheSingletonsAreMadeByALaterCall) {
    everywhere([](When when, std::size_t n) {
        Station::inst();
        bool hasFailed;
        getsBy(when, n, hasFailed, [] {
            smartcomp::Manager::inst()->registerVisualType("Bare", nullptr);
            smartcomp::GetAllSmartComponents();
        });
        EXPECT_EQ(smartcomp::GetAllSmartComponents().size(), 0u);
        smartcomp::Load();
        expectMirrors(2);
        return hasFailed ? Attempt::Survived : Attempt::NothingFailed;
    });
}

// The program's way: it opens the file, looks for faults, makes everything and looks
// again. Memory that ends is no fault of the file.
TEST_F(StartingWithoutMemory, TheHostSaysThatMemoryEndedAndRemovesWhatItMade) {
    const TemporaryFolder folder;
    writeBytes(folder / "cell.xml", stationText);
    everywhere([&](When when, std::size_t n) {
        const std::filesystem::path file = folder / "cell.xml";
        bool hasFailed;
        const bool isDone = getsBy(when, n, hasFailed, [&] { const host::LiveStation live(file); });
        expectLockIsFree();
        std::size_t components = 0;
        for (const auto& [id, object] : sdf::SdfManager::inst()->objects())
            components += dynamic_cast<SmartComponent*>(object) ? 1 : 0;
        EXPECT_LE(components, 1u) << "more than the station logic";
        EXPECT_EQ(isDone, !hasFailed);
        return hasFailed ? Attempt::Survived : Attempt::NothingFailed;
    });
}

// A name is registered for all three functions or for none.
TEST(RegisteringWithoutMemory, KnowsATypeWholeOrNotAtAll) {
    static std::deque<std::string> names;  // live as long as the process
    std::size_t points = 0;
    for (const When when : {When::Once, When::FromThenOn})
        for (std::size_t n = 1;; ++n, ++points) {
            const std::string& name = names.emplace_back("type " + std::to_string(names.size()));
            const auto element = sdf::Element::Create("smart_component");
            element->setId(100);
            element->touch("type")->setValue(name);
            bool hasFailed;
            if (!getsBy(when, n, hasFailed, [&] { registerType<Bare>(name); })) {
                expectThrow<std::out_of_range>(noKey, [&] { descFuncOf(name); });
                expectThrow<std::out_of_range>(noKey, [&] { smartcomp::Create(element); });
                registerType<Bare>(name);
            }
            EXPECT_EQ(descFuncOf(name), &describe);
            smartcomp::Create(element);
            smartcomp::RemoveSubSmartComponent(100);
            if (!hasFailed) break;
        }
    EXPECT_GT(points, 10u);
}

}  // namespace
}  // namespace trel::test
