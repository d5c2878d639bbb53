#include "tests/netlist/Netlist.h"

#include <algorithm>
#include <cctype>
#include <set>
#include <stdexcept>

namespace trel::test {

namespace {

const std::map<std::string, std::string> typeOfPrimitive = {
    {"and", "AndGate"}, {"or", "OrGate"},   {"nand", "NandGate"}, {"nor", "NorGate"},
    {"xor", "XorGate"}, {"not", "NotGate"}, {"buf", "Buffer"}};

// Names, and single signs, without comments.
std::vector<std::string> words(std::string_view text) {
    std::vector<std::string> result;
    while (!text.empty()) {
        if (text.starts_with("//")) {
            text.remove_prefix(std::min(text.find('\n'), text.size()));
            continue;
        }
        const auto isName = [](unsigned char c) { return std::isalnum(c) || c == '_'; };
        const auto length =
            static_cast<std::size_t>(std::ranges::find_if_not(text, isName) - text.begin());
        if (!std::isspace(static_cast<unsigned char>(text.front())))
            result.emplace_back(text.substr(0, std::max<std::size_t>(length, 1)));
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return result;
}

// The names of one statement, up to its semicolon.
std::vector<std::string> statement(const std::vector<std::string>& all, std::size_t& at) {
    std::vector<std::string> names;
    for (; at != all.size() && all[at] != ";"; ++at)
        if (all[at] != "," && all[at] != "(" && all[at] != ")") names.push_back(all[at]);
    if (at == all.size()) throw std::runtime_error("a statement without an end");
    ++at;
    return names;
}

bool result(const Netlist::Gate& gate, const Wires& wires) {
    unsigned on = 0;
    for (const std::string& input : gate.inputs) on += wires.at(input) ? 1u : 0u;
    const bool all = on == gate.inputs.size();
    if (gate.type == "AndGate") return all;
    if (gate.type == "NandGate") return !all;
    if (gate.type == "OrGate" || gate.type == "Buffer") return on > 0;
    if (gate.type == "NorGate" || gate.type == "NotGate") return on == 0;
    if (gate.type == "XorGate") return on % 2 == 1;
    throw std::runtime_error("an unknown gate " + gate.type);
}

}  // namespace

std::string Netlist::add(const std::string& type, const std::vector<std::string>& gateInputs,
                         const std::string& output) {
    gates.push_back({type, output.empty() ? "w" + std::to_string(gates.size()) : output,
                     gateInputs});
    return gates.back().output;
}

Netlist Netlist::fromVerilog(std::string_view text) {
    Netlist netlist;
    const auto all = words(text);
    for (std::size_t at = 0; at != all.size();) {
        if (all[at] == "endmodule") return netlist;
        const auto names = statement(all, at);
        const std::vector<std::string> rest(names.begin() + 1, names.end());
        if (names[0] == "input")
            netlist.inputs = rest;
        else if (names[0] == "output")
            netlist.outputs = rest;
        else if (const auto type = typeOfPrimitive.find(names[0]); type != typeOfPrimitive.end())
            // The gate's own name, the wire that it drives, then those that it reads.
            netlist.add(type->second, {rest.begin() + 2, rest.end()}, rest.at(1));
        else if (names[0] != "module" && names[0] != "wire")
            throw std::runtime_error("an unknown statement " + names[0]);
    }
    throw std::runtime_error("a module without an end");
}

Evaluation::Evaluation(const Netlist& netlist) {
    std::set<std::string> known(netlist.inputs.begin(), netlist.inputs.end());
    std::vector<Netlist::Gate> waiting = netlist.gates;
    while (!waiting.empty()) {
        const auto isReady = [&](const Netlist::Gate& gate) {
            return std::ranges::all_of(gate.inputs,
                                       [&](const auto& input) { return known.contains(input); });
        };
        const auto ready = std::partition(waiting.begin(), waiting.end(), isReady);
        if (ready == waiting.begin()) throw std::runtime_error("a ring, or an undriven wire");
        for (auto gate = waiting.begin(); gate != ready; ++gate) {
            known.insert(gate->output);
            ordered_.push_back(*gate);
        }
        waiting.erase(waiting.begin(), ready);
    }
}

Wires Evaluation::operator()(Wires inputs) const {
    for (const Netlist::Gate& gate : ordered_) inputs[gate.output] = result(gate, inputs);
    return inputs;
}

}  // namespace trel::test
