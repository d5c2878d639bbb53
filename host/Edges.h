#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/Names.h"
#include "smartcomp/Aggregation.h"

namespace trel::host {

// Connections and bindings of the live station: where they begin and end.

Member sourceOf(const smartcomp::Connection& connection);
Member destinationOf(const smartcomp::Connection& connection);

/// "Cell/Gripper.Closed -> Belt.Run".
std::string endsOf(const smartcomp::Connection& connection);

/// A connection or binding, by ids.
struct Edge {
    unsigned owner;
    unsigned id;
};

/// Those that suit, by owner and id.
std::vector<Edge> edgesThat(const std::function<bool(const smartcomp::Connection&)>& suit);

/// The owner of an edge, and what it has for it.
smartcomp::Aggregation& ownerOf(const Edge& edge);
smartcomp::Connection& connectionOf(const Edge& edge);

}  // namespace trel::host
