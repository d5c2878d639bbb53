#pragma once

#include <string>
#include <variant>

#include "smartcomp/Export.h"

namespace trel {

/// What a signal carries; the names are also those in the document.
enum class SignalType {
    AnalogInput = 0,
    AnalogOutput = 1,
    DigitalInput = 2,
    DigitalOutput = 3,
    GroupInput = 4,
    GroupOutput = 5,
};

/// Two values are equal when they hold the same alternative and equal numbers:
/// int 1 and double 1.0 differ.
using SignalValue = std::variant<int, double>;

/// A signal as the rest of the editor sees it.
class TREL_API SignalInterface {
public:
    virtual ~SignalInterface();

    virtual void setName(std::string name) = 0;
    virtual const std::string& getName() const = 0;
    virtual SignalType getType() = 0;

    /// The name of `getType()`; empty for a value that is none of the six.
    virtual std::string getTypeString();

    virtual void setValue(SignalValue value) = 0;
    virtual void setValue(const std::string& text) = 0;
    virtual SignalValue getValue() = 0;

    /// \throws std::bad_variant_access if the value is a double.
    virtual int getDigitalValue() const = 0;

    /// \throws std::bad_variant_access if a digital signal holds a double, or
    /// another one an int.
    virtual std::string getValueString() = 0;

    // A group signal is neither digital nor analog.
    virtual bool isDigital();
    virtual bool isAnalog();
    virtual bool isInput();
    virtual bool isOutput();
};

}  // namespace trel
