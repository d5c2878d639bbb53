#include "smartcomp/Lifecycle.h"

#include <stdexcept>

#include "platform/station/Station.h"
#include "smartcomp/Aggregation.h"
#include "smartcomp/Lookup.h"
#include "smartcomp/Manager.h"
#include "smartcomp/Prefetch.h"
#include "smartcomp/Roster.h"

namespace trel::smartcomp {

// A component that a registered function made, until it is known. Where memory
// ends before that, it is destroyed, and its element stays where it is.
class Newcomer {
public:
    explicit Newcomer(SmartComponent* component) : component_(component) {}
    ~Newcomer() {
        if (!component_) return;
        component_->keepElement(true);
        delete component_;
    }
    Newcomer(const Newcomer&) = delete;
    Newcomer& operator=(const Newcomer&) = delete;

    void release() { component_ = nullptr; }

private:
    SmartComponent* component_;
};

namespace {

// Makes the component known: in the object table, to itself, in the list.
SmartComponent* enter(SmartComponent* component, Roster& roster) {
    if (!component) throw std::logic_error("a registered function made no component");
    Newcomer newcomer(component);
    Roster::Entry entry(roster);
    const bool isEntered = tryEnterObject(component);
    newcomer.release();
    // One that is refused belongs to nobody from here on.
    if (!isEntered) throwTaken();
    component->readPropertyValues();
    entry.list(component);
    return component;
}

}  // namespace

SmartComponent* Create(std::shared_ptr<sdf::Element> element) {
    Manager& manager = *Manager::inst();
    const auto create = manager.getCreateFunc(element->asString("type"));
    return enter(create(std::move(element)), manager.roster());
}

SmartComponent* Build(const std::string& typeName, unsigned id, const std::string& name,
                      unsigned parentId) {
    Manager& manager = *Manager::inst();
    // The parent knows the child before there is one, and still when the type
    // turns out to be unknown.
    objectAs<Aggregation>(parentId).addChildComponent(id, std::nullopt);
    const auto element = GetStationElem()->appendObject("smart_component", id, name);
    write(element, "type", typeName);
    write(element, "parent", parentId);
    return enter(manager.getBuildFunc(typeName)(element), manager.roster());
}

SmartComponent* Recover(std::shared_ptr<sdf::Element> element,
                        const std::vector<std::shared_ptr<sdf::Element>>& subElements,
                        const std::optional<std::pair<int, int>>& xy) {
    GetStationElem()->append(element);
    SmartComponent* const component = Create(element);
    for (const auto& subElement : subElements) {
        GetStationElem()->append(subElement);
        Create(subElement);
    }
    objectAs<Aggregation>(component->getObjParentId()).addChildComponent(component->id(), xy);
    return component;
}

void Load() {
    for (const auto& element : GetStationElem()->children("smart_component"))
        if (element->asString("type") != "StationLogic") Create(element);
}

void RemoveSmartComponent(unsigned id) {
    TableReading reading;
    sdf::SdfObject* const object = reading.next(id);
    prefetch(object, sizeof(SmartComponent));
    auto& component = as<SmartComponent>(object);
    auto& parent = as<Aggregation>(reading.last(component.getObjParentId()));
    component.prefetchParts();
    component.makeRoom();  // else the parent may lose a component that lives on
    parent.removeChildComponent(id);
    component.retire();
}

void RemoveSubSmartComponent(unsigned id) {
    sdf::SdfObject* const object = objectAt(id);
    prefetch(object, sizeof(SmartComponent));
    auto& component = as<SmartComponent>(object);
    component.prefetchParts();
    component.retire();
}

const std::list<SmartComponent*>& GetAllSmartComponents() {
    return Manager::inst()->roster().all();
}

void BuildVisual(SmartComponent* component, visual::Visual* visual) {
    Manager::inst()->getVisualFunc(component->element()->asString("type"))(visual, component);
}

}  // namespace trel::smartcomp
