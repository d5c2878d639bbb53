#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

namespace trel::host {

/// A directed graph, and the rings in it.
class Rings {
public:
    static constexpr std::size_t inner = SIZE_MAX;

    struct Arc {
        std::size_t from;
        std::size_t to;
        std::size_t label;  // of who drew it; `inner` for one that nobody did
    };

    /// The node that goes by a number; made where there is none.
    std::size_t node(std::uint64_t number);

    void arc(std::size_t from, std::size_t to, std::size_t label) {
        arcs_.push_back({from, to, label});
    }

    struct Ring {
        std::vector<Arc> arcs;  // in order, from the one with the smallest label
        /// Labelled arcs that are in rings with these and in no ring that is told:
        /// where everything drives everything there are too many.
        std::size_t more = 0;
    };

    /// Short rings that together go over every labelled arc that is in one.
    std::vector<Ring> find();

private:
    void order();
    void findStrong();
    void spread(std::size_t root);
    std::vector<Arc> shortest(std::size_t arc);

    std::unordered_map<std::uint64_t, std::size_t> nodes_;
    std::vector<Arc> arcs_;
    std::vector<std::size_t> first_;   // arc of each node, once they are in order
    std::vector<std::size_t> strong_;  // number of the part in which all reach all
    std::size_t parts_ = 0;

    // Of findStrong.
    std::vector<std::size_t> index_;
    std::vector<std::size_t> low_;
    std::vector<std::size_t> open_;
    std::size_t next_ = 0;

    // Of shortest.
    std::vector<std::size_t> cameBy_;
    std::vector<std::size_t> visitedFor_;
    std::size_t search_ = 0;
    std::size_t steps_ = 0;
};

}  // namespace trel::host
