#include <fmt/ostream.h>

#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>

#include "host/Commands.h"
#include "host/LiveStation.h"
#include "host/Run.h"
#include "host/Scenario.h"
#include "host/Script.h"
#include "host/OutputFile.h"
#include "host/Show.h"
#include "host/Trace.h"
#include "host/TraceText.h"
#include "host/TraceVcd.h"
#include "host/Watch.h"

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
    std::optional<std::filesystem::path> vcd;
    std::optional<std::filesystem::path> csv;
    std::vector<std::string> watch;
    bool json = false;  // what is printed
    bool show = false;  // the station after the run
};

// All that a run is kept in.
class Traces {
public:
    Traces(const Options& options, std::ostream& out)
        : options_(options), watch_(options.watch) {
        watch_.refuseIdle();
        if (options.json)
            add(std::make_unique<JsonTrace>(out, watch_));
        else
            add(std::make_unique<TextTrace>(out, watch_));
        if (options.csv) {
            csvFile_.emplace(*options.csv);
            add(std::make_unique<CsvTrace>(csvFile_->stream()));
        }
        if (options.vcd) {
            vcdFile_.emplace(*options.vcd);
            auto vcd = std::make_unique<VcdTrace>(vcdFile_->stream());
            vcd_ = vcd.get();
            add(std::move(vcd));
        }
        trace_.emplace(sinks_);
    }

    Trace& trace() { return *trace_; }

    /// The run ended at `time`.
    void finish(Time time) {
        if (csvFile_) csvFile_->finish();
        if (!vcd_) return;
        vcd_->end(time);
        vcdFile_->finish();
        auto save = *options_.vcd;
        writeFile(save.replace_extension(".gtkw"),
                  vcd_->saveFile(options_.vcd->filename().string(), watch_));
    }

private:
    void add(std::unique_ptr<TraceSink> sink) {
        sinks_.push_back(sink.get());
        owned_.push_back(std::move(sink));
    }

    const Options& options_;
    const Watch watch_;
    std::optional<OutputFile> csvFile_;
    std::optional<OutputFile> vcdFile_;
    std::vector<std::unique_ptr<TraceSink>> owned_;
    std::vector<TraceSink*> sinks_;
    VcdTrace* vcd_ = nullptr;
    std::optional<Trace> trace_;
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

struct Summary {
    const Run::Outcome& outcome;
    Time length;
    unsigned long long changes;
    std::size_t leftOut;  // moments of the scenario
};

void print(const Summary& summary, std::ostream& out) {
    const Run::Outcome& outcome = summary.outcome;
    fmt::print(out, "\nran {} in {} steps; changes: {}; expectations: {} held, {} failed\n",
               textOfTime(summary.length), outcome.steps, summary.changes, outcome.held,
               outcome.failed.size());
    if (summary.leftOut > 0)
        fmt::print(out, "left out, since they come later: {} of the scenario's moments\n",
                   summary.leftOut);
    for (const std::string& failed : outcome.failed) fmt::print(out, "{}\n", failed);
}

// The last line of what --json prints.
void printJson(const Summary& summary, std::ostream& out) {
    out << nlohmann::ordered_json{{"kind", "ended"},
                                  {"time_us", summary.length},
                                  {"steps", summary.outcome.steps},
                                  {"changes", summary.changes},
                                  {"held", summary.outcome.held},
                                  {"failed", summary.outcome.failed},
                                  {"left_out", summary.leftOut}}
               .dump()
        << '\n';
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
        Traces traces(options, out);
        Trace& trace = traces.trace();
        Run run(script, trace, options.step.value_or(scenario.step.value_or(usualStep)), length);
        outcome = run.play();
        changes = trace.changes();
        traces.finish(length);
    }
    const auto late = std::ranges::count_if(
        script.moments, [&](const Script::Moment& moment) { return moment.at > length; });
    const Summary summary{outcome, length, changes, static_cast<std::size_t>(late)};
    if (options.json)
        printJson(summary, out);
    else
        print(summary, out);

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
    command
        .add_option("--vcd", options->vcd,
                    "A waveform file of all signals, for wave viewers; a .gtkw for GTKWave goes "
                    "beside it")
        ->type_name("FILE");
    command.add_option("--csv", options->csv, "All changes and events as comma-separated values")
        ->type_name("FILE");
    command.add_flag("--json", options->json, "Print a JSON object on a line for each change");
    command
        .add_option("--watch", options->watch,
                    "Print only changes of members whose path of names suits, as in "
                    "\"Cell/*.Out\"; may be given more than once")
        ->type_name("PATTERN")
        ->allow_extra_args(false);
    command.add_flag("--show", options->show, "Print the station after the run, as show does");
    command.callback([&chosen, options] {
        chosen = [options](std::ostream& out) { return run(*options, out); };
    });
}

}  // namespace trel::host
