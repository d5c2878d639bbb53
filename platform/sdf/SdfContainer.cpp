#include "platform/sdf/SdfContainer.h"

#include <algorithm>
#include <unordered_set>
#include <utility>
#include <vector>

#include "platform/sdf/SdfManager.h"

namespace sdf {

SdfContainer::SdfContainer(const SdfContainer& other) : SdfNode(other) { *this = other; }

SdfContainer& SdfContainer::operator=(const SdfContainer& other) {
    auto children = other.children_;
    decltype(places_) places;
    for (auto child = children.begin(); child != children.end(); ++child)
        places.emplace(child->id, child);
    SdfNode::operator=(other);
    children_ = std::move(children);
    places_ = std::move(places);
    return *this;
}

void SdfContainer::addObjChild(std::shared_ptr<Element> child) {
    const unsigned id = child->asUInt("");
    std::list<Child> one{{id, std::move(child)}};
    if (places_.try_emplace(id, one.begin()).second) children_.splice(children_.end(), one);
}

void SdfContainer::addObjChildWithSdf(unsigned id) {
    if (hasObjChild(id)) return;
    auto child = Element::Create("child");
    child->setValue(id);
    std::list<Child> one{{id, child}};
    const auto place = places_.try_emplace(id, one.begin()).first;
    try {
        element()->append(std::move(child));
    } catch (...) {
        places_.erase(place);
        throw;
    }
    children_.splice(children_.end(), one);
}

void SdfContainer::removeObjChildWithSdf(unsigned id) {
    const auto entry = places_.find(id);
    if (entry == places_.end()) return;
    const auto child = entry->second;
    child->element->removeFromParent();
    places_.erase(entry);
    children_.erase(child);
}

void SdfContainer::moveChild(unsigned id, unsigned place) {
    const auto entry = places_.find(id);
    if (entry == places_.end()) return;
    const auto child = entry->second;
    // The child that shall stand behind it, counted without the one that moves.
    auto next = children_.begin();
    for (unsigned i = 0; next != children_.end(); ++next)
        if (next != child && i++ == place) break;
    element()->moveBefore(*child->element,
                          next == children_.end() ? nullptr : next->element.get());
    children_.splice(next, children_, child);
}

bool SdfContainer::anyOfDescendant(const std::function<bool(const SdfObject*)>& predicate,
                                   bool itself) const {
    if (itself && predicate(this)) return true;

    // Ids, not pointers: the predicate is anybody's and may remove objects.
    std::unordered_set<unsigned> seen{id()};
    std::vector<unsigned> waiting;
    const auto enter = [&](const SdfContainer& container) {
        for (auto child = container.children_.rbegin(); child != container.children_.rend();
             ++child)
            waiting.push_back(child->id);
    };
    enter(*this);
    while (!waiting.empty()) {
        const unsigned next = waiting.back();
        waiting.pop_back();
        if (!seen.insert(next).second) continue;
        const SdfObject* const object = SdfManager::inst()->find(next);
        if (!object) continue;
        if (predicate(object)) return true;
        if (SdfManager::inst()->find(next) != object) continue;
        if (const auto* const container = dynamic_cast<const SdfContainer*>(object))
            enter(*container);
    }
    return false;
}

}  // namespace sdf
