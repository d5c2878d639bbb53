#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/Names.h"
#include "host/Scenario.h"
#include "smartcomp/SignalInterface.h"

namespace trel::host {

/// One thing that is done to a member: a whole number for a signal, a text for a
/// property.
struct Setting {
    enum class Kind { Release, Force, Set, Pulse };

    Kind kind = Kind::Set;
    Member member;
    int number = 0;
    std::string text;
    std::string place;  // "FILE:LINE:COLUMN"
};

/// One thing that must hold.
struct Expectation {
    enum class Kind {
        Now,     // after the step
        Within,  // at some time of the span, be it for a moment
        Never,   // at no time of the span, or of the rest of the run
    };

    Kind kind = Kind::Now;
    Member member;
    std::string name;  // as the scenario has it
    std::string text;
    std::string place;
    std::optional<Time> span;

    /// What was found instead, or an empty answer if it holds. A signal holds a
    /// number; a property holds a text, or shows it, or holds that number.
    std::optional<std::string> found() const;

    /// Whether it holds while the signal has this value.
    bool holdsFor(const SignalValue& value) const;
};

/// A scenario whose names have become ids of the live station, and whose random values
/// are drawn.
struct Script {
    struct Moment {
        Time at;
        std::vector<std::string> say;
        std::vector<Setting> settings;  // in the order in which they are done
        std::vector<Expectation> expect;
    };

    std::vector<Moment> moments;  // in the order of time
    std::vector<Member> forced;   // at one time or another

    Script() = default;

    /// A seed stands for that of the scenario.
    /// \throws Failure (file invalid) for names that mean nothing or several things,
    /// and values that their members cannot take.
    explicit Script(const Scenario& scenario, std::optional<std::uint64_t> seed = {});
};

}  // namespace trel::host
