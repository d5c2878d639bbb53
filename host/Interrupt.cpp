#include "host/Interrupt.h"

#include <csignal>

#include <atomic>
#include <ctime>

namespace trel::host {

namespace {

std::atomic<int> caught = 0;
static_assert(std::atomic<int>::is_always_lock_free);

// Seconds of some clock.
std::time_t now() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return time.tv_sec;
}

std::atomic<std::time_t> since = 0;

// Who ends a program often tells it and its group, at the same time.
extern "C" void keep(int signal) {
    constexpr std::time_t patience = 2;
    if (caught.exchange(signal) == 0) {
        since = now();
    } else if (now() - since >= patience) {
        std::signal(signal, SIG_DFL);
        std::raise(signal);
    }
}

}  // namespace

void catchInterrupts() {
    for (const int signal : {SIGINT, SIGTERM}) std::signal(signal, keep);
}

bool wasInterrupted() { return caught.load(std::memory_order_relaxed) != 0; }

void passInterruptOn() {
    if (!wasInterrupted()) return;
    std::signal(caught, SIG_DFL);
    std::raise(caught);
}

}  // namespace trel::host
