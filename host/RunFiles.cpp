#include "host/RunFiles.h"

#include "host/Failure.h"
#include "host/Graph.h"
#include "host/Graphviz.h"
#include "host/JUnit.h"
#include "host/TraceText.h"

namespace trel::host {

RunFiles::RunFiles(const RunOptions& options, const Script& script, std::ostream& out)
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
        auto vcd = std::make_unique<VcdTrace>(vcdFile_->stream(), script.forced);
        vcd_ = vcd.get();
        add(std::move(vcd));
    }
    if (options.report) {
        auto report = std::make_unique<ReportTrace>(watch_);
        report_ = report.get();
        add(std::move(report));
    }
    trace_.emplace(sinks_);
}

void RunFiles::finish(const RunOutcome& outcome) {
    if (csvFile_) csvFile_->finish();
    if (vcd_) finishVcd(outcome.time);
    if (options_.junit)
        writeFile(*options_.junit,
                  textOfJUnit(outcome, options_.scenario.value_or(options_.file).string()));
    if (report_) writeFile(*options_.report, textOfReport(reportHead(), outcome, *report_));
}

void RunFiles::finishVcd(Time time) {
    vcd_->end(time);
    vcdFile_->finish();
    auto save = *options_.vcd;
    writeFile(save.replace_extension(".gtkw"),
              vcd_->saveFile(options_.vcd->filename().string(), watch_));
}

ReportHead RunFiles::reportHead() const {
    std::string diagram;
    try {
        diagram = drawn(dotOfStation({.values = true}), "svg").value_or("");
    } catch (const Failure&) {
        // Graphviz gives up on some graphs; the rest of the report is good.
    }
    return {options_.file.string(), options_.scenario ? options_.scenario->string() : "", diagram};
}

void RunFiles::add(std::unique_ptr<TraceSink> sink) {
    sinks_.push_back(sink.get());
    owned_.push_back(std::move(sink));
}

}  // namespace trel::host
