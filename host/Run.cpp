#include "host/Run.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <unordered_map>
#include <utility>

#include "host/Failure.h"
#include "host/Interrupt.h"
#include "host/Members.h"
#include "host/Objects.h"
#include "smartcomp/Hold.h"
#include "smartcomp/Lifecycle.h"
#include "smartcomp/Stack.h"

namespace trel::host {

using smartcomp::SmartComponent;
using End = RunOutcome::End;

namespace {

// "Cell/Odd (Thrower, #10)". It may have removed itself before it failed.
std::string called(unsigned id) {
    const auto* const object = objectOf(id);
    const std::string type = !object ? "removed"
                             : object->element()->tag() == "controller"
                                 ? "controller"
                                 : object->element()->asString("type");
    return fmt::format("{} ({}, #{})", pathOf(id), type, id);
}

}  // namespace

Run::Run(const Script& script, Trace& trace, RunRules rules)
    : script_(script),
      trace_(trace),
      rules_(std::move(rules)),
      deliveries_(rules_.budget),
      expectations_(trace) {
    trace_.add(forced_);
    trace_.add(expectations_);
    trace_.setRing([this] { return textOf(deliveries_.ring()); });
}

Run::~Run() {
    trace_.setRing({});
    trace_.leaveOut(expectations_);
    trace_.leaveOut(forced_);
}

RunOutcome Run::play() {
    const auto& moments = script_.moments;
    trace_.setTime(0);
    deliveries_.beginStep();
    admitNewComponents();
    Time nextStep = 0;
    while (!isOver()) {
        const Time moment = next_ < moments.size() ? moments[next_].at : nextStep;
        const Time time = std::min(nextStep, moment);
        if (time > rules_.until) break;
        if (time == nextStep) nextStep += rules_.step;
        at(time);
        if (rules_.onStep) rules_.onStep(time);
        heedInterrupt();
    }
    finish();
    return std::move(outcome_);
}

// The pointers of the list may be dead: only those that the object table holds
// are followed.
void Run::admitNewComponents() {
    const auto& all = smartcomp::GetAllSmartComponents();
    if (all.size() == listed_) return;
    std::unordered_map<const SmartComponent*, unsigned> alive;
    for (const SmartComponent* const component : componentsNow())
        alive.emplace(component, component->id());

    std::vector<unsigned> fresh;
    for (auto entry = std::next(all.begin(), static_cast<std::ptrdiff_t>(listed_));
         entry != all.end(); ++entry)
        if (const auto known = alive.find(*entry); known != alive.end())
            fresh.push_back(known->second);
    listed_ = all.size();
    std::erase_if(fresh, [&](unsigned id) { return std::ranges::find(ids_, id) != ids_.end(); });
    ids_.insert(ids_.end(), fresh.begin(), fresh.end());

    for (const unsigned id : fresh)
        ask(id, "initialising", [](SmartComponent& component) { component.initialize(); });
    for (const unsigned id : fresh)
        ask(id, "starting", [&](SmartComponent& component) { component.start(time_); });
}

void Run::at(Time time) {
    time_ = time;
    if (time > 0) deliveries_.beginStep();  // the first begins with the start
    trace_.setTime(time);
    expectations_.stepBegins(time);
    for (const auto& [signal, value] : std::map(forced_.values())) setAgain(signal, value);
    for (; next_ < script_.moments.size() && script_.moments[next_].at <= time; ++next_) {
        for (const std::string& text : script_.moments[next_].say) trace_.say(text);
        for (const Expectation& expectation : script_.moments[next_].expect)
            expectations_.open(expectation, time);
        for (const Setting& setting : script_.moments[next_].settings) apply(setting);
    }
    admitNewComponents();
    askAll("executing", [&](SmartComponent& component) { component.execute(time); });
    trace_.flush();
    if (isOver()) return;
    ++outcome_.steps;
    expectations_.stepDone(time);
}

void Run::askAll(std::string_view doing, const Ask& asking) {
    for (const unsigned id : ids_) ask(id, doing, asking);
}

void Run::ask(unsigned id, std::string_view doing, const Ask& asking) {
    SmartComponent* const component = componentOf(id);
    if (!component || deliveries_.isAside(id)) return;
    call(id, std::string(doing), [&] {
        // It may remove itself, and is then still on its way back here.
        const smartcomp::Hold hold(*component);
        asking(*component);
    });
    putRight();
}

void Run::apply(const Setting& setting) {
    const Member& member = setting.member;
    if (isOver()) return;
    if (!nameOf(member)) {
        outcome_.missed.push_back(
            fmt::format("{}: cannot set {} at {}: it has been removed; take the line out",
                        setting.place, pathOf(member), textOfTime(time_)));
        return;
    }
    if (deliveries_.isAside(member.object))
        return trace_.say(fmt::format("{} is not set: its component was set aside",
                                      pathOf(member)));
    if (setting.kind == Setting::Kind::Release) {
        forced_.release(member);
        return trace_.setForced(member, false);
    }
    if (setting.kind == Setting::Kind::Force) {
        forced_.hold(member, setting.number);
        trace_.setForced(member, true);
    }
    call(member.object, fmt::format("being set at {} by {}", pathOf(member), setting.place),
         [&] { carryOut(setting, time_); });
    putRight();
}

void Run::setAgain(const Member& signal, int value) {
    if (!nameOf(signal) || deliveries_.isAside(signal.object)) return;
    call(signal.object, fmt::format("being held at {}", pathOf(signal)),
         [&] { setSignal(signal, value, time_); });
}

// Asks the object `id` for something, and keeps what it throws from the run.
void Run::call(unsigned id, const std::string& doing, const std::function<void()>& function) {
    if (isOver()) return;
    try {
        function();
    } catch (...) {
        contain(id, doing);
    }
    trace_.flush();
    if (deliveries_.isSpent()) {
        outcome_.hotspots = hotspots(deliveries_, 5);
        stop(End::Budget, fmt::format("the budget of {} deliveries in a step is spent at {}",
                                      deliveries_.budget(), textOfTime(time_)));
    }
    heedInterrupt();
}

void Run::heedInterrupt() {
    if (wasInterrupted())
        stop(End::Interrupted, fmt::format("interrupted at {}", textOfTime(time_)));
}

// A signal that is held and took another value in a call gets its own again, once: on a
// ring the other one may come back, until the next call.
void Run::putRight() {
    for (const auto& [signal, value] : forced_.disturbed()) setAgain(signal, value);
}

// Names the component that threw, and sets it aside.
void Run::contain(unsigned asked, const std::string& doing) {
    const std::string thrown = textOfThrown();
    const auto chain = deliveries_.chain();
    if (thrown == smartcomp::stackUsedUp) {
        const auto ring = deliveries_.ring();
        stop(End::Stack,
             fmt::format("the stack is used up by {} nested deliveries at {}; {}{}", chain.size(),
                         textOfTime(time_), ring.empty() ? "they are " : "they go round the ring ",
                         textOf(ring.empty() ? chain : ring)));
    }
    const unsigned failed = chain.empty() ? asked : chain.back().destination.object;
    const std::string done = chain.empty() ? doing
                                           : fmt::format("taking {} at {}", deliveries_.brought(),
                                                         pathOf(chain.back().destination));
    const std::string way = chain.empty() ? ""
                                          : fmt::format("; what led there: {} {}, {}",
                                                        called(asked), doing, textOf(chain));
    deliveries_.forgetChain();
    for (SmartComponent* const component : componentsNow()) component->clearMarks();
    trace_.flush();
    if (isOver()) return;
    outcome_.faults.push_back({time_, called(failed),
                               fmt::format("{} failed at {} while {}: {}{}", called(failed),
                                           textOfTime(time_), done, thrown, way)});
    trace_.say("FAULT: " + outcome_.faults.back().text);
    deliveries_.setAside(failed);
    if (rules_.stopsOnFault) stop(End::Fault, "a component failed");
}

void Run::stop(End end, const std::string& reason) {
    if (isOver() || isEnding_) return;
    outcome_.end = end;
    outcome_.reason = reason;
    trace_.say("STOPPED: " + reason);
}

void Run::finish() {
    outcome_.time = isOver() ? time_ : rules_.until;
    // However the run ended, the components are asked to stop.
    isEnding_ = isOver();
    const End end = std::exchange(outcome_.end, End::Good);
    deliveries_.beginStep();
    askAll("stopping", [](SmartComponent& component) { component.stop(); });
    if (isEnding_) outcome_.end = end;
    trace_.flush();
    outcome_.deliveries = deliveries_.count();
    outcome_.hottest = deliveries_.hottest(5);

    expectations_.end(outcome_.time, outcome_.reason);
    if (isOver())
        for (; next_ < script_.moments.size() && script_.moments[next_].at <= rules_.until; ++next_)
            for (const Expectation& expectation : script_.moments[next_].expect)
                expectations_.passOver(expectation, script_.moments[next_].at, outcome_.reason);
    outcome_.failed = outcome_.missed;
    outcome_.verdicts = expectations_.verdicts();
    for (const Verdict& verdict : outcome_.verdicts) {
        if (verdict.outcome == Verdict::Outcome::Held) ++outcome_.held;
        if (verdict.outcome == Verdict::Outcome::Failed)
            outcome_.failed.push_back(fmt::format("{}: {}, {}", verdict.expectation->place,
                                                  verdict.asked, verdict.found));
    }
}

}  // namespace trel::host
