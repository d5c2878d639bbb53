#include "host/Rings.h"

#include <algorithm>
#include <deque>
#include <tuple>
#include <utility>

namespace trel::host {

namespace {

constexpr std::size_t none = SIZE_MAX;
constexpr std::size_t mostRings = 20;          // of one part
constexpr std::size_t mostSteps = 20'000'000;  // of all searches

}  // namespace

std::size_t Rings::node(std::uint64_t number) {
    return nodes_.emplace(number, nodes_.size()).first->second;
}

std::vector<Rings::Ring> Rings::find() {
    order();
    findStrong();
    cameBy_.assign(nodes_.size(), none);
    visitedFor_.assign(nodes_.size(), 0);

    // The labelled arcs that are in rings, as they were drawn.
    std::vector<std::size_t> drawn;
    for (std::size_t i = 0; i != arcs_.size(); ++i)
        if (arcs_[i].label != inner && strong_[arcs_[i].from] == strong_[arcs_[i].to])
            drawn.push_back(i);
    std::ranges::sort(drawn, {}, [&](std::size_t i) { return arcs_[i].label; });

    std::vector<bool> told(drawn.empty() ? 0 : arcs_[drawn.back()].label + 1);
    std::vector<std::vector<std::size_t>> ringsOf(parts_);
    std::vector<Ring> rings;
    for (const std::size_t i : drawn) {
        if (told[arcs_[i].label]) continue;
        auto& mine = ringsOf[strong_[arcs_[i].from]];
        if (!mine.empty() && (mine.size() == mostRings || steps_ > mostSteps)) {
            ++rings[mine.back()].more;
            continue;
        }
        Ring ring{shortest(i)};
        for (const Arc& arc : ring.arcs)
            if (arc.label != inner) told[arc.label] = true;
        mine.push_back(rings.size());
        rings.push_back(std::move(ring));
    }
    return rings;
}

// Arcs by the node that they leave.
void Rings::order() {
    std::ranges::sort(arcs_, {},
                      [](const Arc& arc) { return std::tuple(arc.from, arc.label, arc.to); });
    first_.assign(nodes_.size() + 1, arcs_.size());
    for (std::size_t i = arcs_.size(); i-- > 0;) first_[arcs_[i].from] = i;
    for (std::size_t n = nodes_.size(); n-- > 0;) first_[n] = std::min(first_[n], first_[n + 1]);
}

void Rings::findStrong() {
    strong_.assign(nodes_.size(), none);
    index_.assign(nodes_.size(), none);
    low_.assign(nodes_.size(), 0);
    for (std::size_t n = 0; n != nodes_.size(); ++n)
        if (index_[n] == none) spread(n);
}

// Tarjan's algorithm, on a stack of its own: chains may be as long as they like.
void Rings::spread(std::size_t root) {
    std::vector<std::pair<std::size_t, std::size_t>> way;  // node, next arc
    const auto enter = [&](std::size_t n) {
        index_[n] = low_[n] = next_++;
        open_.push_back(n);
        way.emplace_back(n, first_[n]);
    };
    enter(root);
    while (!way.empty()) {
        auto& [n, arc] = way.back();
        if (arc != first_[n + 1]) {
            const std::size_t to = arcs_[arc++].to;
            if (index_[to] == none)
                enter(to);
            else if (strong_[to] == none)
                low_[n] = std::min(low_[n], index_[to]);
            continue;
        }
        const std::size_t done = n;
        way.pop_back();
        if (!way.empty()) low_[way.back().first] = std::min(low_[way.back().first], low_[done]);
        if (low_[done] != index_[done]) continue;
        std::size_t member;
        do {
            member = open_.back();
            open_.pop_back();
            strong_[member] = parts_;
        } while (member != done);
        ++parts_;
    }
}

// The shortest ring over an arc that is in one.
std::vector<Rings::Arc> Rings::shortest(std::size_t arc) {
    const auto [goal, start, label] = arcs_[arc];
    ++search_;
    visitedFor_[start] = search_;
    std::deque<std::size_t> waiting = {start};
    while (visitedFor_[goal] != search_) {
        const std::size_t n = waiting.front();
        waiting.pop_front();
        for (std::size_t i = first_[n]; i != first_[n + 1]; ++i, ++steps_) {
            const std::size_t to = arcs_[i].to;
            if (strong_[to] != strong_[start] || visitedFor_[to] == search_) continue;
            visitedFor_[to] = search_;
            cameBy_[to] = i;
            waiting.push_back(to);
        }
    }
    std::vector<Arc> ring;
    for (std::size_t n = goal; n != start; n = arcs_[cameBy_[n]].from)
        ring.push_back(arcs_[cameBy_[n]]);
    ring.push_back(arcs_[arc]);
    std::ranges::reverse(ring);
    // From the arc that was drawn first.
    std::ranges::rotate(ring, std::ranges::min_element(ring, {}, &Arc::label));
    return ring;
}

}  // namespace trel::host
