#include "host/Report.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

#include "host/Markup.h"

namespace trel::host {

namespace {

constexpr std::string_view style = R"(
  body { font: 14px/1.45 system-ui, sans-serif; margin: 2rem auto; max-width: 1240px;
         padding: 0 1rem; color: #1c2430; background: #fff; }
  h1 { font-size: 1.5rem; margin: 0; } h2 { font-size: 1.1rem; margin: 2rem 0 .5rem; }
  .verdict { display: inline-block; padding: .2rem .7rem; border-radius: 1rem; color: #fff;
             font-weight: 600; margin: .6rem 0; }
  .good { background: #1d7a46; } .bad { background: #b3261e; }
  dl { display: grid; grid-template-columns: max-content 1fr; gap: .1rem 1rem; margin: .3rem 0; }
  dt { color: #5b6779; } dd { margin: 0; }
  table { border-collapse: collapse; width: 100%; }
  th, td { text-align: left; padding: .25rem .6rem; border-bottom: 1px solid #e2e7ee;
           vertical-align: top; }
  th { color: #5b6779; font-weight: 600; }
  td.held { color: #1d7a46; } td.failed { color: #b3261e; font-weight: 600; }
  td.skipped { color: #8a6d00; } td.time, td.count { white-space: nowrap; }
  td.count { text-align: right; } .note { color: #5b6779; } .scroll { overflow-x: auto; }
  .waves text { font: 11px system-ui, sans-serif; fill: #1c2430; }
  .waves .name { text-anchor: end; } .waves .time { text-anchor: middle; fill: #5b6779; }
  .waves .range, .waves .value { font-size: 9px; fill: #5b6779; }
  .waves path { fill: none; stroke-width: 1.4; } .waves .wire { stroke: #1d7a46; }
  .waves .number { stroke: #2456a6; } .waves .grid { stroke: #eef1f5; }
  .waves rect.text { fill: #f3efe4; stroke: #c9bf9f; }
  .waves rect.forced { fill: #f7d9d7; }
)";

class Page {
public:
    void head(const std::string& title) {
        print("<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
              "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
              "<link rel=\"icon\" href=\"data:,\">\n<title>{}</title>\n<style>{}</style>\n</head>\n"
              "<body>\n",
              title, style);
    }

    template <typename... Parts>
    void print(fmt::format_string<Parts...> form, Parts&&... parts) {
        fmt::format_to(std::back_inserter(text_), form, std::forward<Parts>(parts)...);
    }

    void section(const std::string& id, const std::string& title) {
        print("<h2 id=\"{}\">{}</h2>\n", id, title);
    }

    void row(const std::vector<std::pair<std::string_view, std::string>>& cells) {
        print("<tr>");
        for (const auto& [kind, text] : cells)
            print("<td class=\"{}\">{}</td>", kind, escapedMarkup(text));
        print("</tr>\n");
    }

    void table(const std::vector<std::string_view>& titles) {
        print("<table>\n<tr>");
        for (const std::string_view title : titles) print("<th>{}</th>", title);
        print("</tr>\n");
    }
    void endTable() { print("</table>\n"); }

    std::string finished() {
        print("</body>\n</html>\n");
        return std::move(text_);
    }

private:
    std::string text_;
};

std::string verdictOf(const RunOutcome& outcome) {
    if (outcome.end != RunOutcome::End::Good) return "Stopped: " + outcome.reason;
    if (!outcome.faults.empty())
        return fmt::format("{} component(s) failed", outcome.faults.size());
    if (!outcome.failed.empty())
        return fmt::format("{} expectation(s) failed", outcome.failed.size());
    return "All that was expected held";
}

void summary(Page& page, const ReportHead& head, const RunOutcome& outcome) {
    const bool isGood = outcome.end == RunOutcome::End::Good && outcome.faults.empty() &&
                        outcome.failed.empty();
    page.print("<h1>Run of {}</h1>\n<p class=\"verdict {}\">{}</p>\n", escapedMarkup(head.station),
               isGood ? "good" : "bad", escapedMarkup(verdictOf(outcome)));
    page.print("<dl>");
    const auto fact = [&](std::string_view name, const std::string& value) {
        page.print("<dt>{}</dt><dd>{}</dd>", name, escapedMarkup(value));
    };
    if (!head.scenario.empty()) fact("Scenario", head.scenario);
    fact("Simulation time", textOfTime(outcome.time));
    fact("Steps", fmt::format("{}", outcome.steps));
    fact("Deliveries", fmt::format("{}", outcome.deliveries));
    page.print("</dl>\n");
}

void expectations(Page& page, const RunOutcome& outcome) {
    page.section("expectations", "Expectations");
    if (outcome.verdicts.empty() && outcome.missed.empty())
        return page.print("<p class=\"note\">Nothing was expected.</p>\n");
    page.table({"Time", "Expected", "Outcome", "Place"});
    for (const Verdict& verdict : outcome.verdicts) {
        const auto [kind, text] = verdict.outcome == Verdict::Outcome::Held
                                      ? std::pair("held", std::string("held"))
                                  : verdict.outcome == Verdict::Outcome::Failed
                                      ? std::pair("failed", verdict.found)
                                      : std::pair("skipped", "not reached: " + verdict.found);
        page.row({{"time", textOfTime(verdict.at)},
                  {"", verdict.asked},
                  {kind, text},
                  {"note", verdict.expectation->place}});
    }
    for (const std::string& missed : outcome.missed)
        page.row({{"time", ""}, {"", missed}, {"failed", "failed"}, {"note", ""}});
    page.endTable();
}

void events(Page& page, const RunOutcome& outcome, const ReportTrace& trace) {
    page.section("events", "Events and faults");
    if (trace.events().empty() && outcome.faults.empty())
        return page.print("<p class=\"note\">None.</p>\n");
    page.table({"Time", "What happened"});
    for (const RunOutcome::Fault& fault : outcome.faults)
        page.row({{"time", textOfTime(fault.at)}, {"failed", fault.text}});
    for (const Event& event : trace.events())
        page.row({{"time", textOfTime(event.time)}, {"", event.told()}});
    page.endTable();
}

void hottest(Page& page, const RunOutcome& outcome) {
    page.section("hottest", "What got the most deliveries");
    page.table({"Deliveries", "Member", "In the step that was stopped"});
    for (const auto& [member, count] : outcome.hottest) {
        const auto hot = std::ranges::find(outcome.hotspots, member, &Hotspot::member);
        page.row({{"count", fmt::format("{}", count)},
                  {"", pathOf(member)},
                  {"", hot == outcome.hotspots.end()
                           ? ""
                           : fmt::format("{} deliveries; {}", hot->deliveries, hot->reason)}});
    }
    page.endTable();
}

// Without what stands ahead of the picture in a document of its own.
std::string_view embedded(std::string_view svg) {
    return svg.substr(std::min(svg.find("<svg"), svg.size()));
}

}  // namespace

std::string textOfReport(const ReportHead& head, const RunOutcome& outcome,
                         const ReportTrace& trace) {
    Page page;
    page.head(escapedMarkup("Run of " + head.station));
    summary(page, head, outcome);
    expectations(page, outcome);
    events(page, outcome, trace);

    page.section("waveforms", "Waveforms");
    if (const std::string note = trace.leftOut(); !note.empty())
        page.print("<p class=\"note\">{}</p>\n", note);
    page.print("<div class=\"scroll\">{}</div>\n", trace.drawn(outcome.time));
    hottest(page, outcome);

    page.section("diagram", "Diagram, with the values after the run");
    if (head.diagram.empty())
        page.print(
            "<p class=\"note\">Graphviz did not draw it; look whether its package graphviz is "
            "installed, and at what station graph says.</p>\n");
    else
        page.print("<div class=\"scroll\">{}</div>\n", embedded(head.diagram));

    page.section("lines", "What the scenario said");
    page.table({"Time", "Line"});
    for (const auto& [time, text] : trace.lines())
        page.row({{"time", textOfTime(time)}, {"", text}});
    page.endTable();
    return page.finished();
}

}  // namespace trel::host
