#include "components/Part.h"

#include <map>
#include <utility>

#include "components/Texts.h"

namespace trel::components {

namespace {

std::map<unsigned, Part*>& parts() {
    static std::map<unsigned, Part*> table;
    return table;
}

}  // namespace

bool PartSettings::read(unsigned propertyId, const std::string& text) {
    if (propertyId == Part::position) return take(position, readPoint(text));
    if (propertyId == Part::mass) return takeAtLeastZero(mass, readNumber(text));
    if (propertyId == Part::holder) return take(holder, readId(text));
    return true;
}

Part::Part(std::shared_ptr<sdf::Element> element)
    : Reacting(std::move(element), sdf::ObjectType::Component) {}

// A part whose id was taken never got into the table.
Part::~Part() {
    const auto entry = parts().find(id());
    if (entry != parts().end() && entry->second == this) parts().erase(entry);
}

void Part::furnish(Furnisher& furnisher) {
    furnisher.property({position, "Position", "Vector3", "0 0 0", "mm", "Where the part is"})
        .property({mass, "Mass", "Double", "100", "g", "What the part weighs"})
        .property({holder, "Holder", "ObjectId", "0", "", "The gripper that holds the part", true});
}

std::vector<unsigned> Part::ids() {
    std::vector<unsigned> result;
    for (const auto& [id, part] : parts()) result.push_back(id);
    return result;
}

Part* Part::find(unsigned id) {
    const auto entry = parts().find(id);
    return entry == parts().end() ? nullptr : entry->second;
}

// Only now does the part stand in the object table under its id.
void Part::readPropertyValues() {
    Reacting::readPropertyValues();
    parts()[id()] = this;
}

bool Part::checkPropertyObjectType(unsigned propertyId, sdf::SdfObject*) const {
    return propertyId == holder;
}

void Part::moveTo(const Point& place) { keep(position, textOf(place)); }

void Part::setHolder(unsigned id) { keep(holder, std::to_string(id)); }

}  // namespace trel::components
