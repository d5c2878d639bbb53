#pragma once

#include <memory>
#include <string>

#include "components/Furnisher.h"
#include "components/Reacting.h"
#include "components/Space.h"
#include "smartcomp/Sensor.h"

namespace trel::components {

struct LineSensorSettings {
    Point position;
    Point beam{0, 200, 0};  // from the position to where the beam ends
    double radius = 20;     // mm
    unsigned object = 0;    // what is detected; 0 for nothing
    bool read(unsigned propertyId, const std::string& text);
};

/// A light barrier: detects the part next to it that its beam meets. A part is
/// met when it is no farther than the radius from the beam.
class LineSensor final : public Reacting<smartcomp::Sensor, LineSensorSettings> {
public:
    static constexpr const char* typeName = "LineSensor";
    static constexpr const char* description =
        "Line sensor: Detected is on while a part is in the beam; Object names the part next to "
        "the sensor, Distance says how far along the beam it is, in whole mm.";
    static constexpr unsigned position = 1;
    static constexpr unsigned beam = 2;
    static constexpr unsigned radius = 3;
    static constexpr unsigned object = 4;

    explicit LineSensor(std::shared_ptr<sdf::Element> element);
    static void furnish(Furnisher& furnisher);

    unsigned detect() const override;
    rob::Vec3Template<double> getSensorPosition() const override;
    void transform(const rob::Transform& motion) override;
    void update(long long time) override;

    void readPropertyValues() override;

    /// Any object may have been detected.
    bool checkPropertyObjectType(unsigned propertyId, sdf::SdfObject* object) const override;

private:
    void refresh(long long time) override { update(time); }
    void step(long long time) override { update(time); }
    void propertyChanged(unsigned propertyId) override;
    Point beamEnd() const { return settings().position + settings().beam; }
};

}  // namespace trel::components
