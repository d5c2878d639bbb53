#include "platform/sdf/SdfContainer.h"

#include <ranges>
#include <unordered_set>
#include <utility>
#include <vector>

#include "platform/sdf/SdfManager.h"

namespace sdf {

SdfContainer::SdfContainer(const SdfContainer& other) : SdfNode(other) { *this = other; }

SdfContainer& SdfContainer::operator=(const SdfContainer& other) {
    auto children = other.children_ ? std::make_unique<Children>(*other.children_) : nullptr;
    SdfNode::operator=(other);
    children_ = std::move(children);
    return *this;
}

SdfContainer::Children& SdfContainer::children() {
    if (!children_) children_ = std::make_unique<Children>();
    return *children_;
}

void SdfContainer::addObjChild(std::shared_ptr<Element> child) {
    const unsigned id = child->asUInt("");
    children().emplace(id, std::move(child));
}

void SdfContainer::addObjChildWithSdf(unsigned id) {
    if (hasObjChild(id)) return;
    auto child = Element::Create("child");
    child->setValue(id);
    children().emplace(id, child);
    try {
        element()->append(std::move(child));
    } catch (...) {
        children_->erase(id);
        throw;
    }
}

void SdfContainer::removeObjChildWithSdf(unsigned id) {
    if (!hasObjChild(id)) return;
    children_->find(id)->second->removeFromParent();
    children_->erase(id);
}

// Those that stand in the document, by its order.
std::vector<SdfContainer::Child> SdfContainer::inOrder() const {
    std::vector<Child> children;
    if (!children_) return children;
    for (const auto& child : element()->children("child")) {
        const unsigned id = child->asUInt("");
        const auto entry = children_->find(id);
        if (entry != children_->end() && entry->second == child)
            children.push_back({id, child.get()});
    }
    return children;
}

void SdfContainer::moveChild(unsigned id, unsigned place) {
    if (!hasObjChild(id)) return;
    Element& child = *children_->find(id)->second;
    // The child that shall stand behind it, counted without the one that moves.
    std::vector<Child> others = inOrder();
    std::erase_if(others, [&](const Child& other) { return other.id == id; });
    element()->moveBefore(child, place < others.size() ? others[place].element : nullptr);
}

bool SdfContainer::anyOfDescendant(const std::function<bool(const SdfObject*)>& predicate,
                                   bool itself) const {
    if (itself && predicate(this)) return true;

    // Ids, not pointers: the predicate is anybody's and may remove objects.
    std::unordered_set<unsigned> seen{id()};
    std::vector<unsigned> waiting;
    const auto enter = [&](const SdfContainer& container) {
        const std::vector<Child> children = container.inOrder();
        for (const Child& child : std::views::reverse(children)) waiting.push_back(child.id);
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
