#pragma once

#include <memory>
#include <string>

#include "components/Furnisher.h"
#include "components/Reacting.h"
#include "components/Space.h"

namespace trel::components {

struct ConveyorSettings {
    Point start;
    Point end{1000, 0, 0};
    double speed = 250;  // mm/s
    double width = 200;  // mm
    bool read(unsigned propertyId, const std::string& text);
};

/// A straight belt. While it runs, it takes along the free parts that lie on it,
/// up to its end.
class Conveyor final : public Reacting<smartcomp::SmartComponent, ConveyorSettings> {
public:
    static constexpr const char* typeName = "Conveyor";
    static constexpr const char* description =
        "Conveyor: while Run is on, the parts on the belt move towards its End at Speed, or back "
        "to its Start while Backward is on too. Carrying counts the parts on the belt.";
    static constexpr unsigned beginning = 1;
    static constexpr unsigned end = 2;
    static constexpr unsigned speed = 3;
    static constexpr unsigned width = 4;

    explicit Conveyor(std::shared_ptr<sdf::Element> element);
    static void furnish(Furnisher& furnisher);

    bool isMovable() const override { return true; }
    void start(long long time) override;

private:
    void refresh(long long time) override;
    void inputArrived(const Arrival& arrival) override;
    void step(long long time) override;
    bool carries(unsigned partId) const;
    void move(double distance);
    void readInputs();

    long long movedUntil_ = 0;  // microseconds
    // What the inputs say since then.
    bool runs_ = false;
    bool backward_ = false;
};

}  // namespace trel::components
