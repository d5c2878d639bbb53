#pragma once

#include <array>
#include <cstddef>
#include <map>
#include <string>
#include <unordered_map>
#include <utility>
#include <variant>
#include <vector>

/// The rules of value flow written down a second time, small and slow, on plain
/// data: what the library has to do with a station, step by step. It shares no
/// code with the library.
namespace network {

using Value = std::variant<int, double>;

/// The rules that a random station must be seen to reach.
enum class Rule {
    StaticPulse,
    DynamicPulse,
    StaticRingEnds,
    DynamicRingEnds,
    SignalConflict,
    EqualValueSkipped,
    NestedStaticInput,
    NestedDynamicInput,
    ControllerStatic,
    ControllerDynamic,
    LogicIgnoresInput,
    LogicSendsNothing,
    BindingOutwards,
    BindingInwards,
    EqualTextSkipped,
    TextConflict,
    ObjectRefused,
    ObjectZeroIsStation,
    UnknownDestination,
    UnknownSignal,
    UnknownObject,
    NoObjectId,
    ObjectIdOutOfRange,
    NotAnObjectOfThatKind,
    OutputHoldsDouble,
    TextRefusedByDocument,
    Count
};

/// What an operation threw.
struct Thrown {
    std::string what;
};

/// An operation that would not end within reason; the station is not driven so.
struct TooMuch {};

struct Signal {
    std::string name;
    bool input = false;
    bool analog = false;  // read as a double
    bool autoReset = false;
    Value value;
};

struct Property {
    std::string name;
    bool objectId = false;
    bool holdsDouble = false;  // the document holds a number, otherwise text
    std::string text;
};

struct Connection {
    unsigned srcComponent;
    unsigned src;
    unsigned dstComponent;
    unsigned dst;
    int index;  // negative in a binding
};

/// How a component of the test answers a dynamic input: it sets an output.
struct Reaction {
    unsigned input;
    unsigned output;
    int factor;
    int offset;
};

enum class Kind { Plain, Group, UserGroup, Logic, Controller, Station };

struct Node {
    Kind kind = Kind::Plain;
    unsigned id = 0;
    unsigned parent = 0;
    std::string name;
    bool framed = false;         // a plain component that frames its settings
    bool acceptsObjects = true;  // a plain component's answer
    std::map<unsigned, Signal> signals;
    std::map<unsigned, Property> properties;
    std::vector<Reaction> reactions;
    // The same kind of table as the library's, filled in the same order: its
    // iteration order is that of the bindings.
    std::unordered_map<unsigned, Connection> connections;
    std::vector<unsigned> order;
    std::map<unsigned, Value> settingSignals;
    std::map<unsigned, std::string> settingTexts;

    bool isAggregation() const {
        return kind == Kind::Group || kind == Kind::UserGroup || kind == Kind::Logic;
    }
};

/// What the document makes of a text in a property that holds a number; empty
/// text where it refuses. The only texts that the test writes there.
const std::map<std::string, std::string>& numberTexts();

std::string show(const Value& value);

class Model {
public:
    std::map<unsigned, Node> nodes;
    std::vector<std::string> log;
    std::array<std::size_t, static_cast<std::size_t>(Rule::Count)> reached{};

    void setStatic(unsigned component, unsigned signal, Value value);
    void handleSignal(unsigned component, unsigned signal, int value);
    void setText(unsigned component, unsigned property, const std::string& text);

    // Edits of the order; false where the library throws "invalid vector
    // subscript".
    void connect(Node& group, unsigned id, const Connection& connection);
    void disconnect(Node& group, unsigned id);
    bool move(Node& group, unsigned id, int step);

private:
    Node& object(unsigned id);
    Node& component(unsigned id);
    Node& group(unsigned id);
    Signal& signal(Node& node, unsigned id);
    Property& property(Node& node, unsigned id);
    void store(Node& node, unsigned id, Value value);
    void notifySignal(const Node& node, unsigned id);
    bool isSet(Node& node, unsigned id, Value value, Rule same);
    void baseStaticInput(Node& node, unsigned id, Value value);
    void staticInput(Node& node, unsigned id, Value value);
    void staticOutput(Node& node, unsigned id, Value value);
    void deliverStatic(const Connection& connection, Value value);
    void input(Node& node, unsigned id, int value);
    void output(Node& node, unsigned id, int value);
    void deliverDynamic(const Connection& connection, int value);
    void baseSetText(Node& node, unsigned id, const std::string& text);
    bool refuses(Node& node, unsigned id, const Connection& binding, const std::string& text);
    void renumber(Node& group);
    void step();
    void reach(Rule rule) { ++reached[static_cast<std::size_t>(rule)]; }
    [[noreturn]] void fail(Rule rule, const std::string& what);

    // Calls `deliver` with each signal connection from that end, in order.
    template <typename Deliver>
    void along(Node& group, unsigned component, unsigned signal, const Deliver& deliver);

    std::size_t steps_ = 0;
    std::size_t depth_ = 0;
};

}  // namespace network
