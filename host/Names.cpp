#include "host/Names.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <utility>

#include "host/Controller.h"
#include "host/Members.h"
#include "host/Objects.h"
#include "smartcomp/StationLogic.h"

namespace trel::host {

namespace {

using smartcomp::SmartComponent;
using smartcomp::StationLogic;

constexpr std::string_view special = "/.#\"\\";

// The number in "#5"; empty for any other step.
std::optional<unsigned> idIn(std::string_view step) {
    if (!step.starts_with('#')) return std::nullopt;
    unsigned id = 0;
    const char* const end = step.data() + step.size();
    const auto [stop, error] = std::from_chars(step.data() + 1, end, id);
    if (error != std::errc{} || stop != end) return std::nullopt;
    return id;
}

// A step as a name: without its quotes, if it has any.
std::string nameIn(std::string_view step) {
    if (!step.starts_with('"')) return std::string(step);
    std::string name;
    for (std::size_t i = 1; i + 1 < step.size(); ++i) {
        if (step[i] == '\\') ++i;
        name += step[i];
    }
    return name;
}

// The length of the step that `text` begins with, quotes included.
std::size_t stepLength(std::string_view text, std::string_view path) {
    if (!text.starts_with('"')) return std::min(text.find_first_of("/."), text.size());
    for (std::size_t i = 1; i < text.size(); ++i) {
        if (text[i] == '\\')
            ++i;
        else if (text[i] == '"')
            return i + 1;
    }
    throw NameError(fmt::format("the name in quotes in {} has no end; close it with \"", path));
}

struct Path {
    std::vector<std::string_view> steps;  // to the component
    std::string_view member;
};

Path split(std::string_view path) {
    Path result;
    std::string_view rest = path;
    while (true) {
        const std::size_t length = stepLength(rest, path);
        if (length == 0)
            throw NameError(fmt::format("{} has an empty name; write \"\" for a name that is "
                                        "empty",
                                        path));
        result.steps.push_back(rest.substr(0, length));
        rest.remove_prefix(length);
        if (rest.empty() || (rest[0] != '/' && rest[0] != '.')) break;
        const bool last = rest[0] == '.';
        rest.remove_prefix(1);
        if (!last) continue;
        result.member = rest.substr(0, stepLength(rest, path));
        rest.remove_prefix(result.member.size());
        break;
    }
    if (!rest.empty())
        throw NameError(fmt::format("\"{}\" in {} does not belong to a name; put names with "
                                    "special characters in quotes",
                                    rest, path));
    return result;
}

std::string kindName(Member::Kind kind) {
    return kind == Member::Kind::Signal ? "signal" : "property";
}

// "Cell/Gripper.signal#3 (Close)": a path that means this member alone.
std::string surePath(const Member& member) {
    return fmt::format("#{}.{}#{} ({})", member.object, kindName(member.kind), member.id,
                       pathOf(member));
}

std::vector<Member> membersLike(unsigned objectId, std::string_view step) {
    std::optional<Member::Kind> kind;
    for (const auto candidate : {Member::Kind::Signal, Member::Kind::Property})
        if (const std::string prefix = kindName(candidate); step.starts_with(prefix + '#')) {
            kind = candidate;
            step.remove_prefix(prefix.size());
            break;
        }
    const auto id = idIn(step);
    const std::string name = nameIn(step);
    std::vector<Member> found;
    for (const Member& member : membersOf(objectId))
        if ((!kind || *kind == member.kind) && (id ? member.id == *id : nameOf(member) == name))
            found.push_back(member);
    return found;
}

}  // namespace

std::string quoted(const std::string& name) {
    const bool plain = !name.empty() && name.find_first_of(special) == std::string::npos &&
                       name.front() != ' ' && name.back() != ' ';
    if (plain) return name;
    std::string text = "\"";
    for (const char c : name) {
        if (c == '"' || c == '\\') text += '\\';
        text += c;
    }
    return text + '"';
}

std::string pathOf(unsigned objectId) {
    std::string path;
    for (unsigned names = 0; names != mostNames; ++names) {
        const sdf::SdfObject* const object = objectOf(objectId);
        if (!object) break;
        path.insert(0, quoted(object->name()));
        const auto* const component = dynamic_cast<const SmartComponent*>(object);
        if (!component || component->isStationLogic() || component->isTopLevel()) return path;
        objectId = component->getObjParentId();
        path.insert(0, "/");
    }
    return fmt::format("#{}{}", objectId, path);
}

std::string pathOf(const Member& member) {
    const auto name = nameOf(member);
    return fmt::format("{}.{}", pathOf(member.object),
                       name ? quoted(*name) : fmt::format("#{}", member.id));
}

Names::Names() {
    const unsigned logic = StationLogic::inst()->id();
    children_.emplace(logic, logic);  // found beside what it contains
    for (const SmartComponent* const component : componentsNow())
        if (!component->isStationLogic())
            children_.emplace(component->getObjParentId(), component->id());
    for (const Controller* const controller : controllersNow())
        children_.emplace(logic, controller->id());
}

Member Names::member(std::string_view path) const {
    const Path parts = split(path);
    if (parts.member.empty())
        throw NameError(fmt::format("{} names no signal or property; write one behind a point, as "
                                    "in Cell/Gripper.Close",
                                    path));
    const unsigned owner = object(parts.steps, path);
    const auto found = membersLike(owner, parts.member);
    if (found.size() == 1) return found.front();

    if (found.empty()) {
        std::string known;
        for (const Member& member : membersOf(owner))
            known += (known.empty() ? "" : ", ") + quoted(nameOf(member).value_or(""));
        throw NameError(fmt::format("{} has no signal or property {}; it has {}", pathOf(owner),
                                    parts.member, known.empty() ? "none at all" : known));
    }
    std::string candidates;
    for (const Member& member : found)
        candidates += (candidates.empty() ? "" : ", ") + surePath(member);
    throw NameError(fmt::format("{} is ambiguous; write one of {}", path, candidates));
}

unsigned Names::object(std::string_view path) const {
    const Path parts = split(path);
    if (!parts.member.empty())
        throw NameError(fmt::format("{} names a signal or property; write the path of a component, "
                                    "as in Cell/Gripper",
                                    path));
    return object(parts.steps, path);
}

bool Names::isOfMember(std::string_view path) { return !split(path).member.empty(); }

unsigned Names::object(const std::vector<std::string_view>& steps, std::string_view path) const {
    unsigned here = StationLogic::inst()->id();
    for (const std::string_view step : steps) {
        const auto found = childrenLike(here, step);
        if (found.size() > 1) {
            std::string candidates;
            for (const unsigned id : found)
                candidates +=
                    fmt::format("{}#{} ({})", candidates.empty() ? "" : ", ", id, pathOf(id));
            throw NameError(fmt::format("{} is ambiguous in {}; write one of {} for it", step, path,
                                        candidates));
        }
        if (found.empty())
            throw NameError(fmt::format("there is no {} {}; see the names with station show", step,
                                        here == StationLogic::inst()->id() ? "in the station"
                                                                           : "in " + pathOf(here)));
        here = found.front();
    }
    return here;
}

// An id means the object wherever it is.
std::vector<unsigned> Names::childrenLike(unsigned parent, std::string_view step) const {
    if (const auto id = idIn(step))
        return objectOf(*id) ? std::vector{*id} : std::vector<unsigned>{};
    const std::string name = nameIn(step);
    std::vector<unsigned> found;
    const auto [begin, end] = children_.equal_range(parent);
    for (auto child = begin; child != end; ++child)
        if (const auto* const object = objectOf(child->second); object && object->name() == name)
            found.push_back(child->second);
    std::ranges::sort(found);
    return found;
}

}  // namespace trel::host
