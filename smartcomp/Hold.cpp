#include "smartcomp/Hold.h"

#include <cstddef>
#include <new>

#include "smartcomp/Removals.h"
#include "smartcomp/SmartComponent.h"
#include "smartcomp/Stack.h"

namespace trel::smartcomp {

Removals& Removals::inst() {
    // Never destroyed: components may be removed until the very end of a process.
    // Nor allocated: they may be removed where memory has ended.
    alignas(Removals) static std::byte place[sizeof(Removals)];
    static auto* const removals = ::new (place) Removals;
    return *removals;
}

bool Removals::contains(std::size_t since, What what, unsigned component,
                        unsigned member) const {
    for (std::size_t i = since; i < entries_.size(); ++i) {
        const Entry& entry = entries_[i];
        if (entry.component == component &&
            (entry.what == What::Component || (entry.what == what && entry.member == member)))
            return true;
    }
    return false;
}

void Removals::makeRoom() {
    if (holds_ > 0 && entries_.size() == entries_.capacity())
        entries_.reserve(2 * entries_.size() + 4);
}

void Removals::add(What what, unsigned component, unsigned member) {
    if (holds_ > 0) entries_.push_back({what, component, member});
}

Hold::Hold(SmartComponent& component)
    : component_(component), removals_(Removals::inst().count()) {
    checkStack();
    ++component_.held_.holds;
    Removals::inst().enter();
}

Hold::~Hold() {
    Removals::inst().leave();
    if (--component_.held_.holds == 0 && component_.held_.remains) component_.bury();
}

bool Hold::goneComponent(unsigned component) const {
    return Removals::inst().contains(removals_, Removals::What::Component, component, 0);
}

bool Hold::goneSignal(unsigned component, unsigned signal) const {
    return Removals::inst().contains(removals_, Removals::What::Signal, component, signal);
}

bool Hold::goneProperty(unsigned component, unsigned property) const {
    return Removals::inst().contains(removals_, Removals::What::Property, component, property);
}

}  // namespace trel::smartcomp
