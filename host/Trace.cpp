#include "host/Trace.h"

#include <fmt/format.h>

#include <utility>

#include "host/Members.h"
#include "host/Objects.h"

namespace trel::host {

std::optional<Member> memberOf(const sdf::Element& element) {
    const std::shared_ptr<sdf::Element> parent = element.parent();
    if (parent && element.tag() == "value") {
        const sdf::Element* const holder = parent.get();
        const auto owner = parent->parent();
        if (holder->tag() == "signal" && owner)
            return Member{owner->getId(true), Member::Kind::Signal, holder->getId(true)};
        if (holder->tag() == "property" && owner)
            return Member{owner->getId(true), Member::Kind::Property, holder->getId(true)};
        return std::nullopt;
    }
    if (element.tag() != "property" || !parent) return std::nullopt;
    return Member{parent->getId(true), Member::Kind::Property, element.getId(true)};
}

std::string Event::told() const {
    const std::string round = ring.empty() ? "" : "; the ring is " + ring;
    if (code == "10007")
        return fmt::format("event {}: {} refuses \"{}\" for the property {}{}", code, quoted(text1),
                           text3, quoted(text2), round);
    if (code == "10008")
        return fmt::format("event {}: another value came back to {} on a ring of connections, at "
                           "the signal {}, and was dropped{}",
                           code, quoted(text1), quoted(text2), round);
    return fmt::format("event {}: {} {} {}", code, text1, text2, text3);
}

Trace::Trace(std::vector<TraceSink*> sinks) : sinks_(std::move(sinks)) {
    const auto learn = [&](unsigned object) {
        for (const Member& member : membersOf(object)) known_[member] = shown(member);
    };
    for (const auto* const component : componentsNow()) learn(component->id());
    for (const auto* const controller : controllersNow()) learn(controller->id());
    sdf::Element::Subscribe(*this);
    broker::SignalBroker::subscribe(*this);
}

Trace::~Trace() {
    broker::SignalBroker::unsubscribe(*this);
    sdf::Element::Unsubscribe(*this);
}

void Trace::setTime(Time time) {
    flush();
    time_ = time;
}

void Trace::say(std::string_view text) {
    flush();
    for (TraceSink* const sink : sinks_) sink->said(time_, text);
}

void Trace::setForced(const Member& signal, bool forced) {
    flush();
    if (forced ? !forced_.insert(signal).second : forced_.erase(signal) == 0) return;
    for (TraceSink* const sink : sinks_) sink->forced(time_, signal, forced);
}

void Trace::flush() {
    if (!changed_) return;
    const Member member = *changed_;
    changed_.reset();
    tell(member, shown(member), std::nullopt);
}

void Trace::valueWritten(sdf::Element& element, const std::any& value) {
    flush();
    const auto member = memberOf(element);
    if (!member) return;
    if (member->kind == Member::Kind::Property)
        changed_ = member;
    else if (const int* const number = std::any_cast<int>(&value))
        tell(*member, shown(SignalValue(*number)), *number);
    else if (const double* const wide = std::any_cast<double>(&value))
        tell(*member, shown(SignalValue(*wide)), *wide);
    else
        tell(*member, element.getStringFromValue(), std::nullopt);
}

void Trace::reportEvent(const std::string& code, const std::string& text1, const std::string& text2,
                        const std::string& text3) {
    flush();
    const Event event{time_, code, text1, text2, text3, ring_ ? ring_() : ""};
    for (TraceSink* const sink : sinks_) sink->reported(event);
}

void Trace::tell(const Member& member, std::string shown, std::optional<SignalValue> number) {
    std::string& known = known_[member];
    if (known == shown) return;
    known = shown;
    ++count_;
    const Change change{time_, member, std::move(shown), number, forced_.contains(member)};
    for (TraceSink* const sink : sinks_) sink->changed(change);
}

}  // namespace trel::host
