#include "components/LineSensor.h"

#include <utility>

#include "components/Part.h"
#include "components/Texts.h"

namespace trel::components {

bool LineSensorSettings::read(unsigned propertyId, const std::string& text) {
    switch (propertyId) {
        case LineSensor::position: return take(position, readPoint(text));
        case LineSensor::beam: return take(beam, readPoint(text));
        case LineSensor::radius: return takeAtLeastZero(radius, readNumber(text));
        case LineSensor::object: return take(object, readId(text));
        default: return true;
    }
}

LineSensor::LineSensor(std::shared_ptr<sdf::Element> element)
    : Reacting(std::move(element), sdf::ObjectType::Sensor) {}

void LineSensor::furnish(Furnisher& furnisher) {
    furnisher.property({position, "Position", "Vector3", "0 0 0", "mm", "Where the sensor stands"})
        .property({beam, "Beam", "Vector3", "0 200 0", "mm",
                   "The way from the sensor to where its beam ends"})
        .property({radius, "Radius", "Double", "20", "mm",
                   "How far from the beam a part may be to be detected"})
        .property({object, "Object", "ObjectId", "0", "", "The part that is detected", true})
        .signal({"Detected", "DigitalOutput", "On while a part is in the beam"})
        .signal({"Distance", "AnalogOutput", "Whole mm from the sensor to the part; 0 for none"});
}

unsigned LineSensor::detect() const {
    unsigned nearest = 0;
    double shortest = 0;
    for (const unsigned id : Part::ids()) {
        const Beside place = beside(Part::find(id)->place(), settings().position, beamEnd());
        if (place.away > settings().radius) continue;
        if (nearest != 0 && place.along >= shortest) continue;
        nearest = id;
        shortest = place.along;
    }
    return nearest;
}

rob::Vec3Template<double> LineSensor::getSensorPosition() const { return settings().position; }

// The beam turns with the carrier, and so does what it meets.
void LineSensor::transform(const rob::Transform& motion) {
    const Point from = motion.apply(settings().position);
    const Point to = motion.apply(beamEnd());
    keep(position, textOf(from));
    keep(beam, textOf(to - from));
}

// The object first: whoever reacts to Detected finds it named.
void LineSensor::update(long long time) {
    const unsigned found = detect();
    keep(object, std::to_string(found));
    const Part* const part = Part::find(found);
    const double distance = part ? beside(part->place(), settings().position, beamEnd()).along : 0;
    send("Distance", nearestInt(distance), time);
    send("Detected", part ? 1 : 0, time);
}

void LineSensor::readPropertyValues() {
    Reacting::readPropertyValues();
    setVisualPos();
}

bool LineSensor::checkPropertyObjectType(unsigned propertyId, sdf::SdfObject*) const {
    return propertyId == object;
}

void LineSensor::propertyChanged(unsigned propertyId) {
    if (propertyId == position) setVisualPos();
    // The object is the outcome of an update, not a reason for one.
    if (propertyId != object) Reacting::propertyChanged(propertyId);
}

}  // namespace trel::components
