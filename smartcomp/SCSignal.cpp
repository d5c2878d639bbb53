#include "smartcomp/SCSignal.h"

#include <any>
#include <array>
#include <string_view>
#include <utility>

#include "smartcomp/Lookup.h"
#include "smartcomp/SmartComponent.h"
#include "smartcomp/Text.h"

namespace trel::smartcomp {

namespace {

// Whatever is none of the six names is a group output.
SignalType typeOf(std::string_view name) {
    struct Entry {
        std::string_view name;
        SignalType type;
    };
    static constexpr std::array<Entry, 5> types = {{{"AnalogInput", SignalType::AnalogInput},
                                                    {"AnalogOutput", SignalType::AnalogOutput},
                                                    {"DigitalInput", SignalType::DigitalInput},
                                                    {"DigitalOutput", SignalType::DigitalOutput},
                                                    {"GroupInput", SignalType::GroupInput}}};
    for (const Entry& entry : types)
        if (entry.name == name) return entry.type;
    return SignalType::GroupOutput;
}

std::string nameOf(sdf::Element& element) {
    const auto name = element.get("name");
    return name ? std::any_cast<std::string>(name->value()) : std::string();
}

// Analog and group signals are read as a double.
SignalValue valueOf(sdf::Element& element, SignalType type) {
    if (type == SignalType::DigitalInput || type == SignalType::DigitalOutput)
        return element.asInt("value");
    return element.asDouble("value");
}

}  // namespace

SCSignal* SCSignal::Create(SmartComponent* component, std::shared_ptr<sdf::Element> element) {
    std::unique_ptr<SCSignal> signal(new SCSignal(std::move(element)));
    component->addSignal(signal.get());
    return signal.release();
}

SCSignal::SCSignal(std::shared_ptr<sdf::Element> element)
    : id_(element->getId(true)),
      type_(typeOf(element->asString("type"))),
      autoReset_(element->asBool("auto_reset")),
      visible_(element->asBool("uivisible")),
      element_(std::move(element)),
      name_(nameOf(*element_)),
      description_(element_->asString("description")),
      typeName_(element_->asString("type")) {
    value_ = valueOf(*element_, type_);
}

SCSignal::SCSignal(const SCSignal&) = default;
SCSignal::SCSignal(SCSignal&&) = default;
// All of it or nothing.
SCSignal& SCSignal::operator=(const SCSignal& other) { return *this = SCSignal(other); }
SCSignal& SCSignal::operator=(SCSignal&&) = default;
SCSignal::~SCSignal() = default;

void SCSignal::setName(std::string name) {
    const auto child = element_->get("name");
    if (!child) return;
    // The name before the document.
    name_ = std::move(name);
    child->setValue(std::any(name_));
}

// The three keep the value before they write it.

void SCSignal::setValue(int value) {
    value_ = value;
    writeValue(std::any(value));
}

void SCSignal::setValue(double value) {
    value_ = value;
    writeValue(std::any(value));
}

void SCSignal::setValue(SignalValue value) {
    value_ = value;
    std::visit([&](auto number) { writeValue(std::any(number)); }, value_);
}

void SCSignal::writeValue(const std::any& value) {
    const auto key = element_->touch("value");
    key_ = key.get();
    key->setValue(value);
}

void SCSignal::setValue(const std::string& text) {
    element_->setValueFromString(text);
    // A group signal holds an int from here on, though it was read as a double.
    if (isAnalog())
        value_ = element_->asDouble("value");
    else
        value_ = element_->asInt("value");
}

std::string SCSignal::getValueString() {
    if (isDigital()) return std::to_string(std::get<int>(value_));
    return text::fixed(std::get<double>(value_), 6);
}

void SCSignal::setAutoReset(bool on) {
    // The flag before the document, other than the two below.
    autoReset_ = on;
    write(element_, "auto_reset", on);
}

void SCSignal::setVisible(bool on) {
    write(element_, "uivisible", on);
    visible_ = on;
}

void SCSignal::setDescription(const std::string& text) {
    std::string kept = text;
    write(element_, "description", text);
    description_ = std::move(kept);
}

}  // namespace trel::smartcomp
