#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/Controller.h"
#include "host/Names.h"
#include "smartcomp/Property.h"
#include "smartcomp/SCSignal.h"

namespace trel::host {

/// All controllers in the object table, by id.
std::vector<Controller*> controllersNow();

/// The members of a component or controller: signals, then properties, each by
/// id.
std::vector<Member> membersOf(unsigned objectId);

// Each of these gives null, or an empty answer, for a member that is not there
// (any more).

smartcomp::SCSignal* signalOf(const Member& member);                 // of a component
const Controller::Signal* controllerSignalOf(const Member& member);  // of a controller
smartcomp::Property* propertyOf(const Member& member);

std::optional<std::string> nameOf(const Member& member);

/// What a signal is, of a component or of a controller; it is there.
std::string signalTypeOf(const Member& signal);
bool isDigital(const Member& signal);
bool isAutoReset(const Member& signal);

/// What a property may be set to: "one of Set, Reset", or empty where its type
/// names no choices.
std::string choicesOf(const Member& property);

/// What to set a property to instead of the text, "a whole number", where its type or its
/// component refuses the text; empty where neither does.
std::string insteadOf(const Member& property, const std::string& text);

std::optional<SignalValue> signalValueOf(const Member& member);

/// What a member holds, as people see it: a signal's number by the alternative
/// that it holds, a property's display value, or its text where that is no such
/// value. "nothing" for a member that is not there.
std::string shown(const Member& member);

/// A number in the shortest form that reads back equal; an int as it is.
std::string shown(const SignalValue& value);

}  // namespace trel::host
