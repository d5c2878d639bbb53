#include "smartcomp/Wiring.h"

namespace trel::smartcomp {

Wiring::Wiring(const std::vector<const Connection*>& connections)
    : number_(nextNumber()), routes_(connections.size()) {
    // Their number first, as the end of a range from 0.
    for (const Connection* const connection : connections) ++ranges_[connection->source()].end;
    std::uint32_t place = 0;
    for (auto& [source, range] : ranges_) {
        const std::uint32_t size = range.end;
        range = {place, place};
        place += size;
    }
    for (const Connection* const connection : connections)
        routes_[ranges_[connection->source()].end++] = {connection, connection->destination()};
}

void Wiring::find(unsigned component, unsigned member, RouteHint& hint) const {
    const auto range = ranges_.find(Connection::pack(component, member));
    const auto [first, end] = range == ranges_.end() ? Range() : range->second;
    hint.wiring = number_;
    hint.first = first;
    hint.end = end;
}

}  // namespace trel::smartcomp
