#pragma once

#include <memory>

#include "components/Furnisher.h"
#include "components/Reacting.h"

namespace trel::components {

/// Takes a group value apart: the output "Bit3" has its bit 3, and so on for as
/// many digital outputs, up to "Bit31", as the component has.
class GroupToDigital final : public Reacting<smartcomp::SmartComponent> {
public:
    static constexpr const char* typeName = "GroupToDigital";
    static constexpr const char* description =
        "Group to digital: each digital output BitN follows bit N of the group input In.";

    explicit GroupToDigital(std::shared_ptr<sdf::Element> element);
    static void furnish(Furnisher& furnisher);

private:
    void inputArrived(const Arrival& arrival) override;
    void refresh(long long time) override;
    void spread(int value, long long time);
};

/// Puts a group value together from the digital inputs "Bit0", "Bit1" and so on.
class DigitalToGroup final : public Reacting<smartcomp::SmartComponent> {
public:
    static constexpr const char* typeName = "DigitalToGroup";
    static constexpr const char* description =
        "Digital to group: bit N of the group output Out follows the digital input BitN.";

    explicit DigitalToGroup(std::shared_ptr<sdf::Element> element);
    static void furnish(Furnisher& furnisher);

private:
    void refresh(long long time) override;
};

}  // namespace trel::components
