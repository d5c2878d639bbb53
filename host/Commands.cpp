#include "host/Commands.h"

#include <fmt/ostream.h>

#include <algorithm>

#include "host/LiveStation.h"
#include "host/Run.h"
#include "host/Scenario.h"
#include "host/Script.h"
#include "host/Show.h"
#include "host/Trace.h"
#include "host/TypeLibraries.h"

namespace trel::host {

namespace {

constexpr Time usualStep = 10'000;       // microseconds
constexpr Time usualLength = 1'000'000;  // of a run without a scenario

void loadLibraries(const std::vector<std::filesystem::path>& libraries) {
    loadTypeLibrary(ownTypeLibrary());
    for (const auto& library : libraries) loadTypeLibrary(library);
}

// How long a run lasts: as it was asked, else as the scenario says, else until
// its last moment.
Time lengthOf(const RunOptions& options, const Scenario& scenario) {
    const Time last = scenario.timeline.empty() ? usualLength : scenario.timeline.back().at;
    if (options.until) return *options.until;
    if (scenario.until && !scenario.timeline.empty() && *scenario.until < last)
        throw scenario.fault(scenario.timeline.back().place,
                             fmt::format("this moment comes after the end of the run at {}; let "
                                         "the run last longer, or take it out",
                                         textOfTime(*scenario.until)));
    return scenario.until.value_or(last);
}

void report(const Run::Outcome& outcome, Time length, unsigned long long changes,
            std::size_t leftOut, std::ostream& out) {
    fmt::print(out, "\nran {} in {} steps; changes: {}; expectations: {} held, {} failed\n",
               textOfTime(length), outcome.steps, changes, outcome.held, outcome.failed.size());
    if (leftOut > 0)
        fmt::print(out, "left out, since they come later: {} of the scenario's moments\n",
                   leftOut);
    for (const std::string& failed : outcome.failed) fmt::print(out, "{}\n", failed);
}

}  // namespace

ExitCode run(const RunOptions& options, std::ostream& out) {
    loadLibraries(options.libraries);
    const Scenario scenario = options.scenario ? Scenario::read(*options.scenario) : Scenario();
    const Time length = lengthOf(options, scenario);
    const LiveStation station(options.file);
    const Script script(scenario);

    Run::Outcome outcome;
    unsigned long long changes = 0;
    {
        Trace trace(out);
        Run run(script, trace, options.step.value_or(scenario.step.value_or(usualStep)), length);
        outcome = run.play();
        changes = trace.changes();
    }
    const auto late = std::ranges::count_if(
        script.moments, [&](const Script::Moment& moment) { return moment.at > length; });
    report(outcome, length, changes, static_cast<std::size_t>(late), out);

    if (options.show) fmt::print(out, "\n{}", textOfStation());

    if (!outcome.failed.empty()) {
        if (options.save) fmt::print(out, "nothing is saved, since expectations failed\n");
        return ExitCode::ExpectationFailed;
    }
    if (options.save) {
        station.save(*options.save);
        fmt::print(out, "saved to {}\n", options.save->string());
    }
    return ExitCode::Good;
}

ExitCode show(const ShowOptions& options, std::ostream& out) {
    loadLibraries(options.libraries);
    const LiveStation station(options.file);
    out << textOfStation();
    return ExitCode::Good;
}

}  // namespace trel::host
