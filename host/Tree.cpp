#include "host/Tree.h"

#include "host/Members.h"
#include "host/Objects.h"
#include "smartcomp/StationLogic.h"

namespace trel::host {

Tree::Tree() : root_(smartcomp::StationLogic::inst()->id()) {
    for (const auto* const component : componentsNow())
        if (!component->isStationLogic())
            children_.emplace(component->getObjParentId(), component->id());
    for (const Controller* const controller : controllersNow())
        children_.emplace(root_, controller->id());
}

std::vector<unsigned> Tree::children(unsigned parent) const {
    std::vector<unsigned> result;
    const auto [begin, end] = children_.equal_range(parent);
    for (auto child = begin; child != end; ++child) result.push_back(child->second);
    return result;
}

std::vector<unsigned> Tree::all() const {
    std::vector<unsigned> result;
    std::vector<unsigned> waiting = {root_};
    while (!waiting.empty()) {
        result.push_back(waiting.back());
        waiting.pop_back();
        const auto inside = children(result.back());
        waiting.insert(waiting.end(), inside.rbegin(), inside.rend());
    }
    return result;
}

}  // namespace trel::host
