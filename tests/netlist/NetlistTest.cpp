#include "tests/netlist/Netlist.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <random>

#include "platform/broker/SignalBroker.h"
#include "platform/station/Station.h"
#include "tests/host/Program.h"
#include "tests/netlist/GateStation.h"

namespace trel::test {

namespace {

using Random = std::mt19937;

// The circuits that others wrote lie beside the project, where they are there.
std::optional<Netlist> sample(const std::string& name) {
    std::ifstream file(std::filesystem::path(SOURCE_FOLDER) / "../shared/samples/netlist" / name);
    if (!file) return std::nullopt;
    return Netlist::fromVerilog(std::string(std::istreambuf_iterator<char>(file), {}));
}

// A circuit without a ring never brings a value back to where it came from.
class NoEvents : private broker::Listener {
public:
    NoEvents() { broker::SignalBroker::subscribe(*this); }
    ~NoEvents() override {
        broker::SignalBroker::unsubscribe(*this);
        EXPECT_EQ(events_, 0);
    }

private:
    void reportEvent(const std::string&, const std::string&, const std::string&,
                     const std::string&) override {
        ++events_;
    }
    int events_ = 0;
};

// Sets the inputs that differ, and compares every output.
void expectOutputs(GateStation& station, const Netlist& netlist, const Evaluation& evaluate,
                   const Wires& inputs) {
    for (const auto& [name, value] : inputs) station.set(name, value);
    const Wires expected = evaluate(inputs);
    for (const std::string& output : netlist.outputs)
        ASSERT_EQ(station.get(output), expected.at(output)) << output;
}

std::string bitName(const std::string& word, unsigned bit) { return word + std::to_string(bit); }

struct Sum {
    std::string sum;
    std::string carry;
};

Sum addBits(Netlist& netlist, const std::string& a, const std::string& b) {
    return {netlist.add("XorGate", {a, b}), netlist.add("AndGate", {a, b})};
}

Sum addBits(Netlist& netlist, const std::string& a, const std::string& b, const std::string& c) {
    const Sum first = addBits(netlist, a, b);
    const Sum second = addBits(netlist, first.sum, c);
    return {second.sum, netlist.add("OrGate", {first.carry, second.carry})};
}

constexpr unsigned width = 8;

void addWords(Netlist& netlist) {
    for (const char* const word : {"a", "b"})
        for (unsigned bit = 0; bit != width; ++bit) netlist.inputs.push_back(bitName(word, bit));
}

// A ripple-carry adder: s = a + b, with the carry as the last bit.
Netlist adder() {
    Netlist netlist;
    addWords(netlist);
    Sum bit = addBits(netlist, "a0", "b0");
    netlist.outputs.push_back(bit.sum);
    for (unsigned place = 1; place != width; ++place) {
        bit = addBits(netlist, bitName("a", place), bitName("b", place), bit.carry);
        netlist.outputs.push_back(bit.sum);
    }
    netlist.outputs.push_back(bit.carry);
    return netlist;
}

// An array multiplier: each row adds a, where its bit of b is on, to what the
// rows before left.
Netlist multiplier() {
    Netlist netlist;
    addWords(netlist);
    std::vector<std::string> rest;  // bits of the sum so far, from the row's place up
    for (unsigned row = 0; row != width; ++row) {
        std::vector<std::string> product;
        for (unsigned bit = 0; bit != width; ++bit)
            product.push_back(netlist.add("AndGate", {bitName("a", bit), bitName("b", row)}));
        if (row == 0) {
            rest = product;
        } else {
            std::vector<std::string> sums;
            std::string carry;
            for (unsigned bit = 0; bit != width; ++bit) {
                const bool two = bit >= rest.size();
                if (two && carry.empty()) throw std::logic_error("nothing to add");
                const Sum sum = two             ? addBits(netlist, product[bit], carry)
                                : carry.empty() ? addBits(netlist, product[bit], rest[bit])
                                                : addBits(netlist, product[bit], rest[bit], carry);
                sums.push_back(sum.sum);
                carry = sum.carry;
            }
            sums.push_back(carry);
            rest = sums;
        }
        netlist.outputs.push_back(rest.front());
        rest.erase(rest.begin());
    }
    netlist.outputs.insert(netlist.outputs.end(), rest.begin(), rest.end());
    return netlist;
}

// Has the station work out one pair of words.
unsigned calculate(GateStation& station, const Netlist& netlist, unsigned a, unsigned b) {
    for (unsigned bit = 0; bit != width; ++bit) {
        station.set(bitName("a", bit), a >> bit & 1u);
        station.set(bitName("b", bit), b >> bit & 1u);
    }
    unsigned result = 0;
    for (std::size_t bit = 0; bit != netlist.outputs.size(); ++bit)
        if (station.get(netlist.outputs[bit])) result |= 1u << bit;
    return result;
}

// Pairs of words: the corners, then random ones.
std::vector<std::pair<unsigned, unsigned>> pairs(unsigned count) {
    std::vector<std::pair<unsigned, unsigned>> result = {{0, 0}, {255, 255}, {255, 1}, {0, 255}};
    Random random(1985);
    for (unsigned i = 0; i != count; ++i) result.emplace_back(random() % 256, random() % 256);
    return result;
}

}  // namespace

TEST(Netlists, AStationOfTheSixGateSampleGivesItsWholeTruthTable) {
    const auto netlist = sample("iscas-c17.v");
    if (!netlist) GTEST_SKIP() << "../shared/samples/netlist/iscas-c17.v is not there";
    ASSERT_EQ(netlist->inputs.size(), 5u);
    ASSERT_EQ(netlist->gates.size(), 6u);
    const NoEvents noEvents;
    GateStation station(*netlist);
    const Evaluation evaluate(*netlist);
    for (unsigned bits = 0; bits != 32; ++bits) {
        Wires inputs;
        for (std::size_t i = 0; i != 5; ++i) inputs[netlist->inputs[i]] = bits >> i & 1u;
        expectOutputs(station, *netlist, evaluate, inputs);
    }
}

TEST(Netlists, AStationOfTheInterruptControllerIsRightForAThousandRandomInputs) {
    const auto netlist = sample("iscas-c432.v");
    if (!netlist) GTEST_SKIP() << "../shared/samples/netlist/iscas-c432.v is not there";
    ASSERT_EQ(netlist->inputs.size(), 36u);
    ASSERT_EQ(netlist->gates.size(), 171u);
    const NoEvents noEvents;
    GateStation station(*netlist);
    const Evaluation evaluate(*netlist);
    Random random(432);
    for (unsigned round = 0; round != 1000; ++round) {
        Wires inputs;
        for (const std::string& input : netlist->inputs) inputs[input] = random() % 2 == 0;
        expectOutputs(station, *netlist, evaluate, inputs);
    }
}

TEST(Netlists, AStationOfAnAdderAdds) {
    const Netlist netlist = adder();
    const NoEvents noEvents;
    GateStation station(netlist);
    for (const auto& [a, b] : pairs(500))
        ASSERT_EQ(calculate(station, netlist, a, b), a + b) << a << " + " << b;
}

TEST(Netlists, AStationOfAMultiplierMultiplies) {
    const Netlist netlist = multiplier();
    const NoEvents noEvents;
    GateStation station(netlist);
    for (const auto& [a, b] : pairs(100))
        ASSERT_EQ(calculate(station, netlist, a, b), a * b) << a << " * " << b;
}

TEST(Netlists, TheEvaluationAgreesWithArithmetic) {
    const Netlist netlist = multiplier();
    const Evaluation evaluate(netlist);
    for (const auto& [a, b] : pairs(200)) {
        Wires inputs;
        for (unsigned bit = 0; bit != width; ++bit) {
            inputs[bitName("a", bit)] = a >> bit & 1u;
            inputs[bitName("b", bit)] = b >> bit & 1u;
        }
        const Wires wires = evaluate(inputs);
        unsigned result = 0;
        for (std::size_t bit = 0; bit != netlist.outputs.size(); ++bit)
            if (wires.at(netlist.outputs[bit])) result |= 1u << bit;
        ASSERT_EQ(result, a * b);
    }
}

// Written to a file, and run by the program within its usual budget.
class NetlistsInTheHost : public FolderTest {
protected:
    void expectRight(const Netlist& netlist) {
        {
            const GateStation live(netlist);
            Station::inst().save(path("s.xml"));
        }
        const Evaluation evaluate(netlist);
        Random random(88);
        std::string scenario = "step: 10ms\ntimeline:\n";
        for (unsigned round = 0; round != 20; ++round) {
            scenario += "  - at: " + std::to_string(round * 10) + "ms\n    set:\n";
            Wires wires;
            for (const std::string& input : netlist.inputs) {
                wires[input] = random() % 2 == 0;
                scenario += "      " + input + ".In0: " + (wires[input] ? "1\n" : "0\n");
            }
            wires = evaluate(wires);
            scenario += "    expect:\n";
            for (const std::string& output : netlist.outputs)
                scenario += "      " + output + ".Out: " + (wires.at(output) ? "1\n" : "0\n");
        }
        const Result result = station({"run", path("s.xml"), "--scenario",
                                       write("s.yaml", scenario), "--watch", "*.Out"});
        EXPECT_EQ(result.code, 0) << result.err;
        EXPECT_NE(result.out.find("expectations: " + std::to_string(20 * netlist.outputs.size()) +
                                  " held, 0 failed"),
                  std::string::npos);
    }
};

TEST_F(NetlistsInTheHost, AMultiplierMultipliesWithinTheBudget) { expectRight(multiplier()); }

TEST_F(NetlistsInTheHost, TheInterruptControllerIsRightWithinTheBudget) {
    const auto netlist = sample("iscas-c432.v");
    if (!netlist) GTEST_SKIP() << "../shared/samples/netlist/iscas-c432.v is not there";
    expectRight(*netlist);
}

TEST(Netlists, VerilogThatIsNoNetlistIsRefused) {
    EXPECT_THROW(Netlist::fromVerilog("module m(a); assign a = 1; endmodule"), std::runtime_error);
    EXPECT_THROW(Netlist::fromVerilog("module m(a); input a;"), std::runtime_error);
    const Netlist ring = Netlist::fromVerilog(
        "module m(a); output a; // a ring\n not n1 (a, b); not n2 (b, a); endmodule");
    EXPECT_EQ(ring.gates.size(), 2u);
    EXPECT_THROW(Evaluation{ring}, std::runtime_error);
}

}  // namespace trel::test
