#pragma once

#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "smartcomp/Export.h"

class QString;

namespace sdf {
class Element;
}
namespace trel::visual {
class Visual;
}

namespace trel::smartcomp {

class Roster;
class SmartComponent;

/// The registry of component types, and the list of all components that were
/// ever made. It stores and finds; the functions of Lifecycle.h call.
class TREL_API Manager {
public:
    /// Makes a component from an element: the one registered for creating gets
    /// an element that is whole, the one for building a new element with id,
    /// name, "type" and "parent", to which it adds what the type starts with.
    /// The result is not in the object table yet.
    using MakeFunction = SmartComponent* (*)(std::shared_ptr<sdf::Element>);
    using VisualFunction = void (*)(visual::Visual*, SmartComponent*);
    using DescFunction = QString (*)();

    /// The one registry, made on the first call, from any thread, and destroyed
    /// at exit.
    static Manager* inst();

    /// Registers a component type, before components are made. `name` is kept as
    /// it is and must live as long as the process. A name that is known already
    /// keeps the functions that it has. `desc` may be null.
    void registerType(std::string_view name, MakeFunction create, MakeFunction build,
                      DescFunction desc);

    /// Registers how a type is dressed; the same rules hold.
    void registerVisualType(std::string_view name, VisualFunction visual);

    struct Type {
        std::string_view name;
        DescFunction description;  // null if it was registered without
    };
    /// The registered types in the order of their names.
    std::vector<Type> types() const;

private:
    struct State;

    Manager();
    ~Manager();
    Manager(const Manager&) = delete;
    Manager& operator=(const Manager&) = delete;

    DescFunction getDescFunc(std::string_view name) const;

    // What Lifecycle.h needs; a name that is not known throws as getDescFunc does.
    friend SmartComponent* Create(std::shared_ptr<sdf::Element>);
    friend SmartComponent* Build(const std::string&, unsigned, const std::string&, unsigned);
    friend const std::list<SmartComponent*>& GetAllSmartComponents();
    friend void BuildVisual(SmartComponent*, visual::Visual*);
    MakeFunction getCreateFunc(std::string_view name) const;
    MakeFunction getBuildFunc(std::string_view name) const;
    VisualFunction getVisualFunc(std::string_view name) const;
    Roster& roster();

    std::unique_ptr<State> state_;
};

}  // namespace trel::smartcomp
