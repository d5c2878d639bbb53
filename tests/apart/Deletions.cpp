#include "tests/apart/Deletions.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <stdexcept>
#include <string>
#include <utility>

#include "platform/sdf/Document.h"
#include "platform/sdf/SdfManager.h"
#include "platform/station/Station.h"
#include "smartcomp/Lifecycle.h"
#include "smartcomp/Property.h"
#include "smartcomp/StationLogic.h"

namespace trel::test {

namespace {

using smartcomp::Aggregation;
using smartcomp::SmartComponent;
using smartcomp::StationLogic;

void expect(bool holds, const char* what) {
    if (!holds) throw std::logic_error(what);
}

SmartComponent* find(unsigned id) {
    return dynamic_cast<SmartComponent*>(sdf::SdfManager::inst()->find(id));
}

std::map<unsigned, SmartComponent*> components() {
    std::map<unsigned, SmartComponent*> found;
    const std::shared_lock lock(sdf::SdfManager::inst()->mutex());
    for (const auto& [id, object] : sdf::SdfManager::inst()->objects())
        if (auto* const component = dynamic_cast<SmartComponent*>(object))
            found.emplace(id, component);
    return found;
}

void deleteSignal(SmartComponent& component, unsigned id) {
    const auto signals = [&] { return component.element()->children("signal").size(); };
    const std::size_t before = signals();
    component.deleteSignal(id);
    expect(!component.hasSignal(id), "a deleted signal is still in its table");
    expect(signals() == before - 1, "the element of a deleted signal is still in the document");
}

void deleteProperty(SmartComponent& component, unsigned id) {
    component.deleteProperty(id);
    expect(!component.hasProperty(id), "a deleted property is still in its table");
}

// Those behind it close the gap, here and in the document.
void deleteConnection(Aggregation& group, unsigned id) {
    group.deleteConnection(id);
    std::vector<unsigned> indices;
    for (const auto& [other, connection] : group.connections()) {
        expect(other != id, "a deleted connection is still in its table");
        expect(connection->element()->asUInt("index") == connection->getIndex(),
               "the document has another index than the connection");
        indices.push_back(connection->getIndex());
    }
    std::ranges::sort(indices);
    for (std::size_t place = 0; place != indices.size(); ++place)
        expect(indices[place] == place, "a deleted connection leaves a gap");
}

void remove(SmartComponent& component) {
    const unsigned id = component.id();
    const auto element = component.element();
    if (find(component.getObjParentId()))
        smartcomp::RemoveSmartComponent(id);
    else
        smartcomp::RemoveSubSmartComponent(id);
    expect(!sdf::SdfManager::inst()->find(id), "a removed component is still in the table");
    expect(!element->parent(), "the element of a removed component is still in the document");
}

}  // namespace

std::vector<Deletion> everything(network::Random& random) {
    std::vector<Deletion> all;
    using Kind = Deletion::Kind;
    for (const auto& [id, component] : components()) {
        std::vector<Deletion> own;
        for (const auto& [signal, entry] : component->getSignals())
            own.push_back({Kind::Signal, id, signal});
        for (const auto& [property, entry] : component->getProperties())
            own.push_back({Kind::Property, id, property});
        if (auto* const group = dynamic_cast<Aggregation*>(component)) {
            for (const auto& [connection, entry] : group->connections())
                own.push_back({Kind::Connection, id, connection});
            for (const auto& [binding, entry] : group->bindings())
                own.push_back({Kind::Connection, id, binding});
        }
        // As the tables are hashed, in an order of our own first.
        std::ranges::sort(own, {}, [](const Deletion& d) { return std::pair(d.kind, d.member); });
        all.insert(all.end(), own.begin(), own.end());
        if (!component->isStationLogic()) all.push_back({Kind::Component, id});
    }
    for (const auto& child : StationLogic::inst()->element()->children("child"))
        if (!find(child->asUInt(""))) all.push_back({Kind::Controller, child->asUInt("")});
    for (std::size_t rest = all.size(); rest > 1; --rest)
        std::swap(all[rest - 1], all[random.below(static_cast<unsigned>(rest))]);
    return all;
}

void apply(const Deletion& deletion) {
    using Kind = Deletion::Kind;
    if (deletion.kind == Kind::Controller)
        return StationLogic::inst()->removeController(deletion.component);
    SmartComponent* const component = find(deletion.component);
    if (!component) return;
    switch (deletion.kind) {
        case Kind::Signal: return deleteSignal(*component, deletion.member);
        case Kind::Property: return deleteProperty(*component, deletion.member);
        case Kind::Connection: {
            auto& group = dynamic_cast<Aggregation&>(*component);
            // A controller takes its connections along.
            const auto hasId = [&](const auto& entry) { return entry.first == deletion.member; };
            if (std::ranges::any_of(group.connections(), hasId) ||
                std::ranges::any_of(group.bindings(), hasId))
                deleteConnection(group, deletion.member);
            return;
        }
        default: return remove(*component);
    }
}

void expectNothingLeft() {
    StationLogic& logic = *StationLogic::inst();
    expect(components().size() == 1, "a component is left");
    expect(GetStationElem()->children("smart_component").size() == 1,
           "an element of a component is left");
    expect(logic.getSignals().empty(), "a signal is left");
    expect(logic.getProperties().empty(), "a property is left");
    expect(logic.connections().empty() && logic.bindings().empty(), "a connection is left");
    for (const char* const tag : {"child", "signal"})
        expect(logic.element()->children(tag).empty(), "an element of the station logic is left");
    const std::string text = Station::inst().text();
    expect(text.find("<connection") == std::string::npos, "an element of a connection is left");
    sdf::Document::fromText(text, "what is left");
}

}  // namespace trel::test
