#include <gmock/gmock.h>

#include <algorithm>
#include <string>

#include "host/LiveStation.h"
#include "host/Objects.h"
#include "platform/station/Station.h"
#include "smartcomp/Aggregation.h"
#include "smartcomp/Property.h"
#include "smartcomp/SCSignal.h"
#include "smartcomp/TypeLibrary.h"
#include "tests/host/Program.h"

namespace trel::test {

namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class PickAndPlace : public FolderTest {
protected:
    static std::string stationFile() {
        return (sourceFolder() / "examples/pick_and_place/station.xml").string();
    }
    static std::string scenarioFile() {
        return (sourceFolder() / "examples/pick_and_place/scenario.yaml").string();
    }
    Result play() const {
        return station({"run", stationFile(), "--scenario", scenarioFile(), "--show", "--save",
                        path("after.xml")});
    }
};

// What the example is to show, counted over its live components.
struct Inventory {
    unsigned components = 0;
    unsigned nested = 0;  // user aggregations inside another
    unsigned connections = 0;
    unsigned toController = 0;
    unsigned fromController = 0;
    unsigned bindings = 0;
    unsigned objectBindings = 0;
    unsigned pulses = 0;
    unsigned analog = 0;
    unsigned groups = 0;
    unsigned sensors = 0;

    Inventory() {
        for (const auto* const component : host::componentsNow()) {
            count(*component);
            if (const auto* const owner = dynamic_cast<const smartcomp::Aggregation*>(component))
                count(*owner);
        }
    }

    void count(const smartcomp::SmartComponent& component) {
        if (!component.isStationLogic()) ++components;
        if (component.isSensor()) ++sensors;
        const auto* const parent = host::componentOf(component.getObjParentId());
        if (component.isUser() && parent && parent->isUser()) ++nested;
        for (const auto& [id, signal] : component.getSignals()) {
            if (dynamic_cast<const smartcomp::SCSignal&>(*signal).isAutoReset()) ++pulses;
            if (signal->isAnalog()) ++analog;
            if (signal->getTypeString().starts_with("Group")) ++groups;
        }
    }

    void count(const smartcomp::Aggregation& owner) {
        const auto isController = [](unsigned id) {
            return dynamic_cast<host::Controller*>(host::objectOf(id)) != nullptr;
        };
        for (const auto& [id, connection] : owner.connections()) {
            ++connections;
            if (isController(connection->getDstComponentId())) ++toController;
            if (isController(connection->getSrcComponentId())) ++fromController;
        }
        for (const auto& [id, binding] : owner.bindings()) {
            ++bindings;
            const auto* const source = host::componentOf(binding->getSrcComponentId());
            if (source->getProperty(binding->getSrcPropertyId())->isObjectId()) ++objectBindings;
        }
    }
};

}  // namespace

TEST_F(PickAndPlace, AllItsExpectationsHold) {
    const Result result = play();
    EXPECT_EQ(result.code, 0) << result.out;
    EXPECT_EQ(result.err, "");
    EXPECT_THAT(result.out, HasSubstr("expectations: 36 held, 0 failed"));
    EXPECT_THAT(result.out, Not(HasSubstr("!! event")));
}

TEST_F(PickAndPlace, ItsPulseIsSeenGoingOnAndOff) {
    EXPECT_THAT(play().out, HasSubstr("      2.5s  Handling/Hand/Gripper.Released = 1\n"
                                      "      2.5s  Handling/Hand/Gripper.Released = 0\n"));
}

TEST_F(PickAndPlace, UsesEverything) {
    trelRegisterComponents();
    const host::LiveStation station(stationFile());
    const Inventory used;
    EXPECT_GE(used.components, 12u);
    EXPECT_GE(used.nested, 1u);
    EXPECT_GE(used.connections, 15u);
    EXPECT_GE(used.toController, 1u);
    EXPECT_GE(used.fromController, 1u);
    EXPECT_GE(used.bindings, 4u);
    EXPECT_GE(used.objectBindings, 1u);
    EXPECT_GE(used.pulses, 1u);
    EXPECT_GE(used.analog, 1u);
    EXPECT_GE(used.groups, 1u);
    EXPECT_GE(used.sensors, 1u);
}

TEST_F(PickAndPlace, IsSavedUnchangedAlsoWhenItsComponentsLive) {
    trelRegisterComponents();
    const host::LiveStation station(stationFile());
    EXPECT_EQ(Station::inst().text(), readFile(stationFile()));
}

TEST_F(PickAndPlace, TheSavedFileIsTheStationAsItWasAfterTheRun) {
    const Result result = play();
    const std::string shown = station({"show", path("after.xml")}).out;
    EXPECT_THAT(shown, HasSubstr("Holder = None"));
    EXPECT_THAT(result.out, HasSubstr("\n\n" + shown));
}

TEST_F(PickAndPlace, TheSavedFileIsSavedAgainUnchanged) {
    play();
    trelRegisterComponents();
    const host::LiveStation again(path("after.xml"));
    again.save(path("again.xml"));
    EXPECT_EQ(readFile(path("again.xml")), readFile(path("after.xml")));
}

// Comments, and all that the run does not touch, are in the saved file as before.
TEST_F(PickAndPlace, ARunChangesOnlyValues) {
    play();
    const std::string before = readFile(stationFile());
    const std::string after = readFile(path("after.xml"));
    EXPECT_EQ(std::count(before.begin(), before.end(), '\n'),
              std::count(after.begin(), after.end(), '\n'));
    EXPECT_THAT(after, HasSubstr("A pick-and-place cell."));
}

TEST_F(PickAndPlace, IsShownByNames) {
    const std::string text = station({"show", stationFile()}).out;
    for (const char* const line :
         {"station Pick and place\n", "  Feeding  Group  #10\n", "    Belt speed = 200.00 mm/s\n",
          "  connection 0: Robot.Start -> Feeding.Enable\n",
          "      binding: Handling/Hand/Axis.Position -> Handling/Hand/Gripper.Position\n",
          "        Released : DigitalOutput, resets itself = 0\n", "  Robot  controller  #90\n"})
        EXPECT_THAT(text, HasSubstr(line));
}

}  // namespace trel::test
