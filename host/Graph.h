#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace trel::host {

struct GraphView {
    bool values = false;  // of signals and visible properties, as they are now

    /// How deep aggregations are opened; those below are closed. Without it, as deep as
    /// a picture stays readable.
    std::optional<unsigned> depth = {};
};

/// The wiring of the live station as a graph in the DOT language: aggregations as frames,
/// components with their signals as ports, signal connections numbered in their order,
/// bindings dashed. Children stand in the columns of the diagram that the document has.
std::string dotOfStation(const GraphView& view);

}  // namespace trel::host
