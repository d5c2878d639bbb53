#include "smartcomp/StationLogic.h"

#include <utility>
#include <vector>

#include "platform/broker/SignalBroker.h"
#include "platform/station/Station.h"
#include "smartcomp/Lookup.h"

namespace trel::smartcomp {

namespace {

// Every component in the object table, as it stands now.
std::vector<const SmartComponent*> allComponents() {
    std::vector<const SmartComponent*> components;
    auto& manager = *sdf::SdfManager::inst();
    const std::unique_lock lock(manager.mutex());
    for (const auto& [id, object] : manager.objects())
        if (const auto* const component = dynamic_cast<const SmartComponent*>(object))
            components.push_back(component);
    return components;
}

}  // namespace

StationLogic* StationLogic::inst() {
    static StationLogic logic;
    return &logic;
}

StationLogic::StationLogic() : Aggregation(GetStationLogicElem(), sdf::ObjectType::StationLogic) {
    setName("Station Logic");
    setObjParentAsDefault();
    enterObject(this);
}

// The object table is left as it is: at exit nobody looks there any more.
StationLogic::~StationLogic() = default;

void StationLogic::handleInputSignal(unsigned, int, long long) {}

void StationLogic::execute(long long) {}

void StationLogic::addController(unsigned controllerId) { addObjChildWithSdf(controllerId); }

void StationLogic::removeController(unsigned controllerId) {
    std::vector<unsigned> ended;
    for (const auto& [id, connection] : connectionTable())
        if (connection->matchDst(controllerId) || connection->matchSrc(controllerId))
            ended.push_back(id);
    for (const unsigned id : ended) {
        deleteConnection(id);
        broker::SignalBroker::signalConnectionDeleted(id, this->id());
    }
    removeChildComponent(controllerId);
}

bool StationLogic::isObjectUsedByComponent(unsigned objectId) const {
    for (const SmartComponent* const component : allComponents()) {
        const auto uses = [component](const sdf::SdfObject* object) {
            return component->isObjectUsed(object->id());
        };
        if (sdf::SdfObject::AnyOfDescendant(objectId, uses, true)) return true;
    }
    return false;
}

}  // namespace trel::smartcomp
