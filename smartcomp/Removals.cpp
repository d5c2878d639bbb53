#include "smartcomp/Removals.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <vector>

namespace trel::smartcomp {

namespace {

struct Removal {
    Removals::What what;
    unsigned component;
    unsigned member;
};

// What lies behind the count is of a time before.
std::vector<Removal>& removals() {
    // Never destroyed: components may be removed until the very end of a process.
    // Nor allocated: they may be removed where memory has ended.
    using All = std::vector<Removal>;
    alignas(All) static std::byte place[sizeof(All)];
    static auto* const all = ::new (place) All;
    return *all;
}

}  // namespace

[[gnu::noinline]] bool Removals::search(std::size_t since, What what, unsigned component,
                                        unsigned member) {
    const auto first = removals().begin();
    return std::any_of(first + static_cast<std::ptrdiff_t>(since),
                       first + static_cast<std::ptrdiff_t>(count_), [&](const Removal& removal) {
                           return removal.component == component &&
                                  (removal.what == What::Component ||
                                   (removal.what == what && removal.member == member));
                       });
}

void Removals::makeRoom() {
    auto& all = removals();
    all.resize(count_);
    if (holds_ > 0 && all.size() == all.capacity()) all.reserve(2 * all.size() + 4);
}

void Removals::add(What what, unsigned component, unsigned member) {
    if (holds_ == 0) return;
    makeRoom();
    removals().push_back({what, component, member});
    ++count_;
}

}  // namespace trel::smartcomp
