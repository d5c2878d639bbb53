#include "tests/smartcomp/EventLog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <utility>

#include "platform/sdf/ValueText.h"
#include "tests/support/TableLock.h"

namespace trel::test {

std::string text(SignalValue value) {
    const std::any held = value.index() == 0 ? std::any(std::get<int>(value))
                                             : std::any(std::get<double>(value));
    return sdf::Attr::Type(held.type()) + " " + sdf::valuetext::render(held);
}

std::string nameOf(const sdf::Element& element) {
    const bool isNamed = !element.name().empty();
    if (element.tag() == "smart_component" && isNamed) return element.name();
    std::string own(element.tag());
    if (const unsigned id = element.getId(true)) own += " " + std::to_string(id);
    const auto parent = element.parent();
    return parent ? nameOf(*parent) + "/" + own : own;
}

void expectTableUnlocked() {
    EXPECT_FALSE(isTableLocked()) << "the object table is locked during a call out of the library";
}

void EventLog::add(std::string line) {
    expectTableUnlocked();
    lines_.push_back(std::move(line));
}

Lines EventLog::startingWith(std::string_view start) const {
    Lines found;
    std::copy_if(lines_.begin(), lines_.end(), std::back_inserter(found),
                 [&](const std::string& line) { return line.starts_with(start); });
    return found;
}

void EventLog::smartComponentUpdated(unsigned componentId) {
    add("notice updated " + std::to_string(componentId));
}

void EventLog::scPropertyValueChanged(unsigned propertyId, unsigned componentId) {
    add("notice property " + std::to_string(propertyId) + " of " + std::to_string(componentId));
}

void EventLog::scSignalValueChanged(unsigned signalId, unsigned componentId) {
    add("notice signal " + std::to_string(signalId) + " of " + std::to_string(componentId));
}

void EventLog::signalConnectionDeleted(unsigned connectionId, unsigned stationLogicId) {
    add("notice deleted " + std::to_string(connectionId) + " of " + std::to_string(stationLogicId));
}

void EventLog::setVisualPose(unsigned objectId, const rob::PoseTemplate<double>& pose) {
    add("notice pose of " + std::to_string(objectId) + " " +
        sdf::valuetext::render(std::any(pose)));
}

void EventLog::reportEvent(const std::string& code, const std::string& text1,
                           const std::string& text2, const std::string& text3) {
    add("event " + code + "|" + text1 + "|" + text2 + "|" + text3);
}

void EventLog::valueWritten(sdf::Element& element, const std::any& value) {
    add("write " + nameOf(element) + " " + sdf::Attr::Type(value.type()) + " " +
        sdf::valuetext::render(value));
    if (whenWritten) whenWritten(element);
}

EventLog& eventLog() {
    static EventLog log;
    return log;
}

}  // namespace trel::test
