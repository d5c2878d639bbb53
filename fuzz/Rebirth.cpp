#include "fuzz/Rebirth.h"

#include <memory>

#include "host/Objects.h"
#include "platform/sdf/SdfManager.h"
#include "platform/station/Station.h"
#include "smartcomp/Lifecycle.h"
#include "smartcomp/Manager.h"
#include "smartcomp/Roster.h"

// This file alone is compiled without access control: no program but a fuzzer
// ends a singleton.

namespace fuzz {

namespace {

using trel::Station;
using trel::smartcomp::Manager;
using trel::smartcomp::SmartComponent;
using trel::smartcomp::StationLogic;

constexpr std::string_view emptyStation = "<station id=\"1\">\n"
                                          "  <smart_component id=\"2\" name=\"Station Logic\">\n"
                                          "    <type string=\"StationLogic\" />\n"
                                          "    <parent uint=\"0\" />\n"
                                          "  </smart_component>\n"
                                          "</station>\n";

void removeComponents() {
    while (const SmartComponent* const component = trel::host::anyComponentButLogic())
        trel::smartcomp::RemoveSubSmartComponent(component->id());
    Manager::inst()->roster() = {};
}

void open(std::string_view text, StationLogic* logic) {
    Station::inst().openText(text, "input");
    std::construct_at(logic);
}

}  // namespace

StationLogic& beginStation(std::string_view text) {
    StationLogic* const logic = StationLogic::inst();
    removeComponents();
    sdf::SdfManager::Remove(logic->id());
    std::destroy_at(logic);
    try {
        open(text, logic);
    } catch (...) {
        open(emptyStation, logic);
        throw;
    }
    return *logic;
}

StationLogic& beginStation() { return beginStation(emptyStation); }

}  // namespace fuzz
