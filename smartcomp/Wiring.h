#pragma once

#include <cstdint>
#include <span>
#include <unordered_map>
#include <utility>
#include <vector>

#include "smartcomp/Connection.h"

namespace trel::smartcomp {

/// Connections by the end where they begin, for the sources of the library only:
/// so that a value meets its own connections and no others. Made from a sequence
/// of connections, whose order it keeps among those of one end; its owner drops
/// it before anything of that changes.
class Wiring {
public:
    using Routes = std::span<const Connection* const>;

    explicit Wiring(const std::vector<const Connection*>& connections);

    /// What begins at a signal or property of a component.
    Routes from(unsigned component, unsigned member) const;

private:
    struct Range {
        std::uint32_t first = 0;
        std::uint32_t size = 0;
    };

    std::unordered_map<unsigned long long, Range> ranges_;
    std::vector<const Connection*> routes_;
};

}  // namespace trel::smartcomp
