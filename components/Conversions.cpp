#include "components/Conversions.h"

#include <map>
#include <optional>
#include <string>
#include <utility>

#include "components/Texts.h"

namespace trel::components {

namespace {

constexpr unsigned bits = 32;        // of a group value
constexpr unsigned bitsAtFirst = 8;  // of a new component

std::string bitName(unsigned bit) { return "Bit" + std::to_string(bit); }

// The bit that a signal of this name carries; empty if it carries none.
std::optional<unsigned> bitOf(std::string_view name) {
    if (!name.starts_with("Bit")) return std::nullopt;
    const auto bit = readId(name.substr(3));
    return bit && *bit < bits ? bit : std::nullopt;
}

void addBits(Furnisher& furnisher, std::string_view type) {
    for (unsigned bit = 0; bit != bitsAtFirst; ++bit)
        furnisher.signal({bitName(bit), type, "Bit " + std::to_string(bit) + " of the group"});
}

}  // namespace

GroupToDigital::GroupToDigital(std::shared_ptr<sdf::Element> element)
    : Reacting(std::move(element), sdf::ObjectType::Component) {}

void GroupToDigital::furnish(Furnisher& furnisher) {
    furnisher.signal({"In", "GroupInput", "The value that is taken apart"});
    addBits(furnisher, "DigitalOutput");
}

void GroupToDigital::refresh(long long time) { spread(nearestInt(number("In")), time); }

void GroupToDigital::inputArrived(const Arrival& arrival) {
    if (arrival.signal == "In") spread(arrival.value, arrival.time);
}

// From bit 0 up. What a bit sets off may change the component's signals, so
// they are not walked while sending.
void GroupToDigital::spread(int value, long long time) {
    std::map<unsigned, unsigned> outputs;  // bit, signal id
    for (const auto& [id, signal] : getSignals()) {
        const auto bit = bitOf(signal->getName());
        if (bit && signal->getType() == SignalType::DigitalOutput) outputs.emplace(*bit, id);
    }
    for (const auto& [bit, id] : outputs)
        if (hasSignal(id))
            handleOutputSignal(id, static_cast<int>(static_cast<unsigned>(value) >> bit & 1u),
                               time);
}

DigitalToGroup::DigitalToGroup(std::shared_ptr<sdf::Element> element)
    : Reacting(std::move(element), sdf::ObjectType::Component) {}

void DigitalToGroup::furnish(Furnisher& furnisher) {
    addBits(furnisher, "DigitalInput");
    furnisher.signal({"Out", "GroupOutput", "The value put together, bit 0 counting 1"});
}

void DigitalToGroup::refresh(long long time) {
    unsigned value = 0;
    for (const auto& [id, signal] : getSignals()) {
        const auto bit = bitOf(signal->getName());
        if (bit && signal->getType() == SignalType::DigitalInput &&
            numberOf(signal->getValue()) != 0)
            value |= 1u << *bit;
    }
    send("Out", static_cast<int>(value), time);
}

}  // namespace trel::components
