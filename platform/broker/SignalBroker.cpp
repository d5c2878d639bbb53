#include "platform/broker/SignalBroker.h"

#include "platform/sdf/Subscribers.h"

namespace trel::broker {

namespace {

constinit sdf::LastingSubscribers<Listener> listeners;

}  // namespace

void SignalBroker::subscribe(Listener& listener) { listeners.all.add(listener); }

void SignalBroker::unsubscribe(Listener& listener) { listeners.all.remove(listener); }

void SignalBroker::smartComponentUpdated(unsigned componentId) {
    listeners.all.tell([&](Listener& l) { l.smartComponentUpdated(componentId); });
}

void SignalBroker::scPropertyValueChanged(unsigned propertyId, unsigned componentId) {
    listeners.all.tell([&](Listener& l) { l.scPropertyValueChanged(propertyId, componentId); });
}

void SignalBroker::scSignalValueChanged(unsigned signalId, unsigned componentId) {
    listeners.all.tell([&](Listener& l) { l.scSignalValueChanged(signalId, componentId); });
}

void SignalBroker::signalConnectionDeleted(unsigned connectionId, unsigned stationLogicId) {
    listeners.all.tell([&](Listener& l) {
        l.signalConnectionDeleted(connectionId, stationLogicId);
    });
}

void SignalBroker::setVisualPose(unsigned objectId, const rob::PoseTemplate<double>& pose) {
    listeners.all.tell([&](Listener& l) { l.setVisualPose(objectId, pose); });
}

void SignalBroker::reportEvent(std::string code, std::string text1, std::string text2,
                               std::string text3) {
    listeners.all.tell([&](Listener& l) { l.reportEvent(code, text1, text2, text3); });
}

}  // namespace trel::broker
