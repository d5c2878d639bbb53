#pragma once

/// The leaks that the library promises, each under a name that the leak checker
/// knows: whatever an action allocates and loses in one of these is meant to be
/// lost.
namespace trel::test {

// The assembler keeps each function's frame in the stack of what is allocated.
#define TREL_LEAK(name)                          \
    template <typename Action>                   \
    [[gnu::noinline]] void name(Action action) { \
        action();                                \
        asm volatile("" ::: "memory");           \
    }

/// The test copies an object that shares what its source owns, and never
/// destroys the copy.
TREL_LEAK(leakOnPurpose)

/// A component refused with "object exists" belongs to nobody.
TREL_LEAK(loseRefusedComponent)

/// The properties and signals that a constructor had entered when it threw are
/// not deleted with the component.
TREL_LEAK(loseRecordsOfThrowingConstructor)

/// An entry that a later one overwrites in a component's table is dropped.
TREL_LEAK(loseOverwrittenEntry)

#undef TREL_LEAK

}  // namespace trel::test
