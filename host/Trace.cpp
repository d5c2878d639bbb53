#include "host/Trace.h"

#include <fmt/ostream.h>

#include "host/Members.h"
#include "host/Objects.h"

namespace trel::host {

namespace {

// The member whose value `element` holds: a property's own, or the key "value" of
// a signal or property. Empty for any other element.
std::optional<Member> memberOf(const sdf::Element& element) {
    std::shared_ptr<sdf::Element> parent = element.parent();
    const sdf::Element* holder = &element;
    if (parent && element.tag() == "value") {
        holder = parent.get();
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

}  // namespace

Trace::Trace(std::ostream& out) : out_(out) {
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
    line(fmt::format("-- {}", text));
}

void Trace::flush() {
    if (!changed_) return;
    const Member member = *changed_;
    changed_.reset();
    print(member, shown(member));
}

void Trace::valueWritten(sdf::Element& element, const std::any& value) {
    flush();
    const auto member = memberOf(element);
    if (!member) return;
    if (member->kind == Member::Kind::Property)
        changed_ = member;
    else if (const int* const number = std::any_cast<int>(&value))
        print(*member, shown(SignalValue(*number)));
    else if (const double* const wide = std::any_cast<double>(&value))
        print(*member, shown(SignalValue(*wide)));
    else
        print(*member, element.getStringFromValue());
}

void Trace::reportEvent(const std::string& code, const std::string& text1,
                        const std::string& text2, const std::string& text3) {
    flush();
    if (code == "10007")
        line(fmt::format("!! event {}: {} refuses \"{}\" for the property {}", code,
                         quoted(text1), text3, quoted(text2)));
    else if (code == "10008")
        line(fmt::format("!! event {}: another value came back to {} on a ring of connections, at "
                         "the signal {}, and was dropped",
                         code, quoted(text1), quoted(text2)));
    else
        line(fmt::format("!! event {}: {} {} {}", code, text1, text2, text3));
}

void Trace::print(const Member& member, const std::string& value) {
    std::string& known = known_[member];
    if (known == value) return;
    known = value;
    ++count_;
    line(fmt::format("{} = {}", pathOf(member), value));
}

void Trace::line(std::string_view text) {
    fmt::print(out_, "{:>10}  {}\n", textOfTime(time_), text);
}

}  // namespace trel::host
