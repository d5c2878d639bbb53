#pragma once

#include <array>
#include <cstddef>
#include <map>
#include <string>
#include <unordered_map>
#include <utility>
#include <variant>
#include <vector>

#include "tests/network/Edit.h"

/// The rules of value flow written down a second time, small and slow, on plain
/// data: what the library has to do with a station, step by step. It shares no
/// code with the library.
namespace network {

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
    // The children that the aggregation was told of, in the order of telling.
    std::vector<unsigned> children;
    // The same kind of table as the library's, filled in the same order: its
    // iteration order is that of the bindings.
    std::unordered_map<unsigned, Connection> connections;
    std::vector<unsigned> order;
    std::map<unsigned, Value> settingSignals;
    std::map<unsigned, std::string> settingTexts;
    // What was taken out while a setting is under way, which may still use it.
    std::multimap<unsigned, Signal> goneSignals;
    std::multimap<unsigned, Property> goneProperties;
    bool removed = false;

    bool isAggregation() const {
        return kind == Kind::Group || kind == Kind::UserGroup || kind == Kind::Logic;
    }
};

/// What the document makes of a text in a property that holds a number; empty
/// text where it refuses. The only texts that the test writes there.
const std::map<std::string, std::string>& numberTexts();

std::string show(const Value& value);

class Model;

/// Somebody else's code, called by the model wherever the library calls a
/// component type or a listener.
class Outsider {
public:
    virtual ~Outsider() = default;
    virtual void called(Model& model, Place place, Node& node) = 0;
};

/// One delivery along the connections or bindings of a group that begin at one
/// end, and what it is serving.
struct Walk {
    WalkKind kind = WalkKind::None;
    Node* group = nullptr;
    unsigned component = 0;
    unsigned member = 0;
    Connection serving;
};

/// The rules for edits in the middle of a delivery: a walk serves what stood in
/// its group when it began, in that order, each at most once, with the ends that
/// it has when its turn comes; what was deleted by then, or no longer begins at
/// the walk's source, gets nothing. A destination that was removed since the walk
/// began is passed over. The walk ends when its source or its group is removed.
class Model {
public:
    std::map<unsigned, Node> nodes;
    std::vector<std::string> log;
    std::array<std::size_t, static_cast<std::size_t>(Rule::Count)> reached{};
    std::array<std::size_t, static_cast<std::size_t>(EditRule::Count)> met{};

    void setStatic(unsigned component, unsigned signal, Value value);
    void handleSignal(unsigned component, unsigned signal, int value);
    void setText(unsigned component, unsigned property, const std::string& text);

    // Edits of the order; false where the library throws "invalid vector
    // subscript".
    void connect(Node& group, unsigned id, Connection connection);
    void disconnect(Node& group, unsigned id);
    bool move(Node& group, unsigned id, int step);

    void deleteSignal(Node& node, unsigned id);
    void deleteProperty(Node& node, unsigned id);
    void remove(unsigned component, bool tellsParent);
    void apply(const Edit& edit);

    unsigned long nextSerial() { return ++serials_; }

    /// Asked wherever the library calls somebody else's code; may be null.
    Outsider* outsider = nullptr;

    /// The walks under way, the innermost last; a setting that an edit began
    /// stands between them as one without a group.
    std::vector<Walk> walks;

private:
    class Deeper;
    class Walking;
    Node& object(unsigned id);
    Node& component(unsigned id);
    Node& group(unsigned id);
    Signal& signal(Node& node, unsigned id);
    Property& property(Node& node, unsigned id);
    void store(Node& node, unsigned id, Value value);
    void notifySignal(Node& node, unsigned id);
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
    void set(const Edit& edit);
    void step();
    void meet(EditRule rule) { ++met[static_cast<std::size_t>(rule)]; }
    void reach(Rule rule) { ++reached[static_cast<std::size_t>(rule)]; }
    [[noreturn]] void fail(Rule rule, const std::string& what);

    void call(Place place, Node& node);
    bool lostComponent(unsigned component, std::size_t since) const;
    bool isCutOff(WalkKind kind, const Node& node, unsigned member, std::size_t began);
    bool lostMember(WalkKind kind, unsigned component, unsigned member, std::size_t since) const;
    void forgetTheGone();

    // Calls `deliver` with each connection or binding from that end which the
    // walk serves, in order.
    template <typename Deliver>
    void along(WalkKind kind, Node& group, unsigned component, unsigned member,
               const Deliver& deliver);
    // A pulse for an auto-reset signal: once begun it is finished, as long as
    // both ends are there.
    template <typename Deliver>
    void pulseAlong(WalkKind kind, Node& group, const Node& source, const Signal& signal,
                    unsigned id, Value value, const Deliver& deliver);

    std::size_t steps_ = 0;
    std::size_t depth_ = 0;
    unsigned long serials_ = 0;
    // When what was removed last; the key is a component and a member, 0 for the
    // component itself.
    using Member = std::pair<unsigned, unsigned>;
    std::size_t clock_ = 0;
    std::map<unsigned, std::size_t> componentLost_;
    std::map<Member, std::size_t> signalLost_;
    std::map<Member, std::size_t> propertyLost_;
    std::multimap<unsigned, Node> gone_;
};

}  // namespace network
