#include <valgrind/callgrind.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <new>
#include <string>

#include "bench/Counter.h"
#include "bench/Graph.h"
#include "bench/Station.h"
#include "smartcomp/Property.h"
#include "smartcomp/SCSignal.h"
#include "smartcomp/SmartComponent.h"

// What a delivery costs in instructions, which differ between runs only by how the
// ids of a run fall into the object table, and in allocations. Under callgrind every
// work is a part of the profile, by its name; the allocations are printed.

namespace {
std::size_t allocations = 0;
}  // namespace

void* operator new(std::size_t size) {
    ++allocations;
    if (void* const memory = std::malloc(size)) return memory;
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace trel::bench {
namespace {

// Counts one round of many, when nothing is new any more.
void count(const char* work, std::size_t hops, const std::function<void(int)>& round) {
    const Counter listener;
    for (int value = 1; value <= 20; ++value) round(value);
    const std::size_t before = allocations;
    CALLGRIND_TOGGLE_COLLECT;
    round(21);
    CALLGRIND_TOGGLE_COLLECT;
    CALLGRIND_DUMP_STATS_AT(work);
    std::printf("%s: %zu hops, %zu allocations\n", work, hops, allocations - before);
}

void countDynamic(const char* work, const Graph& graph, StationNet::Of of) {
    const StationNet net(graph, of);
    auto& first = node(0);
    count(work, graph.hops(), [&](int value) { first.handleSignalValue(output, value, 0); });
}

void countStatic(const char* work, const Graph& graph) {
    const StationNet net(graph, StationNet::Of::Connections);
    auto& first = node(0);
    count(work, graph.hops(), [&](int value) { first.setStaticSignalValue(output, value); });
}

void countTexts(const char* work, const Graph& graph) {
    const StationNet net(graph, StationNet::Of::Bindings);
    auto& first = node(0);
    const std::string texts[] = {"twelve chars", "another text"};
    count(work, graph.hops(), [&](int value) { first.setPropertyValue(text, texts[value % 2]); });
}

// One of many connections of the cell begins at the source.
void countOneOf(const char* work, unsigned connections) {
    Graph graph{4, {{0, 1}}};
    for (unsigned i = 1; i != connections; ++i) graph.edges.push_back({2, 3});
    const StationNet net(graph, StationNet::Of::Connections);
    auto& first = node(0);
    count(work, 1, [&](int value) { first.handleSignalValue(output, value, 0); });
}

}  // namespace
}  // namespace trel::bench

int main() {
    using namespace trel::bench;
    const Graph line = chain(1000);
    countDynamic("chain", line, StationNet::Of::Connections);
    countDynamic("fan-out 100", fanOut(100), StationNet::Of::Connections);
    countDynamic("pulse chain", line, StationNet::Of::Pulses);
    countStatic("static chain", line);
    countTexts("property chain", line);
    countOneOf("one of 10000", 10'000);
}
