#pragma once

#include <memory>
#include <string>
#include <vector>

#include "components/Furnisher.h"
#include "components/Reacting.h"

namespace trel::components {

struct LatchSettings {
    bool resetWins = true;  // when both inputs are on
    bool read(unsigned propertyId, const std::string& text);
};

/// Keeps what a pulse told it: "Set" switches "Out" on, "Reset" off; "Inverse"
/// is its opposite.
class Latch final : public Reacting<smartcomp::SmartComponent, LatchSettings> {
public:
    static constexpr const char* typeName = "Latch";
    static constexpr const char* description =
        "Set-reset latch: Set switches Out on, Reset switches it off, and Dominant says which "
        "of the two wins while both are on. Inverse is the opposite of Out.";
    static constexpr unsigned dominant = 1;

    explicit Latch(std::shared_ptr<sdf::Element> element);
    static void furnish(Furnisher& furnisher);

    std::vector<std::string> getEnumPropertyList(unsigned propertyId,
                                                 const std::string& text) override;

private:
    void inputArrived(const Arrival& arrival) override;
    void refresh(long long time) override;
    void decide(bool set, bool reset, long long time);
};

}  // namespace trel::components
