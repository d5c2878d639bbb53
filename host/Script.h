#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/Names.h"
#include "host/Scenario.h"

namespace trel::host {

/// One setting: a whole number for a signal, a text for a property.
struct Setting {
    Member member;
    int number = 0;
    std::string text;
    std::string place;  // "FILE:LINE:COLUMN"
};

/// One thing that must hold.
struct Expectation {
    Member member;
    std::string name;  // as the scenario has it
    std::string text;
    std::string place;

    /// What was found instead, or an empty answer if it holds. A signal holds a
    /// number; a property holds a text, or shows it, or holds that number.
    std::optional<std::string> found() const;
};

/// A scenario whose names have become ids of the live station.
struct Script {
    struct Moment {
        Time at;
        std::vector<std::string> say;
        std::vector<Setting> set;
        std::vector<Expectation> expect;
    };

    std::vector<Moment> moments;  // in the order of time

    Script() = default;

    /// \throws Failure (file invalid) for a name that means nothing or several
    /// things, and a value that the member cannot take.
    explicit Script(const Scenario& scenario);
};

}  // namespace trel::host
