#pragma once

#include <any>
#include <memory>
#include <string>

#include "platform/sdf/Element.h"
#include "smartcomp/Export.h"
#include "smartcomp/Hints.h"
#include "smartcomp/SignalInterface.h"

namespace trel::smartcomp {

class SmartComponent;
class Walk;

/// One input or output of a component, mirrored from its "signal" element.
/// Owned by its component. Which alternative the value holds follows the last
/// write, not the type.
///
/// Setters tell nobody: a value that shall be seen and delivered goes through
/// SmartComponent::setStaticSignalValue or handleSignalValue.
class TREL_API SCSignal : public SignalInterface {
public:
    /// Reads `element`, a child of the component's element, and hands the signal
    /// to `component`. A "type" that is none of the six makes a group output.
    /// \throws std::bad_any_cast if "name" holds anything but text; the
    /// component is unchanged.
    static SCSignal* Create(SmartComponent* component, std::shared_ptr<sdf::Element> element);

    // A copy writes to the element of its source.
    SCSignal(const SCSignal&);
    SCSignal(SCSignal&&);
    SCSignal& operator=(const SCSignal&);
    SCSignal& operator=(SCSignal&&);
    ~SCSignal() override;

    /// Does nothing to a signal without a "name" in its element.
    void setName(std::string name) override;
    const std::string& getName() const override { return name_; }
    SignalType getType() override { return type_; }

    // These three keep the value and write it to the document after.
    void setValue(int value);
    void setValue(double value);
    /// \throws std::bad_variant_access for a valueless variant, which is then
    /// the value; the document is unchanged.
    void setValue(SignalValue value) override;

    /// Has the document read `text` and takes what it then holds: a double in an
    /// analog signal, an int in any other, groups included.
    /// \throws std::invalid_argument if the document holds a value of a type that
    /// cannot take the text; nothing has changed.
    void setValue(const std::string& text) override;

    SignalValue getValue() override { return value_; }
    int getDigitalValue() const override { return std::get<int>(value_); }
    std::string getValueString() override;

    /// Unique within the component only.
    unsigned id() const { return id_; }
    const std::shared_ptr<sdf::Element>& element() const { return element_; }
    const std::string& description() const { return description_; }
    /// The type as the document has it, also when it is none of the six.
    const std::string& type() const { return typeName_; }
    bool isAutoReset() const { return autoReset_; }
    bool isVisible() const { return visible_; }

    void setAutoReset(bool on);
    void setVisible(bool on);
    void setDescription(const std::string& text);

private:
    friend class SmartComponent;
    friend class Walk;

    // As isInput(), of the only class that signals are made of.
    bool takes() const {
        return type_ == SignalType::DigitalInput || type_ == SignalType::AnalogInput ||
               type_ == SignalType::GroupInput;
    }

    explicit SCSignal(std::shared_ptr<sdf::Element> element);
    void writeValue(const std::any& value);

    // What a delivery needs stands together.
    unsigned id_;
    SignalType type_;
    bool autoReset_;
    bool visible_;
    SignalValue value_;
    std::shared_ptr<sdf::Element> element_;
    RouteHint routeHint_;
    const void* key_ = nullptr;  // "value" of the element, as an address only
    std::string name_;
    std::string description_;
    std::string typeName_;
};

}  // namespace trel::smartcomp
