#include <benchmark/benchmark.h>

#include <stdexcept>
#include <string>

#include "bench/Counter.h"
#include "bench/Graph.h"
#include "bench/Peers.h"
#include "bench/Station.h"
#include "bench/Work.h"
#include "smartcomp/Property.h"
#include "smartcomp/SCSignal.h"
#include "smartcomp/SmartComponent.h"

// Values along signal connections: ours, and the same graph wired otherwise.

namespace trel::bench {
namespace {

// One round sets the first node and reaches every other.
template <typename Round>
void measure(benchmark::State& state, const Graph& graph, std::size_t tolds, const Round& round) {
    Counter listener;
    int value = 0;
    round(value = 1);
    if (listener.told != tolds) return state.SkipWithError("not every node was reached");
    for (auto _ : state) round(value = value == 1 ? 2 : 1);
    state.SetItemsProcessed(static_cast<std::int64_t>(graph.hops()) * state.iterations());
}

enum class Path { Dynamic, Static, Pulse };

void ours(benchmark::State& state, const Graph& graph, Path path) {
    const StationNet net(graph, path == Path::Pulse ? StationNet::Of::Pulses
                                                    : StationNet::Of::Connections);
    auto& first = node(0);
    measure(state, graph, graph.nodes, [&](int value) {
        if (path == Path::Static)
            first.setStaticSignalValue(output, value);
        else
            first.handleSignalValue(output, value, 0);
    });
}

template <typename Work, template <typename> typename Wire>
void peer(benchmark::State& state, const Graph& graph, Path path) {
    PeerNet<PeerNode<Work, Wire>> net(graph, path == Path::Pulse);
    const std::size_t tolds = std::is_same_v<Work, NoWork> ? 0 : graph.nodes;
    measure(state, graph, tolds, [&](int value) { net.set(value); });
}

void registerAll(const std::string& work, const Graph& graph, Path path) {
    const auto add = [&](const char* who, auto run) {
        benchmark::RegisterBenchmark((work + "/" + who).c_str(),
                                     [=](benchmark::State& state) { run(state, graph, path); });
    };
    add("ours", ours);
    add("graph", peer<DocumentWork, GraphWire>);
    add("sigc++", peer<DocumentWork, SigcWire>);
    add("Boost.Signals2", peer<DocumentWork, BoostWire>);
    add("Qt signals", peer<DocumentWork, QtWire>);
    add("graph, bare", peer<NoWork, GraphWire>);
    add("sigc++, bare", peer<NoWork, SigcWire>);
    add("Boost.Signals2, bare", peer<NoWork, BoostWire>);
    add("Qt signals, bare", peer<NoWork, QtWire>);
}

const bool registered = [] {
    registerAll("chain", chain(1000), Path::Dynamic);
    for (const unsigned leaves : {1, 10, 100, 1000})
        registerAll("fan-out " + std::to_string(leaves), fanOut(leaves), Path::Dynamic);
    registerAll("tree", tree(1023), Path::Dynamic);
    registerAll("grid", grid(32), Path::Dynamic);
    registerAll("pulse chain", chain(1000), Path::Pulse);
    registerAll("static chain", chain(1000), Path::Static);
    registerAll("static fan-out", fanOut(1000), Path::Static);
    return true;
}();

}  // namespace
}  // namespace trel::bench
