#include <fmt/ostream.h>

#include <algorithm>
#include <charconv>
#include <memory>
#include <set>
#include <string>

#include "host/Commands.h"
#include "host/Edges.h"
#include "host/Edit.h"
#include "host/Members.h"
#include "host/Objects.h"
#include "host/Tree.h"
#include "platform/station/Station.h"
#include "smartcomp/Lifecycle.h"
#include "smartcomp/StationLogic.h"

namespace trel::host {

namespace {

using smartcomp::Aggregation;
using smartcomp::Connection;
using smartcomp::SmartComponent;
using smartcomp::StationLogic;

struct ObjectOptions {
    EditOptions edit;
    std::vector<std::string> names;
    std::string newName;
};

// Those of an aggregation that goes, too, go with it.
void disconnect(const std::function<bool(const Connection&)>& suit, std::ostream& out,
                const std::set<unsigned>& gone = {}) {
    for (const Edge& edge : edgesThat(suit)) {
        if (gone.contains(edge.owner)) continue;
        fmt::print(out, "{} is deleted: {}\n",
                   connectionOf(edge).isBinding() ? "binding" : "connection",
                   endsOf(connectionOf(edge)));
        ownerOf(edge).deleteConnection(edge.id);
    }
}

// The ids of a component and of all that it contains, each behind what contains it.
std::vector<unsigned> withContents(unsigned id) {
    const Tree tree;
    std::vector<unsigned> all = {id};
    for (std::size_t i = 0; i != all.size(); ++i)
        for (const unsigned child : tree.children(all[i])) all.push_back(child);
    return all;
}

// Texts that name what goes would keep the station from being loaded.
void clearReferences(const std::set<unsigned>& gone, std::ostream& out) {
    for (const SmartComponent* const component : componentsNow()) {
        if (gone.contains(component->id())) continue;
        for (const auto& [id, property] : component->getProperties()) {
            unsigned object = 0;
            const std::string& text = property->value();
            std::from_chars(text.data(), text.data() + text.size(), object);
            if (!property->isObjectId() || !gone.contains(object)) continue;
            fmt::print(out, "{} named {} and is 0\n",
                       pathOf(Member{component->id(), Member::Kind::Property, id}), pathOf(object));
            property->setValue("0");
        }
    }
}

void clearRoles(const std::set<unsigned>& gone, std::ostream& out) {
    for (SmartComponent* const component : componentsNow())
        if (auto* const owner = dynamic_cast<Aggregation*>(component);
            owner && gone.contains(owner->getRoleObject())) {
            fmt::print(out, "the role object of {} was {} and is 0\n", pathOf(owner->id()),
                       pathOf(owner->getRoleObject()));
            owner->setRoleObject(0);
        }
}

// Takes out diagram positions of what is no child, and a child's second one; the
// library leaves them where they are. So it does with a second line "child".
void tidy(std::ostream& out) {
    for (const SmartComponent* const component : componentsNow()) {
        std::set<unsigned> positioned;
        for (const auto& xy : component->element()->children("xy")) {
            const auto child =
                static_cast<unsigned>(std::clamp(xy->asVec3("").x, 0.0, 4294967295.0));
            const auto* const object = objectOf(child);
            const bool isChild = component->hasObjChild(child) && object;
            if (isChild && positioned.insert(child).second) continue;
            fmt::print(out, "a diagram position of {} in {} is taken out\n", pathOf(child),
                       pathOf(component->id()));
            xy->removeFromParent();
        }
        std::set<unsigned> listed;
        for (const auto& child : component->element()->children("child"))
            if (!objectOf(child->asUInt("")) || !listed.insert(child->asUInt("")).second)
                child->removeFromParent();
    }
}

void removeComponent(unsigned id, std::ostream& out) {
    if (id == StationLogic::inst()->id())
        throw Failure(ExitCode::Usage, "the station logic cannot be removed; remove what it "
                                       "contains");
    const auto all = withContents(id);
    const std::set<unsigned> gone(all.begin(), all.end());
    disconnect(
        [&](const Connection& connection) {
            return gone.contains(connection.getSrcComponentId()) ||
                   gone.contains(connection.getDstComponentId());
        },
        out, gone);
    clearReferences(gone, out);
    clearRoles(gone, out);
    for (auto each = all.rbegin(); each != all.rend(); ++each) {
        fmt::print(out, "{} is removed\n", pathOf(*each));
        if (*each != id)
            smartcomp::RemoveSubSmartComponent(*each);
        else if (componentOf(id))
            smartcomp::RemoveSmartComponent(id);
        else {
            StationLogic::inst()->removeController(id);
            objectOf(id)->element()->removeFromParent();
        }
    }
}

void removeMember(const Member& member, std::ostream& out) {
    disconnect(
        [&](const Connection& connection) {
            return sourceOf(connection) == member || destinationOf(connection) == member;
        },
        out);
    fmt::print(out, "{} is removed\n", pathOf(member));
    if (const auto* const signal = controllerSignalOf(member))
        return signal->element->removeFromParent();
    SmartComponent& component = *componentOf(member.object);
    if (member.kind == Member::Kind::Signal) return component.deleteSignal(member.id);
    // The library leaves the element of a property where it is.
    const auto element = propertyOf(member)->element();
    component.deleteProperty(member.id);
    element->removeFromParent();
}

ExitCode remove(const ObjectOptions& options, std::ostream& out) {
    return edit(options.edit, out, [&](const Names& names) {
        for (const std::string& path : options.names)
            if (Names::isOfMember(path))
                removeMember(names.member(path), out);
            else
                removeComponent(names.object(path), out);
        tidy(out);
    });
}

void renameMember(const Member& member, const std::string& name) {
    if (propertyOf(member)) return propertyOf(member)->setName(name);
    if (const auto* const signal = controllerSignalOf(member))
        return signal->element->touch("name")->setValue(std::any(name));
    // A signal without a name does not take one.
    signalOf(member)->setName(name);
    if (nameOf(member) != name)
        throw Failure(ExitCode::Usage,
                      fmt::format("{} has no key \"name\" in the file; add it there",
                                  pathOf(member)));
}

ExitCode rename(const ObjectOptions& options, std::ostream& out) {
    return edit(options.edit, out, [&](const Names& names) {
        const std::string& path = options.names.front();
        std::string before;
        std::string after;
        if (Names::isOfMember(path)) {
            const Member member = names.member(path);
            before = pathOf(member);
            renameMember(member, options.newName);
            after = controllerSignalOf(member)
                        ? fmt::format("{}.{}", pathOf(member.object), quoted(options.newName))
                        : pathOf(member);
        } else {
            const unsigned id = names.object(path);
            if (id == StationLogic::inst()->id())
                throw Failure(ExitCode::Usage, "the station logic has its name; rename what it "
                                               "contains");
            before = pathOf(id);
            objectOf(id)->setName(options.newName);
            after = pathOf(id);
        }
        fmt::print(out, "{} is {}\n", before, after);
    });
}

}  // namespace

void addObjects(const CommandLine& line) {
    auto options = std::make_shared<ObjectOptions>();
    Command removal(line, "remove",
                    "Removes components with all that they contain and all their connections, or\n"
                    "signals and properties with theirs. What names them names nothing then.\n"
                    "Diagram positions that are of nothing, or doubled, go too.\n"
                    "Example: station remove station.xml Cell/Gripper Cell.Close");
    addEditOptions(removal, options->edit);
    removal.optionalArgument("NAME", options->names,
                             "What is removed; nothing but to tidy up without it");
    removal.does([options](std::ostream& out) { return remove(*options, out); });

    options = std::make_shared<ObjectOptions>();
    options->names.resize(1);
    Command renaming(line, "rename",
                     "Gives a component, controller, signal or property another name.\n"
                     "Example: station rename station.xml Cell/Gripper Hand");
    addEditOptions(renaming, options->edit);
    renaming.argument("NAME", options->names.front(), "What is renamed");
    renaming.argument("NEW", options->newName, "Its new name");
    renaming.does([options](std::ostream& out) { return rename(*options, out); });
}

}  // namespace trel::host
