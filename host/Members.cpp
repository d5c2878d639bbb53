#include "host/Members.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <mutex>
#include <shared_mutex>
#include <stdexcept>

#include "host/Objects.h"
#include "host/PropertyText.h"

namespace trel::host {

using smartcomp::Property;
using smartcomp::SCSignal;
using smartcomp::SmartComponent;

std::vector<Controller*> controllersNow() {
    std::vector<Controller*> result;
    auto& manager = *sdf::SdfManager::inst();
    {
        const std::shared_lock lock(manager.mutex());
        for (const auto& [id, object] : manager.objects())
            if (auto* const controller = dynamic_cast<Controller*>(object))
                result.push_back(controller);
    }
    std::ranges::sort(result, {}, [](const Controller* controller) { return controller->id(); });
    return result;
}

std::vector<Member> membersOf(unsigned objectId) {
    std::vector<Member> members;
    if (const SmartComponent* const component = componentOf(objectId)) {
        for (const auto& entry : component->getSignals())
            members.push_back({objectId, Member::Kind::Signal, entry.first});
        for (const auto& entry : component->getProperties())
            members.push_back({objectId, Member::Kind::Property, entry.first});
    } else if (const auto* const controller = dynamic_cast<Controller*>(objectOf(objectId))) {
        for (const Controller::Signal& signal : controller->signals())
            members.push_back({objectId, Member::Kind::Signal, signal.id});
    }
    std::ranges::sort(members);
    return members;
}

SCSignal* signalOf(const Member& member) {
    const SmartComponent* const component = componentOf(member.object);
    if (member.kind != Member::Kind::Signal || !component || !component->hasSignal(member.id))
        return nullptr;
    return dynamic_cast<SCSignal*>(component->getSignal(member.id));
}

const Controller::Signal* controllerSignalOf(const Member& member) {
    const auto* const controller = dynamic_cast<Controller*>(objectOf(member.object));
    if (member.kind != Member::Kind::Signal || !controller) return nullptr;
    const auto& all = controller->signals();
    const auto found = std::ranges::find(all, member.id, &Controller::Signal::id);
    return found == all.end() ? nullptr : &*found;
}

Property* propertyOf(const Member& member) {
    const SmartComponent* const component = componentOf(member.object);
    if (member.kind != Member::Kind::Property || !component || !component->hasProperty(member.id))
        return nullptr;
    return component->getProperty(member.id);
}

std::optional<std::string> nameOf(const Member& member) {
    if (const SCSignal* const signal = signalOf(member)) return signal->getName();
    if (const auto* const signal = controllerSignalOf(member)) return signal->name;
    if (const Property* const property = propertyOf(member)) return property->name();
    return std::nullopt;
}

std::string signalTypeOf(const Member& signal) {
    if (auto* const own = signalOf(signal)) return own->getTypeString();
    return controllerSignalOf(signal)->type;
}

bool isDigital(const Member& signal) { return signalTypeOf(signal).starts_with("Digital"); }

bool isAutoReset(const Member& signal) {
    if (const auto* const own = signalOf(signal)) return own->isAutoReset();
    return controllerSignalOf(signal)->autoReset;
}

std::string choicesOf(const Member& property) {
    std::string choices;
    for (const std::string& choice :
         componentOf(property.object)->getEnumPropertyList(property.id, ""))
        choices += (choices.empty() ? "one of " : ", ") + choice;
    return choices;
}

std::string insteadOf(const Member& property, const std::string& text) {
    const std::string& type = propertyOf(property)->type();
    const std::string_view wanted = text.empty() ? "" : wantedFor(type, text);
    if (wanted.empty() && componentOf(property.object)->validatePropertyValue(property.id, text))
        return {};
    if (const std::string choices = choicesOf(property); !choices.empty()) return choices;
    return wanted.empty() ? "another value of type " + type : std::string(wanted);
}

std::optional<SignalValue> signalValueOf(const Member& member) {
    if (SCSignal* const signal = signalOf(member)) return signal->getValue();
    if (const auto* const signal = controllerSignalOf(member)) return signal->value();
    return std::nullopt;
}

std::string shown(const Member& member) {
    if (const auto value = signalValueOf(member)) return shown(*value);
    Property* const property = propertyOf(member);
    if (!property) return "nothing";
    try {
        // A number without a unit ends in a blank.
        std::string text = property->getDisplayValue();
        text.erase(text.find_last_not_of(' ') + 1);
        return text;
    } catch (const std::logic_error&) {
        return property->value();
    }
}

std::string shown(const SignalValue& value) {
    std::array<char, 32> buffer;
    const auto write = [&](auto number) {
        return std::to_chars(buffer.data(), buffer.data() + buffer.size(), number).ptr;
    };
    const char* const end = std::visit(write, value);
    return {static_cast<const char*>(buffer.data()), end};
}

}  // namespace trel::host
