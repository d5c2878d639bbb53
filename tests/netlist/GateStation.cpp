#include "tests/netlist/GateStation.h"

#include "components/Furnisher.h"
#include "platform/station/Station.h"
#include "smartcomp/Connection.h"
#include "smartcomp/Lifecycle.h"
#include "smartcomp/StationLogic.h"
#include "smartcomp/TypeLibrary.h"

namespace trel::test {

using smartcomp::SmartComponent;
using smartcomp::StationLogic;

GateStation::GateStation(const Netlist& netlist) {
    trelRegisterComponents();
    for (const std::string& input : netlist.inputs) makeGate("Buffer", input, 1);
    for (const Netlist::Gate& gate : netlist.gates)
        makeGate(gate.type, gate.output, gate.inputs.size());
    for (const Netlist::Gate& gate : netlist.gates) connect(gate);
    for (const auto& [name, component] : drivers_) component->initialize();
    for (const auto& [name, component] : drivers_) component->start(time_);
}

GateStation::~GateStation() {
    for (const auto& [name, component] : drivers_) smartcomp::RemoveSmartComponent(component->id());
}

void GateStation::set(const std::string& input, bool value) {
    drivers_.at(input)->handleSignalValue(firstInputId, value ? 1 : 0, ++time_);
}

bool GateStation::get(const std::string& wire) const {
    return drivers_.at(wire)->getSignal(outputId)->getDigitalValue() != 0;
}

void GateStation::makeGate(const std::string& type, const std::string& name, std::size_t inputs) {
    const auto element = GetStationElem()->appendObject("smart_component", nextId_++, name);
    element->touch("type")->setValue(type);
    element->touch("parent")->setValue(StationLogic::inst()->id());
    components::Furnisher furnisher(*element);
    furnisher.signal({"Out", "DigitalOutput", ""});
    for (std::size_t input = 0; input != inputs; ++input)
        furnisher.signal({"In" + std::to_string(input), "DigitalInput", ""});
    SmartComponent* const gate = smartcomp::Create(element);
    StationLogic::inst()->addChildComponent(gate->id(), std::nullopt);
    drivers_.emplace(name, gate);
}

void GateStation::connect(const Netlist::Gate& gate) {
    StationLogic& logic = *StationLogic::inst();
    unsigned pin = firstInputId;
    for (const std::string& input : gate.inputs) {
        smartcomp::Connection::Build(&logic, connections_ + 1, drivers_.at(input)->id(), outputId,
                                     drivers_.at(gate.output)->id(), pin++,
                                     static_cast<int>(connections_));
        ++connections_;
    }
}

}  // namespace trel::test
