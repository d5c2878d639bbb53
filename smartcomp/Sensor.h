#pragma once

#include <memory>

#include "platform/rob/Transform.h"
#include "platform/rob/Vec3Template.h"
#include "smartcomp/Export.h"
#include "smartcomp/SmartComponent.h"

namespace trel::smartcomp {

/// The base of components that detect objects. A sensor is shown in the station
/// and can be moved; it does not react to its inputs unless a type makes it.
class TREL_API Sensor : public SmartComponent {
public:
    bool hasVisual() const override;
    bool isMovable() const override;
    void handleInputSignal(unsigned signalId, int value, long long time) override;

    /// The id of the object that the sensor detects now; 0 for none. Changes
    /// nothing.
    virtual unsigned detect() const = 0;

    /// Where the sensor stands, in mm.
    virtual rob::Vec3Template<double> getSensorPosition() const = 0;

    /// Follows a motion of what carries the sensor; does nothing unless a type
    /// makes it.
    virtual void transform(const rob::Transform& transform);

    /// Detects, and sets the outputs accordingly.
    virtual void update(long long time) = 0;

protected:
    Sensor(std::shared_ptr<sdf::Element> element, sdf::ObjectType type);

    /// Tells the broker where the visual stands: at the sensor's position and
    /// unturned, however the sensor's element is turned.
    void setVisualPos() const;
};

}  // namespace trel::smartcomp
