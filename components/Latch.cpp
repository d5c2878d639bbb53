#include "components/Latch.h"

#include <utility>

namespace trel::components {

bool LatchSettings::read(unsigned propertyId, const std::string& text) {
    if (propertyId != Latch::dominant) return true;
    if (text != "Set" && text != "Reset") return false;
    resetWins = text == "Reset";
    return true;
}

Latch::Latch(std::shared_ptr<sdf::Element> element)
    : Reacting(std::move(element), sdf::ObjectType::Component) {}

void Latch::furnish(Furnisher& furnisher) {
    furnisher
        .property({dominant, "Dominant", "String", "Reset", "",
                   "Which input wins while both are on: Set or Reset"})
        .signal({"Set", "DigitalInput", "Switches Out on"})
        .signal({"Reset", "DigitalInput", "Switches Out off"})
        .signal({"Out", "DigitalOutput", "What was set last"})
        .signal({"Inverse", "DigitalOutput", "The opposite of Out"});
}

std::vector<std::string> Latch::getEnumPropertyList(unsigned propertyId, const std::string&) {
    if (propertyId != dominant) return {};
    return {"Set", "Reset"};
}

void Latch::refresh(long long time) { decide(isOn("Set"), isOn("Reset"), time); }

// The value that arrives counts, not the stored one: an input that resets itself
// is off again by now.
void Latch::inputArrived(const Arrival& arrival) {
    const auto level = [&](const char* name) {
        return arrival.signal == name ? arrival.isOn() : isOn(name);
    };
    decide(level("Set"), level("Reset"), arrival.time);
}

void Latch::decide(bool set, bool reset, long long time) {
    bool out = isOn("Out");
    if (set && reset)
        out = !settings().resetWins;
    else if (set || reset)
        out = set;
    send("Out", out ? 1 : 0, time);
    // Out may have come back as a new Set or Reset: the inverse is of what it is now.
    send("Inverse", isOn("Out") ? 0 : 1, time);
}

}  // namespace trel::components
