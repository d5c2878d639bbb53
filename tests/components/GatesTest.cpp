#include <functional>
#include <string>

#include "tests/components/Bench.h"

namespace trel::test {

namespace {

struct Kind {
    std::string type;
    std::function<bool(unsigned bits, unsigned inputs)> result;  // bit i: input i
};

unsigned count(unsigned bits) {
    unsigned on = 0;
    for (; bits != 0; bits >>= 1) on += bits & 1u;
    return on;
}

const std::vector<Kind> kinds = {
    {"AndGate", [](unsigned bits, unsigned n) { return bits == (1u << n) - 1; }},
    {"OrGate", [](unsigned bits, unsigned) { return bits != 0; }},
    {"NotGate", [](unsigned bits, unsigned) { return bits == 0; }},
    {"NandGate", [](unsigned bits, unsigned n) { return bits != (1u << n) - 1; }},
    {"NorGate", [](unsigned bits, unsigned) { return bits == 0; }},
    {"XorGate", [](unsigned bits, unsigned) { return count(bits) % 2 == 1; }},
    {"Buffer", [](unsigned bits, unsigned) { return bits != 0; }},
};

class Gates : public Bench {
protected:
    // A gate with exactly that many inputs, named after their number.
    SmartComponent& gate(const std::string& type, unsigned inputs) {
        SmartComponent& made = make(type, type);
        for (const auto& [id, input] : SmartComponent::SignalTable(made.getSignals()))
            if (input->isInput()) made.deleteSignal(id);
        for (unsigned input = 0; input != inputs; ++input)
            addSignal(made, 100 + input, std::to_string(input), "DigitalInput");
        return made;
    }
};

}  // namespace

TEST_F(Gates, GiveTheirTruthTableForOneToFourInputs) {
    for (const Kind& kind : kinds)
        for (unsigned inputs = 1; inputs <= 4; ++inputs) {
            SmartComponent& made = gate(kind.type, inputs);
            made.initialize();
            made.start(0);
            for (unsigned bits = 0; bits != 1u << inputs; ++bits) {
                for (unsigned input = 0; input != inputs; ++input)
                    set(made, std::to_string(input), bits >> input & 1u);
                EXPECT_EQ(get(made, "Out"), kind.result(bits, inputs))
                    << kind.type << " with " << inputs << " inputs at " << bits;
            }
        }
}

TEST_F(Gates, StartWithTwoInputsOrOne) {
    for (const Kind& kind : kinds) {
        SmartComponent& made = make(kind.type, kind.type);
        const bool one = kind.type == "NotGate" || kind.type == "Buffer";
        EXPECT_EQ(made.getSignals().size(), one ? 2u : 3u) << kind.type;
        EXPECT_TRUE(signal(made, one ? "In" : "In2").isInput());
    }
}

TEST_F(Gates, BringTheOutputInLineWhenTheyStart) {
    SmartComponent& inverter = make("NotGate", "Not");
    inverter.initialize();
    EXPECT_EQ(get(inverter, "Out"), 0);
    inverter.start(0);
    EXPECT_EQ(get(inverter, "Out"), 1);
}

TEST_F(Gates, SendAnOutputOnlyWhenItChanges) {
    SmartComponent& gate = make("OrGate", "Or");
    start();
    set(gate, "In1", 1);
    freshLog();
    set(gate, "In2", 1);
    EXPECT_EQ(freshLog(), (Lines{"Or.In2 := 1", "Or.In2 told"}));
}

//   Not.Out -> Not.In : a ring that has no rest
TEST_F(Gates, AnInverterWiredToItselfEndsWithOneEvent) {
    SmartComponent& inverter = make("NotGate", "Not");
    inverter.initialize();
    connect(logic(), inverter, "Out", inverter, "In");
    freshLog();
    inverter.start(0);
    EXPECT_EQ(freshLog(), (Lines{"Not.Out := 1", "Not.Out told", "Not.In := 1", "Not.In told",
                                 "event 10008 Not Out "}));
}

}  // namespace trel::test
