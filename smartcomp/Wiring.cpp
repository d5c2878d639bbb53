#include "smartcomp/Wiring.h"

namespace trel::smartcomp {

namespace {

unsigned long long packed(unsigned component, unsigned member) {
    return (static_cast<unsigned long long>(component) << 32) | member;
}

unsigned long long sourceOf(const Connection& connection) {
    return packed(connection.getSrcComponentId(), connection.getSrcSignalId());
}

}  // namespace

Wiring::Wiring(const std::vector<const Connection*>& connections)
    : routes_(connections.size()) {
    for (const Connection* const connection : connections) ++ranges_[sourceOf(*connection)].size;
    std::uint32_t place = 0;
    for (auto& [source, range] : ranges_) {
        range.first = place;
        place += std::exchange(range.size, 0);
    }
    for (const Connection* const connection : connections) {
        Range& range = ranges_[sourceOf(*connection)];
        routes_[range.first + range.size++] = connection;
    }
}

Wiring::Routes Wiring::from(unsigned component, unsigned member) const {
    const auto range = ranges_.find(packed(component, member));
    if (range == ranges_.end()) return {};
    return Routes(routes_).subspan(range->second.first, range->second.size);
}

}  // namespace trel::smartcomp
