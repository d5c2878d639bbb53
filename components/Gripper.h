#pragma once

#include <memory>
#include <string>

#include "components/Furnisher.h"
#include "components/Reacting.h"
#include "components/Space.h"

namespace trel::components {

struct GripperSettings {
    Point position;
    double reach = 50;    // mm
    unsigned target = 0;  // the part that it shall take; 0 for the nearest
    unsigned held = 0;    // the part that it holds; 0 for none
    bool read(unsigned propertyId, const std::string& text);
};

/// Takes the part next to it when it closes, carries it to wherever its own
/// position is set, and lets go of it when it opens.
class Gripper final : public Reacting<smartcomp::SmartComponent, GripperSettings> {
public:
    static constexpr const char* typeName = "Gripper";
    static constexpr const char* description =
        "Gripper: when Close rises it takes the part named by Target, or the nearest one for "
        "None, if that is free and within Reach; the part then moves with Position. When Close "
        "falls it releases the part, with a pulse on Released.";
    static constexpr unsigned position = 1;
    static constexpr unsigned reach = 2;
    static constexpr unsigned target = 3;
    static constexpr unsigned held = 4;

    explicit Gripper(std::shared_ptr<sdf::Element> element);
    static void furnish(Furnisher& furnisher);

    bool isMovable() const override { return true; }

    /// Target and Held name parts, or nothing.
    bool checkPropertyObjectType(unsigned propertyId, sdf::SdfObject* object) const override;

private:
    void refresh(long long time) override;
    void inputArrived(const Arrival& arrival) override;
    void propertyChanged(unsigned propertyId) override;
    unsigned choose() const;
    void takePart(long long time);
    void release(long long time);
};

}  // namespace trel::components
