#pragma once

#include <cstddef>
#include <vector>

namespace trel::smartcomp {

/// What was removed while components are held, in the order of removal, for the
/// sources of the library only. A walk that meets a destination which is not
/// there asks here whether that was removed under its feet, and then passes it
/// over. Forgotten when the last hold is gone.
class Removals {
public:
    enum class What { Component, Signal, Property };

    static Removals& inst();

    std::size_t count() const { return entries_.size(); }

    /// Whether a component, or that member of it, was removed since there were
    /// `since` entries.
    bool contains(std::size_t since, What what, unsigned component, unsigned member) const;

    /// So that the next `add` throws nothing.
    void makeRoom();

    /// Notes a removal; `member` is 0 for a component. Nothing while no component
    /// is held.
    void add(What what, unsigned component, unsigned member);

    void enter() { ++holds_; }
    void leave() {
        if (--holds_ == 0) entries_.clear();
    }

private:
    struct Entry {
        What what;
        unsigned component;
        unsigned member;
    };

    std::vector<Entry> entries_;
    std::size_t holds_ = 0;
};

}  // namespace trel::smartcomp
