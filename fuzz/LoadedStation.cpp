#include "fuzz/LoadedStation.h"

#include <algorithm>
#include <array>
#include <exception>
#include <utility>

#include "fuzz/Rebirth.h"
#include "host/Members.h"
#include "host/Objects.h"
#include "platform/station/Station.h"
#include "smartcomp/Lifecycle.h"
#include "tests/smartcomp/Mirror.h"
#include "tests/support/Reach.h"

namespace fuzz {

namespace {

using trel::host::componentsNow;
using trel::smartcomp::Aggregation;
using trel::smartcomp::SmartComponent;

}  // namespace

LoadedStation::LoadedStation(std::string_view text) {
    beginStation(text);
    try {
        trel::smartcomp::Load();
    } catch (const std::exception&) {
        whole_ = false;
    }
    makeControllers();
    whole_ = whole_ && !lostRecords();
}

void LoadedStation::makeControllers() {
    for (const auto& element : trel::GetStationElem()->children("controller")) try {
            controllers_.push_back(std::make_unique<trel::host::Controller>(element));
        } catch (const std::exception&) {
            whole_ = false;
        }
}

// Of two properties or signals with one id the first is lost.
bool LoadedStation::lostRecords() {
    return std::ranges::any_of(componentsNow(), [](const SmartComponent* component) {
        const sdf::Element& element = *component->element();
        return element.children("property").size() != component->getProperties().size() ||
               element.children("signal").size() != component->getSignals().size();
    });
}

std::string LoadedStation::faults() {
    std::string text;
    for (SmartComponent* const component : componentsNow())
        for (const std::string& fault : trel::test::mirrorFaults(*component)) text += fault + "\n";
    return text;
}

std::string LoadedStation::state() {
    std::string text;
    for (SmartComponent* const component : componentsNow()) {
        text += "component " + std::to_string(component->id()) + " in " +
                std::to_string(component->getObjParentId()) + "\n";
        for (const auto& member : trel::host::membersOf(component->id()))
            text += "  " + trel::host::shown(member) + "\n";
        auto* const aggregation = dynamic_cast<Aggregation*>(component);
        if (!aggregation) continue;
        for (const unsigned id : trel::test::orderOf(*aggregation))
            text += "  connection " + std::to_string(id) + "\n";
    }
    return text;
}

}  // namespace fuzz
