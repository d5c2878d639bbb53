#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "host/OutputFile.h"
#include "host/Report.h"
#include "host/Run.h"
#include "host/Trace.h"
#include "host/TraceVcd.h"
#include "host/Watch.h"

namespace trel::host {

/// What the command line asks of a run.
struct RunOptions {
    std::filesystem::path file;
    std::optional<std::filesystem::path> scenario;
    std::optional<Time> until;
    std::optional<Time> step;
    std::vector<std::filesystem::path> libraries;
    std::optional<std::filesystem::path> save;
    std::optional<std::filesystem::path> vcd;
    std::optional<std::filesystem::path> csv;
    std::optional<std::filesystem::path> junit;
    std::optional<std::filesystem::path> report;
    std::optional<std::uint64_t> seed;
    unsigned long long budget = RunRules::usualBudget;
    bool stopsOnFault = false;
    std::vector<std::string> watch;
    bool json = false;  // what is printed
    bool show = false;  // the station after the run
};

/// All that a run is printed to and kept in, but for the station that it saves.
class RunFiles {
public:
    /// Opens the files; those that are written as the run goes on begin now.
    /// \throws Failure (usage) for a pattern to watch that suits nothing, (cannot save)
    /// for a file that cannot be written.
    RunFiles(const RunOptions& options, const Script& script, std::ostream& out);

    Trace& trace() { return *trace_; }

    /// Makes them whole.
    /// \throws Failure (cannot save).
    void finish(const RunOutcome& outcome);

private:
    void add(std::unique_ptr<TraceSink> sink);
    void finishVcd(Time time);
    ReportHead reportHead() const;

    const RunOptions& options_;
    const Watch watch_;
    std::optional<OutputFile> csvFile_;
    std::optional<OutputFile> vcdFile_;
    std::vector<std::unique_ptr<TraceSink>> owned_;
    std::vector<TraceSink*> sinks_;
    VcdTrace* vcd_ = nullptr;
    ReportTrace* report_ = nullptr;
    std::optional<Trace> trace_;
};

}  // namespace trel::host
