#include "host/Controller.h"

#include <fmt/format.h>

#include <algorithm>
#include <any>
#include <stdexcept>
#include <utility>
#include <variant>

#include "host/Objects.h"
#include "platform/sdf/SdfManager.h"
#include "smartcomp/Connection.h"
#include "smartcomp/SmartComponent.h"
#include "smartcomp/StationLogic.h"

namespace trel::host {

namespace {

using smartcomp::Connection;
using smartcomp::SmartComponent;
using smartcomp::StationLogic;

// One connection to serve. Its ends are asked for when its turn comes: what is
// delivered before may change or delete it.
struct Turn {
    unsigned index;
    unsigned connectionId;
};

std::vector<Turn> turnsFrom(unsigned controllerId, unsigned signalId) {
    std::vector<Turn> turns;
    for (const auto& [id, connection] : StationLogic::inst()->connections())
        if (connection->matchSrc(controllerId, signalId))
            turns.push_back({connection->getIndex(), id});
    std::ranges::sort(turns, {}, &Turn::index);
    return turns;
}

const Connection* connectionNow(unsigned connectionId) {
    for (const auto& [id, connection] : StationLogic::inst()->connections())
        if (id == connectionId) return connection;
    return nullptr;
}

void deliver(unsigned objectId, unsigned signalId, SignalValue value, bool running,
             long long time) {
    if (SmartComponent* const component = componentOf(objectId)) {
        if (running)
            component->handleSignalValue(signalId, std::get<int>(value), time);
        else
            component->setStaticSignalValue(signalId, value);
    } else if (auto* const controller = dynamic_cast<ControllerInterface*>(objectOf(objectId))) {
        controller->setSignalValue(signalId, value, running);
    } else {
        throw std::out_of_range(
            fmt::format("a connection leads to the object {}, which is not there", objectId));
    }
}

void write(const Controller::Signal& signal, SignalValue value) {
    std::visit([&](auto number) { signal.element->touch("value")->setValue(number); }, value);
}

}  // namespace

SignalValue Controller::Signal::value() const {
    const auto held = element->get("value");
    if (!held) return 0;
    if (held->value().type() == typeid(double)) return held->asDouble("");
    return held->asInt("");
}

Controller::Controller(std::shared_ptr<sdf::Element> element)
    : SdfObject(std::move(element), sdf::ObjectType::Controller) {
    for (const auto& child : this->element()->children("signal"))
        signals_.push_back({child->getId(true), child->asString("name"), child->asString("type"),
                            child->asBool("auto_reset"), child});
    enterObject(*this);
}

Controller::~Controller() { sdf::SdfManager::Remove(id()); }

const Controller::Signal& Controller::signal(unsigned id) const {
    const auto found = std::ranges::find(signals_, id, &Signal::id);
    if (found == signals_.end())
        throw std::out_of_range(
            fmt::format("the controller \"{}\" has no signal with the id {}", name(), id));
    return *found;
}

void Controller::setSignalValue(unsigned signalId, SignalValue value, bool /*dynamic*/) {
    const Signal& target = signal(signalId);
    write(target, value);
    if (target.autoReset) write(target, 0);
}

void Controller::setOutput(unsigned signalId, SignalValue value, bool running, long long time) {
    const Signal& source = signal(signalId);
    if (source.value() == value) return;
    setSignalValue(signalId, value, running);

    for (const Turn& turn : turnsFrom(id(), signalId)) {
        const Connection* const connection = connectionNow(turn.connectionId);
        if (!connection || !connection->matchSrc(id(), signalId)) continue;
        const unsigned target = connection->getDstComponentId();
        const unsigned input = connection->getDstSignalId();
        deliver(target, input, value, running, time);
        if (source.autoReset) deliver(target, input, 0, running, time);
    }
}

}  // namespace trel::host
