#pragma once

#include <string>

#include "tests/smartcomp/Cell.h"

namespace trel::test {

/// Signals of components that sit in the station logic.
class SignalCell : public CellTest {
protected:
    void SetUp() override {
        CellTest::SetUp();
        logic();
    }

    // A component with an input 1 and an output 2.
    static Plain& make(unsigned id, const std::string& name, unsigned parent = logicId) {
        return Draft("Plain", id, name)
            .in(parent)
            .signal(1, "in", "DigitalInput")
            .signal(2, "out", "DigitalOutput")
            .make<Plain>();
    }
    static SignalValue valueOf(const SmartComponent& component, unsigned id) {
        return component.getSignal(id)->getValue();
    }
};

}  // namespace trel::test
