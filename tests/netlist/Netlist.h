#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace trel::test {

/// A gate-level circuit: every gate drives one wire, named by its output, from
/// others.
struct Netlist {
    struct Gate {
        std::string type;  // the component type: "NandGate"
        std::string output;
        std::vector<std::string> inputs;
    };

    std::vector<std::string> inputs;
    std::vector<std::string> outputs;
    std::vector<Gate> gates;

    /// Adds a gate and gives its output, named after its number when `output` is
    /// empty.
    std::string add(const std::string& type, const std::vector<std::string>& gateInputs,
                    const std::string& output = "");

    /// Reads the module of a structural Verilog file: inputs, outputs, wires and
    /// the primitive gates.
    /// \throws std::runtime_error for anything else.
    static Netlist fromVerilog(std::string_view text);
};

/// The value of each wire.
using Wires = std::map<std::string, bool>;

/// Works a circuit out without a station: each gate once, after those that it
/// reads.
class Evaluation {
public:
    /// \throws std::runtime_error for a circuit with a ring, or a wire that
    /// nothing drives.
    explicit Evaluation(const Netlist& netlist);

    Wires operator()(Wires inputs) const;

private:
    std::vector<Netlist::Gate> ordered_;
};

}  // namespace trel::test
