#pragma once

#include <cstddef>
#include <vector>

namespace trel::bench {

/// Who sends to whom, for every contender alike. Node 0 is set from outside.
struct Graph {
    struct Edge {
        unsigned from;
        unsigned to;
    };

    unsigned nodes = 0;
    std::vector<Edge> edges;

    std::size_t hops() const { return edges.size(); }
};

inline Graph chain(unsigned hops) {
    Graph graph{hops + 1, {}};
    for (unsigned i = 0; i != hops; ++i) graph.edges.push_back({i, i + 1});
    return graph;
}

inline Graph fanOut(unsigned leaves) {
    Graph graph{leaves + 1, {}};
    for (unsigned i = 0; i != leaves; ++i) graph.edges.push_back({0, i + 1});
    return graph;
}

/// A binary tree.
inline Graph tree(unsigned nodes) {
    Graph graph{nodes, {}};
    for (unsigned i = 1; i != nodes; ++i) graph.edges.push_back({(i - 1) / 2, i});
    return graph;
}

/// Each node sends to its right and its lower neighbour, so that all but the
/// first row and column are reached twice.
inline Graph grid(unsigned side) {
    Graph graph{side * side, {}};
    for (unsigned row = 0; row != side; ++row)
        for (unsigned column = 0; column != side; ++column) {
            const unsigned node = row * side + column;
            if (column + 1 != side) graph.edges.push_back({node, node + 1});
            if (row + 1 != side) graph.edges.push_back({node, node + side});
        }
    return graph;
}

}  // namespace trel::bench
