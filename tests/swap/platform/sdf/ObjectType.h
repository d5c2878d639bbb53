#pragma once

#include <cstdint>

namespace sdf {

enum class ObjectType : std::uint64_t {
    None = 0,
    Station = 1,
    Component = 12,
    UserComponent = 13,
    StationLogic = 14,
    Sensor = 24,
    Controller = 31,
};

}  // namespace sdf
