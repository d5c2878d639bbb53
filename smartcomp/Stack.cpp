#include "smartcomp/Stack.h"

#include <pthread.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <stdexcept>

namespace trel::smartcomp {

namespace {

// What an orderly end needs: a component's own reaction, the broker's listeners,
// throwing and unwinding. Of a small stack, a quarter.
constexpr std::size_t reserve = 256 * 1024;  // bytes

// The address below which this thread's stack is nearly used up. Stacks grow
// downwards on every platform that the library runs on.
std::uintptr_t lowestAddress() {
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) != 0) return 0;
    void* start = nullptr;
    std::size_t size = 0;
    pthread_attr_getstack(&attributes, &start, &size);
    pthread_attr_destroy(&attributes);
    return reinterpret_cast<std::uintptr_t>(start) + std::min(reserve, size / 4);
}

}  // namespace

void checkStack() {
    thread_local const std::uintptr_t lowest = lowestAddress();
    if (reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0)) < lowest)
        throw std::runtime_error(
            "the deliveries nest too deeply for the stack of this thread; look for a ring of "
            "bindings or of inputs that nothing ends");
}

}  // namespace trel::smartcomp
