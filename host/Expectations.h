#pragma once

#include <list>
#include <optional>
#include <string>
#include <vector>

#include "host/Script.h"
#include "host/Trace.h"

namespace trel::host {

/// What became of an expectation.
struct Verdict {
    enum class Outcome { Held, Failed, NotReached };

    const Expectation* expectation;
    Outcome outcome;
    Time from;          // when it was to hold, or its span began
    Time at;            // when that was known
    std::string asked;  // "A.Out was expected to be 1 within 0.2s"
    std::string found;  // "and was 0", where it failed; why it was not reached
};

/// Follows a run, and finds whether what is expected holds: at once, at some time of a
/// span, or never. A pulse counts.
class Expectations : public TraceSink {
public:
    explicit Expectations(Trace& trace) : trace_(trace) {}

    /// Before what is set at the time of the expectation.
    void open(const Expectation& expectation, Time time);

    /// A step begins: spans that ended before it are over.
    void stepBegins(Time time);

    /// Looks at the state after a step.
    void stepDone(Time time);

    /// The run ended; what is still open is decided by what was seen, or was not reached
    /// where the run stopped before its end, and `reason` says why.
    void end(Time time, const std::string& stopped);

    /// An expectation of a moment that the run did not come to.
    void passOver(const Expectation& expectation, Time from, const std::string& reason);

    const std::vector<Verdict>& verdicts() const { return verdicts_; }

    void changed(const Change& change) override;

private:
    using Outcome = Verdict::Outcome;

    struct Open {
        const Expectation* expectation;
        Time from;
        std::optional<Time> to;  // empty for the end of the run
    };

    void decide(const Open& open, Outcome outcome, Time at, const std::string& found);
    bool lookAt(const Open& open, Time time);
    void close(const Open& open, Time time);

    Trace& trace_;
    std::list<Open> open_;
    std::vector<Verdict> verdicts_;
};

}  // namespace trel::host
