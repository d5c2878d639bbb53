#pragma once

#include "bench/Graph.h"

namespace trel::smartcomp {
class Aggregation;
class SmartComponent;
}  // namespace trel::smartcomp

namespace trel::bench {

constexpr unsigned cellId = 10;        // the aggregation around all
constexpr unsigned firstNodeId = 100;  // its children count on from here

/// The ids of what each child has.
constexpr unsigned input = 1, output = 2, text = 1;

/// Registers the types of the benchmarks and opens the station, once.
void openStation();

smartcomp::SmartComponent& node(unsigned number);

/// The graph as children of one aggregation in the station: each hands what
/// reaches its input on to its output, as an int while the simulation runs and as
/// any value while the station is edited; a text it hands on framed. Of lamps, those that
/// send to nobody keep what reaches them and do not react.
class StationNet {
public:
    enum class Of { Connections, Lamps, Pulses, Bindings };

    StationNet(const Graph& graph, Of of);
    ~StationNet();
    StationNet(const StationNet&) = delete;
    StationNet& operator=(const StationNet&) = delete;

    smartcomp::Aggregation& cell() const { return cell_; }

private:
    const unsigned nodes_;
    smartcomp::Aggregation& cell_;
};

}  // namespace trel::bench
