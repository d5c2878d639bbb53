#include "components/Comparator.h"

#include <utility>

#include "components/Texts.h"

namespace trel::components {

bool ComparatorSettings::read(unsigned propertyId, const std::string& text) {
    if (propertyId == Comparator::limit) return take(limit, readNumber(text));
    if (propertyId == Comparator::hysteresis) return takeAtLeastZero(hysteresis, readNumber(text));
    if (propertyId != Comparator::mode) return true;
    if (text != "Above" && text != "Below") return false;
    above = text == "Above";
    return true;
}

Comparator::Comparator(std::shared_ptr<sdf::Element> element)
    : Reacting(std::move(element), sdf::ObjectType::Component) {}

void Comparator::furnish(Furnisher& furnisher) {
    furnisher.property({limit, "Limit", "Double", "0", "", "What In is compared with"})
        .property({mode, "Mode", "String", "Above", "", "When Out is on: Above or Below the limit"})
        .property({hysteresis, "Hysteresis", "Double", "0", "",
                   "How far In must come back to switch Out off"})
        .signal({"In", "AnalogInput", "What is compared"})
        .signal({"Out", "DigitalOutput", "The result"});
}

std::vector<std::string> Comparator::getEnumPropertyList(unsigned propertyId, const std::string&) {
    if (propertyId != mode) return {};
    return {"Above", "Below"};
}

void Comparator::refresh(long long time) { compare(number("In"), time); }

void Comparator::inputArrived(const Arrival& arrival) {
    if (arrival.signal == "In") compare(arrival.value, arrival.time);
}

void Comparator::compare(double in, long long time) {
    const double beyond = settings().above ? in - settings().limit : settings().limit - in;
    const double least = isOn("Out") ? -settings().hysteresis : 0;
    send("Out", beyond > least ? 1 : 0, time);
}

}  // namespace trel::components
