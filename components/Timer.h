#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "components/Furnisher.h"
#include "components/Reacting.h"

namespace trel::components {

struct TimerSettings {
    enum class Mode { OnDelay, OffDelay, Pulse };
    Mode mode = Mode::OnDelay;
    double time = 500;  // ms
    bool read(unsigned propertyId, const std::string& text);
};

/// Lets "Out" follow "In" later, or for a while. It looks at the clock when it is
/// executed, so it is late by at most one step of the simulation.
class Timer final : public Reacting<smartcomp::SmartComponent, TimerSettings> {
public:
    static constexpr const char* typeName = "Timer";
    static constexpr const char* description =
        "Timer: OnDelay switches Out on when In has been on for Time, OffDelay switches it off "
        "when In has been off for Time, Pulse switches it on for Time whenever In rises.";
    static constexpr unsigned mode = 1;
    static constexpr unsigned time = 2;

    explicit Timer(std::shared_ptr<sdf::Element> element);
    static void furnish(Furnisher& furnisher);

    void initialize() override;
    std::vector<std::string> getEnumPropertyList(unsigned propertyId,
                                                 const std::string& text) override;

private:
    using Mode = TimerSettings::Mode;

    void refresh(long long now) override;
    void inputArrived(const Arrival& arrival) override;
    void step(long long now) override;
    void propertyChanged(unsigned propertyId) override;
    void rise(long long now);
    void fall(long long now);
    void wait(long long now);

    std::optional<long long> since_;  // when the waiting began, in microseconds
};

}  // namespace trel::components
