#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "platform/broker/SignalBroker.h"
#include "platform/sdf/Element.h"
#include "platform/sdf/ObjectType.h"
#include "smartcomp/Hold.h"
#include "smartcomp/Property.h"
#include "smartcomp/SCSignal.h"
#include "smartcomp/SmartComponent.h"

namespace trel::components {

/// A value that reached an input while the simulation runs.
struct Arrival {
    const std::string& signal;  // the input's name
    int value;
    bool wasOn;      // before it came
    bool fallsBack;  // the input resets itself: it is off again already
    long long time;  // microseconds of simulation time

    bool isOn() const { return value != 0; }

    // A pulse on an input that resets itself both rises and falls.
    bool rose() const { return isOn() && !wasOn; }
    bool fell() const { return (wasOn || isOn()) && (!isOn() || fallsBack); }
};

/// The number that a signal holds, whichever alternative it is in.
inline double numberOf(const SignalValue& value) {
    return std::visit([](auto number) { return static_cast<double>(number); }, value);
}

/// The settings of a type without properties.
struct NoSettings {
    bool read(unsigned, const std::string&) { return true; }
};

/// The nearest whole number; beyond an int the largest or smallest one, and 0 for
/// what is no number.
inline int nearestInt(double number) {
    constexpr double most = std::numeric_limits<int>::max();
    constexpr double least = std::numeric_limits<int>::min();
    return std::isnan(number) ? 0 : static_cast<int>(std::clamp(std::round(number), least, most));
}

/// Has every analog and group output hold an int: after loading they hold a
/// double, and the run-time path sets only ints.
template <typename Component>
void holdWholeNumbers(const Component& component) {
    for (const auto& [id, signal] : component.getSignals()) {
        if (!signal->isOutput() || std::holds_alternative<int>(signal->getValue())) continue;
        signal->setValue(SignalValue(nearestInt(numberOf(signal->getValue()))));
    }
}

/// What the types of this library have in common. An input value is stored,
/// reset where the input resets itself, told, and then reacted to; a property is
/// checked, set in its frame, read, and then reacted to. Times are microseconds
/// of simulation time.
///
/// `Settings` holds the property values as the type uses them. Its operation
/// `bool read(unsigned propertyId, const std::string& text)` takes a text in, or
/// refuses it by giving false, and then changes nothing.
template <typename Base, typename Settings = NoSettings>
class Reacting : public Base {
public:
    void handleInputSignal(unsigned signalId, int value, long long time) override {
        smartcomp::SCSignal& input = this->signalAt(signalId);
        const Arrival arrival{input.getName(), value, numberOf(input.getValue()) != 0,
                              input.isAutoReset(), time};
        now_ = time;
        input.setValue(value);
        if (input.isAutoReset()) input.setValue(0);
        this->notifySignalValueChanged(signalId);
        inputArrived(arrival);
    }

    /// A text that the type cannot use is refused with event "10007" and changes
    /// nothing.
    void setPropertyValue(unsigned propertyId, const std::string& value) override {
        const smartcomp::Hold hold(*this);
        if (!this->shouldSetProperty(propertyId, value)) return;
        if (!this->validatePropertyValue(propertyId, value)) {
            broker::SignalBroker::reportEvent("10007", this->name(),
                                              this->getProperty(propertyId)->name(), value);
            return;
        }
        Base::setPropertyValue(propertyId, value);
        settings_.read(propertyId, this->getProperty(propertyId)->value());
        propertyChanged(propertyId);
        this->endSetPropertyValue(propertyId);
    }

    bool validatePropertyValue(unsigned propertyId, const std::string& value) const override {
        return Settings(settings_).read(propertyId, value);
    }

    /// A text that cannot be used leaves the setting at what the type starts
    /// with.
    void readPropertyValues() override {
        for (const auto& [id, property] : this->getProperties())
            settings_.read(id, property->value());
    }

    void initialize() override { holdWholeNumbers(*this); }

    void start(long long time) override {
        now_ = time;
        running_ = true;
        refresh(time);
    }

    void execute(long long time) override {
        now_ = time;
        step(time);
    }

    void stop() override { running_ = false; }

protected:
    Reacting(std::shared_ptr<sdf::Element> element, sdf::ObjectType type)
        : Base(std::move(element), type) {}

    /// Brings the outputs in line with the inputs and settings.
    virtual void refresh(long long /*time*/) {}
    virtual void inputArrived(const Arrival& arrival) { refresh(arrival.time); }
    virtual void step(long long /*time*/) {}

    /// Called when a new text was set and read. Outside a run nothing is sent:
    /// `start` brings everything in line.
    virtual void propertyChanged(unsigned /*propertyId*/) {
        if (running_) refresh(now_);
    }

    const Settings& settings() const { return settings_; }
    bool isRunning() const { return running_; }
    long long now() const { return now_; }

    /// The signal of that name, the one with the smallest id if there are
    /// several; null if there is none.
    smartcomp::SCSignal* signalNamed(std::string_view name) const {
        unsigned found = 0;
        bool any = false;
        for (const auto& [id, signal] : this->getSignals())
            if (signal->getName() == name && (!any || id < found)) {
                found = id;
                any = true;
            }
        return any ? &this->signalAt(found) : nullptr;
    }

    /// What the signal holds; 0 if there is none of that name.
    double number(std::string_view name) const {
        smartcomp::SCSignal* const signal = signalNamed(name);
        return signal ? numberOf(signal->getValue()) : 0;
    }
    bool isOn(std::string_view name) const { return number(name) != 0; }

    /// Sets the output of that name; a component that was given none sends
    /// nothing.
    void send(std::string_view name, int value, long long time) {
        if (smartcomp::SCSignal* const output = signalNamed(name); output && output->isOutput())
            this->handleOutputSignal(output->id(), value, time);
    }

    /// Takes a state of the component into its settings, and into the property
    /// that shows it where the component has that property.
    void keep(unsigned propertyId, const std::string& text) {
        if (this->hasProperty(propertyId))
            this->setPropertyValue(propertyId, text);
        else
            settings_.read(propertyId, text);
    }

private:
    Settings settings_;
    bool running_ = false;
    long long now_ = 0;
};

}  // namespace trel::components
