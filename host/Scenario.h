#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "host/Clock.h"
#include "host/Failure.h"

namespace trel::host {

/// Where something stands in a scenario file, counted from 1.
struct ScenarioPlace {
    int line = 0;
    int column = 0;
};

/// A member by its path of names, and a text for its value.
struct Wish {
    std::string path;
    std::string value;
    ScenarioPlace pathPlace;
    ScenarioPlace valuePlace;
};

/// What happens at one time: first it is said, then set, and after the step what
/// is expected must hold.
struct Moment {
    Time at = 0;
    std::vector<std::string> say;
    std::vector<Wish> set;
    std::vector<Wish> expect;
    ScenarioPlace place;
};

/// A scenario as its file has it: a play for the station, with what must come of
/// it.
///
///     until: 8s          # how long the run lasts; else until the last moment
///     step: 100ms        # how often components are executed
///     timeline:
///       - at: 1.5s
///         say: The robot asks for a part
///         set: { Robot.Ask: 1, Cell/Belt.Speed: 200 }
///         expect: { Cell/Counter.Value: 3 }
struct Scenario {
    std::string file;
    std::optional<Time> until;
    std::optional<Time> step;
    std::vector<Moment> timeline;  // in the order of time

    /// Reads a file. Keys that a scenario does not have are refused.
    /// \throws Failure (file invalid) with line, column and remedy.
    static Scenario read(const std::filesystem::path& file);

    /// The same from text; `name` stands for the file in messages.
    static Scenario fromText(const std::string& text, const std::string& name);

    /// What is wrong at a place of the file, as read() reports it.
    Failure fault(ScenarioPlace place, const std::string& text) const;
};

}  // namespace trel::host
