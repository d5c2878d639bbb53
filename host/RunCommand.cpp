#include <fmt/ostream.h>

#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>

#include "host/Command.h"
#include "host/Commands.h"
#include "host/Interrupt.h"
#include "host/LiveStation.h"
#include "host/Progress.h"
#include "host/Run.h"
#include "host/RunFiles.h"
#include "host/Scenario.h"
#include "host/Script.h"
#include "host/Show.h"
#include "host/TypeLibraries.h"

namespace trel::host {

namespace {

constexpr Time usualLength = 1'000'000;  // microseconds, of a run without a scenario

[[noreturn]] void refuseLate(const Scenario& scenario) {
    throw Failure(ExitCode::FileInvalid,
                  fmt::format("{}: error: this moment comes after the end of the run at {}; let "
                              "the run last longer, or take it out",
                              scenario.textOf(scenario.timeline.back().place),
                              textOfTime(*scenario.until)));
}

// How long a run lasts: as it was asked, else as the scenario says, else until
// its last moment.
Time lengthOf(const RunOptions& options, const Scenario& scenario) {
    const Time last = scenario.timeline.empty() ? usualLength : scenario.timeline.back().at;
    if (options.until) return *options.until;
    if (scenario.until && !scenario.timeline.empty() && *scenario.until < last)
        refuseLate(scenario);
    return scenario.until.value_or(last);
}

// Moments of the script that come after the end of the run.
std::ptrdiff_t lateOnes(const Script& script, Time length) {
    return std::ranges::count_if(script.moments,
                                 [&](const Script::Moment& moment) { return moment.at > length; });
}

void print(const RunOutcome& outcome, unsigned long long changes, std::ptrdiff_t late,
           std::ostream& out) {
    const auto notReached =
        std::ranges::count(outcome.verdicts, Verdict::Outcome::NotReached, &Verdict::outcome);
    fmt::print(out, "\nran {} in {} steps; changes: {}; expectations: {} held, {} failed{}\n",
               textOfTime(outcome.time), outcome.steps, changes, outcome.held,
               outcome.failed.size(),
               notReached == 0 ? "" : fmt::format(", {} not reached", notReached));
    if (late > 0)
        fmt::print(out, "left out, since they come later: {} of the scenario's moments\n", late);
    for (const std::string& failed : outcome.failed) fmt::print(out, "{}\n", failed);
    for (const RunOutcome::Fault& fault : outcome.faults)
        fmt::print(out, "set aside at {}: {}\n", textOfTime(fault.at), fault.component);
}

// The last line of what --json prints.
void printJson(const RunOutcome& outcome, unsigned long long changes, std::ptrdiff_t late,
               std::ostream& out) {
    nlohmann::ordered_json object = {{"kind", "ended"},
                                     {"time_us", outcome.time},
                                     {"steps", outcome.steps},
                                     {"changes", changes},
                                     {"deliveries", outcome.deliveries},
                                     {"held", outcome.held},
                                     {"failed", outcome.failed},
                                     {"faults", nlohmann::ordered_json::array()},
                                     {"stopped", outcome.reason},
                                     {"left_out", late}};
    for (const RunOutcome::Fault& fault : outcome.faults) object["faults"].push_back(fault.text);
    out << object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << '\n';
}

// Why the run is no success; empty for one that is.
std::string failureOf(const RunOutcome& outcome) {
    std::string text;
    for (const RunOutcome::Fault& fault : outcome.faults)
        text += fmt::format("{}; {}\n", fault.text,
                            outcome.end == RunOutcome::End::Fault
                                ? "the run was stopped"
                                : "it was set aside for the rest of the run");
    if (outcome.end == RunOutcome::End::Budget) {
        text += outcome.reason + "; the run was stopped; what got the most:\n";
        for (const Hotspot& hot : outcome.hotspots)
            text += fmt::format("  {}: {} deliveries; {}\n", pathOf(hot.member), hot.deliveries,
                                hot.reason);
    } else if (outcome.end != RunOutcome::End::Good && outcome.end != RunOutcome::End::Fault) {
        text += outcome.reason + "; the run was stopped\n";
    }
    if (!text.empty()) text.pop_back();
    return text;
}

ExitCode codeOf(const RunOutcome& outcome) {
    if (outcome.end == RunOutcome::End::Budget || outcome.end == RunOutcome::End::Stack)
        return ExitCode::Stopped;
    if (!outcome.faults.empty()) return ExitCode::ComponentFailed;
    return outcome.failed.empty() ? ExitCode::Good : ExitCode::ExpectationFailed;
}

ExitCode run(const RunOptions& options, std::ostream& out) {
    loadTypeLibraries(options.libraries);
    const Scenario scenario = options.scenario ? Scenario::read(*options.scenario) : Scenario();
    RunRules rules;
    rules.until = lengthOf(options, scenario);
    rules.step = options.step.value_or(scenario.step.value_or(rules.step));
    rules.budget = options.budget;
    rules.stopsOnFault = options.stopsOnFault;
    const LiveStation station(options.file);
    const Script script(scenario, options.seed);

    RunOutcome outcome;
    unsigned long long changes = 0;
    {
        RunFiles files(options, script, out);
        Progress progress(rules.until);
        rules.onStep = [&](Time time) { progress.show(time); };
        catchInterrupts();
        outcome = Run(script, files.trace(), rules).play();
        changes = files.trace().changes();
        files.finish(outcome);
    }
    (options.json ? printJson : print)(outcome, changes, lateOnes(script, rules.until), out);
    if (options.show) fmt::print(out, "\n{}", textOfStation());

    const ExitCode code = codeOf(outcome);
    if (options.save && code == ExitCode::Good && outcome.end == RunOutcome::End::Good) {
        station.save(*options.save);
        fmt::print(out, "saved to {}\n", options.save->string());
    } else if (options.save) {
        fmt::print(out, "nothing is saved, since {}\n",
                   code == ExitCode::ExpectationFailed ? "expectations failed"
                   : code == ExitCode::ComponentFailed ? "components failed"
                                                       : "the run was stopped");
    }
    out.flush();
    passInterruptOn();
    if (const std::string failure = failureOf(outcome); !failure.empty())
        throw Failure(code, failure);
    return code;
}

}  // namespace

void addRun(const CommandLine& line) {
    const auto options = std::make_shared<RunOptions>();
    Command command(line, "run",
                    "Lets a station run, prints what changes, and checks what a scenario expects.\n"
                    "Example: station run station.xml --scenario scenario.yaml --save after.xml");
    command.argument("FILE", options->file, "The station file");
    command.option("--scenario", options->scenario, "FILE",
                   "What is set, and what must hold, at which time (YAML)");
    command.time("--until", options->until, 0,
                 "How long the run lasts in simulation time; else until the scenario ends");
    command.time("--step", options->step, 1, "How often components are executed; else 10ms");
    command.libraries(options->libraries);
    command.option("--save", options->save, "FILE",
                   "Where the station is saved after a good run; nothing is saved without it");
    command.option("--vcd", options->vcd, "FILE",
                   "A waveform file of all signals, for wave viewers; a .gtkw for GTKWave goes "
                   "beside it");
    command.option("--csv", options->csv, "FILE",
                   "All changes and events as comma-separated values");
    command.option("--junit", options->junit, "FILE",
                   "What was expected and what came of it, as CI servers read it");
    command.option("--report", options->report, "FILE",
                   "The run as one HTML page: expectations, events, waveforms, diagram");
    command.option("--seed", options->seed, "NUMBER",
                   "Of random values, in place of the scenario's");
    command.option("--budget", options->budget, "NUMBER",
                   "How many deliveries a step may take before the run is stopped");
    command.flag("--stop-on-fault", options->stopsOnFault,
                 "Stop when a component fails, instead of setting it aside");
    command.flag("--json", options->json, "Print a JSON object on a line for each change");
    command.option("--watch", options->watch, "PATTERN",
                   "Print only changes of members whose path of names suits, as in "
                   "\"Cell/*.Out\"; may be given more than once");
    command.flag("--show", options->show, "Print the station after the run, as show does");
    command.does([options](std::ostream& out) { return run(*options, out); });
}

}  // namespace trel::host
