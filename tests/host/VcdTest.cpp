#include <gmock/gmock.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "host/Objects.h"
#include "host/Trace.h"
#include "host/TraceVcd.h"
#include "tests/host/LiveCell.h"
#include "tests/host/Waves.h"

namespace trel::test {

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Pair;

constexpr Waves::Stamp microsecond = 1'000'000;  // stamps

class VcdTest : public LiveCell {
protected:
    // What is dumped of what `act` does.
    template <typename Act>
    Waves dumped(const Act& act) const {
        return Waves(textOf(act));
    }
    template <typename Act>
    static std::string textOf(const Act& act) {
        start();
        std::ostringstream out;
        host::VcdTrace dump(out);
        {
            host::Trace trace({&dump});
            act(trace, dump);
        }
        return out.str();
    }
    static void setIn(unsigned component, int value) {
        host::componentOf(component)->handleSignalValue(1, value, 0);
    }
};

// A run of the example, with what it wrote.
class VcdOfTheExample : public FolderTest {
protected:
    void SetUp() override {
        FolderTest::SetUp();
        const auto folder = sourceFolder() / "examples/pick_and_place";
        const Result result = station({"run", (folder / "station.xml").string(), "--scenario",
                                       (folder / "scenario.yaml").string(), "--vcd",
                                       path("run.vcd"), "--csv", path("run.csv")});
        ASSERT_EQ(result.code, 0) << result.err;
    }

    // The values of each signal in the order of the run, by the place that it has in
    // the dump.
    std::map<std::string, std::vector<std::pair<Waves::Stamp, std::string>>> played() const {
        std::map<std::string, std::vector<std::pair<Waves::Stamp, std::string>>> result;
        std::istringstream rows(readFile(path("run.csv")));
        for (std::string row; std::getline(rows, row);) {
            std::istringstream fields(row);
            std::string time, kind, name, value;
            std::getline(fields, time, ',');
            std::getline(fields, kind, ',');
            std::getline(fields, name, ',');
            std::getline(fields, value, ',');
            if (kind != "signal") continue;
            std::ranges::replace(name, ' ', '_');
            std::ranges::replace(name, '/', '.');
            result["Pick_and_place." + name].emplace_back(std::stoll(time), value);
        }
        return result;
    }

    // All changes that were played stand in the dump, and no others.
    void expectAllThere(const Waves& waves) const {
        const auto all = played();
        EXPECT_GT(all.size(), 40u);
        for (const auto& [place, kind] : waves.kinds) {
            auto changes = waves.changes.at(place);
            changes.erase(changes.begin());
            for (auto& [stamp, value] : changes) stamp /= microsecond;
            const auto signal = all.find(place);
            if (signal != all.end()) {
                EXPECT_EQ(changes, signal->second) << place;
            } else if (kind != "real 64") {  // which may be a property
                EXPECT_TRUE(changes.empty()) << place;
            }
        }
        for (const auto& [place, changes] : all) EXPECT_TRUE(waves.kinds.contains(place)) << place;
    }
};

}  // namespace

TEST_F(VcdTest, HoldsWiresVectorsAndRealsInTheTreeOfComponents) {
    const Waves waves = dumped([](host::Trace&, host::VcdTrace&) {});
    EXPECT_EQ(waves.timescale, "1ps");
    EXPECT_EQ(waves.kinds.at("Test.Cell.A.In"), "wire 1");
    EXPECT_EQ(waves.kinds.at("Test.Belt_1%2E5.Speed"), "real 64");
    EXPECT_EQ(waves.kinds.at("Test.Robot.Seen"), "real 64");
    EXPECT_THAT(waves.changes.at("Test.Belt_1%2E5.Speed_3"), ElementsAre(Pair(0, "250")));
}

TEST_F(VcdTest, ShowsBothValuesOfAPulseAtOneTime) {
    const Waves waves = dumped([this](host::Trace& trace, host::VcdTrace&) {
        trace.setTime(20);
        robot().setOutput(2, 1, true, 20);
    });
    EXPECT_THAT(waves.changes.at("Test.Robot.Tap"),
                ElementsAre(Pair(0, "0"), Pair(20 * microsecond, "1"),
                            Pair(20 * microsecond + 1, "0")));
    EXPECT_THAT(waves.changes.at("Test.A.Out"),
                ElementsAre(Pair(0, "0"), Pair(20 * microsecond + 3, "1"),
                            Pair(20 * microsecond + 5, "0")));
}

TEST_F(VcdTest, WhatComesAfterTheLastStampOfAMicrosecondStandsThere) {
    std::size_t crowded = 0;
    const Waves waves = dumped([&](host::Trace& trace, host::VcdTrace& dump) {
        trace.setTime(7);
        for (int change = 0; change != 1'000'003; ++change)
            dump.changed({7, {outer, host::Member::Kind::Signal, 1}, "", (change + 1) % 2});
        trace.setTime(8);
        setIn(inner, 1);
        crowded = dump.crowded();
    });
    EXPECT_EQ(crowded, 3u);
    const auto& changes = waves.changes.at("Test.A.In");
    ASSERT_EQ(changes.size(), 1'000'004u);
    EXPECT_EQ(changes[1'000'000], std::pair(8 * microsecond - 1, std::string("0")));
    EXPECT_EQ(changes.back(), std::pair(8 * microsecond - 1, std::string("1")));
    EXPECT_EQ(waves.changes.at("Test.Cell.A.In").back().first, 8 * microsecond);
}

TEST_F(VcdTest, AValueThatAWireOrAVectorCannotHoldIsUnknown) {
    const Waves waves = dumped([this](host::Trace&, host::VcdTrace&) {
        setIn(outer, 7);
        robot().setSignalValue(3, -2.5, true);
    });
    EXPECT_EQ(waves.changes.at("Test.A.In").back().second, "x");
    EXPECT_EQ(waves.changes.at("Test.Robot.Seen").back().second, "-2.5");
}

TEST_F(VcdTest, LastsUntilTheEndOfTheRun) {
    const Waves waves = dumped([](host::Trace&, host::VcdTrace& dump) { dump.end(3'000'000); });
    EXPECT_EQ(waves.end, 3'000'000 * microsecond);
}

TEST_F(VcdTest, TheSaveFileGroupsTheWatchedSignalsUnderTheirOwnNames) {
    std::string text;
    textOf([&](host::Trace&, host::VcdTrace& dump) {
        text = dump.saveFile("a.vcd", host::Watch({"\"Belt*", "Cell/A.In"}));
    });
    EXPECT_EQ(text, "[dumpfile] \"a.vcd\"\n[timestart] 0\n"
                    "@800200\n-Cell/A\n@28\n+{In} Test.Cell.A.In\n@1000200\n-Cell/A\n"
                    "@800200\n-\"Belt 1.5\"\n@28\n+{Run} Test.Belt_1%2E5.Run\n"
                    "@8420\n+{Speed} Test.Belt_1%2E5.Speed\n"
                    "@8420\n+{Speed} Test.Belt_1%2E5.Speed_3\n@1000200\n-\"Belt 1.5\"\n");
}

TEST_F(VcdOfTheExample, HoldsEveryChangeOfTheRunPulsesIncluded) {
    const Waves waves(readFile(path("run.vcd")));
    expectAllThere(waves);
    EXPECT_EQ(waves.end, 10'000'000 * microsecond);
    const auto& pulses = waves.changes.at("Pick_and_place.Handling.Hand.Gripper.Released");
    ASSERT_EQ(pulses.size(), 7u);
    EXPECT_EQ(pulses[2].first, pulses[1].first + 1);
}

// GTKWave's tools read it into a form of their own and write that out again.
TEST_F(VcdOfTheExample, IsReadByAReaderThatIsNotOurs) {
    const Result in = stationAt("/usr/bin/vcd2fst", {path("run.vcd"), path("run.fst")});
    ASSERT_EQ(in.code, 0) << in.err << "install gtkwave";
    const Result out = stationAt("/usr/bin/fst2vcd", {path("run.fst")});
    ASSERT_EQ(out.code, 0) << out.err;
    expectAllThere(Waves(out.out));
}

TEST_F(VcdOfTheExample, HasASaveFileBesideIt) {
    EXPECT_THAT(readFile(path("run.gtkw")),
                HasSubstr("[dumpfile] \"run.vcd\"\n[timestart] 0\n@800200\n-Feeding\n@28\n"
                          "+{Enable} Pick_and_place.Feeding.Enable\n"));
}

}  // namespace trel::test
