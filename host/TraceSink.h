#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "host/Clock.h"
#include "host/Names.h"
#include "smartcomp/SignalInterface.h"

namespace trel::host {

/// A member took another value.
struct Change {
    Time time = 0;
    Member member;
    std::string shown;                  // as people see it
    std::optional<SignalValue> number;  // of a signal
    bool forced = false;                // the scenario holds the signal at a value
};

/// What a component reported for the user to see.
struct Event {
    Time time = 0;
    std::string code;
    std::string text1;
    std::string text2;
    std::string text3;
    std::string ring;  // of connections that the value came round in, where there is one

    /// The event as a sentence.
    std::string told() const;
};

/// One who keeps or prints what a run does. Told in the order in which it happens.
class TraceSink {
public:
    virtual ~TraceSink() = default;

    virtual void changed(const Change& /*change*/) {}
    virtual void reported(const Event& /*event*/) {}

    /// The scenario holds a signal at a value, or lets it go.
    virtual void forced(Time /*time*/, const Member& /*signal*/, bool /*on*/) {}

    /// A line for people: what the scenario says, and what came of it.
    virtual void said(Time /*time*/, std::string_view /*text*/) {}
};

}  // namespace trel::host
