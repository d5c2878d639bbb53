#pragma once

#include <cstdint>

namespace sdf {

/// What an object of the document is. Libraries that bring object types of
/// their own may use other numbers.
enum class ObjectType : std::uint64_t {
    None = 0,            // properties, connections
    Station = 1,         // the station itself
    Component = 12,      // a component of a registered type
    UserComponent = 13,  // an aggregation that the user put together
    StationLogic = 14,   // the aggregation at the root of the station
    Sensor = 24,
    Controller = 31,  // a robot controller
};

}  // namespace sdf
