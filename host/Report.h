#pragma once

#include <string>
#include <vector>

#include "host/Run.h"
#include "host/TraceSink.h"
#include "host/Waveforms.h"

namespace trel::host {

/// Keeps what a run does for its report.
class ReportTrace : public Waveforms {
public:
    using Waveforms::Waveforms;

    void reported(const Event& event) override { events_.push_back(event); }
    void said(Time time, std::string_view text) override { said_.emplace_back(time, text); }

    const std::vector<Event>& events() const { return events_; }
    const std::vector<std::pair<Time, std::string>>& lines() const { return said_; }

private:
    std::vector<Event> events_;
    std::vector<std::pair<Time, std::string>> said_;
};

/// What a report is about.
struct ReportHead {
    std::string station;   // the file
    std::string scenario;  // the file, or empty
    std::string diagram;   // an SVG document, or empty where nobody draws it
};

/// A run as one HTML page that needs nothing else: what was expected and came of it, what
/// was reported, the waveforms, what got the most deliveries, and the diagram.
std::string textOfReport(const ReportHead& head, const RunOutcome& outcome,
                         const ReportTrace& trace);

}  // namespace trel::host
