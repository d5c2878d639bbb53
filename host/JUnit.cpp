#include "host/JUnit.h"

#include <fmt/format.h>

#include <utility>

#include "host/Markup.h"

namespace trel::host {

namespace {

std::string seconds(Time time) {
    return fmt::format("{}.{:06}", time / 1'000'000, time % 1'000'000);
}

class Report {
public:
    explicit Report(std::string scenario) : scenario_(std::move(scenario)) {}

    // `inside` is what the case contains, if it did not pass.
    void add(const std::string& name, Time time, const std::string& inside) {
        cases_ += fmt::format("    <testcase classname=\"{}\" name=\"{}\" time=\"{}\"",
                              escapedMarkup(scenario_), escapedMarkup(name), seconds(time));
        cases_ += inside.empty() ? std::string(" />\n")
                                 : fmt::format(">\n      {}\n    </testcase>\n", inside);
        ++count_;
    }
    void failed(const std::string& name, Time time, const std::string& message,
                const std::string& text) {
        ++failures_;
        add(name, time,
            fmt::format("<failure type=\"expectation\" message=\"{}\">{}</failure>",
                        escapedMarkup(message), escapedMarkup(text)));
    }
    void error(const std::string& name, Time time, const std::string& type,
               const std::string& message) {
        ++errors_;
        add(name, time,
            fmt::format("<error type=\"{}\" message=\"{}\" />", type, escapedMarkup(message)));
    }
    void skipped(const std::string& name, Time time, const std::string& message) {
        ++skipped_;
        add(name, time, fmt::format("<skipped message=\"{}\" />", escapedMarkup(message)));
    }

    std::string text(Time length) const {
        const std::string counts =
            fmt::format("tests=\"{}\" failures=\"{}\" errors=\"{}\" skipped=\"{}\" time=\"{}\"",
                        count_, failures_, errors_, skipped_, seconds(length));
        return fmt::format("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                           "<testsuites {0}>\n  <testsuite name=\"{1}\" {0}>\n{2}"
                           "  </testsuite>\n</testsuites>\n",
                           counts, escapedMarkup(scenario_), cases_);
    }

private:
    std::string scenario_;
    std::string cases_;
    unsigned count_ = 0;
    unsigned failures_ = 0;
    unsigned errors_ = 0;
    unsigned skipped_ = 0;
};

}  // namespace

std::string textOfJUnit(const RunOutcome& outcome, const std::string& scenario) {
    Report report(scenario);
    for (const Verdict& verdict : outcome.verdicts) {
        const std::string name = fmt::format("{}: {}", verdict.expectation->place, verdict.asked);
        if (verdict.outcome == Verdict::Outcome::Held)
            report.add(name, verdict.at, "");
        else if (verdict.outcome == Verdict::Outcome::Failed)
            report.failed(name, verdict.at, fmt::format("{}, {}", verdict.asked, verdict.found),
                          fmt::format("{}: {}, {}", verdict.expectation->place, verdict.asked,
                                      verdict.found));
        else
            report.skipped(name, verdict.at, "not reached: " + verdict.found);
    }
    for (const std::string& missed : outcome.missed)
        report.failed(missed.substr(0, missed.find(": ")), outcome.time, missed, missed);
    for (const RunOutcome::Fault& fault : outcome.faults)
        report.error(fault.component, fault.at, "component", fault.text);
    if (outcome.end != RunOutcome::End::Good && outcome.end != RunOutcome::End::Fault)
        report.error("the run", outcome.time, "stopped", outcome.reason);
    return report.text(outcome.time);
}

}  // namespace trel::host
