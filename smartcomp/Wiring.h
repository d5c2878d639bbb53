#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "smartcomp/Connection.h"
#include "smartcomp/Hints.h"

namespace trel::smartcomp {

/// Connections by the end where they begin, for the sources of the library only:
/// so that a value meets its own connections and no others. Made from a sequence
/// of connections, whose order it keeps among those of one end; its owner drops
/// it before anything of that changes.
class Wiring {
public:
    struct Route {
        const Connection* connection;
        Connection::End destination;
        mutable InputHint hint = {};  // of the destination
    };

    explicit Wiring(const std::vector<const Connection*>& connections);

    /// Has `hint`, which is a member's own, tell where the routes lie that begin at that
    /// member of the component.
    void find(unsigned component, unsigned member, RouteHint& hint) const;

    /// Whether a hint tells that already.
    bool knows(const RouteHint& hint) const { return hint.wiring == number_; }

    const Route* routes() const { return routes_.data(); }

private:
    struct Range {
        std::uint32_t first = 0;
        std::uint32_t end = 0;
    };

    const std::uint64_t number_;
    std::unordered_map<Connection::End, Range> ranges_;
    std::vector<Route> routes_;
};

}  // namespace trel::smartcomp
