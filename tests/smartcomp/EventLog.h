#pragma once

#include <any>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/broker/SignalBroker.h"
#include "platform/sdf/Element.h"
#include "smartcomp/SignalInterface.h"

namespace trel::test {

using Lines = std::vector<std::string>;

/// The alternative and the number: "int 1", "double 0.5".
std::string text(SignalValue value);

/// The element as a reader of the log knows it: "Lamp/signal 1/value".
std::string nameOf(const sdf::Element& element);

/// Expects that the library calls its outside without a lock.
void expectTableUnlocked();

/// One list of everything that happens, in the order in which it happens: what
/// is written to the document, what the broker is told, what reaches components
/// and controllers. None of it may happen while the object table is locked.
///
///     write Lamp/signal 1/value int 1
///     notice signal 1 of 10
///     notice property 1 of 10
///     event 10007|Lamp|Speed|5
///     Lamp.input 1 = 1 at 100
class EventLog : public broker::Listener, public sdf::ValueObserver {
public:
    void add(std::string line);
    void clear() { lines_.clear(); }

    const Lines& lines() const { return lines_; }
    Lines startingWith(std::string_view start) const;
    Lines writes() const { return startingWith("write "); }
    Lines notices() const { return startingWith("notice "); }
    Lines events() const { return startingWith("event "); }

    /// Called with every element that is written, after the line is added.
    std::function<void(sdf::Element&)> whenWritten;

    void smartComponentUpdated(unsigned componentId) override;
    void scPropertyValueChanged(unsigned propertyId, unsigned componentId) override;
    void scSignalValueChanged(unsigned signalId, unsigned componentId) override;
    void signalConnectionDeleted(unsigned connectionId, unsigned stationLogicId) override;
    void setVisualPose(unsigned objectId, const rob::PoseTemplate<double>& pose) override;
    void reportEvent(const std::string& code, const std::string& text1, const std::string& text2,
                     const std::string& text3) override;
    void valueWritten(sdf::Element& element, const std::any& value) override;

private:
    Lines lines_;
};

/// The log of this process.
EventLog& eventLog();

}  // namespace trel::test
