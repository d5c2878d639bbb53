#pragma once

#include <cstddef>
#include <list>

namespace trel::smartcomp {

class SmartComponent;

/// All components that were ever made, for the sources of the library only. An entry stays for
/// good while its component goes: entries are made many at a time, lest each keeps the memory
/// around it in pieces.
class Roster {
public:
    using List = std::list<SmartComponent*>;

    static constexpr std::size_t entriesAtOnce = 128;

    /// An entry for a component that is being made. Unless it is listed, it is spare again.
    class Entry {
    public:
        explicit Entry(Roster& roster);
        ~Entry();
        Entry(const Entry&) = delete;
        Entry& operator=(const Entry&) = delete;

        void list(SmartComponent* component) noexcept;

    private:
        Roster& roster_;
        List entry_;
    };

    const List& all() const { return all_; }

private:
    List all_;
    List spare_;
};

}  // namespace trel::smartcomp
