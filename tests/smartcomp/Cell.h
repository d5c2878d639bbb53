#pragma once

#include <gtest/gtest.h>

#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "platform/sdf/SdfManager.h"
#include "platform/station/Station.h"
#include "smartcomp/Connection.h"
#include "smartcomp/Property.h"
#include "smartcomp/SCSignal.h"
#include "smartcomp/StationLogic.h"
#include "tests/smartcomp/Draft.h"
#include "tests/smartcomp/EventLog.h"
#include "tests/smartcomp/Leaks.h"
#include "tests/smartcomp/Types.h"
#include "tests/support/Expect.h"
#include "tests/support/Reach.h"

namespace trel::test {

using smartcomp::Aggregation;
using smartcomp::Connection;
using smartcomp::Property;
using smartcomp::SCSignal;
using smartcomp::SmartComponent;
using smartcomp::StationLogic;

using Ids = std::vector<unsigned>;

constexpr unsigned stationId = Station::id;
constexpr unsigned logicId = Station::logicId;
constexpr unsigned noSuchId = 999;

inline StationLogic& logic() { return *StationLogic::inst(); }

/// The ids, sorted: for what comes out of a hash table.
Ids sorted(Ids ids);
Lines sorted(Lines lines);

/// The signal `id` of a component.
SCSignal& signalOf(const SmartComponent& component, unsigned id);
ElementPtr elementOf(const SmartComponent& component, std::string_view tag, unsigned id);

/// What the document holds for a signal: "int 1", "" for nothing.
std::string documentValue(const SmartComponent& component, unsigned signalId);

/// Appends a signal connection at the end of the order, under the next free id.
unsigned connect(Aggregation& aggregation, End source, End destination);
unsigned bind(Aggregation& aggregation, End source, End destination);

/// A station without components, and one log of all that happens in it. At the
/// end every component is a mirror of its element, and all are removed.
class CellTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    /// Enters an object that is no component in the object table, and takes it
    /// out at the end.
    template <typename Type>
    Type& enter(unsigned id, const std::string& name) {
        auto object = std::make_unique<Type>(id, name);
        Type& entered = *object;
        enterObject(id, object.get());
        things_.push_back(std::move(object));
        return entered;
    }
    void enterObject(unsigned id, sdf::SdfObject* object);
    Controller& controller(unsigned id, const std::string& name) {
        return enter<Controller>(id, name);
    }
    static bool isInTable(unsigned id);

    /// For a test whose last state is no mirror, such as after a failed write.
    void leaveUnchecked(const SmartComponent& component) { unchecked_.insert(&component); }

    /// A component that the test lost on purpose lives on at the end.
    void expectLost(std::size_t components) { lost_ = components; }

    /// What happens from here on.
    static EventLog& log() { return eventLog(); }
    static EventLog& freshLog() {
        eventLog().clear();
        return eventLog();
    }

private:
    void expectMirrors() const;
    void removeComponents();

    std::deque<std::unique_ptr<sdf::SdfObject>> things_;
    Ids entered_;
    std::unordered_set<const SmartComponent*> unchecked_;
    std::size_t lost_ = 0;
};

}  // namespace trel::test
