#include "platform/sdf/SdfContainer.h"

#include <algorithm>
#include <ranges>
#include <unordered_set>
#include <utility>
#include <vector>

#include "platform/sdf/SdfManager.h"

namespace sdf {

SdfContainer::Contents::Contents(const Contents& other) : children(other.children) {
    for (auto child = children.begin(); child != children.end(); ++child)
        places.emplace(child->id, child);
}

SdfContainer::SdfContainer(const SdfContainer& other) : SdfNode(other) { *this = other; }

SdfContainer& SdfContainer::operator=(const SdfContainer& other) {
    auto contents = other.contents_ ? std::make_unique<Contents>(*other.contents_) : nullptr;
    SdfNode::operator=(other);
    contents_ = std::move(contents);
    return *this;
}

void SdfContainer::addObjChild(std::shared_ptr<Element> child) {
    const unsigned id = child->asUInt("");
    std::list<Child> one{{id, std::move(child)}};
    if (!contents_) contents_ = std::make_unique<Contents>();
    auto& [children, places] = *contents_;
    if (places.try_emplace(id, one.begin()).second) children.splice(children.end(), one);
}

void SdfContainer::addObjChildWithSdf(unsigned id) {
    if (hasObjChild(id)) return;
    auto child = Element::Create("child");
    child->setValue(id);
    std::list<Child> one{{id, child}};
    if (!contents_) contents_ = std::make_unique<Contents>();
    auto& [children, places] = *contents_;
    const auto place = places.try_emplace(id, one.begin()).first;
    try {
        element()->append(std::move(child));
    } catch (...) {
        places.erase(place);
        throw;
    }
    children.splice(children.end(), one);
}

void SdfContainer::removeObjChildWithSdf(unsigned id) {
    if (!hasObjChild(id)) return;
    auto& [children, places] = *contents_;
    const auto entry = places.find(id);
    const auto child = entry->second;
    child->element->removeFromParent();
    places.erase(entry);
    children.erase(child);
}

void SdfContainer::moveChild(unsigned id, unsigned place) {
    if (!hasObjChild(id)) return;
    auto& [children, places] = *contents_;
    const auto child = places.at(id);
    // The child that shall stand behind it, counted without the one that moves.
    auto next = children.begin();
    for (unsigned i = 0; next != children.end(); ++next)
        if (next != child && i++ == place) break;
    element()->moveBefore(*child->element, next == children.end() ? nullptr : next->element.get());
    children.splice(next, children, child);
}

bool SdfContainer::anyOfDescendant(const std::function<bool(const SdfObject*)>& predicate,
                                   bool itself) const {
    if (itself && predicate(this)) return true;

    // Ids, not pointers: the predicate is anybody's and may remove objects.
    std::unordered_set<unsigned> seen{id()};
    std::vector<unsigned> waiting;
    const auto enter = [&](const SdfContainer& container) {
        if (!container.contents_) return;
        for (const Child& child : std::views::reverse(container.contents_->children))
            waiting.push_back(child.id);
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
