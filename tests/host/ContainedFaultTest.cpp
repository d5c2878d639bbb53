#include <fmt/format.h>
#include <gmock/gmock.h>

#include <array>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "tests/host/Program.h"
#include "tests/host/StationFile.h"
#include "tests/host/TestLibrary.h"

// A component that throws is set aside, and the others go on as if it had fallen silent
// there.
//
//   S (buffer) -+-> X (xor) --> N (inverter) --> Y (xor) --> B (buffer) -+
//               |   ^                            ^                       |
//               +-> F ---------------------------+                       |
//                   ^----------------------------------------------------+
//
// F sends the other value each time that something reaches it or it is executed.

namespace trel::test {

namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr int steps = 100;

// The station in a few lines: what each component keeps and sends, which settings are
// under way, and what a throw leaves of that.
class Model {
public:
    explicit Model(int failsAt) : failsAt_(failsAt) {}

    // The changes of the whole run, "TIME NAME VALUE" in microseconds.
    std::vector<std::string> play(const std::vector<int>& stimuli) {
        for (const Gate gate : {S, X, N, Y, B}) guarded([&] { refresh(gate); });
        for (time_ = 0; time_ != steps; ++time_) {
            guarded([&] { arrive(S, 0, stimuli[static_cast<std::size_t>(time_)]); });
            if (!silent_) guarded([&] { reactF(); });
        }
        return std::move(changes_);
    }

    int reactions() const { return reactions_; }

private:
    enum Gate { S, F, X, N, Y, B };
    struct Broken {};

    template <typename Act>
    void guarded(const Act& act) {
        try {
            act();
        } catch (const Broken&) {
            silent_ = true;
            underWay_.clear();
        }
    }

    void refresh(Gate gate) {
        const auto& in = inputs_[gate];
        switch (gate) {
            case S:
            case B: return send(gate, in[0]);
            case N: return send(gate, 1 - in[0]);
            case X:
            case Y: return send(gate, in[0] ^ in[1]);
            case F: return;
        }
    }

    void arrive(Gate gate, std::size_t input, int value) {
        if (gate == F && silent_) return;
        note(gate, input, inputs_[gate][input], value);
        if (gate == F)
            reactF();
        else
            refresh(gate);
    }

    void reactF() {
        if (++reactions_ == failsAt_) throw Broken();
        send(F, reactions_ % 2);
    }

    void send(Gate gate, int value) {
        if (underWay_.contains(gate) || outputs_[gate] == value) return;
        note(gate, 2, outputs_[gate], value);
        underWay_.emplace(gate, value);
        switch (gate) {
            case S:
                arrive(X, 0, value);
                arrive(F, 0, value);
                break;
            case F:
                arrive(X, 1, value);
                arrive(Y, 1, value);
                break;
            case X: arrive(N, 0, value); break;
            case N: arrive(Y, 0, value); break;
            case Y: arrive(B, 0, value); break;
            case B: arrive(F, 0, value); break;
        }
        underWay_.erase(gate);
    }

    void note(Gate gate, std::size_t signal, int& kept, int value) {
        static constexpr std::array names = {"S", "F", "X", "N", "Y", "B"};
        if (kept == value) return;
        kept = value;
        const bool two = gate == X || gate == Y;
        const std::string name = signal == 2 ? "Out" : two ? fmt::format("In{}", signal + 1) : "In";
        changes_.push_back(fmt::format("{} {}.{} {}", time_ * 10'000, names[gate], name, value));
    }

    const int failsAt_;
    int reactions_ = 0;
    int time_ = 0;
    bool silent_ = false;
    std::map<Gate, int> underWay_;
    std::array<std::array<int, 2>, 6> inputs_{};
    std::array<int, 6> outputs_{};
    std::vector<std::string> changes_;
};

class ContainedFault : public FolderTest {
protected:
    void SetUp() override {
        FolderTest::SetUp();
        std::mt19937 random(7);
        std::string scenario = "step: 10ms\ntimeline:\n";
        for (int step = 0; step != steps; ++step) {
            stimuli_.push_back(static_cast<int>(random() % 2));
            scenario +=
                fmt::format("  - {{at: {}ms, set: {{S.In: {}}}}}\n", step * 10, stimuli_.back());
        }
        write("s.yaml", scenario);
    }

    static std::string stationThatFails(int at) {
        StationFile file;
        file.gate(10, "S", "Buffer");
        file.add(11, "F", "Fragile", {{"In", "DigitalInput"}, {"Out", "DigitalOutput"}}, 2,
                 fmt::format("    <property id=\"1\" name=\"Fail at\" string=\"{}\">\n"
                             "      <type string=\"Int32\" />\n    </property>\n",
                             at));
        file.gate(12, "X", "XorGate", 2);
        file.gate(13, "N", "NotGate");
        file.gate(14, "Y", "XorGate", 2);
        file.gate(15, "B", "Buffer");
        file.connect({10, 2}, {12, 1});
        file.connect({10, 2}, {11, 1});
        file.connect({11, 2}, {12, 2});
        file.connect({11, 2}, {14, 2});
        file.connect({12, 3}, {13, 1});
        file.connect({13, 2}, {14, 1});
        file.connect({14, 3}, {15, 1});
        file.connect({15, 2}, {11, 1});
        return file.text();
    }

    Result play(int failsAt, std::vector<std::string> options = {}) const {
        options.insert(options.begin(),
                       {"run", write("s.xml", stationThatFails(failsAt)), "--scenario",
                        path("s.yaml"), "--csv", path("run.csv"), "--components", library("Odd")});
        return station(options);
    }

    // What the run wrote, as the model tells it.
    std::vector<std::string> played() const {
        std::vector<std::string> changes;
        std::istringstream rows(readFile(path("run.csv")));
        for (std::string row; std::getline(rows, row);) {
            std::istringstream fields(row);
            std::string time, kind, name, value;
            std::getline(fields, time, ',');
            std::getline(fields, kind, ',');
            std::getline(fields, name, ',');
            std::getline(fields, value, ',');
            if (kind == "signal") changes.push_back(fmt::format("{} {} {}", time, name, value));
        }
        return changes;
    }

    const std::vector<int>& stimuli() const { return stimuli_; }

private:
    std::vector<int> stimuli_;
};

}  // namespace

TEST_F(ContainedFault, AtEveryReactionTheRunGoesOnAsTheModelDoes) {
    Model whole(0);
    whole.play(stimuli());
    ASSERT_GT(whole.reactions(), 200);
    for (int k = 1; k <= whole.reactions(); ++k) {
        Model model(k);
        const Result result = play(k);
        ASSERT_EQ(result.code, 4) << k;
        ASSERT_THAT(result.err, StartsWith("F (Fragile, #11) failed at ")) << k;
        ASSERT_THAT(result.err, HasSubstr(fmt::format(": broke at {};", k)));
        ASSERT_THAT(result.out, HasSubstr("ran 0.99s in 100 steps"));
        ASSERT_EQ(played(), model.play(stimuli())) << k;
    }
}

TEST_F(ContainedFault, WithoutAFaultTheRunIsThatOfTheModelToo) {
    EXPECT_EQ(play(0).code, 0);
    EXPECT_EQ(played(), Model(0).play(stimuli()));
}

TEST_F(ContainedFault, IsNamedWithWhatWasAskedAndTheWayThere) {
    EXPECT_EQ(
        play(2).err,
        "F (Fragile, #11) failed at 0s while taking 0 at F.In: broke at 2; what led there: Y "
        "(XorGate, #14) starting, Y.Out -> B.In, B.Out -> F.In; it was set aside for the rest "
        "of the run\n");
}

TEST_F(ContainedFault, StopsTheRunWhereThatIsAskedFor) {
    const Result result = play(50, {"--stop-on-fault", "--vcd", path("run.vcd")});
    EXPECT_EQ(result.code, 4);
    EXPECT_THAT(result.err, HasSubstr(": broke at 50"));
    EXPECT_THAT(result.out, HasSubstr("-- STOPPED: a component failed\n"));
    EXPECT_EQ(readFile(path("run.vcd")).back(), '\n');
}

}  // namespace trel::test
