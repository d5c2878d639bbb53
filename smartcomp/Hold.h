#pragma once

#include <cstddef>

#include "smartcomp/Removals.h"
#include "smartcomp/SmartComponent.h"
#include "smartcomp/Stack.h"

namespace trel::smartcomp {

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
    [[gnu::always_inline]] explicit Hold(SmartComponent& component)
        : component_((knowStack(), component)),
          removals_(Removals::count()) {
        checkStack();
        ++component.held_.holds;
        Removals::enter();
    }

    /// The same for a call that is only ever made while something is held.
    struct Nested {};
    [[gnu::always_inline]] Hold(SmartComponent& component, Nested)
        : component_(component), removals_(Removals::count()) {
        checkStack();
        ++component.held_.holds;
        Removals::enter();
    }

    /// May destroy the component.
    [[gnu::always_inline]] ~Hold() {
        Removals::leave();
        if (--component_.held_.holds == 0 && component_.held_.remains) component_.bury();
    }
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;

    SmartComponent& component() const { return component_; }

    /// \name What was removed since the hold was taken
    /// @{
    bool goneAny() const { return removals_ != Removals::count(); }
    bool goneComponent(unsigned component) const {
        return Removals::contain(removals_, Removals::What::Component, component, 0);
    }
    bool goneSignal(unsigned component, unsigned signal) const {
        return Removals::contain(removals_, Removals::What::Signal, component, signal);
    }
    bool goneProperty(unsigned component, unsigned property) const {
        return Removals::contain(removals_, Removals::What::Property, component, property);
    }
    /// @}

private:
    SmartComponent& component_;
    std::size_t removals_;  // how many there were when the hold was taken
};

}  // namespace trel::smartcomp
