#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "host/Clock.h"
#include "host/Script.h"
#include "host/Trace.h"
#include "smartcomp/SmartComponent.h"

namespace trel::host {

/// Lets the live station run through a script. Components are initialised, then
/// started, then executed at each step, always in the order of the list of
/// components, and stopped in the end. A moment of the script between two steps
/// gets a step of its own.
class Run {
public:
    struct Outcome {
        unsigned long long steps = 0;
        unsigned held = 0;                // expectations
        std::vector<std::string> failed;  // one line for each, with place and what was found
    };

    /// `step` is longer than 0. What the script does after `until` is left out.
    Run(const Script& script, Trace& trace, Time step, Time until);

    /// \throws Failure (a component failed) naming the component and what it was
    /// asked.
    Outcome play();

private:
    using Ask = std::function<void(smartcomp::SmartComponent&)>;

    void begin();
    void at(Time time);
    void admitNewComponents(Time time);
    void askAll(std::string_view doing, const Ask& ask);
    void ask(unsigned id, std::string_view doing, const Ask& ask);
    void apply(const Setting& setting);
    void check(const Expectation& expectation);

    const Script& script_;
    Trace& trace_;
    Time step_;
    Time until_;
    Time time_ = 0;
    Outcome outcome_;
    std::size_t next_ = 0;       // moment of the script
    std::vector<unsigned> ids_;  // in the order of making; some may be gone
    std::size_t listed_ = 0;     // entries of the list of components looked at
};

}  // namespace trel::host
