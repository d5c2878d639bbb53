#pragma once

#include "smartcomp/Removals.h"
#include "smartcomp/SmartComponent.h"
#include "smartcomp/Stack.h"

namespace trel::smartcomp {

/// What every hold does, and all that one does which is taken while another is held.
/// For the sources of the library only.
class NestedHold {
public:
    [[gnu::always_inline]] explicit NestedHold(SmartComponent& component) : component_(component) {
        checkStack();
        ++component.held_.holds;
    }

    /// May destroy the component.
    [[gnu::always_inline]] ~NestedHold() {
        --component_.held_.holds;
        if (component_.held_.remains && component_.held_.holds == 0) [[unlikely]]
            component_.bury();
    }
    NestedHold(const NestedHold&) = delete;
    NestedHold& operator=(const NestedHold&) = delete;

    SmartComponent& component() const { return component_; }

private:
    SmartComponent& component_;
};

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
        : hold_((knowStack(), component)) {
        Removals::enter();
    }

    /// May destroy the component.
    [[gnu::always_inline]] ~Hold() { Removals::leave(); }
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;

private:
    const NestedHold hold_;
};

// Apart from the deliveries, which are held.
template <typename Call>
[[gnu::noinline]] void SmartComponent::whileHeld(const Call& call) {
    const Hold hold(*this);
    call();
}

}  // namespace trel::smartcomp
