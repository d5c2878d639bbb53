#pragma once

#include <variant>

namespace trel {

class [[gnu::visibility("default")]] ControllerInterface {
public:
    virtual ~ControllerInterface() = default;
    virtual void setSignalValue(unsigned signalId, std::variant<int, double> value,
                                bool dynamic) = 0;
};

}  // namespace trel
