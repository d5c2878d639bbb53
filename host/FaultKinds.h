#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace trel::host {

/// Error: the station cannot be loaded as it stands, and nothing runs it.
/// Warning: it loads and runs, but some of it does nothing, does something else
/// than it seems to, or is lost.
enum class Severity { Error, Warning };

/// What can be wrong with a station file, as its users are told. The code stays
/// what it is from version to version.
struct FaultKind {
    std::string_view code;
    Severity severity;
    std::string_view meaning;
    std::string_view remedy;
};

inline constexpr std::array faultKinds = {
    // The text.
    FaultKind{"file-unreadable", Severity::Error, "The file cannot be read.",
              "name a file that is there and that you may read"},
    FaultKind{"not-well-formed", Severity::Error,
              "The text is not well-formed XML in UTF-8. Nothing behind that place can be read.",
              "correct the text at that place, then check again"},
    FaultKind{"id-text", Severity::Error, "An id is no number that fits into 32 bits.",
              "write a whole number from 1 to 4294967295"},
    FaultKind{"id-zero", Severity::Error, "An id is 0, which stands for no object.",
              "write a whole number from 1 to 4294967295"},
    FaultKind{"value-text", Severity::Error, "A text is no value of the type beside it.",
              "write such a value, or another type"},
    FaultKind{"value-second", Severity::Error, "An element holds two values.",
              "take one of them out"},

    // The station.
    FaultKind{"root-tag", Severity::Error, "The root element is no station.",
              "name a station file"},
    FaultKind{"station-id", Severity::Error, "The station does not have the id 1.",
              "give it id=\"1\""},
    FaultKind{"logic-twice", Severity::Error, "There is a second station logic.",
              "take one of them out, or give it another type"},
    FaultKind{"logic-id", Severity::Error, "The station logic has no id, or that of the station.",
              "give it an id from 2 on that is free"},
    FaultKind{"ids-used-up", Severity::Error,
              "The file has no station logic, and no id is left for one.",
              "add a component of type StationLogic"},

    // Objects and their members.
    FaultKind{"object-id-missing", Severity::Error, "A component or controller has no id.",
              "give it one that is free"},
    FaultKind{"object-id-twice", Severity::Error,
              "A component or controller has the id of another, or that of the station.",
              "give it one that is free"},
    FaultKind{"name-missing", Severity::Warning,
              "A component or controller has no name. Paths can only name it by its id.",
              "give it a name"},
    FaultKind{"name-twice", Severity::Warning,
              "Two components in one aggregation have the same name. Paths that name them are "
              "ambiguous.",
              "rename one of them"},
    FaultKind{"type-missing", Severity::Error, "A component has no type.",
              "add the key \"type\" with the name of its type"},
    FaultKind{"type-unknown", Severity::Error,
              "No library that is loaded brings the type of a component.",
              "load the library that does with --components, or correct the type"},
    FaultKind{"type-fails", Severity::Error,
              "The type of a component throws when it makes the component.",
              "look at its properties and signals"},
    FaultKind{"type-crashes", Severity::Error,
              "The type of a component ends the process that makes the component, or a library "
              "the one that loads it.",
              "tell who made the type; what else is wrong shows when it is mended"},
    FaultKind{"property-id-missing", Severity::Error, "A property has no id.", "give it one"},
    FaultKind{"property-id-twice", Severity::Error, "Two properties of a component have one id.",
              "give each its own"},
    FaultKind{"property-name-missing", Severity::Warning,
              "A property has no name. Paths can only name it by its id.", "give it a name"},
    FaultKind{"property-name-twice", Severity::Warning,
              "Two properties of a component have the same name.", "rename one of them"},
    FaultKind{"property-type", Severity::Error, "A property is of a type that does not exist.",
              "write ObjectId, Int32, Double, String, Bool, Vector3, Orient, ReferenceFrame, "
              "Index or Error"},
    FaultKind{"property-text", Severity::Error, "The text of a property is no value of its type.",
              "write such a value"},
    FaultKind{"property-empty", Severity::Warning,
              "A property whose type needs a value holds none.", "write a value"},
    FaultKind{"property-refused", Severity::Error,
              "The component's type cannot use the text of a property.",
              "write what its description says"},
    FaultKind{"object-id-text", Severity::Error,
              "The text of an ObjectId property is no object id.", "write a number, 0 for none"},
    FaultKind{"object-id-empty", Severity::Warning,
              "An ObjectId property is empty: who asks for its object fails.",
              "write a number, 0 for none"},
    FaultKind{"object-id-unknown", Severity::Error,
              "An ObjectId property names an object that is not there.", "name one that is, or 0"},
    FaultKind{"object-id-refused", Severity::Warning,
              "An ObjectId property names an object that the destination of a binding refuses.",
              "name an object that it takes, or delete the binding"},
    FaultKind{"signal-id-missing", Severity::Error, "A signal has no id.", "give it one"},
    FaultKind{"signal-id-twice", Severity::Error, "Two signals of one owner have one id.",
              "give each its own"},
    FaultKind{"signal-name-missing", Severity::Warning,
              "A signal has no name. Paths can only name it by its id, and it cannot be renamed.",
              "add the key \"name\""},
    FaultKind{"signal-name-twice", Severity::Warning, "Two signals of one owner have one name.",
              "rename one of them"},
    FaultKind{"signal-name-text", Severity::Error, "The name of a signal is no text.",
              "write it as string=\"...\""},
    FaultKind{"signal-type", Severity::Warning,
              "A signal is of a type that does not exist. It counts as a group output.",
              "write DigitalInput, DigitalOutput, AnalogInput, AnalogOutput, GroupInput or "
              "GroupOutput"},
    FaultKind{"controller-signal-type", Severity::Error,
              "A signal of a controller is of a type that does not exist.",
              "write DigitalInput, DigitalOutput, AnalogInput, AnalogOutput, GroupInput or "
              "GroupOutput"},

    // Keys.
    FaultKind{"value-unreadable", Severity::Error,
              "A key holds a value that cannot be read as what it is for.", "write such a value"},
    FaultKind{"value-type", Severity::Warning,
              "A key holds its value in another type than the one it is written in.",
              "write it in that type"},
    FaultKind{"key-twice", Severity::Warning, "A key stands twice. Only the first counts.",
              "take one of them out"},
    FaultKind{"element-unknown", Severity::Warning,
              "An element stands where nothing reads it. It is kept as it is.",
              "correct its tag, or leave it to the program that wrote it"},
    FaultKind{"attribute-unknown", Severity::Warning,
              "An attribute stands where nothing reads it. It is kept as it is.",
              "correct its name, or leave it to the program that wrote it"},
    FaultKind{"text-unknown", Severity::Warning,
              "Text stands where nothing reads it. It is kept as it is.", "make it a comment"},

    // What contains what.
    FaultKind{"parent-missing", Severity::Error, "A component names no parent.",
              "add the key \"parent\" with the id of the component that contains it, or of the "
              "station logic"},
    FaultKind{"parent-unknown", Severity::Error, "The parent of a component is no component.",
              "name the component that contains it, or the station logic"},
    FaultKind{"parent-no-aggregation", Severity::Error,
              "The parent of a component cannot contain components.",
              "name an aggregation, or the station logic"},
    FaultKind{"parent-ring", Severity::Error, "A component contains itself by way of its parents.",
              "give it a parent outside"},
    FaultKind{"child-unknown", Severity::Error, "An aggregation lists a child that is not there.",
              "take the line out"},
    FaultKind{"child-twice", Severity::Warning, "An aggregation lists a child twice.",
              "take one of the lines out"},
    FaultKind{"child-nowhere", Severity::Warning,
              "The parent of a component does not list it as a child.",
              "add a line \"child\" with its id to its parent"},
    FaultKind{"child-elsewhere", Severity::Warning,
              "An aggregation lists a child whose parent is another.",
              "take the line out, or correct the parent of the child"},
    FaultKind{"role-object-unknown", Severity::Warning,
              "The role object of an aggregation is not there.", "name one that is, or 0"},
    FaultKind{"xy-twice", Severity::Warning,
              "An aggregation has two diagram positions for one child. The first counts.",
              "take one of them out"},
    FaultKind{"xy-no-child", Severity::Warning,
              "An aggregation has a diagram position for what is no child of it.", "take it out"},

    // Connections and bindings.
    FaultKind{"connection-id-missing", Severity::Error, "A connection has no id.", "give it one"},
    FaultKind{"connection-id-twice", Severity::Warning,
              "Two connections of an aggregation have one id. The later is loaded alone.",
              "give each its own, or take out the one that was deleted"},
    FaultKind{"connection-twice", Severity::Warning,
              "Two connections of an aggregation have the same ends. What they carry arrives "
              "twice.",
              "delete one of them"},
    FaultKind{"index-type", Severity::Error, "The index of a connection is no place.",
              "write it as uint=\"...\", or take it out for a binding"},
    FaultKind{"index-empty", Severity::Warning,
              "The index of a connection holds nothing. The connection counts as a binding.",
              "write a place, or take the key out"},
    FaultKind{"index-too-large", Severity::Error,
              "The index of a connection is beyond 2147483647, where it counts as none.",
              "write the place that the connection has in the order"},
    FaultKind{"index-gap", Severity::Warning,
              "No connection has an index that lies between others. Those behind it are "
              "renumbered.",
              "number the connections of an aggregation from 0 without gaps"},
    FaultKind{"index-twice", Severity::Warning,
              "Two connections of an aggregation have one index, as that of a deleted connection "
              "that stayed behind. They are renumbered.",
              "give each its own, or take out the one that was deleted"},
    FaultKind{"end-unreadable", Severity::Error,
              "An end of a connection is missing, or is no number.",
              "write it as uint64=\"...\": the id of the component times 4294967296 plus that of "
              "its signal or property"},
    FaultKind{"end-no-component", Severity::Error,
              "An end of a connection names a component that is not there.",
              "name one that is, or delete the connection"},
    FaultKind{"end-no-signal", Severity::Error,
              "An end of a signal connection names a signal that its component does not have.",
              "name one that it has, or delete the connection"},
    FaultKind{"end-no-property", Severity::Error,
              "An end of a binding names a property that its component does not have.",
              "name one that it has, or delete the binding"},
    FaultKind{"end-not-sibling", Severity::Warning,
              "An end of a connection is neither in the aggregation that holds the connection nor "
              "the aggregation itself.",
              "move the connection to the aggregation that contains both ends, or lead it there "
              "by signals of the aggregations between"},
    FaultKind{"source-is-input", Severity::Warning,
              "A connection begins at an input of a child: it never carries anything.",
              "begin at what drives that input"},
    FaultKind{"source-is-own-output", Severity::Warning,
              "A connection begins at an output of the aggregation that holds it: it never "
              "carries anything.",
              "begin at what drives that output"},
    FaultKind{"destination-is-output", Severity::Warning,
              "A connection ends at an output of a child, which the child itself is to set.",
              "end at an input"},
    FaultKind{"destination-is-own-input", Severity::Warning,
              "A connection ends at an input of the aggregation that holds it, which is to be set "
              "from outside.",
              "end at what that input drives"},
    FaultKind{"signal-classes", Severity::Warning,
              "A digital signal is connected with an analog or group signal.",
              "put a conversion between them"},
    FaultKind{"binding-types", Severity::Warning,
              "A binding leads to a property whose type cannot hold what comes.",
              "bind properties of one type"},
    FaultKind{"loop", Severity::Warning,
              "Signals drive each other in a ring, if every input drives every output of its "
              "component. The guard of an output ends it: quietly when the same value comes "
              "back, else with event \"10008\".",
              "break the ring, or make sure that what comes back is the same value"},
    FaultKind{"loop-unguarded", Severity::Warning,
              "Inputs of aggregations drive each other in a ring. No guard ends it: a value goes "
              "round until the stack is used up.",
              "break the ring"},
    FaultKind{"binding-ring", Severity::Warning,
              "Properties drive each other in a ring, and none of their types frames its "
              "settings. No guard ends it: a value goes round until the stack is used up.",
              "break the ring, or have one of the types frame its settings"},
    FaultKind{"pulse-multiplies", Severity::Warning,
              "A pulse reaches an input that makes pulses itself: each of its two values becomes "
              "a pulse of its own.",
              "let only the first of them reset itself"},
};

/// One of the kinds, by its code; a code that is none does not compile.
class FaultCode {
public:
    consteval FaultCode(const char* code) : index_(indexOf(code)) {}

    const FaultKind& kind() const { return faultKinds[index_]; }
    const FaultKind* operator->() const { return &kind(); }
    friend bool operator==(FaultCode, FaultCode) = default;

    /// The kind at a place of the table.
    static FaultCode at(std::size_t index) { return FaultCode(index); }
    std::size_t index() const { return index_; }

private:
    explicit FaultCode(std::size_t index) : index_(index) {}

    static consteval std::size_t indexOf(std::string_view code) {
        for (std::size_t i = 0; i != faultKinds.size(); ++i)
            if (faultKinds[i].code == code) return i;
        throw "no such code";
    }

    std::size_t index_;
};

}  // namespace trel::host
