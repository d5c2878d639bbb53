#include "components/Gripper.h"

#include <utility>

#include "components/Part.h"
#include "components/Texts.h"

namespace trel::components {

bool GripperSettings::read(unsigned propertyId, const std::string& text) {
    switch (propertyId) {
        case Gripper::position: return take(position, readPoint(text));
        case Gripper::reach: return takeAtLeastZero(reach, readNumber(text));
        case Gripper::target: return take(target, readId(text));
        case Gripper::held: return take(held, readId(text));
        default: return true;
    }
}

Gripper::Gripper(std::shared_ptr<sdf::Element> element)
    : Reacting(std::move(element), sdf::ObjectType::Component) {}

void Gripper::furnish(Furnisher& furnisher) {
    furnisher.property({position, "Position", "Vector3", "0 0 0", "mm", "Where the gripper is"})
        .property({reach, "Reach", "Double", "50", "mm", "How far away it takes a part"})
        .property({target, "Target", "ObjectId", "0", "", "The part to take; None for the nearest"})
        .property({held, "Held", "ObjectId", "0", "", "The part that is held", true})
        .signal({"Close", "DigitalInput", "Takes a part when it rises, releases it when it falls"})
        .signal({"Holding", "DigitalOutput", "On while a part is held"})
        .signal({"Load", "AnalogOutput", "What the part that is held weighs, in whole g"})
        .signal({"Released", "DigitalOutput", "A pulse when a part was released", true});
}

bool Gripper::checkPropertyObjectType(unsigned propertyId, sdf::SdfObject* object) const {
    if (propertyId != target && propertyId != held) return false;
    // "None" is offered as the station itself, which is the object 1.
    return object->id() == 1 || Part::find(object->id()) == object;
}

void Gripper::refresh(long long time) {
    const Part* const part = Part::find(settings().held);
    send("Load", part ? nearestInt(part->weight()) : 0, time);
    send("Holding", part ? 1 : 0, time);
}

void Gripper::inputArrived(const Arrival& arrival) {
    if (arrival.signal != "Close") return;
    if (arrival.rose()) takePart(arrival.time);
    if (arrival.fell()) release(arrival.time);
}

// A part that is held goes where the gripper goes.
void Gripper::propertyChanged(unsigned propertyId) {
    if (propertyId == position)
        if (Part* const part = Part::find(settings().held)) part->moveTo(settings().position);
    Reacting::propertyChanged(propertyId);
}

unsigned Gripper::choose() const {
    unsigned chosen = 0;
    double shortest = settings().reach;
    for (const unsigned id : Part::ids()) {
        const Part& part = *Part::find(id);
        const double distance = lengthOf(part.place() - settings().position);
        const bool suits = settings().target == 0 || settings().target == id;
        if (!suits || !part.isFree() || distance > shortest) continue;
        if (chosen != 0 && distance == shortest) continue;
        chosen = id;
        shortest = distance;
    }
    return chosen;
}

void Gripper::takePart(long long time) {
    if (Part::find(settings().held)) return;
    const unsigned chosen = choose();
    if (chosen == 0) return;
    Part::find(chosen)->setHolder(id());
    keep(held, std::to_string(chosen));
    if (Part* const part = Part::find(chosen)) part->moveTo(settings().position);
    refresh(time);
}

void Gripper::release(long long time) {
    Part* const part = Part::find(settings().held);
    if (part) part->setHolder(0);
    keep(held, "0");
    refresh(time);
    if (part) send("Released", 1, time);
}

}  // namespace trel::components
