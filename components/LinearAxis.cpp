#include "components/LinearAxis.h"

#include <utility>

#include "components/Texts.h"

namespace trel::components {

bool LinearAxisSettings::read(unsigned propertyId, const std::string& text) {
    switch (propertyId) {
        case LinearAxis::home: return take(home, readPoint(text));
        case LinearAxis::work: return take(work, readPoint(text));
        case LinearAxis::speed: return takeAtLeastZero(speed, readNumber(text));
        case LinearAxis::position: return take(position, readPoint(text));
        default: return true;
    }
}

LinearAxis::LinearAxis(std::shared_ptr<sdf::Element> element)
    : Reacting(std::move(element), sdf::ObjectType::Component) {}

void LinearAxis::furnish(Furnisher& furnisher) {
    furnisher.property({home, "Home", "Vector3", "0 0 0", "mm", "Where it rests"})
        .property({work, "Work", "Vector3", "0 0 500", "mm", "Where it goes"})
        .property({speed, "Speed", "Double", "500", "mm/s", "How fast it moves"})
        .property({position, "Position", "Vector3", "0 0 0", "mm", "Where it is", true})
        .signal({"Go", "DigitalInput", "Sends it to Work while on, to Home while off"})
        .signal({"AtHome", "DigitalOutput", "On while it is at Home"})
        .signal({"AtWork", "DigitalOutput", "On while it is at Work"});
}

void LinearAxis::start(long long time) {
    movedUntil_ = time;
    going_ = isOn("Go");
    Reacting::start(time);
}

void LinearAxis::refresh(long long time) {
    send("AtHome", settings().position == settings().home ? 1 : 0, time);
    send("AtWork", settings().position == settings().work ? 1 : 0, time);
}

// What came before is still due to the old command.
void LinearAxis::inputArrived(const Arrival& arrival) {
    step(arrival.time);
    going_ = isOn("Go");
}

void LinearAxis::step(long long time) {
    const double seconds = static_cast<double>(time - movedUntil_) / microsecondsPerSecond;
    movedUntil_ = time;
    const Point goal = going_ ? settings().work : settings().home;
    keep(position, textOf(towards(settings().position, goal, settings().speed * seconds)));
    refresh(time);
}

}  // namespace trel::components
