#include <QString>

#include <memory>
#include <string>
#include <tuple>
#include <utility>

#include "smartcomp/Manager.h"
#include "smartcomp/Property.h"
#include "smartcomp/SCSignal.h"
#include "smartcomp/SmartComponent.h"
#include "smartcomp/TypeLibrary.h"

namespace {

using trel::smartcomp::Manager;
using trel::smartcomp::SmartComponent;

/// Adds "Increment" to "Total" whenever "Add" is switched on.
class Adder final : public SmartComponent {
public:
    static constexpr unsigned increment = 1;
    static constexpr unsigned add = 1;
    static constexpr unsigned total = 2;

    explicit Adder(std::shared_ptr<sdf::Element> element)
        : SmartComponent(std::move(element), sdf::ObjectType::Component) {}

    static void furnish(sdf::Element& element) {
        const auto property = element.appendObject("property", increment, "Increment");
        property->touch("type")->setValue(std::any(std::string("Int32")));
        property->setValue(std::any(std::string("2")));
        for (const auto& [id, name, type] :
             {std::tuple(add, "Add", "DigitalInput"), std::tuple(total, "Total", "GroupOutput")}) {
            const auto signal = element.append("signal")->setId(id);
            signal->touch("name")->setValue(std::any(std::string(name)));
            signal->touch("type")->setValue(std::any(std::string(type)));
            signal->touch("value")->setValue(std::any(0));
        }
    }

    void readPropertyValues() override {
        if (hasProperty(increment)) increment_ = std::stoi(getProperty(increment)->value());
    }
    void initialize() override { getSignal(total)->setValue(trel::SignalValue(0)); }
    void handleInputSignal(unsigned id, int value, long long time) override {
        getSignal(id)->setValue(trel::SignalValue(value));
        notifySignalValueChanged(id);
        if (value != 0) handleOutputSignal(total, getSignal(total)->getDigitalValue() + increment_, time);
    }
    void execute(long long) override {}

private:
    int increment_ = 1;
};

}  // namespace

int trelComponentsAbi() { return trel::smartcomp::typeLibraryAbi; }

void trelRegisterComponents() {
    Manager::inst()->registerType(
        "Adder",
        [](std::shared_ptr<sdf::Element> element) -> SmartComponent* {
            return new Adder(std::move(element));
        },
        [](std::shared_ptr<sdf::Element> element) -> SmartComponent* {
            Adder::furnish(*element);
            return new Adder(std::move(element));
        },
        [] { return QString("Adder: adds Increment to Total whenever Add is switched on."); });
}
