#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <set>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "host/Names.h"
#include "smartcomp/DeliveryObserver.h"

namespace trel::host {

/// From a signal to a signal, or from a property to a property.
struct Hop {
    Member source;
    Member destination;

    friend auto operator<=>(const Hop&, const Hop&) = default;
};

/// "A.Out -> B.In".
std::string textOf(const Hop& hop);

/// "A.Out -> B.In, B.Out -> C.In"; of many hops the first and the last.
std::string textOf(const std::vector<Hop>& hops);

/// How many deliveries a member got.
using MemberCount = std::pair<Member, unsigned long long>;

/// The largest counts, the largest first, and of equal ones the first member.
std::vector<MemberCount> largest(std::vector<MemberCount> counts, std::size_t most);

/// Watches over the deliveries of a run while it lives: counts them against a budget,
/// knows the chain of those under way, and keeps them from objects that were set aside.
class Deliveries : private smartcomp::DeliveryObserver {
public:
    struct HopHash {
        std::size_t operator()(const Hop& hop) const;
    };
    using Counts = std::unordered_map<Hop, unsigned long long, HopHash>;

    /// In a step at most `budget` deliveries; those behind are refused.
    explicit Deliveries(unsigned long long budget);
    ~Deliveries() override;
    Deliveries(const Deliveries&) = delete;
    Deliveries& operator=(const Deliveries&) = delete;

    void beginStep();

    /// Whether a delivery of this step was refused for the budget.
    bool isSpent() const { return spent_; }
    unsigned long long budget() const { return budget_; }

    /// In the whole run.
    unsigned long long count() const { return count_; }

    /// What was delivered in the present step, and the members at which it began.
    const Counts& inStep() const { return inStep_; }
    const std::set<Member>& begins() const { return begins_; }

    /// The members that got the most in the whole run, with how much.
    std::vector<MemberCount> hottest(std::size_t most) const;

    /// From now on nothing is delivered to the object.
    void setAside(unsigned object) { aside_.insert(object); }
    bool isAside(unsigned object) const { return aside_.contains(object); }

    /// The deliveries under way, the outermost first; after a throw those that it ended,
    /// until they are forgotten.
    std::vector<Hop> chain() const;
    void forgetChain();

    /// What the innermost of them brought, as people see it; empty if there is none.
    std::string brought() const;

    /// The ring that they came round in: from the last hop that begins where the
    /// innermost ends. Empty if there is none.
    std::vector<Hop> ring() const;

private:
    // They nest as deep as the stack is large: every word counts.
    struct Link {
        Delivery delivery;  // its text is not followed
        const void* frame;  // on the stack: what is called from there lies below
    };

    static Hop hopOf(const Delivery& delivery);
    bool before(const Delivery& delivery) override;
    void after(const Delivery& delivery) override;
    void leaveThrown(const void* frame);
    void pop();

    DeliveryObserver* const outer_;
    const unsigned long long budget_;
    unsigned long long count_ = 0;
    unsigned long long countInStep_ = 0;
    bool spent_ = false;
    Counts inStep_;
    std::set<Member> begins_;
    std::unordered_map<Hop, unsigned long long, HopHash> earlier_;  // in other steps
    std::unordered_set<unsigned> aside_;
    std::deque<Link> links_;
    std::vector<std::string> texts_;  // of those links that bring texts
};

}  // namespace trel::host
