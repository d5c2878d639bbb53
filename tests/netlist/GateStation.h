#pragma once

#include <map>
#include <string>
#include <vector>

#include "smartcomp/SmartComponent.h"
#include "tests/netlist/Netlist.h"

namespace trel::test {

/// A circuit as a running station: a buffer for each input, a component for each
/// gate, a signal connection for each pin.
class GateStation {
public:
    explicit GateStation(const Netlist& netlist);
    ~GateStation();
    GateStation(const GateStation&) = delete;
    GateStation& operator=(const GateStation&) = delete;

    void set(const std::string& input, bool value);
    bool get(const std::string& wire) const;

private:
    static constexpr unsigned outputId = 1;
    static constexpr unsigned firstInputId = 2;

    void makeGate(const std::string& type, const std::string& name, std::size_t inputs);
    void connect(const Netlist::Gate& gate);

    std::map<std::string, smartcomp::SmartComponent*> drivers_;  // of each wire
    unsigned nextId_ = 10;
    unsigned connections_ = 0;
    long long time_ = 0;
};

}  // namespace trel::test
