#include "host/Deliveries.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <map>

#include "host/Interrupt.h"
#include "host/Members.h"

namespace trel::host {

std::string textOf(const Hop& hop) {
    return fmt::format("{} -> {}", pathOf(hop.source), pathOf(hop.destination));
}

std::string textOf(const std::vector<Hop>& hops) {
    constexpr std::size_t first = 4;
    constexpr std::size_t last = 12;
    std::string text;
    for (std::size_t i = 0; i != hops.size(); ++i) {
        if (i == first && hops.size() > first + last) {
            i = hops.size() - last;
            text += fmt::format(", and {} more", hops.size() - first - last);
        }
        text += (text.empty() ? "" : ", ") + textOf(hops[i]);
    }
    return text;
}

std::vector<MemberCount> largest(std::vector<MemberCount> counts, std::size_t most) {
    std::ranges::sort(counts, [](const MemberCount& a, const MemberCount& b) {
        return a.second != b.second ? a.second > b.second : a.first < b.first;
    });
    counts.resize(std::min(most, counts.size()));
    return counts;
}

std::size_t Deliveries::HopHash::operator()(const Hop& hop) const {
    const auto pair = [](const Member& member) {
        return (static_cast<std::uint64_t>(member.object) << 32) | member.id;
    };
    std::uint64_t hash = pair(hop.source) * 0x9E3779B97F4A7C15ull;
    hash ^= (hash >> 32) + pair(hop.destination) * 0xD6E8FEB86659FD93ull;
    return static_cast<std::size_t>(hash ^ (hash >> 29));
}

Deliveries::Deliveries(unsigned long long budget)
    : outer_(DeliveryObserver::replace(this)), budget_(budget) {}

Deliveries::~Deliveries() { DeliveryObserver::replace(outer_); }

void Deliveries::beginStep() {
    for (const auto& [hop, count] : inStep_) earlier_[hop] += count;
    inStep_.clear();
    begins_.clear();
    countInStep_ = 0;
    spent_ = false;
}

std::vector<MemberCount> Deliveries::hottest(std::size_t most) const {
    std::map<Member, unsigned long long> counts;
    for (const Counts* const part : {&earlier_, &inStep_})
        for (const auto& [hop, count] : *part) counts[hop.destination] += count;
    return largest({counts.begin(), counts.end()}, most);
}

std::vector<Hop> Deliveries::chain() const {
    std::vector<Hop> result;
    result.reserve(links_.size());
    for (const Link& link : links_) result.push_back(hopOf(link.delivery));
    return result;
}

void Deliveries::forgetChain() {
    links_.clear();
    texts_.clear();
}

std::string Deliveries::brought() const {
    if (links_.empty()) return "";
    if (links_.back().delivery.text) return fmt::format("\"{}\"", texts_.back());
    return shown(links_.back().delivery.value);
}

std::vector<Hop> Deliveries::ring() const {
    if (links_.empty()) return {};
    const unsigned met = links_.back().delivery.destinationComponent;
    std::vector<Hop> result;
    for (auto link = links_.rbegin(); link != links_.rend(); ++link) {
        result.push_back(hopOf(link->delivery));
        if (link->delivery.sourceComponent != met) continue;
        std::ranges::reverse(result);
        return result;
    }
    return {};
}

Hop Deliveries::hopOf(const Delivery& delivery) {
    const auto kind = delivery.text ? Member::Kind::Property : Member::Kind::Signal;
    return {{delivery.sourceComponent, kind, delivery.source},
            {delivery.destinationComponent, kind, delivery.destination}};
}

bool Deliveries::before(const Delivery& delivery) {
    // Not of a variable: a sanitizer may keep those elsewhere.
    const void* const frame = __builtin_frame_address(0);
    leaveThrown(frame);
    if (!aside_.empty() && isAside(delivery.destinationComponent)) return false;
    if (wasInterrupted()) return false;
    if (countInStep_ == budget_) {
        spent_ = true;
        return false;
    }
    ++countInStep_;
    ++count_;
    const Hop hop = hopOf(delivery);
    ++inStep_[hop];
    if (links_.empty()) begins_.insert(hop.source);
    links_.push_back({delivery, frame});
    if (delivery.text) texts_.push_back(*delivery.text);
    return true;
}

void Deliveries::after(const Delivery& delivery) {
    const Hop hop = hopOf(delivery);
    while (!links_.empty()) {
        const bool found = hopOf(links_.back().delivery) == hop;
        pop();
        if (found) return;
    }
}

// A component may catch what a delivery of its own throws: then there was no after().
void Deliveries::leaveThrown(const void* frame) {
    while (!links_.empty() && std::less_equal<>()(links_.back().frame, frame)) pop();
}

void Deliveries::pop() {
    if (links_.back().delivery.text) texts_.pop_back();
    links_.pop_back();
}

}  // namespace trel::host
