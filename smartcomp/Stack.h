#pragma once

#include <cstdint>

#include "smartcomp/Export.h"

namespace trel::smartcomp {

/// The address below which the stack of this thread is nearly used up; 0 until it
/// was asked for. Stacks grow downwards on every platform that the library runs on.
/// In the static thread storage, where reading it is one instruction.
TREL_API extern constinit thread_local std::uintptr_t lowestAddress
    [[gnu::tls_model("initial-exec")]];

/// What is said where the stack is used up.
inline constexpr const char* stackUsedUp =
    "the deliveries nest too deeply for the stack of this thread; look for a ring of bindings or "
    "of inputs that nothing ends";

TREL_API void askForLowestAddress();

/// Where a delivery begins.
inline void knowStack() {
    if (lowestAddress == 0) [[unlikely]]
        askForLowestAddress();
}

TREL_API [[noreturn]] void throwStackUsedUp();

inline std::uintptr_t stackPointer() {
#ifdef __x86_64__
    std::uintptr_t address;
    asm("movq %%rsp, %0" : "=r"(address));  // needs no frame pointer, other than below
    return address;
#else
    return reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
#endif
}

/// Ends a recursion before the stack of this thread does, on a thread that knows it.
/// \throws std::runtime_error when less is left than an orderly end needs.
inline void checkStack() {
    if (stackPointer() < lowestAddress) [[unlikely]]
        throwStackUsedUp();
}

}  // namespace trel::smartcomp
