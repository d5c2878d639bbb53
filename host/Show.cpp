#include "host/Show.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <vector>

#include "host/Edges.h"
#include "host/Members.h"
#include "host/Names.h"
#include "host/Objects.h"
#include "host/Tree.h"
#include "platform/station/Station.h"
#include "smartcomp/Aggregation.h"
#include "smartcomp/StationLogic.h"

namespace trel::host {

namespace {

using smartcomp::Aggregation;
using smartcomp::Connection;
using smartcomp::SmartComponent;
using smartcomp::StationLogic;

class StationPrinter {
public:
    std::string print() {
        line(0, "station {}", quoted(GetStationElem()->name()));
        components();
        for (const Controller* const controller : controllersNow()) {
            line(1, "{}  controller  #{}", quoted(controller->name()), controller->id());
            signals(controller->id(), 2);
        }
        return std::move(text_);
    }

private:
    template <typename... Parts>
    void line(unsigned depth, fmt::format_string<Parts...> form, Parts&&... parts) {
        constexpr std::size_t widest = 64;  // what stands deeper begins in this column
        text_.append(2 * std::min<std::size_t>(depth, widest), ' ');
        fmt::format_to(std::back_inserter(text_), form, std::forward<Parts>(parts)...);
        text_ += '\n';
    }

    // Each followed by what it contains. They may nest as deep as they like.
    void components() {
        struct Place {
            unsigned id;
            unsigned depth;
        };
        std::vector<Place> waiting = {{StationLogic::inst()->id(), 0}};
        while (!waiting.empty()) {
            const auto [id, depth] = waiting.back();
            waiting.pop_back();
            const SmartComponent* const found = componentOf(id);
            if (!found) continue;
            component(*found, depth);
            const auto inside = tree_.children(id);
            for (auto child = inside.rbegin(); child != inside.rend(); ++child)
                waiting.push_back({*child, depth + 1});
        }
    }

    void component(const SmartComponent& component, unsigned depth) {
        if (!component.isStationLogic())
            line(depth, "{}  {}  #{}", quoted(component.name()),
                 component.element()->asString("type"), component.id());
        properties(component.id(), depth + 1);
        signals(component.id(), depth + 1);
        if (const auto* const aggregation = dynamic_cast<const Aggregation*>(&component))
            edges(*aggregation, depth + 1);
    }

    void properties(unsigned object, unsigned depth) {
        for (const Member& member : membersOf(object))
            if (member.kind == Member::Kind::Property)
                line(depth, "{} = {}", quoted(nameOf(member).value_or("")), shown(member));
    }

    void signals(unsigned object, unsigned depth) {
        for (const Member& member : membersOf(object))
            if (member.kind == Member::Kind::Signal)
                line(depth, "{} : {}{} = {}", quoted(nameOf(member).value_or("")),
                     signalTypeOf(member), isAutoReset(member) ? ", resets itself" : "",
                     shown(member));
    }

    void edges(const Aggregation& aggregation, unsigned depth) {
        std::map<unsigned, const Connection*> ordered;  // by index
        for (const auto& [id, connection] : aggregation.connections())
            ordered.emplace(connection->getIndex(), connection);
        for (const auto& [index, connection] : ordered)
            line(depth, "connection {}: {}", index, endsOf(*connection));

        std::map<unsigned, const Connection*> bindings;  // by id
        for (const auto& [id, binding] : aggregation.bindings()) bindings.emplace(id, binding);
        for (const auto& [id, binding] : bindings) line(depth, "binding: {}", endsOf(*binding));
    }

    const Tree tree_;
    std::string text_;
};

}  // namespace

std::string textOfStation() { return StationPrinter().print(); }

}  // namespace trel::host
