#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/Clock.h"
#include "host/Deliveries.h"
#include "host/Expectations.h"
#include "host/Hotspots.h"
#include "host/Script.h"
#include "host/Settings.h"
#include "host/Trace.h"
#include "smartcomp/SmartComponent.h"

namespace trel::host {

/// How a run is played.
struct RunRules {
    /// More than a step of any real cell takes, and more than the stack has room for: what
    /// nests without end is told as that.
    static constexpr unsigned long long usualBudget = 2'000'000;

    Time step = 10'000;                       // longer than 0
    Time until = 0;                           // what the script does later is left out
    unsigned long long budget = usualBudget;  // deliveries in a step
    bool stopsOnFault = false;
    std::function<void(Time)> onStep = {};  // after each, for who shows progress
};

/// What a run came to.
struct RunOutcome {
    enum class End { Good, Fault, Budget, Stack, Interrupted };

    struct Fault {
        Time at;
        std::string component;  // "Cell/Odd (Thrower, #10)"
        std::string text;       // what it was asked, what it threw, and what led there
    };

    End end = End::Good;
    std::string reason;  // why it ended before its time
    Time time = 0;       // of the last step
    unsigned long long steps = 0;
    unsigned long long deliveries = 0;
    unsigned held = 0;                 // expectations
    std::vector<std::string> failed;   // one line for each, with place and what was found
    std::vector<std::string> missed;   // those of them that are settings of what was removed
    std::vector<Fault> faults;         // of components
    std::vector<Verdict> verdicts;     // on all expectations, in the order of knowing
    std::vector<Hotspot> hotspots;     // of the step that spent the budget
    std::vector<MemberCount> hottest;  // of the whole run
};

/// Lets the live station run through a script. Components are initialised, then
/// started, then executed at each step, always in the order of the list of
/// components, and stopped in the end. A moment of the script between two steps
/// gets a step of its own.
///
/// A component that throws is set aside: it is not asked, and nothing is delivered to
/// it, for the rest of the run. The throw ends the deliveries that led to it; the marks
/// that it leaves behind are ended, so that all other components go on.
class Run {
public:
    Run(const Script& script, Trace& trace, RunRules rules);
    ~Run();
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

    RunOutcome play();

private:
    using Ask = std::function<void(smartcomp::SmartComponent&)>;

    bool isOver() const { return outcome_.end != RunOutcome::End::Good; }
    void at(Time time);
    void admitNewComponents();
    void askAll(std::string_view doing, const Ask& ask);
    void ask(unsigned id, std::string_view doing, const Ask& ask);
    void apply(const Setting& setting);
    void setAgain(const Member& signal, int value);
    void call(unsigned id, const std::string& doing, const std::function<void()>& function);
    void heedInterrupt();
    void putRight();
    void contain(unsigned asked, const std::string& doing);
    void stop(RunOutcome::End end, const std::string& reason);
    void finish();

    const Script& script_;
    Trace& trace_;
    const RunRules rules_;
    Deliveries deliveries_;
    Held forced_;
    Expectations expectations_;
    RunOutcome outcome_;
    bool isEnding_ = false;  // before its time
    Time time_ = 0;
    std::size_t next_ = 0;       // moment of the script
    std::vector<unsigned> ids_;  // in the order of making; some may be gone
    std::size_t listed_ = 0;     // entries of the list of components looked at
};

}  // namespace trel::host
