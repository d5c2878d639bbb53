#pragma once

#include <memory>
#include <random>
#include <string>
#include <vector>

#include "tests/network/Model.h"

namespace network {

/// Numbers that are the same everywhere for one seed.
class Random {
public:
    explicit Random(unsigned seed) : engine_(seed) {}
    unsigned below(unsigned n) { return static_cast<unsigned>(engine_() % n); }
    bool oneIn(unsigned n) { return below(n) == 0; }
    template <typename T>
    const T& from(const std::vector<T>& choices) {
        return choices[below(static_cast<unsigned>(choices.size()))];
    }

private:
    std::mt19937 engine_;
};

/// What happens in the library, in the words of the model's log.
class Recorder;

/// The same station twice: in the library and in the model. Every operation is
/// carried out in both, and everything that can be seen of it is compared.
class TwinStation {
public:
    /// A random station: groups in groups, plain components, a controller,
    /// connections and bindings all over, rings and dead ends included.
    TwinStation(Random& random, Model& model);
    ~TwinStation();
    TwinStation(const TwinStation&) = delete;
    TwinStation& operator=(const TwinStation&) = delete;

    /// One random setting or edit. Gives what differs; empty when nothing does.
    std::string act();

private:
    void plan();
    void planMembers(Node& node);
    void planWiring(Node& group);
    Connection randomSignalConnection(const Node& group, const std::vector<unsigned>& ends);
    Connection randomBinding(const std::vector<unsigned>& ends);
    void build();
    std::string drive();
    std::string edit();
    std::string compare(const std::string& what, const std::string& thrown,
                        const std::string& expected);
    std::string differences() const;
    const Node& anyComponent();

    Random& random_;
    Model& model_;
    std::unique_ptr<Recorder> recorder_;
};

}  // namespace network
