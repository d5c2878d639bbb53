#include <gtest/gtest.h>

#include <QString>
#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <latch>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "platform/sdf/SdfManager.h"
#include "platform/station/Station.h"
#include "smartcomp/Connection.h"
#include "smartcomp/Hold.h"
#include "smartcomp/Lifecycle.h"
#include "smartcomp/Manager.h"
#include "smartcomp/Property.h"
#include "smartcomp/SCSignal.h"
#include "smartcomp/StationLogic.h"
#include "tests/network/Random.h"
#include "tests/network/Station.h"

// Two threads: one edits and runs a station, the other asks what may be asked
// from anywhere. A longer run than that of every day, under the thread sanitizer:
//
//   TREL_THREAD_MINUTES=10 build/tsan/bin/threads_tests

namespace trel::test {
namespace {

using namespace std::chrono_literals;
using smartcomp::Manager;
using smartcomp::SmartComponent;
using smartcomp::StationLogic;
using Element = std::shared_ptr<sdf::Element>;

constexpr unsigned input = 1;
constexpr unsigned output = 2;
constexpr unsigned text = 1;

// Hands on what reaches it, and frames its text.
class Part : public SmartComponent {
public:
    explicit Part(Element element)
        : SmartComponent(std::move(element), sdf::ObjectType::Component) {}

    using SmartComponent::objectIsInvalid;

    static SmartComponent* build(Element element) {
        const auto property = element->appendObject("property", text, "Text");
        property->touch("type")->setValue(std::string("String"));
        for (const unsigned id : {input, output}) {
            const auto signal = element->append("signal")->setId(id);
            const bool isInput = id == input;
            signal->touch("type")->setValue(std::string(isInput ? "DigitalInput"
                                                                : "DigitalOutput"));
        }
        return new Part(std::move(element));
    }

    void handleInputSignal(unsigned signalId, int value, long long time) override {
        signalAt(signalId).setValue(value);
        notifySignalValueChanged(signalId);
        handleOutputSignal(output, value, time);
    }
    void setPropertyValue(unsigned id, const std::string& value) override {
        const smartcomp::Hold hold(*this);
        if (!shouldSetProperty(id, value)) return;
        SmartComponent::setPropertyValue(id, value);
        endSetPropertyValue(id);
    }
    void execute(long long) override {}
    void readPropertyValues() override {}
};

constexpr unsigned firstPart = 10;
constexpr unsigned lastPart = 40;

// The thread that edits and runs: parts come and go in the station logic, are
// connected and bound, and values run through them.
class Editor {
public:
    explicit Editor(unsigned seed) : random_(seed) {}
    ~Editor() {
        while (!parts_.empty()) remove(*parts_.begin());
    }

    void step() {
        if (parts_.size() < 3 || random_.oneIn(4)) return make();
        switch (random_.below(7)) {
            case 0: return remove(anyPart());
            case 1: return connect(output, input, static_cast<int>(random_.below(2)));
            case 2: return connect(text, text, -1);
            case 3: return part().setStaticSignalValue(output, static_cast<int>(random_.below(2)));
            case 4: return part().handleSignalValue(input, static_cast<int>(random_.below(3)), 17);
            case 5: return part().setPropertyValue(text, std::to_string(random_.below(5)));
            default: EXPECT_FALSE(logic_.isObjectUsedByComponent(anyPart()));
        }
    }

private:
    unsigned anyPart() {
        auto part = parts_.begin();
        std::advance(part, random_.below(static_cast<unsigned>(parts_.size())));
        return *part;
    }
    SmartComponent& part() {
        return dynamic_cast<SmartComponent&>(*sdf::SdfManager::inst()->find(anyPart()));
    }
    void make() {
        const unsigned id = firstPart + random_.below(lastPart - firstPart + 1);
        if (!parts_.insert(id).second) return;
        smartcomp::Build("Part", id, "Part " + std::to_string(id), logic_.id());
    }
    void remove(unsigned id) {
        logic_.removeController(id);  // with its connections
        smartcomp::RemoveSubSmartComponent(id);
        parts_.erase(id);
    }
    void connect(unsigned source, unsigned destination, int place) {
        smartcomp::Connection::Build(&logic_, logic_.getNextSgConnId(), anyPart(), source,
                                     anyPart(), destination, place);
    }

    network::Random random_;
    StationLogic& logic_ = *StationLogic::inst();
    std::set<unsigned> parts_;
};

// How long a test of two threads takes.
std::chrono::milliseconds duration() {
    const char* const minutes = std::getenv("TREL_THREAD_MINUTES");
    if (!minutes) return 2s;
    return std::chrono::milliseconds(60'000 * std::strtoul(minutes, nullptr, 10)) / 2;
}

bool lasts(std::chrono::steady_clock::time_point start) {
    return std::chrono::steady_clock::now() - start < duration();
}

// The other thread. Calls `ask` with one id after the other until it goes.
class Asker {
public:
    template <typename Ask>
    explicit Asker(Ask ask)
        : thread_([ask](const std::stop_token& stop) {
              for (unsigned id = firstPart; !stop.stop_requested();
                   id = id == lastPart ? firstPart : id + 1)
                  ask(id);
          }) {}

private:
    std::jthread thread_;
};

// What `inst` gave to 64 threads that called it at one moment.
template <typename Type>
std::set<Type*> firstCallers(Type* (*inst)()) {
    std::array<Type*, 64> seen{};
    std::latch ready(64);
    {
        std::vector<std::jthread> threads;
        for (auto& mine : seen)
            threads.emplace_back([&] {
                ready.arrive_and_wait();
                mine = inst();
            });
    }
    return {seen.begin(), seen.end()};
}

}  // namespace

TEST(Threads, TheFirstCallersGetTheOneManager) {
    EXPECT_EQ(firstCallers(Manager::inst), std::set{Manager::inst()});
}

TEST(Threads, TheFirstCallersGetTheOneStationLogic) {
    EXPECT_EQ(firstCallers(StationLogic::inst), std::set{StationLogic::inst()});
    EXPECT_EQ(StationLogic::inst()->name(), "Station Logic");
    EXPECT_EQ(sdf::SdfManager::inst()->find(Station::logicId), StationLogic::inst());
    EXPECT_EQ(sdf::SdfManager::inst()->objects().size(), 2u) << "the station and its logic";
}

TEST(Threads, OneMayAskForTypeNamesWhileTheOtherMakesAndRemovesTheComponents) {
    Manager::inst()->registerType("Part", Part::build, Part::build, [] { return QString(); });
    std::atomic<unsigned long> named = 0;
    std::atomic<unsigned long> unknown = 0;
    unsigned long steps = 0;
    {
        Editor editor(1);
        const Asker asker([&](unsigned id) {
            try {
                EXPECT_EQ(SmartComponent::GetTypeName(id), "Part");
                ++named;
            } catch (const std::out_of_range&) {
                ++unknown;
            }
        });
        for (const auto start = std::chrono::steady_clock::now(); lasts(start); ++steps)
            editor.step();
    }
    EXPECT_GT(named, 0u);
    EXPECT_GT(unknown, 0u);
    std::cout << steps << " steps, " << named << " type names, " << unknown << " unknown ids\n";
}

// In whatever walk the editing thread is, and whatever it removes there.
TEST(Threads, OneMayAskWhatIsValidAndForTheInstancesWhileTheOtherEditsInDeliveries) {
    std::atomic<unsigned long> valid = 0;
    std::atomic<unsigned long> invalid = 0;
    unsigned long steps = 0;
    StationLogic* const logic = StationLogic::inst();
    Manager* const manager = Manager::inst();
    {
        const Asker asker([&](unsigned id) {
            ++(Part::objectIsInvalid(id) ? invalid : valid);
            EXPECT_EQ(StationLogic::inst(), logic);
            EXPECT_EQ(Manager::inst(), manager);
        });
        network::Model model;
        network::Random edits(1);
        network::Script script(edits);
        unsigned seed = 0;
        for (const auto start = std::chrono::steady_clock::now(); lasts(start);) {
            network::Random random(++seed);
            network::TwinStation station(random, model, &script);
            for (unsigned step = 0; step != 50; ++step, ++steps)
                ASSERT_EQ(station.act(), "") << "station " << seed << ", step " << step;
        }
    }
    EXPECT_GT(valid, 0u);
    EXPECT_GT(invalid, 0u);
    std::cout << steps << " steps, " << valid << " valid and " << invalid << " invalid ids\n";
}

}  // namespace trel::test
