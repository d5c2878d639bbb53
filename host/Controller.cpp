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
#include "smartcomp/DeliveryObserver.h"
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

using Delivery = smartcomp::DeliveryObserver::Delivery;

void deliver(const Delivery& delivery, bool running, long long time) {
    const unsigned signal = delivery.destination;
    if (SmartComponent* const component = componentOf(delivery.destinationComponent)) {
        if (running)
            component->handleSignalValue(signal, std::get<int>(delivery.value), time);
        else
            component->setStaticSignalValue(signal, delivery.value);
    } else if (auto* const controller =
                   dynamic_cast<ControllerInterface*>(objectOf(delivery.destinationComponent))) {
        controller->setSignalValue(signal, delivery.value, running);
    } else {
        throw std::out_of_range(fmt::format("a connection leads to the object {}, which is not "
                                            "there",
                                            delivery.destinationComponent));
    }
}

// As the library does for the sources that are components.
void deliverObserved(const Delivery& delivery, bool running, long long time) {
    auto* const observer = smartcomp::DeliveryObserver::present();
    if (observer && !observer->before(delivery)) return;
    deliver(delivery, running, time);
    if (observer && observer == smartcomp::DeliveryObserver::present()) observer->after(delivery);
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
    for (const auto& child : this->element()->children("signal")) {
        signals_.push_back({child->getId(true), child->asString("name"), child->asString("type"),
                            child->asBool("auto_reset"), child});
        signals_.back().value();  // one that is no number throws here, not in the midst of a run
    }
    enterObject(*this);
}

Controller::~Controller() { sdf::SdfManager::Remove(id()); }

const Controller::Signal& Controller::signal(unsigned id) const {
    const auto found = std::ranges::find(signals_, id, &Signal::id);
    if (found == signals_.end())
        throw std::out_of_range(fmt::format("the controller \"{}\" has no signal with the id {}",
                                            name(), id));
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
        Delivery delivery{
            id(),  signalId, connection->getDstComponentId(), connection->getDstSignalId(),
            value, nullptr};
        deliverObserved(delivery, running, time);
        delivery.value = 0;
        if (source.autoReset) deliverObserved(delivery, running, time);
    }
}

}  // namespace trel::host
