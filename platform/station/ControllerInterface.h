#pragma once

#include <variant>

#include "platform/Export.h"

namespace trel {

/// A robot controller as the end of signal connections. A controller object is
/// an `sdf::SdfObject` in the object table that has this interface as well.
class TREL_PLATFORM_API ControllerInterface {
public:
    virtual ~ControllerInterface() = default;

    /// Gives the controller a value of one of its I/O signals. `dynamic` is
    /// true while the simulation runs, false while the station is edited.
    virtual void setSignalValue(unsigned signalId, std::variant<int, double> value,
                                bool dynamic) = 0;
};

}  // namespace trel
