#include "host/StationMap.h"

#include <fmt/format.h>

#include <any>
#include <stdexcept>

#include "host/Names.h"

namespace trel::host {

namespace {

unsigned parentOf(sdf::Element& element) {
    try {
        return element.asUInt("parent");
    } catch (const std::invalid_argument&) {
        return 0;
    }
}

}  // namespace

bool MappedObject::isLogic() const {
    return !isController() && element->asString("type") == "StationLogic";
}

StationMap::StationMap(const sdf::Element& station) {
    for (const auto& element : station.children("smart_component")) enter(element);
    for (const auto& element : station.children("controller")) enter(element);
    for (MappedObject& object : objects_)
        if (object.isController()) object.parent = logic_;
}

void StationMap::enter(const ElementPtr& element) {
    const MappedObject object{element, element->getId(true), parentOf(*element)};
    objects_.push_back(object);
    if (logic_ == 0 && object.isLogic()) logic_ = object.id;
    if (object.id == 0 || !byId_.emplace(object.id, objects_.size() - 1).second) return;
    for (const auto& signal : element->children("signal"))
        signals_.emplace(MappedEnd(object.id, signal->getId(true)).packed(), signal.get());
    for (const auto& property : element->children("property"))
        properties_.emplace(MappedEnd(object.id, property->getId(true)).packed(), property.get());
}

const MappedObject* StationMap::find(unsigned id) const {
    const auto entry = byId_.find(id);
    return entry == byId_.end() ? nullptr : &objects_[entry->second];
}

sdf::Element* StationMap::memberIn(const Members& members, MappedEnd end) {
    if (end.member == 0) return nullptr;
    const auto entry = members.find(end.packed());
    return entry == members.end() ? nullptr : entry->second;
}

bool StationMap::looksLikeAggregation(const MappedObject& object) const {
    if (object.isController()) return false;
    if (object.isLogic()) return true;
    for (const auto key : {"role_object", "child", "connection"})
        if (object.element->get(key)) return true;
    return false;
}

std::string StationMap::pathOf(const MappedObject& object) const {
    std::string path;
    const MappedObject* here = &object;
    for (unsigned names = 0; names != mostNames; ++names) {
        const std::string& name = here->element->name();
        const std::string step = name.empty() && here->id != 0 ? fmt::format("#{}", here->id)
                                                               : quoted(name);
        path.insert(0, step);
        if (here->isLogic() || here->parent == logic_) return path;
        const unsigned parent = here->parent;
        here = find(parent);
        if (!here) return parent == 0 ? path : fmt::format("#{}/{}", parent, path);
        path.insert(0, "/");
    }
    return fmt::format("#{}{}", here->id, path);
}

std::string StationMap::pathOf(unsigned id) const {
    const MappedObject* const object = find(id);
    return object ? pathOf(*object) : fmt::format("#{}", id);
}

std::string StationMap::pathOf(const MappedObject& owner, sdf::Element& member) const {
    const std::string name = nameOfMember(member);
    return fmt::format("{}.{}", pathOf(owner),
                       name.empty() ? fmt::format("#{}", member.getId(true)) : quoted(name));
}

std::string StationMap::pathOf(std::string_view tag, MappedEnd end) const {
    const MappedObject* const owner = find(end.object);
    sdf::Element* const found = member(tag, end);
    return owner && found ? pathOf(*owner, *found)
                          : fmt::format("{}.#{}", pathOf(end.object), end.member);
}

std::optional<MappedEnd> endOf(sdf::Element& connection, std::string_view key) {
    const ElementPtr end = connection.get(key);
    if (!end || !end->value().has_value()) return std::nullopt;
    try {
        return MappedEnd(end->asUInt64(""));
    } catch (const std::invalid_argument&) {
        return std::nullopt;
    }
}

// A property goes by its object name, a signal by its key "name".
std::string nameOfMember(sdf::Element& member) {
    if (member.tag() != "signal") return member.name();
    const ElementPtr name = member.get("name");
    const auto* const text = name ? std::any_cast<std::string>(&name->value()) : nullptr;
    return text ? *text : "";
}

}  // namespace trel::host
