#include "host/DeepStack.h"

#include <pthread.h>

#include <cstddef>
#include <exception>

namespace trel::host {

namespace {

// Of address space: memory is taken where the stack is used.
constexpr std::size_t deepStack = std::size_t{1} << 29;  // bytes

struct Call {
    const std::function<void()>& function;
    std::exception_ptr thrown;
};

void* make(void* argument) {
    Call& call = *static_cast<Call*>(argument);
    try {
        call.function();
    } catch (...) {
        call.thrown = std::current_exception();
    }
    return nullptr;
}

}  // namespace

void onDeepStack(const std::function<void()>& function) {
    Call call{function, nullptr};
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, deepStack);
    pthread_t thread;
    const int error = pthread_create(&thread, &attributes, make, &call);
    pthread_attr_destroy(&attributes);
    // Where address space is limited, the stack that we have must do.
    if (error != 0) return function();
    pthread_join(thread, nullptr);
    if (call.thrown) std::rethrow_exception(call.thrown);
}

}  // namespace trel::host
