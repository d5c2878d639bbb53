#include "smartcomp/Sensor.h"

#include <utility>

#include "platform/broker/SignalBroker.h"

namespace trel::smartcomp {

Sensor::Sensor(std::shared_ptr<sdf::Element> element, sdf::ObjectType type)
    : SmartComponent(std::move(element), type) {}

bool Sensor::hasVisual() const { return true; }

bool Sensor::isMovable() const { return true; }

void Sensor::handleInputSignal(unsigned, int, long long) {}

void Sensor::transform(const rob::Transform&) {}

void Sensor::setVisualPos() const {
    const rob::RotationTemplate<double> unturned(1, 0, 0, 0);
    broker::SignalBroker::setVisualPose(id(), {getSensorPosition(), unturned});
}

}  // namespace trel::smartcomp
