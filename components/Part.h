#pragma once

#include <memory>
#include <string>
#include <vector>

#include "components/Furnisher.h"
#include "components/Reacting.h"
#include "components/Space.h"

namespace trel::components {

struct PartSettings {
    Point position;
    double mass = 100;    // g
    unsigned holder = 0;  // the gripper that holds the part; 0 for none
    bool read(unsigned propertyId, const std::string& text);
};

/// A work piece: a point with a mass. Conveyors move it while it is free, a
/// gripper that holds it takes it along.
class Part final : public Reacting<smartcomp::SmartComponent, PartSettings> {
public:
    static constexpr const char* typeName = "Part";
    static constexpr const char* description =
        "Part: a work piece, which conveyors move, sensors detect and grippers hold.";
    static constexpr unsigned position = 1;
    static constexpr unsigned mass = 2;
    static constexpr unsigned holder = 3;

    explicit Part(std::shared_ptr<sdf::Element> element);
    ~Part() override;
    static void furnish(Furnisher& furnisher);

    /// The ids of the parts in the station, in rising order.
    static std::vector<unsigned> ids();

    /// The part `id`, or null. Whatever is set in a station may remove a part, so
    /// keep the id and ask again.
    static Part* find(unsigned id);

    void readPropertyValues() override;
    bool isMovable() const override { return true; }

    /// Any component may be the holder.
    bool checkPropertyObjectType(unsigned propertyId, sdf::SdfObject* object) const override;

    const Point& place() const { return settings().position; }  // mm
    double weight() const { return settings().mass; }           // g
    bool isFree() const { return settings().holder == 0; }

    void moveTo(const Point& place);
    void setHolder(unsigned id);
};

}  // namespace trel::components
