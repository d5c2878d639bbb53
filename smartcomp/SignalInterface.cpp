#include "smartcomp/SignalInterface.h"

namespace trel {

SignalInterface::~SignalInterface() = default;

std::string SignalInterface::getTypeString() {
    switch (getType()) {
        case SignalType::AnalogInput: return "AnalogInput";
        case SignalType::AnalogOutput: return "AnalogOutput";
        case SignalType::DigitalInput: return "DigitalInput";
        case SignalType::DigitalOutput: return "DigitalOutput";
        case SignalType::GroupInput: return "GroupInput";
        case SignalType::GroupOutput: return "GroupOutput";
    }
    return "";
}

bool SignalInterface::isDigital() {
    const SignalType type = getType();
    return type == SignalType::DigitalInput || type == SignalType::DigitalOutput;
}

bool SignalInterface::isAnalog() {
    const SignalType type = getType();
    return type == SignalType::AnalogInput || type == SignalType::AnalogOutput;
}

bool SignalInterface::isInput() {
    const SignalType type = getType();
    return type == SignalType::AnalogInput || type == SignalType::DigitalInput ||
           type == SignalType::GroupInput;
}

bool SignalInterface::isOutput() {
    const SignalType type = getType();
    return type == SignalType::AnalogOutput || type == SignalType::DigitalOutput ||
           type == SignalType::GroupOutput;
}

}  // namespace trel
