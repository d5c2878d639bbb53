// A lamp that a button switches, with no other package than the library and its platform.
#include <iostream>
#include <memory>
#include <string>

#include "platform/station/Station.h"
#include "smartcomp/Connection.h"
#include "smartcomp/Lifecycle.h"
#include "smartcomp/Manager.h"
#include "smartcomp/Property.h"
#include "smartcomp/StationLogic.h"

namespace {

using trel::smartcomp::SmartComponent;
using ElementPtr = std::shared_ptr<sdf::Element>;

class Switch final : public SmartComponent {
public:
    explicit Switch(ElementPtr element)
        : SmartComponent(std::move(element), sdf::ObjectType::Component) {}
    void readPropertyValues() override {}
    void execute(long long) override {}
    void handleInputSignal(unsigned id, int value, long long time) override {
        getSignal(id)->setValue(trel::SignalValue(value));
        handleOutputSignal(2, value, time);
    }
};

SmartComponent* build(ElementPtr element) {
    for (const auto& [id, type] : {std::pair(1u, "DigitalInput"), std::pair(2u, "DigitalOutput")}) {
        const auto signal = element->append("signal")->setId(id);
        signal->touch("name")->setValue(std::string(type));
        signal->touch("type")->setValue(std::string(type));
        signal->touch("value")->setValue(0);
    }
    const auto length = element->appendObject("property", 1, "Length");
    length->touch("type")->setValue(std::string("Double"));
    length->touch("unit")->setValue(std::string("mm"));
    length->setValue(2.5);
    return new Switch(element);
}

}  // namespace

int main() {
    using namespace trel::smartcomp;
    Manager::inst()->registerType("Switch", build, build, nullptr);
    StationLogic& logic = *StationLogic::inst();
    SmartComponent* const button = Build("Switch", 10, "Button", logic.id());
    SmartComponent* const lamp = Build("Switch", 11, "Lamp", logic.id());
    Connection::Build(&logic, 1, 10, 2, 11, 1, 0);
    button->handleSignalValue(1, 1, 0);
    std::cout << "Lamp = " << lamp->getSignal(2)->getDigitalValue() << ", "
              << lamp->getProperty(1)->getDisplayValue() << '\n';

    // Found by casts across the border of the libraries.
    SmartComponent::GetTypeName(11);
    lamp->setPropertyValue(1, "0x10");
    std::cout << lamp->getProperty(1)->getDisplayValue() << '\n';
    try {
        button->getProperty(9);
    } catch (const std::out_of_range& fault) {
        std::cout << fault.what() << '\n';
    }
    for (const unsigned id : {11u, 10u}) RemoveSmartComponent(id);
}
