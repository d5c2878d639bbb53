#pragma once

#include <cstddef>

#include "smartcomp/Export.h"

namespace trel::smartcomp {

/// What was removed while components are held, in the order of removal, for the
/// sources of the library only. A walk that meets a destination which is not
/// there asks here whether that was removed under its feet, and then passes it
/// over. Forgotten when the last hold is gone.
class TREL_API Removals {
public:
    enum class What { Component, Signal, Property };

    static std::size_t count() { return count_; }

    /// Whether a component, or that member of it, was removed since there were
    /// `since` entries.
    static bool contain(std::size_t since, What what, unsigned component, unsigned member) {
        return since != count_ && search(since, what, component, member);
    }

    /// So that the next `add` throws nothing.
    static void makeRoom();

    /// Notes a removal; `member` is 0 for a component. Nothing while no component
    /// is held.
    static void add(What what, unsigned component, unsigned member);

    static void enter() { ++holds_; }
    static void leave() {
        if (--holds_ == 0) count_ = 0;
    }

    /// What was removed since this was made.
    class Since {
    public:
        bool any() const { return count_ != count(); }
        bool component(unsigned id) const { return contain(count_, What::Component, id, 0); }
        bool signal(unsigned component, unsigned id) const {
            return contain(count_, What::Signal, component, id);
        }
        bool property(unsigned component, unsigned id) const {
            return contain(count_, What::Property, component, id);
        }

    private:
        std::size_t count_ = count();
    };

private:
    static bool search(std::size_t since, What what, unsigned component, unsigned member);

    static inline constinit std::size_t holds_ = 0;
    static inline constinit std::size_t count_ = 0;
};

}  // namespace trel::smartcomp
