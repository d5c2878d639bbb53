#pragma once

#include <functional>
#include <string>

#include "host/Faults.h"
#include "host/StationMap.h"

namespace trel::host {

// What a station is looked at for, each into the list of faults.

/// All that the document shows by itself: the four that follow. What is noted in
/// the list already is not told again.
void inspectDocument(const sdf::Element& station, const StationMap& map, FaultList& faults);

/// Elements, attributes and texts that nothing reads; keys that hold values of
/// other types than they are for.
void inspectKeys(const sdf::Element& station, const StationMap& map, FaultList& faults);

/// Ids, names and types of components, controllers and their members, and the
/// texts of properties.
void inspectObjects(const StationMap& map, FaultList& faults);

/// Parents, children, role objects, and positions in diagrams.
void inspectContents(const StationMap& map, FaultList& faults);

/// Ends and indices of connections and bindings, and what they connect.
void inspectConnections(const StationMap& map, FaultList& faults);

/// Types that no library brings which is loaded.
void inspectTypes(const StationMap& map, FaultList& faults);

/// A component that its type could not make.
void addFailedType(const StationMap& map, const MappedObject& object, const std::string& reason,
                   FaultList& faults);

/// The components that live: parents that contain nothing, property texts that
/// their types cannot use.
void inspectComponents(const StationMap& map, FaultList& faults);

/// Objects that a destination refuses, and rings of bindings without a guard.
/// Nothing can be done with the components after, but to look at them.
void inspectBindings(const StationMap& map, FaultList& faults);

/// Whether the object `id` is an aggregation.
using IsAggregation = std::function<bool(unsigned id)>;

/// Rings of signals, and pulses that multiply.
void inspectFlow(const StationMap& map, const IsAggregation& isAggregation, FaultList& faults);

}  // namespace trel::host
