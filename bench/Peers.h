#pragma once

#include <sigc++/signal.h>

#include <boost/signals2/signal.hpp>
#include <memory>
#include <vector>

#include "bench/Graph.h"
#include "bench/QtOut.h"

/// The nodes that a developer would write around other ways of wiring.
namespace trel::bench {

/// The ids of the peers' nodes in the object table start here.
constexpr unsigned firstPeerId = 1'000'000;

/// One node: `Work` is what it does (see Work.h), `Wire` how it sends.
template <typename Work, template <typename> typename Wire>
class PeerNode : public Work {
public:
    PeerNode(unsigned id, bool pulses) : Work(id), pulses_(pulses) {}

    virtual void receive(int value) { react(value); }

    void react(int value) {
        const int old = this->value();
        if (value == old) return;
        this->keep(value);
        if (pulses_) this->keep(old);
        this->tell();
        wire_.send(value);
        if (pulses_) wire_.send(0);
    }

    void connectTo(PeerNode& to) { wire_.connect(to.link()); }

private:
    const bool pulses_;
    Wire<PeerNode> wire_;
};

/// Links, and a virtual call along each.
template <typename Node>
class GraphWire {
public:
    void connect(typename Node::Link link) { links_.push_back(link); }
    void send(int value) {
        for (const auto link : links_) Node::template follow<Node>(link).receive(value);
    }

private:
    std::vector<typename Node::Link> links_;
};

template <typename Node>
auto slotTo(typename Node::Link link) {
    return [link](int value) { Node::template follow<Node>(link).react(value); };
}

template <typename Node>
class SigcWire {
public:
    void connect(typename Node::Link link) { signal_.connect(slotTo<Node>(link)); }
    void send(int value) { signal_.emit(value); }

private:
    sigc::signal<void(int)> signal_;
};

template <typename Node>
class BoostWire {
public:
    void connect(typename Node::Link link) { signal_.connect(slotTo<Node>(link)); }
    void send(int value) { signal_(value); }

private:
    boost::signals2::signal<void(int)> signal_;
};

template <typename Node>
class QtWire {
public:
    void connect(typename Node::Link link) {
        QObject::connect(&out_, &QtOut::sent, &out_, slotTo<Node>(link));
    }
    void send(int value) { out_.send(value); }

private:
    QtOut out_;
};

/// A graph of peer nodes.
template <typename Node>
class PeerNet {
public:
    PeerNet(const Graph& graph, bool pulses) {
        for (unsigned i = 0; i != graph.nodes; ++i)
            nodes_.push_back(std::make_unique<Node>(firstPeerId + i, pulses));
        for (const auto& [from, to] : graph.edges) nodes_[from]->connectTo(*nodes_[to]);
    }

    void set(int value) { nodes_.front()->receive(value); }
    int reached() const { return nodes_.back()->value(); }

private:
    std::vector<std::unique_ptr<Node>> nodes_;
};

}  // namespace trel::bench
