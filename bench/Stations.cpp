#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <charconv>
#include <ctime>
#include <memory>
#include <numeric>
#include <pugixml.hpp>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "bench/Peers.h"
#include "bench/Station.h"
#include "bench/Work.h"
#include "platform/sdf/Document.h"
#include "platform/station/Station.h"
#include "smartcomp/Aggregation.h"
#include "smartcomp/Connection.h"
#include "smartcomp/Lifecycle.h"
#include "smartcomp/Property.h"
#include "smartcomp/StationLogic.h"

// Large stations: what a component or a connection costs among a hundred thousand,
// where "ours" is compared with itself among fewer.

namespace trel::bench {
namespace {

constexpr unsigned many = 100'000;

enum class From { Front, Back, Anywhere };

// 0 to n - 1 in the order in which they are taken away.
std::vector<unsigned> inOrder(unsigned n, From from) {
    std::vector<unsigned> numbers(n);
    std::iota(numbers.begin(), numbers.end(), 0u);
    if (from == From::Back) std::ranges::reverse(numbers);
    if (from == From::Anywhere) std::ranges::shuffle(numbers, std::mt19937(1));
    return numbers;
}

// Seconds of the processor that `work` takes.
template <typename Work>
double timeOf(const Work& work) {
    const std::clock_t start = std::clock();
    work();
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

// ---- Components

enum class Part { Making, Removing };

void components(benchmark::State& state, unsigned n, Part part, From from) {
    openStation();
    for (auto _ : state) {
        smartcomp::Build("Cell", cellId, "Cell", Station::logicId);
        const double making = timeOf([&] {
            for (unsigned i = 0; i != n; ++i)
                smartcomp::Build("Relay", firstNodeId + i, "Relay", cellId);
        });
        const auto order = inOrder(n, from);
        const double removing = timeOf([&] {
            for (const unsigned i : order) smartcomp::RemoveSmartComponent(firstNodeId + i);
        });
        smartcomp::RemoveSmartComponent(cellId);
        state.SetIterationTime(part == Part::Making ? making : removing);
    }
    state.SetItemsProcessed(std::int64_t{n} * state.iterations());
}

// ---- Connections

void connections(benchmark::State& state, unsigned n, Part part, From from) {
    for (auto _ : state) {
        const StationNet net(Graph{2, {}}, StationNet::Of::Connections);
        smartcomp::Aggregation& cell = net.cell();
        std::vector<unsigned> ids(n);
        const double making = timeOf([&] {
            for (unsigned i = 0; i != n; ++i) {
                ids[i] = cell.getNextSgConnId();
                smartcomp::Connection::Build(&cell, ids[i], firstNodeId, output, firstNodeId + 1,
                                             input, static_cast<int>(i));
            }
        });
        const auto order = inOrder(n, from);
        const double removing = timeOf([&] {
            for (const unsigned i : order) cell.deleteConnection(ids[i]);
        });
        state.SetIterationTime(part == Part::Making ? making : removing);
    }
    state.SetItemsProcessed(std::int64_t{n} * state.iterations());
}

// Every deletion in front gives all that are behind a new index.
void fromTheFront(benchmark::State& state, bool renumbersOnly) {
    constexpr unsigned deleted = 100;
    for (auto _ : state) {
        const StationNet net(Graph{2, {}}, StationNet::Of::Connections);
        smartcomp::Aggregation& cell = net.cell();
        std::vector<smartcomp::Connection*> all;
        for (unsigned i = 0; i != many; ++i)
            all.push_back(smartcomp::Connection::Build(
                &cell, i + 1, firstNodeId, output, firstNodeId + 1, input, static_cast<int>(i)));
        state.SetIterationTime(timeOf([&] {
            for (unsigned d = 0; d != deleted; ++d) {
                if (!renumbersOnly) cell.deleteConnection(d + 1);
                for (unsigned i = d + 1; renumbersOnly && i != many; ++i)
                    all[i]->setIndex(i - d - 1);
            }
        }));
    }
    state.SetItemsProcessed(std::int64_t{deleted} * state.iterations());
}

// ---- One of many connections

// `n` pairs, each joined; all in one aggregation.
Graph pairs(unsigned n) {
    Graph graph{2 * n, {}};
    for (unsigned i = 0; i != n; ++i) graph.edges.push_back({i, n + i});
    return graph;
}

// Hot sends from one source, cold from all of them by turns. A destination that reacts is
// a fan-out of one.
void oneOf(benchmark::State& state, unsigned n, bool isCold) {
    const StationNet net(pairs(n), StationNet::Of::Lamps);
    std::vector<smartcomp::SmartComponent*> sources;
    for (const unsigned i : inOrder(isCold ? n : 1, From::Anywhere)) sources.push_back(&node(i));
    int value = 0;
    const auto round = [&] {
        ++value;
        for (auto* const source : sources) source->handleSignalValue(output, value, 0);
    };
    for (int i = 0; i != 20; ++i) round();
    for (auto _ : state) round();
    state.SetItemsProcessed(static_cast<std::int64_t>(sources.size()) * state.iterations());
}

void oneOfSigc(benchmark::State& state, unsigned n, bool isCold) {
    using Node = PeerNode<DocumentWork, SigcWire>;
    std::vector<std::unique_ptr<Node>> nodes;
    for (unsigned i = 0; i != 2 * n; ++i)
        nodes.push_back(std::make_unique<Node>(firstPeerId + i, false));
    for (unsigned i = 0; i != n; ++i) nodes[i]->connectTo(*nodes[n + i]);
    const auto order = inOrder(isCold ? n : 1, From::Anywhere);
    int value = 0;
    for (auto _ : state) {
        ++value;
        for (const unsigned i : order) nodes[i]->receive(value);
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(order.size()) * state.iterations());
}

// ---- Files

const std::string& largeStation() {
    static const std::string text = [] {
        const StationNet net(Graph{many, {}}, StationNet::Of::Connections);
        return Station::inst().text();
    }();
    return text;
}

std::unique_ptr<sdf::Document> byOurs(const std::string& text) {
    return std::make_unique<sdf::Document>(sdf::Document::fromText(text, "station.xml"));
}

std::unique_ptr<pugi::xml_document> byPugixml(const std::string& text) {
    auto document = std::make_unique<pugi::xml_document>();
    document->load_buffer(text.data(), text.size());
    return document;
}

// What a program meets that opens its first station, and one whose heap has kept all that the
// station before took.
enum class Heap { New, Kept };

enum class Stage { Loading, Closing };

template <typename Load>
void open(benchmark::State& state, const Load& load, Stage stage, Heap heap) {
    const std::string& text = largeStation();
    for (auto _ : state) {
        if (heap == Heap::New) {
            ::malloc_trim(0);
        } else {
            ::mallopt(M_TRIM_THRESHOLD, -1);
            ::mallopt(M_MMAP_MAX, 0);
            load(text);
        }
        decltype(load(text)) document;
        const double loading = timeOf([&] { document = load(text); });
        const double closing = timeOf([&] { document.reset(); });
        state.SetIterationTime(stage == Stage::Loading ? loading : closing);
    }
    state.SetItemsProcessed(std::int64_t{many} * state.iterations());
}

void save(benchmark::State& state) {
    const auto document = sdf::Document::fromText(largeStation(), "station.xml");
    for (auto _ : state) benchmark::DoNotOptimize(document.text());
    state.SetItemsProcessed(std::int64_t{many} * state.iterations());
}

void saveByPugixml(benchmark::State& state) {
    pugi::xml_document document;
    document.load_buffer(largeStation().data(), largeStation().size());
    struct Text : pugi::xml_writer {
        void write(const void* data, std::size_t size) override {
            text.append(static_cast<const char*>(data), size);
        }
        std::string text;
    };
    for (auto _ : state) {
        Text text;
        document.save(text, "  ");
        benchmark::DoNotOptimize(text.text);
    }
    state.SetItemsProcessed(std::int64_t{many} * state.iterations());
}

// ---- Questions

void isObjectUsed(benchmark::State& state, unsigned n) {
    const StationNet net(Graph{n, {}}, StationNet::Of::Connections);
    auto& logic = *smartcomp::StationLogic::inst();
    for (auto _ : state) benchmark::DoNotOptimize(logic.isObjectUsedByComponent(firstNodeId));
    state.SetItemsProcessed(std::int64_t{n} * state.iterations());
}

// ---- Values as they are shown

const std::vector<std::string>& numberTexts(unsigned numbers) {
    static std::vector<std::string> all[5];
    auto& texts = all[numbers];
    std::mt19937 random(1);
    std::uniform_real_distribution<double> number(-1, 1);
    while (texts.size() != 1000) {
        std::ostringstream text;
        for (unsigned i = 0; i != numbers; ++i) text << (i == 0 ? "" : " ") << number(random);
        texts.push_back(text.str());
    }
    return texts;
}

void shown(benchmark::State& state, const char* type, unsigned numbers) {
    const StationNet net(Graph{1, {}}, StationNet::Of::Connections);
    const auto element = node(0).element()->append("property");
    element->setId(5);
    element->setName("Shown");
    element->touch("type")->setValue(std::string(type));
    element->touch("value")->setValue(std::string());
    auto* const property = smartcomp::Property::Create(&node(0), element);
    for (const std::string& text : numberTexts(numbers)) {
        property->setValue(text);
        for (int i = 0; i != 3; ++i) benchmark::DoNotOptimize(property->getDisplayValue());
    }
    std::size_t next = 0;
    for (auto _ : state) {
        state.PauseTiming();
        property->setValue(numberTexts(numbers)[++next % 1000]);
        state.ResumeTiming();
        for (int i = 0; i != 1000; ++i) benchmark::DoNotOptimize(property->getDisplayValue());
    }
    state.SetItemsProcessed(1000 * state.iterations());
}

// Reads the numbers and writes as many as are shown, by themselves.
void byToChars(benchmark::State& state, unsigned numbers) {
    std::size_t next = 0;
    for (auto _ : state) {
        const std::string& text = numberTexts(numbers)[++next % 1000];
        for (int i = 0; i != 1000; ++i) {
            std::string all;
            const char* from = text.data();
            for (unsigned n = 0; n != numbers; ++n) {
                double number = 0;
                from = std::from_chars(from, text.data() + text.size(), number).ptr + 1;
                char buffer[64];
                const auto end = std::to_chars(buffer, buffer + sizeof buffer, number,
                                               std::chars_format::fixed, 2);
                if (n < 3) all.append(buffer, end.ptr).append(", ");
            }
            benchmark::DoNotOptimize(all);
        }
    }
    state.SetItemsProcessed(1000 * state.iterations());
}

// ---- All of them

template <typename Run, typename... Arguments>
benchmark::internal::Benchmark* add(const std::string& name, Run run, Arguments... arguments) {
    return benchmark::RegisterBenchmark(name.c_str(),
                                        [=](benchmark::State& state) { run(state, arguments...); });
}

template <typename Run, typename... Arguments>
void addLarge(const std::string& work, Run run, Arguments... arguments) {
    for (const unsigned n : {many, 10'000u, 1'000u})
        add(work + (n == many ? "/ours" : "/" + std::to_string(n)), run, n, arguments...)
            ->UseManualTime()
            ->Iterations(n == many ? 1 : many / n / 2);
}

const bool registered = [] {
    // First of all: the list of components keeps those that other works have made.
    add("is the object used/ours", isObjectUsed, many)->Iterations(3);
    addLarge("making components", components, Part::Making, From::Back);
    addLarge("removing components, last first", components, Part::Removing, From::Back);
    addLarge("removing components, first first", components, Part::Removing, From::Front);
    addLarge("removing components, anyhow", components, Part::Removing, From::Anywhere);
    addLarge("making connections", connections, Part::Making, From::Back);
    addLarge("deleting connections, last first", connections, Part::Removing, From::Back);
    add("deleting in front of 100000/ours", fromTheFront, false)->UseManualTime()->Iterations(1);
    add("deleting in front of 100000/writes alone", fromTheFront, true)
        ->UseManualTime()
        ->Iterations(1);
    for (const bool isCold : {false, true}) {
        const std::string work = isCold ? "one of n, cold" : "one of n, hot";
        for (const unsigned n : {many, 10'000u, 1'000u, 100u, 10u})
            add(work + (n == many ? "/ours" : "/n = " + std::to_string(n)), oneOf, n, isCold);
        add(work + "/sigc++", oneOfSigc, many, isCold);
    }
    const auto addOpening = [](const std::string& work, Stage stage, Heap heap) {
        const auto ours = [=](benchmark::State& state) { open(state, byOurs, stage, heap); };
        const auto pugixml = [=](benchmark::State& state) { open(state, byPugixml, stage, heap); };
        add(work + "/ours", ours)->UseManualTime()->Iterations(1);
        add(work + "/pugixml", pugixml)->UseManualTime()->Iterations(1);
    };
    addOpening("loading 100000", Stage::Loading, Heap::New);
    addOpening("loading another 100000", Stage::Loading, Heap::Kept);
    addOpening("closing 100000", Stage::Closing, Heap::New);
    add("saving 100000/ours", save);
    add("saving 100000/pugixml", saveByPugixml);
    for (const auto& [type, numbers] :
         {std::pair("Double", 1u), std::pair("Vector3", 3u), std::pair("Orient", 4u)}) {
        add(std::string(type) + " as shown/ours", shown, type, numbers);
        add(std::string(type) + " as shown/to_chars", byToChars, numbers);
    }
    return true;
}();

}  // namespace
}  // namespace trel::bench
