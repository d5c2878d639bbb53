#include "host/Hotspots.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include "host/Objects.h"
#include "smartcomp/Aggregation.h"

namespace trel::host {

namespace {

using Node = std::size_t;
constexpr Node start = 0;  // stands before all members at which deliveries begin

// The ways that values went, as a graph of members, each with the one that all ways to
// it go through last (its dominator).
class Ways {
public:
    explicit Ways(const Deliveries& deliveries) {
        nodeOf({});
        std::map<unsigned, std::set<Node>> arrivals;
        std::map<unsigned, std::set<Node>> departures;
        for (const Hop& hop : inOrder(deliveries.inStep())) {
            const Node from = nodeOf(hop.source);
            const Node to = nodeOf(hop.destination);
            connect(from, to);
            departures[hop.source.object].insert(from);
            arrivals[hop.destination.object].insert(to);
        }
        for (const Member& begin : deliveries.begins()) connect(start, nodeOf(begin));
        // What reaches a component may be why it sends; an aggregation only passes on.
        for (const auto& [object, ends] : arrivals)
            if (!dynamic_cast<smartcomp::Aggregation*>(objectOf(object)))
                for (const Node from : ends)
                    for (const Node to : departures[object])
                        if (from != to) connect(from, to);
        number();
        dominate();
    }

    std::string reasonOf(const Member& hot) const {
        Node meeting = nodes_.at(hot);
        std::set<Node> passed;
        while (before_[meeting].size() == 1 && before_[meeting].front() != start) {
            if (!passed.insert(meeting).second) break;
            meeting = before_[meeting].front();
        }
        if (before_[meeting].size() == 1)
            return fmt::format("all comes from {}", pathOf(members_[meeting]));
        for (const Node from : before_[meeting])
            if (isBehind(from, meeting))
                return fmt::format("a ring comes back to {} from {}", pathOf(members_[meeting]),
                                   pathOf(members_[from]));
        const Node parting = dominator_[meeting];
        if (parting == start || parting == unknown)
            return fmt::format("ways from several beginnings meet at {}",
                               pathOf(members_[meeting]));
        return fmt::format("ways that part at {} meet at {}", pathOf(members_[parting]),
                           pathOf(members_[meeting]));
    }

private:
    static std::vector<Hop> inOrder(const Deliveries::Counts& counts) {
        std::vector<Hop> hops;
        for (const auto& [hop, count] : counts) hops.push_back(hop);
        std::ranges::sort(hops);
        return hops;
    }

    Node nodeOf(const Member& member) {
        const auto [entry, isNew] = nodes_.try_emplace(member, members_.size());
        if (isNew) {
            members_.push_back(member);
            before_.emplace_back();
            behind_.emplace_back();
        }
        return entry->second;
    }

    void connect(Node from, Node to) {
        behind_[from].push_back(to);
        before_[to].push_back(from);
    }

    // In the order in which a walk from the start leaves them, the start last.
    void number() {
        number_.assign(members_.size(), 0);
        std::vector<bool> seen(members_.size(), false);
        std::vector<std::pair<Node, std::size_t>> path = {{start, 0}};
        seen[start] = true;
        while (!path.empty()) {
            auto& [node, next] = path.back();
            if (next == behind_[node].size()) {
                number_[node] = left_.size();
                left_.push_back(node);
                path.pop_back();
            } else if (const Node to = behind_[node][next++]; !seen[to]) {
                seen[to] = true;
                path.emplace_back(to, 0);
            }
        }
    }

    // After Cooper, Harvey and Kennedy, "A Simple, Fast Dominance Algorithm".
    void dominate() {
        dominator_.assign(members_.size(), unknown);
        dominator_[start] = start;
        for (bool changed = true; changed;) {
            changed = false;
            for (auto node = left_.rbegin(); node != left_.rend(); ++node) {
                if (*node == start) continue;
                Node common = unknown;
                for (const Node from : before_[*node])
                    if (dominator_[from] != unknown)
                        common = common == unknown ? from : commonOf(common, from);
                changed |= std::exchange(dominator_[*node], common) != common;
            }
        }
    }

    Node commonOf(Node one, Node other) const {
        while (one != other) {
            while (number_[one] < number_[other]) one = dominator_[one];
            while (number_[other] < number_[one]) other = dominator_[other];
        }
        return one;
    }

    // Whether all ways to `node` go through `through`.
    bool isBehind(Node node, Node through) const {
        while (node != through && node != start && node != unknown) node = dominator_[node];
        return node == through;
    }

    static constexpr Node unknown = static_cast<Node>(-1);

    std::map<Member, Node> nodes_;
    std::vector<Member> members_;
    std::vector<std::vector<Node>> before_;
    std::vector<std::vector<Node>> behind_;
    std::vector<Node> left_;
    std::vector<std::size_t> number_;  // of each node in that
    std::vector<Node> dominator_;
};

}  // namespace

std::vector<Hotspot> hotspots(const Deliveries& deliveries, std::size_t most) {
    std::map<Member, unsigned long long> counts;
    for (const auto& [hop, count] : deliveries.inStep()) counts[hop.destination] += count;
    std::vector<Hotspot> result;
    const Ways ways(deliveries);
    for (const auto& [member, count] : largest({counts.begin(), counts.end()}, most))
        result.push_back({member, count, ways.reasonOf(member)});
    return result;
}

}  // namespace trel::host
