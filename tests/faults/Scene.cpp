#include "tests/faults/Scene.h"

#include <array>
#include <mutex>

#include "platform/sdf/Document.h"
#include "tests/smartcomp/Mirror.h"

namespace trel::test {

namespace {

constexpr std::array ids = {Scene::cellId, Scene::lampId, Scene::beltId, Scene::groupId,
                            Scene::innerId};

const rob::Vec3Template<double> place{1, 2, 3};
constexpr const char* word = "a text that is longer than what fits into a string itself";

void make(const char* type, unsigned id, const char* name, unsigned parent) {
    Draft draft(type, id, name);
    draft.in(parent)
        .property(1, "Speed", "Double", 2.5, "mm")
        .property(2, "Text", "String", std::string(word))
        .property(3, "Part", "ObjectId", std::string("0"))
        .property(4, "Place", "Vector3", place)
        .signal(1, "in", "DigitalInput")
        .signal(2, "out", "DigitalOutput")
        .signal(3, "level", "AnalogInput")
        .autoReset(4, "pulse", "DigitalOutput");
    smartcomp::Create(draft.element());
}

SmartComponent* componentOf(unsigned id) { return Scene::find<SmartComponent>(id); }

// What failed operations may leave in the station logic, which lives on.
void clear(StationLogic& logic) {
    const auto table = tableOf(logic);
    for (const auto& [id, connection] : table) logic.deleteConnection(id);
    for (const auto& element : logic.element()->children("connection")) element->removeFromParent();
    for (const unsigned id : {Scene::cellId, Scene::newId, Scene::robotId})
        logic.removeChildComponent(id);
}

}  // namespace

Scene::Scene() {
    {
        const std::unique_lock lock(sdf::SdfManager::inst()->mutex());
        sdf::SdfManager::inst()->objects()[robotId] = &robot_;
    }
    make("Box", cellId, "Cell", logicId);
    make("Plain", lampId, "Lamp", cellId);
    make("Framed", beltId, "Belt", cellId);
    make("Group", groupId, "Group", cellId);
    make("Plain", innerId, "Inner", groupId);
    logic().addChildComponent(cellId, std::nullopt);
    for (const unsigned id : {lampId, beltId, groupId})
        cell().addChildComponent(id, std::pair(1, 2));
    group().addChildComponent(innerId, std::nullopt);
    for (const End to : {End{beltId, 1}, End{groupId, 1}, End{robotId, 1}})
        connect(cell(), {lampId, 2}, to);
    for (const End to : {End{beltId, 1}, End{beltId, 3}}) connect(cell(), {lampId, 4}, to);
    connect(group(), {groupId, 1}, {innerId, 1});
    for (const unsigned property : {1u, 2u, 3u, 4u}) {
        bind(cell(), {lampId, property}, {beltId, property});
        bind(cell(), {lampId, property}, {groupId, property});
        bind(group(), {groupId, property}, {innerId, property});
    }
}

Scene::~Scene() {
    Plain::whenRead = nullptr;
    clear(logic());
    for (const unsigned id : {newId, innerId, groupId, beltId, lampId, cellId}) takeAway(id);
    sdf::SdfManager::Remove(robotId);
    EXPECT_EQ(Alive::count(), 0u) << "components live on that no table holds";
    made().element = nullptr;
    eventLog().clear();
}

void Scene::takeAway(unsigned id) {
    if (componentOf(id)) smartcomp::RemoveSubSmartComponent(id);
    for (const auto& component : GetStationElem()->children("smart_component"))
        if (component->getId(true) == id) component->removeFromParent();
}

void Scene::restore() {
    for (const unsigned id : ids) {
        SmartComponent* const component = componentOf(id);
        if (!component) continue;
        component->clearMarks();
        for (const unsigned signal : {1u, 2u, 4u})
            if (component->hasSignal(signal)) signalOf(*component, signal).setValue(0);
        if (component->hasSignal(3)) signalOf(*component, 3).setValue(0.0);
        const auto set = [&](unsigned property, const char* text) {
            if (component->hasProperty(property)) component->getProperty(property)->setValue(text);
        };
        set(1, "2.5");
        set(2, word);
        set(3, "0");
        set(4, "1 2 3");
    }
}

std::string Scene::state() const {
    std::string text = answer + "\n" + Station::inst().text();
    if (element) text += sdf::Document(element).text();
    for (const std::string& line : differences()) text += line + "\n";
    return text;
}

Lines Scene::differences() {
    Lines all;
    const auto add = [&](SmartComponent& component) {
        for (std::string& line : mirrorFaults(component)) all.push_back(std::move(line));
    };
    add(logic());
    for (unsigned id = cellId; id <= newId; ++id)
        if (SmartComponent* const component = componentOf(id)) add(*component);
    return all;
}

}  // namespace trel::test
