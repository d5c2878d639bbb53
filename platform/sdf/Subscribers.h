#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace sdf {

/// The subscribers of one kind of notice, told in the order in which they came.
/// They may come and go during a notice: one that left is told nothing more,
/// one that came is told from the next notice on.
template <typename Subscriber>
class Subscribers {
public:
    /// `subscriber` must live until it is removed. Adding it twice has it told
    /// once.
    void add(Subscriber& subscriber) {
        if (std::find(all_.begin(), all_.end(), &subscriber) == all_.end())
            all_.push_back(&subscriber);
    }

    /// One that was never added is passed over.
    void remove(Subscriber& subscriber) {
        const auto place = std::find(all_.begin(), all_.end(), &subscriber);
        if (place == all_.end()) return;
        // The places must hold still while a notice goes over them.
        if (depth_ > 0) {
            *place = nullptr;
            hasLeft_ = true;
        } else {
            all_.erase(place);
        }
    }

    bool empty() const { return all_.empty(); }

    /// Calls `notice` with each subscriber. What it throws ends the notice.
    template <typename Notice>
    void tell(const Notice& notice) {
        if (all_.empty()) return;
        const UnderWay counted(*this);
        for (std::size_t i = 0, end = all_.size(); i != end; ++i)
            if (Subscriber* const subscriber = all_[i]) notice(*subscriber);
    }

private:
    // Counts the notices under way; the last one sweeps up the empty places.
    class UnderWay {
    public:
        explicit UnderWay(Subscribers& owner) : owner_(owner) { ++owner_.depth_; }
        // Inline for exceptions, too: one call, and it would have to stand in memory.
        [[gnu::always_inline]] ~UnderWay() {
            if (--owner_.depth_ == 0 && owner_.hasLeft_) owner_.sweep();
        }
        UnderWay(const UnderWay&) = delete;
        UnderWay& operator=(const UnderWay&) = delete;

    private:
        Subscribers& owner_;
    };

    [[gnu::noinline]] void sweep() {
        std::erase(all_, nullptr);
        hasLeft_ = false;
    }

    std::vector<Subscriber*> all_;
    bool hasLeft_ = false;  // during a notice; its place is empty
    std::size_t depth_ = 0;
};

/// Subscribers for as long as the process: there before the first static object is made, and
/// not destroyed, since there are notices until the very end.
template <typename Subscriber>
union LastingSubscribers {
    constexpr LastingSubscribers() : all() {}
    ~LastingSubscribers() {}

    Subscribers<Subscriber> all;
};

}  // namespace sdf
