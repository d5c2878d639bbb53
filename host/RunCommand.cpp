#include <fmt/ostream.h>

#include <algorithm>
#include <memory>

#include "host/Commands.h"
#include "host/LiveStation.h"
#include "host/Run.h"
#include "host/Scenario.h"
#include "host/Script.h"
#include "host/Show.h"
#include "host/Trace.h"

namespace trel::host {

namespace {

constexpr Time usualStep = 10'000;       // microseconds
constexpr Time usualLength = 1'000'000;  // of a run without a scenario

struct Options {
    std::filesystem::path file;
    std::optional<std::filesystem::path> scenario;
    std::optional<Time> until;
    std::optional<Time> step;
    std::vector<std::filesystem::path> libraries;
    std::optional<std::filesystem::path> save;
    bool show = false;  // the station after the run
};

// How long a run lasts: as it was asked, else as the scenario says, else until
// its last moment.
Time lengthOf(const Options& options, const Scenario& scenario) {
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

ExitCode run(const Options& options, std::ostream& out) {
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

}  // namespace

void addRun(CLI::App& app, Action& chosen) {
    const auto options = std::make_shared<Options>();
    CLI::App& command = *app.add_subcommand(
        "run", "Lets a station run, prints what changes, and checks what a scenario expects.\n"
               "Example: station run station.xml --scenario scenario.yaml --save after.xml");
    command.add_option("FILE", options->file, "The station file")->required();
    command
        .add_option("--scenario", options->scenario,
                    "What is set, and what must hold, at which time (YAML)")
        ->type_name("FILE");
    addTime(command, "--until", options->until, 0,
            "How long the run lasts in simulation time; else until the scenario ends");
    addTime(command, "--step", options->step, 1, "How often components are executed; else 10ms");
    addLibraries(command, options->libraries);
    command
        .add_option("--save", options->save,
                    "Where the station is saved after a good run; nothing is saved without it")
        ->type_name("FILE");
    command.add_flag("--show", options->show, "Print the station after the run, as show does");
    command.callback([&chosen, options] {
        chosen = [options](std::ostream& out) { return run(*options, out); };
    });
}

}  // namespace trel::host
