#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

#include "bench/Counter.h"
#include "bench/Peers.h"
#include "bench/Work.h"

// What every contender does for a hop beside wiring, part by part, where all that is
// touched lies in the first cache.

namespace trel::bench {
namespace {

constexpr unsigned nodes = 1000;

template <typename Part>
void measure(benchmark::State& state, const Part& part) {
    std::vector<std::unique_ptr<DocumentWork>> table;
    for (unsigned i = 0; i != nodes; ++i)
        table.push_back(std::make_unique<DocumentWork>(firstPeerId + i));
    int value = 0;
    for (auto _ : state) part(*table.front(), ++value);
    state.SetItemsProcessed(state.iterations());
}

void lookUp(benchmark::State& state) {
    measure(state, [](DocumentWork& node, int) {
        benchmark::DoNotOptimize(&DocumentWork::follow<DocumentWork>(node.id()));
    });
}

void keep(benchmark::State& state) {
    measure(state, [](DocumentWork& node, int value) { node.keep(value); });
}

void tell(benchmark::State& state) {
    const Counter listener;
    measure(state, [](DocumentWork& node, int) { node.tell(); });
}

BENCHMARK(lookUp)->Name("one look-up under the lock/ours");
BENCHMARK(keep)->Name("one value kept and assigned/ours");
BENCHMARK(tell)->Name("one listener told/ours");

}  // namespace
}  // namespace trel::bench
