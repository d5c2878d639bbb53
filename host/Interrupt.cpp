#include "host/Interrupt.h"

#include <csignal>

#include <atomic>

namespace trel::host {

namespace {

std::atomic<int> caught = 0;
static_assert(std::atomic<int>::is_always_lock_free);

extern "C" void keep(int signal) {
    caught = signal;
    std::signal(signal, SIG_DFL);
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
