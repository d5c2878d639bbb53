#include "components/Conveyor.h"

#include <utility>

#include "components/Part.h"
#include "components/Texts.h"

namespace trel::components {

bool ConveyorSettings::read(unsigned propertyId, const std::string& text) {
    switch (propertyId) {
        case Conveyor::beginning: return take(start, readPoint(text));
        case Conveyor::end: return take(end, readPoint(text));
        case Conveyor::speed: return takeAtLeastZero(speed, readNumber(text));
        case Conveyor::width: return takeAtLeastZero(width, readNumber(text));
        default: return true;
    }
}

Conveyor::Conveyor(std::shared_ptr<sdf::Element> element)
    : Reacting(std::move(element), sdf::ObjectType::Component) {}

void Conveyor::furnish(Furnisher& furnisher) {
    furnisher.property({beginning, "Start", "Vector3", "0 0 0", "mm", "Where the belt begins"})
        .property({end, "End", "Vector3", "1000 0 0", "mm", "Where the belt ends"})
        .property({speed, "Speed", "Double", "250", "mm/s", "How fast the belt runs"})
        .property({width, "Width", "Double", "200", "mm", "How wide the belt is"})
        .signal({"Run", "DigitalInput", "Lets the belt run"})
        .signal({"Backward", "DigitalInput", "Turns the direction round"})
        .signal({"Running", "DigitalOutput", "On while the belt runs"})
        .signal({"Carrying", "GroupOutput", "How many free parts lie on the belt"});
}

void Conveyor::start(long long time) {
    movedUntil_ = time;
    readInputs();
    Reacting::start(time);
}

void Conveyor::readInputs() {
    runs_ = isOn("Run");
    backward_ = isOn("Backward");
}

void Conveyor::refresh(long long time) {
    send("Running", runs_ ? 1 : 0, time);
    int carried = 0;
    for (const unsigned part : Part::ids())
        if (carries(part)) ++carried;
    send("Carrying", carried, time);
}

// What came before is still due to the old command.
void Conveyor::inputArrived(const Arrival& arrival) {
    step(arrival.time);
    readInputs();
    refresh(arrival.time);
}

void Conveyor::step(long long time) {
    const double seconds = static_cast<double>(time - movedUntil_) / microsecondsPerSecond;
    movedUntil_ = time;
    if (runs_) move(settings().speed * seconds);
    refresh(time);
}

bool Conveyor::carries(unsigned partId) const {
    const Part* const part = Part::find(partId);
    return part && part->isFree() &&
           beside(part->place(), settings().start, settings().end).away <= settings().width / 2;
}

// A part keeps its distance from the middle of the belt.
void Conveyor::move(double distance) {
    for (const unsigned id : Part::ids()) {
        if (!carries(id)) continue;
        const Point from = backward_ ? settings().end : settings().start;
        const Point to = backward_ ? settings().start : settings().end;
        const double length = lengthOf(to - from);
        if (length == 0) continue;
        Part& part = *Part::find(id);
        const double left = length - beside(part.place(), from, to).along;
        const Point goal = part.place() + (to - from) * (left / length);
        if (left > 0) part.moveTo(towards(part.place(), goal, distance));
    }
}

}  // namespace trel::components
