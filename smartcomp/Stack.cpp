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
constexpr std::size_t reserve = std::size_t{256} * 1024;  // bytes

}  // namespace

constinit thread_local std::uintptr_t lowestAddress = 0;

[[gnu::noinline, gnu::cold]] void askForLowestAddress() {
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) != 0) return;
    void* start = nullptr;
    std::size_t size = 0;
    pthread_attr_getstack(&attributes, &start, &size);
    pthread_attr_destroy(&attributes);
    lowestAddress = reinterpret_cast<std::uintptr_t>(start) + std::min(reserve, size / 4);
}

[[gnu::noinline, gnu::cold]] void throwStackUsedUp() { throw std::runtime_error(stackUsedUp); }

}  // namespace trel::smartcomp
