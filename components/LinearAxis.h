#pragma once

#include <memory>
#include <string>

#include "components/Furnisher.h"
#include "components/Reacting.h"
#include "components/Space.h"

namespace trel::components {

struct LinearAxisSettings {
    Point home;
    Point work{0, 0, 500};
    double speed = 500;  // mm/s
    Point position;
    bool read(unsigned propertyId, const std::string& text);
};

/// Moves a point on a straight line between two places; bind its position to
/// that of what it carries.
class LinearAxis final : public Reacting<smartcomp::SmartComponent, LinearAxisSettings> {
public:
    static constexpr const char* typeName = "LinearAxis";
    static constexpr const char* description =
        "Linear axis: while Go is on, Position moves to Work at Speed, otherwise back to Home. "
        "AtHome and AtWork say where it has arrived.";
    static constexpr unsigned home = 1;
    static constexpr unsigned work = 2;
    static constexpr unsigned speed = 3;
    static constexpr unsigned position = 4;

    explicit LinearAxis(std::shared_ptr<sdf::Element> element);
    static void furnish(Furnisher& furnisher);

    bool isMovable() const override { return true; }
    void start(long long time) override;

private:
    void refresh(long long time) override;
    void inputArrived(const Arrival& arrival) override;
    void step(long long time) override;

    long long movedUntil_ = 0;  // microseconds
    bool going_ = false;        // to Work, since then
};

}  // namespace trel::components
