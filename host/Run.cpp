#include "host/Run.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <unordered_map>

#include "host/Failure.h"
#include "host/Members.h"
#include "host/Objects.h"
#include "smartcomp/Hold.h"
#include "smartcomp/Lifecycle.h"

namespace trel::host {

using smartcomp::SmartComponent;

Run::Run(const Script& script, Trace& trace, Time step, Time until)
    : script_(script), trace_(trace), step_(step), until_(until) {}

Run::Outcome Run::play() {
    begin();
    const auto& moments = script_.moments;
    Time nextStep = 0;
    while (true) {
        const Time moment = next_ < moments.size() ? moments[next_].at : nextStep;
        const Time time = std::min(nextStep, moment);
        if (time > until_) break;
        if (time == nextStep) nextStep += step_;
        at(time);
    }
    askAll("stopping", [](SmartComponent& component) { component.stop(); });
    trace_.flush();
    return std::move(outcome_);
}

void Run::begin() {
    trace_.setTime(0);
    admitNewComponents(0);
}

// The pointers of the list may be dead: only those that the object table holds
// are followed.
void Run::admitNewComponents(Time time) {
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
        ask(id, "starting", [&](SmartComponent& component) { component.start(time); });
}

void Run::at(Time time) {
    time_ = time;
    trace_.setTime(time);
    const std::size_t first = next_;
    for (; next_ < script_.moments.size() && script_.moments[next_].at <= time; ++next_) {
        for (const std::string& text : script_.moments[next_].say) trace_.say(text);
        for (const Setting& setting : script_.moments[next_].set) apply(setting);
    }
    admitNewComponents(time);
    askAll("executing", [&](SmartComponent& component) { component.execute(time); });
    trace_.flush();
    ++outcome_.steps;
    for (std::size_t moment = first; moment != next_; ++moment)
        for (const Expectation& expectation : script_.moments[moment].expect) check(expectation);
}

void Run::askAll(std::string_view doing, const Ask& asking) {
    for (const unsigned id : ids_) ask(id, doing, asking);
}

void Run::ask(unsigned id, std::string_view doing, const Ask& asking) {
    SmartComponent* const component = componentOf(id);
    if (!component) return;
    try {
        // It may remove itself, and is then still on its way back here.
        const smartcomp::Hold hold(*component);
        asking(*component);
    } catch (...) {
        trace_.flush();
        // It may have removed itself before it failed.
        const SmartComponent* const left = componentOf(id);
        throw Failure(ExitCode::ComponentFailed,
                      fmt::format("{} ({}, #{}) failed at {} while {}: {}; the fault is in its type "
                                  "or in what it is connected to, and nothing is saved",
                                  pathOf(id), left ? left->element()->asString("type") : "removed",
                                  id, textOfTime(time_), doing, textOfThrown()));
    }
}

void Run::apply(const Setting& setting) {
    const Member& member = setting.member;
    if (!nameOf(member)) {
        outcome_.failed.push_back(
            fmt::format("{}: cannot set {} at {}: it has been removed; take the line out",
                        setting.place, pathOf(member), textOfTime(time_)));
        return;
    }
    try {
        if (propertyOf(member)) {
            const smartcomp::Hold hold(*componentOf(member.object));
            componentOf(member.object)->setPropertyValue(member.id, setting.text);
        } else if (signalOf(member))
            componentOf(member.object)->handleSignalValue(member.id, setting.number, time_);
        else if (auto* const controller = dynamic_cast<Controller*>(objectOf(member.object));
                 controllerSignalOf(member)->isOutput())
            controller->setOutput(member.id, setting.number, true, time_);
        else
            controller->setSignalValue(member.id, setting.number, true);
    } catch (...) {
        trace_.flush();
        throw Failure(ExitCode::ComponentFailed,
                      fmt::format("{}: setting {} at {} made a component fail: {}; the fault is in "
                                  "the type of a component that the value reached, and nothing is "
                                  "saved",
                                  setting.place, pathOf(member), textOfTime(time_), textOfThrown()));
    }
}

void Run::check(const Expectation& expectation) {
    const auto found = expectation.found();
    if (!found) {
        ++outcome_.held;
        trace_.say(fmt::format("ok: {} = {}", expectation.name, shown(expectation.member)));
        return;
    }
    outcome_.failed.push_back(fmt::format("{}: at {} {} was expected to be {}, and was {}",
                                          expectation.place, textOfTime(time_), expectation.name,
                                          expectation.text, *found));
    trace_.say(fmt::format("FAILED: {} was expected to be {}, and is {}", expectation.name,
                           expectation.text, *found));
}

}  // namespace trel::host
