#pragma once

#include <memory>
#include <string>

#include "components/Furnisher.h"
#include "components/Reacting.h"

namespace trel::components {

struct CounterSettings {
    int limit = 10;
    int count = 0;
    bool read(unsigned propertyId, const std::string& text);
};

/// Counts rising edges. The count is kept in the property "Count" and sent as the
/// group output "Value".
class Counter final : public Reacting<smartcomp::SmartComponent, CounterSettings> {
public:
    static constexpr const char* typeName = "Counter";
    static constexpr const char* description =
        "Counter: each rising edge of Up adds 1 to Value, each of Down takes 1 away, Reset sets "
        "it to 0. Reached is on while Value is at least Limit.";
    static constexpr unsigned limit = 1;
    static constexpr unsigned count = 2;

    explicit Counter(std::shared_ptr<sdf::Element> element);
    static void furnish(Furnisher& furnisher);

private:
    void refresh(long long time) override;
    void inputArrived(const Arrival& arrival) override;
    void set(long long newCount, long long time);
};

}  // namespace trel::components
