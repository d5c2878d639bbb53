#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "host/Clock.h"
#include "host/Failure.h"

namespace trel::host {

/// Where something stands in a scenario, counted from 1.
struct ScenarioPlace {
    int line = 0;
    int column = 0;
    std::size_t file = 0;  // of Scenario::files
};

/// A member by its path of names, and a text for its value.
struct Wish {
    std::string path;
    std::string value;
    ScenarioPlace pathPlace;
    ScenarioPlace valuePlace;
};

/// What happens at one time: first it is said, then signals are released, forced, set
/// and given pulses, and after the step what is expected must hold.
struct Moment {
    Time at = 0;
    std::vector<std::string> say;
    std::vector<Wish> release;  // without values
    std::vector<Wish> force;
    std::vector<Wish> set;
    std::vector<Wish> pulse;
    std::vector<Wish> expect;
    std::vector<Wish> never;
    std::optional<Time> within;  // the span of expect and never
    ScenarioPlace place;
};

/// A scenario as its files have it: a play for the station, with what must come of
/// it. docs/scenario.md describes each key.
///
///     until: 8s          # how long the run lasts; else until the last moment
///     step: 100ms        # how often components are executed
///     timeline:
///       - at: 1.5s
///         say: The robot asks for a part
///         set: { Robot.Ask: 1, Cell/Belt.Speed: 200 }
///         expect: { Cell/Counter.Value: 3 }
struct Scenario {
    static constexpr std::size_t mostMoments = 100'000;
    static constexpr std::size_t mostFiles = 100;

    std::vector<std::string> files;  // the scenario itself, and what it includes
    std::optional<Time> until;
    std::optional<Time> step;
    std::optional<std::uint64_t> seed;  // of random values
    std::vector<Moment> timeline;       // in the order of time, repeats written out

    /// Reads a file and those that it includes.
    /// \throws Failure (file invalid) with line, column and remedy of every fault.
    static Scenario read(const std::filesystem::path& file);

    /// The same from text, which includes no files; `name` stands for the file in
    /// messages.
    static Scenario fromText(const std::string& text, const std::string& name);

    /// "FILE:LINE:COLUMN".
    std::string textOf(ScenarioPlace place) const;
};

/// The faults of a scenario, to be told all at once.
class ScenarioFaults {
public:
    explicit ScenarioFaults(const Scenario& scenario) : scenario_(scenario) {}

    void add(ScenarioPlace place, const std::string& text);

    /// \throws Failure (file invalid) if there are any, a line for each in the order of
    /// the files.
    void refuse() const;

private:
    struct Fault {
        ScenarioPlace place;
        std::string text;
    };

    const Scenario& scenario_;
    std::vector<Fault> faults_;
};

}  // namespace trel::host
