#include "components/Gates.h"

namespace trel::components {

void Gate::refresh(long long time) {
    unsigned inputs = 0;
    unsigned on = 0;
    for (const auto& [id, signal] : getSignals()) {
        if (signal->getType() != SignalType::DigitalInput) continue;
        ++inputs;
        if (numberOf(signal->getValue()) != 0) ++on;
    }
    send("Out", result(on, inputs) ? 1 : 0, time);
}

}  // namespace trel::components
