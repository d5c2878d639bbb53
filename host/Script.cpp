#include "host/Script.h"

#include <fmt/format.h>

#include <string_view>
#include <utility>

#include "host/Members.h"
#include "host/Numbers.h"
#include "host/Objects.h"

namespace trel::host {

namespace {

class Binder {
public:
    explicit Binder(const Scenario& scenario) : scenario_(scenario) {}

    Script::Moment bind(const Moment& moment) const {
        Script::Moment result{moment.at, moment.say, {}, {}};
        for (const Wish& wish : moment.set) result.set.push_back(setting(wish));
        for (const Wish& wish : moment.expect) result.expect.push_back(expectation(wish));
        return result;
    }

private:
    Member find(const Wish& wish) const {
        try {
            return names_.member(wish.path);
        } catch (const NameError& error) {
            throw scenario_.fault(wish.pathPlace, error.what());
        }
    }

    std::string textOf(ScenarioPlace place) const {
        return fmt::format("{}:{}:{}", scenario_.file, place.line, place.column);
    }

    Setting setting(const Wish& wish) const {
        Setting result{find(wish), 0, wish.value, textOf(wish.pathPlace)};
        if (result.member.kind == Member::Kind::Signal)
            result.number = number(result.member, wish);
        else
            checkText(result.member, wish);
        return result;
    }

    // The run-time path of signals carries whole numbers only.
    int number(const Member& member, const Wish& wish) const {
        const auto whole = readNumber<int>(wish.value);
        if (!whole)
            throw scenario_.fault(
                wish.valuePlace,
                fmt::format("{} cannot be set to {}: while the simulation runs, signals carry "
                            "whole numbers of 32 bits; write one",
                            wish.path, wish.value));
        if (isDigital(member) && *whole != 0 && *whole != 1)
            throw scenario_.fault(wish.valuePlace,
                                  fmt::format("{} is digital and cannot be {}; write 0 or 1",
                                              wish.path, wish.value));
        return *whole;
    }

    static bool isDigital(const Member& member) {
        if (auto* const signal = signalOf(member)) return signal->isDigital();
        return controllerSignalOf(member)->type.starts_with("Digital");
    }

    void checkText(const Member& member, const Wish& wish) const {
        if (propertyOf(member)->isReadOnly())
            throw scenario_.fault(wish.pathPlace,
                                  fmt::format("{} is kept by the component itself; set what makes "
                                              "it change instead",
                                              wish.path));
        smartcomp::SmartComponent& component = *componentOf(member.object);
        if (component.validatePropertyValue(member.id, wish.value)) return;
        std::string choices;
        for (const std::string& choice : component.getEnumPropertyList(member.id, ""))
            choices += (choices.empty() ? "" : ", ") + choice;
        throw scenario_.fault(wish.valuePlace,
                              fmt::format("{} cannot be \"{}\"; write {}", wish.path, wish.value,
                                          choices.empty() ? "a value of type " +
                                                                propertyOf(member)->type()
                                                          : "one of " + choices));
    }

    Expectation expectation(const Wish& wish) const {
        Expectation result{find(wish), wish.path, wish.value, textOf(wish.pathPlace)};
        if (result.member.kind == Member::Kind::Signal && !readNumber<double>(wish.value))
            throw scenario_.fault(wish.valuePlace,
                                  fmt::format("{} is a signal and is never \"{}\"; write a number",
                                              wish.path, wish.value));
        return result;
    }

    const Scenario& scenario_;
    Names names_;
};

bool holds(smartcomp::Property& property, const Member& member, const std::string& text) {
    if (property.value() == text || shown(member) == text) return true;
    const auto wanted = readNumber<double>(text);
    return wanted && wanted == readNumber<double>(property.value());
}

}  // namespace

std::optional<std::string> Expectation::found() const {
    if (const auto value = signalValueOf(member)) {
        const double number = std::visit([](auto n) { return static_cast<double>(n); }, *value);
        if (number == readNumber<double>(text)) return std::nullopt;
    } else if (auto* const property = propertyOf(member)) {
        if (holds(*property, member, text)) return std::nullopt;
    }
    return shown(member);
}

Script::Script(const Scenario& scenario) {
    const Binder binder(scenario);
    for (const host::Moment& moment : scenario.timeline) moments.push_back(binder.bind(moment));
}

}  // namespace trel::host
