#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tests/network/Model.h"
#include "tests/network/Random.h"
#include "tests/network/Script.h"

namespace network {

/// The ids of what stands in every station, and of its first component.
constexpr unsigned logicId = 2;
constexpr unsigned firstId = 10;

/// What happens in the library, in the words of the model's log.
class Recorder;

/// The same station twice: in the library and in the model. Every operation is
/// carried out in both, and everything that can be seen of it is compared.
class TwinStation {
public:
    /// A random station: groups in groups, plain components, a controller,
    /// connections and bindings all over, rings and dead ends included. With a
    /// script, its edits are made in the middle of the settings.
    TwinStation(Random& random, Model& model, Script* script = nullptr);
    ~TwinStation();
    TwinStation(const TwinStation&) = delete;
    TwinStation& operator=(const TwinStation&) = delete;

    /// One random setting or edit. Gives what differs; empty when nothing does.
    std::string act();

    /// Deletes every component, connection, signal and property, one by one and
    /// in random order, until only the bare station logic is left. Gives what
    /// differs.
    std::string takeApart();

private:
    void plan();
    Node& planNode(unsigned id, unsigned parent);
    void planMembers(Node& node);
    void planWiring(Node& group);
    Connection randomSignalConnection(const Node& group, const std::vector<unsigned>& ends);
    Connection randomBinding(const std::vector<unsigned>& ends);
    void build();
    void make(const Node& node);
    std::string carryOut(const std::string& what, const std::function<void(Model&)>& planned,
                         const std::function<void()>& operation);
    std::string tidy();
    bool leadsSomewhere(const Connection& connection) const;
    std::string grow();
    Edit wire(const Node& group, const Node& child, bool binding);
    std::vector<Edit> everyDeletion();
    std::string drive();
    std::string edit();
    std::string compare(const std::string& what, const std::string& thrown,
                        const std::string& expected);
    std::string differences() const;
    const Node& anyComponent();
    unsigned anyMember(const Node& node, bool ofTexts);

    Random& random_;
    Model& model_;
    Script* script_ = nullptr;
    unsigned nextId_ = firstId;
    std::unique_ptr<Recorder> recorder_;
};

}  // namespace network
