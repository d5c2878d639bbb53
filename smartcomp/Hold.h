#pragma once

#include <cstddef>

namespace trel::smartcomp {

class SmartComponent;

/// Keeps a component alive through a call. While one is held, removing it takes
/// it out of the document and the object table at once, and deleting one of its
/// signals, properties or connections takes that out of its table at once; the
/// object is destroyed only when the last hold is gone.
///
/// The library holds a component wherever it calls it. Whoever calls a virtual
/// operation of a component directly holds it too, if the component may be
/// removed meanwhile.
class Hold {
public:
    /// \throws std::runtime_error when the calls nest so deeply that the stack of
    /// this thread is nearly used up.
    explicit Hold(SmartComponent& component);

    /// May destroy the component.
    ~Hold();
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;

    /// \name What was removed since the hold was taken
    /// @{
    bool goneComponent(unsigned component) const;
    bool goneSignal(unsigned component, unsigned signal) const;
    bool goneProperty(unsigned component, unsigned property) const;
    /// @}

private:
    SmartComponent& component_;
    std::size_t removals_;  // how many there were when the hold was taken
};

}  // namespace trel::smartcomp
