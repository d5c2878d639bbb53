#include "components/Furnisher.h"

#include <string>

namespace trel::components {

namespace {

void write(sdf::Element& element, std::string_view key, std::string_view text) {
    element.touch(key)->setValue(std::string(text));
}

}  // namespace

Furnisher& Furnisher::property(const Property& property) {
    sdf::Element& element = *component_.appendObject("property", property.id, property.name);
    element.setValue(std::string(property.value));
    write(element, "type", property.type);
    element.touch("uivisible")->setValue(true);
    element.touch("read_only")->setValue(property.readOnly);
    write(element, "description", property.description);
    write(element, "unit", property.unit);
    return *this;
}

Furnisher& Furnisher::signal(const Signal& signal) {
    sdf::Element& element = *component_.append("signal")->setId(++signals_);
    write(element, "name", signal.name);
    write(element, "type", signal.type);
    // A digital signal is read as a whole number, any other as a double.
    if (signal.type.starts_with("Digital"))
        element.touch("value")->setValue(0);
    else
        element.touch("value")->setValue(0.0);
    element.touch("auto_reset")->setValue(signal.autoReset);
    element.touch("uivisible")->setValue(true);
    write(element, "description", signal.description);
    return *this;
}

}  // namespace trel::components
