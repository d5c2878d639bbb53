#include "platform/broker/SignalBroker.h"

#include "platform/sdf/Subscribers.h"

namespace trel::broker {

namespace {

// Never destroyed: the station logic is destroyed at exit, and what it touches
// then must still live.
sdf::Subscribers<Listener>& listeners() {
    static auto* const all = new sdf::Subscribers<Listener>;
    return *all;
}

}  // namespace

void SignalBroker::subscribe(Listener& listener) { listeners().add(listener); }

void SignalBroker::unsubscribe(Listener& listener) { listeners().remove(listener); }

void SignalBroker::smartComponentUpdated(unsigned componentId) {
    listeners().tell([&](Listener& l) { l.smartComponentUpdated(componentId); });
}

void SignalBroker::scPropertyValueChanged(unsigned propertyId, unsigned componentId) {
    listeners().tell([&](Listener& l) { l.scPropertyValueChanged(propertyId, componentId); });
}

void SignalBroker::scSignalValueChanged(unsigned signalId, unsigned componentId) {
    listeners().tell([&](Listener& l) { l.scSignalValueChanged(signalId, componentId); });
}

void SignalBroker::signalConnectionDeleted(unsigned connectionId, unsigned stationLogicId) {
    listeners().tell([&](Listener& l) { l.signalConnectionDeleted(connectionId, stationLogicId); });
}

void SignalBroker::setVisualPose(unsigned objectId, const rob::PoseTemplate<double>& pose) {
    listeners().tell([&](Listener& l) { l.setVisualPose(objectId, pose); });
}

void SignalBroker::reportEvent(std::string code, std::string text1, std::string text2,
                               std::string text3) {
    listeners().tell([&](Listener& l) { l.reportEvent(code, text1, text2, text3); });
}

}  // namespace trel::broker
