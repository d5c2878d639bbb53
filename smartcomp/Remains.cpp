// How a component and its members are removed, also while calls on them are under way.

#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include "platform/sdf/SdfManager.h"
#include "smartcomp/Prefetch.h"
#include "smartcomp/Property.h"
#include "smartcomp/Removals.h"
#include "smartcomp/SCSignal.h"
#include "smartcomp/SmartComponent.h"

namespace trel::smartcomp {

struct SmartComponent::Remains {
    bool component = false;  // the component itself
    std::vector<std::unique_ptr<sdf::SdfObject>> members;
    std::vector<std::unique_ptr<SCSignal>> signals;
};

SmartComponent::Held::Held() = default;
SmartComponent::Held::Held(const Held&) {}
SmartComponent::Held& SmartComponent::Held::operator=(const Held&) { return *this; }
SmartComponent::Held::~Held() = default;

void SmartComponent::deleteProperty(unsigned id) {
    Property* const property = getProperty(id);
    makeRoom();
    Removals::add(Removals::What::Property, this->id(), id);
    held_.lastProperty = nullptr;
    properties_.erase(id);
    discard(std::unique_ptr<Property>(property));
}

void SmartComponent::deleteSignal(unsigned id) {
    SCSignal* const signal = &signalAt(id);
    makeRoom();
    Removals::add(Removals::What::Signal, this->id(), id);
    signalsNumber_ = nextNumber();
    held_.lastSignal = nullptr;
    signals_.erase(id);
    // Other than a deleted property's, its element leaves the document.
    signal->element()->removeFromParent();
    if (held_.holds > 0)
        held_.remains->signals.emplace_back(signal);
    else
        delete signal;
}

void SmartComponent::makeRoom() {
    Removals::makeRoom();
    if (held_.holds == 0) return;
    if (!held_.remains) held_.remains = std::make_unique<Remains>();
    const auto roomForOne = [](auto& remains) {
        if (remains.size() == remains.capacity()) remains.reserve(2 * remains.size() + 4);
    };
    roomForOne(held_.remains->members);
    roomForOne(held_.remains->signals);
}

void SmartComponent::discard(std::unique_ptr<sdf::SdfObject> member) noexcept {
    if (held_.holds > 0) held_.remains->members.push_back(std::move(member));
}

// What its removal finds through the component alone. What was made with a component mostly
// stands around its element: the parent's child before it, its keys and its members behind it.
void SmartComponent::prefetchParts() const {
    constexpr std::size_t before = 2 * sizeof(sdf::Element);
    constexpr std::size_t each = 1200;  // bytes of a member with its keys
    constexpr std::size_t most = 8192;  // more would drive out what is needed first
    const std::size_t behind = (1 + properties_.size() + signals_.size()) * each;
    prefetch(reinterpret_cast<const char*>(element().get()) - before,
             std::min(before + behind, most));
}

// Out of the table and the document now; destroyed when nobody holds it.
void SmartComponent::retire() {
    makeRoom();
    Removals::add(Removals::What::Component, id(), 0);
    sdf::SdfManager::Remove(id());
    if (held_.holds == 0) {
        delete this;
        return;
    }
    element()->removeFromParent();
    held_.removed = true;
    held_.remains->component = true;
}

// The last hold is gone.
void SmartComponent::bury() {
    const std::unique_ptr<Remains> remains = std::move(held_.remains);
    if (remains->component) delete this;
}

}  // namespace trel::smartcomp
