#include "host/Expectations.h"

#include <fmt/format.h>

#include <iterator>

#include "host/Members.h"

namespace trel::host {

namespace {

std::string askedOf(const Expectation& expectation, Time from) {
    const std::string span = expectation.span ? " within " + textOfTime(*expectation.span)
                                              : std::string();
    switch (expectation.kind) {
        case Expectation::Kind::Now:
            return fmt::format("at {} {} was expected to be {}", textOfTime(from), expectation.name,
                               expectation.text);
        case Expectation::Kind::Within:
            return fmt::format("from {} on {} was expected to be {}{}", textOfTime(from),
                               expectation.name, expectation.text, span);
        case Expectation::Kind::Never: break;
    }
    return fmt::format("from {} on {} was expected never to be {}{}", textOfTime(from),
                       expectation.name, expectation.text, span);
}

// What a run that prints says of it.
std::string told(const Verdict& verdict) {
    const Expectation& expectation = *verdict.expectation;
    if (verdict.outcome == Verdict::Outcome::Failed)
        return expectation.kind == Expectation::Kind::Now
                   ? fmt::format("FAILED: {} was expected to be {}, and is {}", expectation.name,
                                 expectation.text, shown(expectation.member))
                   : fmt::format("FAILED: {}, {}", verdict.asked, verdict.found);
    switch (expectation.kind) {
        case Expectation::Kind::Now:
            return fmt::format("ok: {} = {}", expectation.name, shown(expectation.member));
        case Expectation::Kind::Within:
            return fmt::format("ok: {} = {} within {}", expectation.name, expectation.text,
                               textOfTime(*expectation.span));
        case Expectation::Kind::Never: break;
    }
    return fmt::format("ok: {} was never {}", expectation.name, expectation.text);
}

}  // namespace

void Expectations::open(const Expectation& expectation, Time time) {
    std::optional<Time> to;
    if (expectation.kind == Expectation::Kind::Now) to = time;
    if (expectation.span) to = time + *expectation.span;
    open_.push_back({&expectation, time, to});
}

void Expectations::stepBegins(Time time) {
    for (auto open = open_.begin(); open != open_.end();) {
        const Open over = *open;
        open = over.to && *over.to < time ? open_.erase(open) : std::next(open);
        if (over.to && *over.to < time) close(over, *over.to);
    }
}

void Expectations::stepDone(Time time) {
    for (auto open = open_.begin(); open != open_.end();)
        open = lookAt(*open, time) ? open_.erase(open) : std::next(open);
}

// Whether it is decided.
bool Expectations::lookAt(const Open& open, Time time) {
    const auto found = open.expectation->found();
    const Expectation::Kind kind = open.expectation->kind;
    if (!found && kind == Expectation::Kind::Never)
        decide(open, Outcome::Failed, time, fmt::format("and was so at {}", textOfTime(time)));
    else if (!found)
        decide(open, Outcome::Held, time, "");
    else if (kind == Expectation::Kind::Now)
        decide(open, Outcome::Failed, time, "and was " + *found);
    else if (open.to && time >= *open.to)
        close(open, time);
    else
        return false;
    return true;
}

// Its span is over, and nothing was seen.
void Expectations::close(const Open& open, Time time) {
    if (open.expectation->kind == Expectation::Kind::Never)
        decide(open, Outcome::Held, time, "");
    else
        decide(open, Outcome::Failed, time,
               fmt::format("and was {} to the end", shown(open.expectation->member)));
}

void Expectations::changed(const Change& change) {
    for (auto open = open_.begin(); open != open_.end();) {
        const Expectation& expectation = *open->expectation;
        const bool isSeen =
            expectation.member == change.member && expectation.kind != Expectation::Kind::Now &&
            (!open->to || change.time <= *open->to) &&
            (change.number ? expectation.holdsFor(*change.number) : !expectation.found());
        if (!isSeen) {
            ++open;
            continue;
        }
        const Open seen = *open;
        open = open_.erase(open);
        if (expectation.kind == Expectation::Kind::Within)
            decide(seen, Outcome::Held, change.time, "");
        else
            decide(seen, Outcome::Failed, change.time,
                   fmt::format("and was so at {}", textOfTime(change.time)));
    }
}

void Expectations::end(Time time, const std::string& stopped) {
    for (const Open& open : open_) {
        if (stopped.empty())
            close(open, time);
        else
            decide(open, Outcome::NotReached, time, stopped);
    }
    open_.clear();
}

void Expectations::passOver(const Expectation& expectation, Time from, const std::string& reason) {
    decide({&expectation, from, {}}, Outcome::NotReached, from, reason);
}

void Expectations::decide(const Open& open, Outcome outcome, Time at, const std::string& found) {
    verdicts_.push_back({open.expectation, outcome, open.from, at,
                         askedOf(*open.expectation, open.from), found});
    if (outcome != Outcome::NotReached) trace_.say(told(verdicts_.back()));
}

}  // namespace trel::host
