#include "host/Settings.h"

#include <variant>

#include "host/Members.h"
#include "host/Objects.h"
#include "smartcomp/Hold.h"

namespace trel::host {

void setSignal(const Member& signal, int value, Time time) {
    if (signalOf(signal))
        return componentOf(signal.object)->handleSignalValue(signal.id, value, time);
    auto* const controller = dynamic_cast<Controller*>(objectOf(signal.object));
    if (controllerSignalOf(signal)->isOutput())
        controller->setOutput(signal.id, value, true, time);
    else
        controller->setSignalValue(signal.id, value, true);
}

void carryOut(const Setting& setting, Time time) {
    if (propertyOf(setting.member)) {
        const smartcomp::Hold hold(*componentOf(setting.member.object));
        componentOf(setting.member.object)->setPropertyValue(setting.member.id, setting.text);
        return;
    }
    setSignal(setting.member, setting.number, time);
    // What came of the value may have removed the signal.
    if (setting.kind == Setting::Kind::Pulse && nameOf(setting.member) &&
        !isAutoReset(setting.member))
        setSignal(setting.member, 0, time);
}

void Held::release(const Member& signal) {
    values_.erase(signal);
    disturbed_.erase(signal);
}

std::map<Member, int> Held::disturbed() {
    std::map<Member, int> result;
    for (const Member& signal : disturbed_) result.emplace(signal, values_.at(signal));
    disturbed_.clear();
    return result;
}

void Held::changed(const Change& change) {
    const auto held = values_.find(change.member);
    if (held == values_.end()) return;
    if (change.number == SignalValue(held->second))
        disturbed_.erase(change.member);
    else
        disturbed_.insert(change.member);
}

}  // namespace trel::host
