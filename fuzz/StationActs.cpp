#include "fuzz/StationActs.h"

#include <algorithm>
#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/Objects.h"
#include "platform/broker/SignalBroker.h"
#include "smartcomp/Aggregation.h"
#include "smartcomp/Hold.h"
#include "smartcomp/Lifecycle.h"
#include "smartcomp/Property.h"
#include "smartcomp/SCSignal.h"
#include "tests/network/Random.h"
#include "tests/support/Reach.h"

namespace fuzz {

namespace {

using network::Random;
using trel::smartcomp::Aggregation;
using trel::smartcomp::SmartComponent;

// Ends, with an exception, a delivery that goes too many ways.
class Budget : public trel::broker::Listener {
public:
    explicit Budget(unsigned notices) : left_(notices) {
        trel::broker::SignalBroker::subscribe(*this);
    }
    ~Budget() override { trel::broker::SignalBroker::unsubscribe(*this); }
    Budget(const Budget&) = delete;
    Budget& operator=(const Budget&) = delete;

    void scPropertyValueChanged(unsigned, unsigned) override { spend(); }
    void scSignalValueChanged(unsigned, unsigned) override { spend(); }
    void reportEvent(const std::string&, const std::string&, const std::string&,
                     const std::string&) override {
        spend();
    }

private:
    void spend() {
        if (left_ == 0) throw std::runtime_error("the budget is spent");
        --left_;
    }

    unsigned left_;
};

unsigned seedOf(std::string_view text) {
    unsigned hash = 2'166'136'261u;
    for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 16'777'619u;
    return hash;
}

template <typename Table>
unsigned anyId(Random& random, const Table& table) {
    if (table.empty()) return 0;
    std::vector<unsigned> ids;
    for (const auto& [id, entry] : table) ids.push_back(id);
    std::ranges::sort(ids);
    return random.from(ids);
}

SmartComponent* anyComponent(Random& random) { return random.from(trel::host::componentsNow()); }

void setSignal(Random& random, SmartComponent& component) {
    const unsigned id = anyId(random, component.getSignals());
    const int value = random.from<int>({0, 1, 2, -1, 2'147'483'647});
    if (random.oneIn(2))
        component.handleSignalValue(id, value, 10'000);
    else if (random.oneIn(3))
        component.setStaticSignalValue(id, value / 2.0);
    else
        component.setStaticSignalValue(id, value);
}

void setProperty(Random& random, SmartComponent& component) {
    const trel::smartcomp::Hold hold(component);
    component.setPropertyValue(anyId(random, component.getProperties()),
                               random.from<std::string>({"", "0", "1", "2.5", "1 2 3", "10",
                                                         "4294967295", "1e300", "text"}));
}

void editConnection(Random& random, Aggregation& group) {
    const unsigned id = anyId(random, trel::test::tableOf(group));
    switch (random.below(4)) {
        case 0: return group.deleteConnection(id);
        case 1: return group.moveSgConnOrderBackward(id);
        case 2: return group.moveSgConnOrderForward(id);
        default: {
            const unsigned source = anyComponent(random)->id();
            const unsigned destination = anyComponent(random)->id();
            trel::smartcomp::Connection::Build(&group, group.getNextSgConnId(), source,
                                               1 + random.below(4), destination,
                                               1 + random.below(4),
                                               random.from<int>({-1, 0, 1, 2'147'483'647}));
        }
    }
}

void editMember(Random& random, SmartComponent& component) {
    if (random.oneIn(2))
        component.deleteSignal(anyId(random, component.getSignals()));
    else
        component.getProperty(anyId(random, component.getProperties()))
            ->setType(random.from<std::string>({"Int32", "Vector3", "ObjectId", "nothing"}));
}

void remove(Random& random, SmartComponent& component) {
    if (component.isStationLogic()) return;
    if (random.oneIn(2))
        trel::smartcomp::RemoveSmartComponent(component.id());
    else
        trel::smartcomp::RemoveSubSmartComponent(component.id());
}

void act(Random& random) {
    SmartComponent& component = *anyComponent(random);
    auto* const group = dynamic_cast<Aggregation*>(&component);
    switch (random.below(group ? 8 : 6)) {
        case 0: return setProperty(random, component);
        case 1: {
            const trel::smartcomp::Hold hold(component);
            return component.execute(20'000);
        }
        case 2: return random.oneIn(3) ? remove(random, component) : editMember(random, component);
        case 6:
        case 7: return editConnection(random, *group);
        default: return setSignal(random, component);
    }
}

template <typename Action>
void attempt(const Action& action) {
    try {
        action();
    } catch (const std::exception&) {
        // A file may hold anything; what stays must be whole all the same.
    }
}

void eachComponent(void (*ask)(SmartComponent&)) {
    for (const SmartComponent* const component : trel::host::componentsNow()) {
        const unsigned id = component->id();
        attempt([&] {
            SmartComponent* const asked = trel::host::componentOf(id);
            if (!asked) return;
            const trel::smartcomp::Hold hold(*asked);
            ask(*asked);
        });
    }
}

}  // namespace

void actOn(std::string_view seed) {
    constexpr unsigned acts = 24;
    constexpr unsigned notices = 3'000;

    Random random(seedOf(seed));
    const Budget budget(notices);
    eachComponent([](SmartComponent& component) { component.initialize(); });
    eachComponent([](SmartComponent& component) { component.start(0); });
    for (unsigned i = 0; i != acts; ++i) attempt([&] { act(random); });
    eachComponent([](SmartComponent& component) { component.stop(); });
}

}  // namespace fuzz
