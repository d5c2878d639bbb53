#pragma once

#include <cstddef>

#include "platform/broker/SignalBroker.h"

namespace trel::bench {

/// The one listener of a benchmark, as an editor would have.
class Counter : private broker::Listener {
public:
    Counter() { broker::SignalBroker::subscribe(*this); }
    ~Counter() override { broker::SignalBroker::unsubscribe(*this); }
    Counter(const Counter&) = delete;
    Counter& operator=(const Counter&) = delete;

    std::size_t told = 0;

private:
    void scSignalValueChanged(unsigned, unsigned) override { ++told; }
    void scPropertyValueChanged(unsigned, unsigned) override { ++told; }
};

}  // namespace trel::bench
