#include <benchmark/benchmark.h>

#include <QProperty>
#include <memory>
#include <string>
#include <vector>

#include "bench/Counter.h"
#include "bench/Graph.h"
#include "bench/Peers.h"
#include "bench/Station.h"
#include "bench/Work.h"
#include "smartcomp/Property.h"
#include "smartcomp/SmartComponent.h"

// Texts of twelve characters along bindings: ours, and a chain of Qt's properties.

namespace trel::bench {
namespace {

const std::string texts[] = {"twelve chars", "another text"};

// Writes the text into its element and tells the broker, as ours does, and is found
// through the object table.
class TextNode : public DocumentObject {
public:
    explicit TextNode(unsigned id) : DocumentObject(id, textElement(id)) {}

    void keep(const std::string& value) {
        element()->setValueFromString(value);
        value_ = element()->getStringFromValue();
    }
    void tell() { broker::SignalBroker::scPropertyValueChanged(text, id()); }
    const std::string& value() const { return value_; }

private:
    std::string value_;
};

class GraphTextNode : public TextNode {
public:
    using TextNode::TextNode;

    virtual void receive(const std::string& value) {
        if (value == this->value()) return;
        keep(value);
        tell();
        for (const unsigned link : links_) follow<GraphTextNode>(link).receive(value);
    }
    void connectTo(GraphTextNode& to) { links_.push_back(to.id()); }
    void set(const std::string& value) { receive(value); }

private:
    std::vector<unsigned> links_;
};

class QtTextNode : public TextNode {
public:
    explicit QtTextNode(unsigned id) : TextNode(id) {}

    void connectTo(QtTextNode& to) {
        to.property_.setBinding([from = id()] {
            return follow<QtTextNode>(from).property_.value();
        });
    }
    void set(const std::string& value) { property_ = value; }

private:
    void changed() {
        keep(property_.value());
        tell();
    }

    QProperty<std::string> property_;
    QPropertyNotifier notifier_ = property_.addNotifier([this] { changed(); });
};

template <typename Set>
void measure(benchmark::State& state, unsigned hops, const Set& set) {
    const Counter listener;
    std::size_t round = 0;
    set(texts[++round % 2]);
    if (listener.told != hops + 1) return state.SkipWithError("not every node was reached");
    for (auto _ : state) set(texts[++round % 2]);
    state.SetItemsProcessed(std::int64_t{hops} * state.iterations());
}

constexpr unsigned hops = 1000;

void ours(benchmark::State& state) {
    const StationNet net(chain(hops), StationNet::Of::Bindings);
    auto& first = node(0);
    measure(state, hops, [&](const std::string& value) { first.setPropertyValue(text, value); });
}

template <typename Node>
void peer(benchmark::State& state) {
    std::vector<std::unique_ptr<Node>> nodes;
    for (unsigned i = 0; i != hops + 1; ++i)
        nodes.push_back(std::make_unique<Node>(firstPeerId + i));
    for (unsigned i = 0; i != hops; ++i) nodes[i]->connectTo(*nodes[i + 1]);
    measure(state, hops, [&](const std::string& value) { nodes.front()->set(value); });
    // From the last to the first: a binding reads the one before.
    while (!nodes.empty()) nodes.pop_back();
}

BENCHMARK(ours)->Name("property chain/ours");
BENCHMARK(peer<GraphTextNode>)->Name("property chain/graph");
BENCHMARK(peer<QtTextNode>)->Name("property chain/Qt properties");

}  // namespace
}  // namespace trel::bench
