#pragma once

#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>

#include "host/Clock.h"
#include "host/Names.h"
#include "platform/broker/SignalBroker.h"
#include "platform/sdf/Element.h"

namespace trel::host {

/// Prints every change of a signal or property as one line, with time, path of
/// names and value, and every event. It listens to the document, not to the
/// broker: there a pulse is two values, while the broker's notice comes when the
/// value is already back.
class Trace : private sdf::ValueObserver, private broker::Listener {
public:
    /// Knows all present values from now on, and prints what differs from them.
    explicit Trace(std::ostream& out);
    ~Trace() override;
    Trace(const Trace&) = delete;
    Trace& operator=(const Trace&) = delete;

    /// What follows happens at `time`.
    void setTime(Time time);

    /// A line between the changes, for people.
    void say(std::string_view text);

    /// Prints the change that is still held back, see changed_.
    void flush();

    unsigned long long changes() const { return count_; }

private:
    void valueWritten(sdf::Element& element, const std::any& value) override;
    void reportEvent(const std::string& code, const std::string& text1, const std::string& text2,
                     const std::string& text3) override;
    void print(const Member& member, const std::string& value);
    void line(std::string_view text);

    std::ostream& out_;
    Time time_ = 0;
    unsigned long long count_ = 0;
    std::map<Member, std::string> known_;

    // A property is written to the document first: its display value is there
    // only when the next thing happens.
    std::optional<Member> changed_;
};

}  // namespace trel::host
