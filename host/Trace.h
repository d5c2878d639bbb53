#pragma once

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/TraceSink.h"
#include "platform/broker/SignalBroker.h"
#include "platform/sdf/Element.h"

namespace trel::host {

/// Follows a run and tells every change of a signal or property, and every event,
/// to its sinks. It listens to the document, not to the broker: there a pulse is
/// two values, while the broker's notice comes when the value is already back.
class Trace : private sdf::ValueObserver, private broker::Listener {
public:
    /// Knows all present values from now on, and tells what differs from them.
    explicit Trace(std::vector<TraceSink*> sinks);
    ~Trace() override;
    Trace(const Trace&) = delete;
    Trace& operator=(const Trace&) = delete;

    /// What follows happens at `time`.
    void setTime(Time time);

    /// A line between the changes, for people.
    void say(std::string_view text);

    /// One more who is told, until he is left out; he lives that long.
    void add(TraceSink& sink) { sinks_.push_back(&sink); }
    void leaveOut(TraceSink& sink) { std::erase(sinks_, &sink); }

    /// Who tells the ring of connections that a value came round in, for events about
    /// it; null for nobody.
    void setRing(std::function<std::string()> ring) { ring_ = std::move(ring); }

    /// From now on the scenario holds the signal at a value, or does no more.
    void setForced(const Member& signal, bool forced);

    /// Tells the change that is still held back, see changed_.
    void flush();

    unsigned long long changes() const { return count_; }

private:
    void valueWritten(sdf::Element& element, const std::any& value) override;
    void reportEvent(const std::string& code, const std::string& text1, const std::string& text2,
                     const std::string& text3) override;
    void tell(const Member& member, std::string shown, std::optional<SignalValue> number);

    std::vector<TraceSink*> sinks_;
    Time time_ = 0;
    unsigned long long count_ = 0;
    std::function<std::string()> ring_;
    std::map<Member, std::string> known_;
    std::set<Member> forced_;

    // A property is written to the document first: its display value is there
    // only when the next thing happens.
    std::optional<Member> changed_;
};

/// The member whose value `element` holds: a property's own, or the key "value" of
/// a signal or property. Empty for any other element.
std::optional<Member> memberOf(const sdf::Element& element);

}  // namespace trel::host
