#include "smartcomp/StationLogic.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "platform/broker/SignalBroker.h"
#include "platform/station/Station.h"
#include "smartcomp/Hold.h"
#include "smartcomp/Lookup.h"

namespace trel::smartcomp {

namespace {

// Every component in the object table, as it stands now, by id: in which order
// they are asked is the same in every process.
std::vector<std::pair<unsigned, SmartComponent*>> allComponents() {
    std::vector<std::pair<unsigned, SmartComponent*>> components;
    auto& manager = *sdf::SdfManager::inst();
    const std::unique_lock lock(manager.mutex());
    for (const auto& [id, object] : manager.objects())
        if (auto* const component = dynamic_cast<SmartComponent*>(object))
            components.emplace_back(id, component);
    std::ranges::sort(components, {}, [](const auto& entry) { return entry.first; });
    return components;
}

}  // namespace

StationLogic* StationLogic::inst() {
    static StationLogic logic;
    return &logic;
}

StationLogic::StationLogic() : Aggregation(GetStationLogicElem(), sdf::ObjectType::StationLogic) {
    // Should this throw, the next call of inst() finds the element in its place.
    keepElement(true);
    setName("Station Logic");
    setObjParentAsDefault();
    if (!tryEnterObject(this)) throwTaken();
    keepElement(false);
}

// The object table is left as it is: at exit nobody looks there any more.
StationLogic::~StationLogic() = default;

void StationLogic::handleInputSignal(unsigned, int, long long) {}

void StationLogic::execute(long long) {}

void StationLogic::addController(unsigned controllerId) { addObjChildWithSdf(controllerId); }

void StationLogic::removeController(unsigned controllerId) {
    const Hold hold(*this);
    std::vector<const Connection*> ended;
    for (const auto& [id, connection] : connectionTable())
        if (connection->matchDst(controllerId) || connection->matchSrc(controllerId))
            ended.push_back(connection);
    for (const Connection* const connection : ended) {
        // A listener may have deleted it already.
        if (isDeleted(*connection)) continue;
        const unsigned id = connection->id();
        deleteConnection(id);
        broker::SignalBroker::signalConnectionDeleted(id, this->id());
    }
    removeChildComponent(controllerId);
}

bool StationLogic::isObjectUsedByComponent(unsigned objectId) const {
    for (const auto& [id, component] : allComponents()) {
        // What was asked before may have removed it.
        if (findObject(id) != component) continue;
        const Hold hold(*component);
        const auto uses = [asked = component](const sdf::SdfObject* object) {
            return asked->isObjectUsed(object->id());
        };
        if (sdf::SdfObject::AnyOfDescendant(objectId, uses, true)) return true;
    }
    return false;
}

}  // namespace trel::smartcomp
