#pragma once

#include <string>
#include <variant>

/// What somebody else's code does to a station in the middle of a delivery, on
/// plain data.
namespace network {

using Value = std::variant<int, double>;

/// Where that code is called: by a plain component's reaction to a dynamic
/// input, in a framed component's setting of a text, by the question whether an
/// object suits a property, by a listener's notice.
enum class Place { Reaction, Override, Question, Listener, Count };

/// The walk on which that happens, the innermost one; none when a setting has
/// not begun to send.
enum class WalkKind {
    None,
    StaticOut,
    StaticIn,
    DynamicOut,
    DynamicIn,
    BindingOut,
    BindingIn,
    Count
};

/// What an edit does to the walks under way.
enum class EditRule {
    DeletedGetsNothing,
    ModifiedBeginsElsewhere,
    ModifiedBeginsHere,
    GoneDestinationIsPassedOver,
    PulseLosesItsDestination,
    PulseLosesItsSource,
    SourceEndsWalk,
    GroupEndsWalk,
    NothingSentFromGoneSource,
    NothingSentIntoGoneGroup,
    NothingSentInwards,
    RefusedAndGone,
    AcceptedAndGone,
    Count
};

enum class EditKind {
    DeleteConnection,
    DeleteBinding,
    AddConnection,
    AddBinding,
    Move,
    ModifyConnection,
    ModifyBinding,
    DeleteSignal,
    DeleteProperty,
    RemoveSender,
    RemoveDestination,
    RemoveSibling,
    RemoveParent,
    RemoveGrandparent,
    SetSame,
    SetOther,
    Count
};

struct Connection {
    unsigned srcComponent = 0;
    unsigned src = 0;
    unsigned dstComponent = 0;
    unsigned dst = 0;
    int index = -1;  // negative in a binding
    // No two connections of a model have the same, also where a later one takes
    // the id of a deleted one.
    unsigned long serial = 0;
};

/// One edit, with everything that it needs.
struct Edit {
    EditKind kind;
    /// The aggregation whose connections are edited, or the component that is
    /// edited, set or removed.
    unsigned component = 0;
    /// The connection, signal or property.
    unsigned member = 0;
    Connection ends{};        // of what is added or modified
    int step = 0;             // of a move
    bool tellsParent = true;  // RemoveSmartComponent, not RemoveSubSmartComponent
    enum class Path { Static, Dynamic, Text } path = Path::Static;
    Value value{};
    std::string text{};
};

}  // namespace network
