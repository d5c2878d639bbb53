#pragma once

#include <memory>
#include <string>
#include <vector>

#include "components/Furnisher.h"
#include "components/Reacting.h"

namespace trel::components {

struct ComparatorSettings {
    // Both in the unit of what is compared.
    double limit = 0;
    double hysteresis = 0;
    bool above = true;
    bool read(unsigned propertyId, const std::string& text);
};

/// Compares the analog input "In" with a limit.
class Comparator final : public Reacting<smartcomp::SmartComponent, ComparatorSettings> {
public:
    static constexpr const char* typeName = "Comparator";
    static constexpr const char* description =
        "Comparator: Out is on while In is above (or below, see Mode) Limit. Once on, it stays "
        "so until In has come back by Hysteresis.";
    static constexpr unsigned limit = 1;
    static constexpr unsigned mode = 2;
    static constexpr unsigned hysteresis = 3;

    explicit Comparator(std::shared_ptr<sdf::Element> element);
    static void furnish(Furnisher& furnisher);

    std::vector<std::string> getEnumPropertyList(unsigned propertyId,
                                                 const std::string& text) override;

private:
    void refresh(long long time) override;
    void inputArrived(const Arrival& arrival) override;
    void compare(double in, long long time);
};

}  // namespace trel::components
