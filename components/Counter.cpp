#include "components/Counter.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "components/Texts.h"

namespace trel::components {

bool CounterSettings::read(unsigned propertyId, const std::string& text) {
    if (propertyId == Counter::limit) return take(limit, readWhole(text));
    if (propertyId == Counter::count) return take(count, readWhole(text));
    return true;
}

Counter::Counter(std::shared_ptr<sdf::Element> element)
    : Reacting(std::move(element), sdf::ObjectType::Component) {}

void Counter::furnish(Furnisher& furnisher) {
    furnisher.property({limit, "Limit", "Int32", "10", "", "The count at which Reached is on"})
        .property({count, "Count", "Int32", "0", "", "What has been counted", true})
        .signal({"Up", "DigitalInput", "Adds 1 when it rises"})
        .signal({"Down", "DigitalInput", "Takes 1 away when it rises"})
        .signal({"Reset", "DigitalInput", "Sets the count to 0 when it rises"})
        .signal({"Value", "GroupOutput", "The count"})
        .signal({"Reached", "DigitalOutput", "On while the count is at least Limit"});
}

void Counter::refresh(long long time) {
    send("Value", settings().count, time);
    send("Reached", settings().count >= settings().limit ? 1 : 0, time);
}

void Counter::inputArrived(const Arrival& arrival) {
    if (!arrival.rose()) return;
    const long long present = settings().count;
    if (arrival.signal == "Up") set(present + 1, arrival.time);
    if (arrival.signal == "Down") set(present - 1, arrival.time);
    if (arrival.signal == "Reset") set(0, arrival.time);
}

// The count stops at the largest and the smallest int. Setting the property
// refreshes the outputs while the simulation runs.
void Counter::set(long long newCount, long long time) {
    using Limits = std::numeric_limits<int>;
    const long long held = std::clamp<long long>(newCount, Limits::min(), Limits::max());
    keep(count, std::to_string(held));
    refresh(time);
}

}  // namespace trel::components
