#include <stdexcept>

#include "platform/station/Station.h"
#include "smartcomp/ElementBuilder.h"
#include "tests/faults/Operations.h"

// Aggregations and the station logic, deliveries, and the lifecycle of components.

namespace trel::test {

namespace {

constexpr unsigned cell = Scene::cellId;
constexpr unsigned lamp = Scene::lampId;
constexpr unsigned belt = Scene::beltId;
constexpr unsigned group = Scene::groupId;
constexpr unsigned inner = Scene::innerId;
constexpr unsigned fresh = Scene::newId;
constexpr unsigned robot = Scene::robotId;

const std::string longName = "a component with a name that is rather long";
const std::optional position(std::pair(5, 6));

// The elements that a failed attempt has appended.
void takeAwayConnection(unsigned id, SmartComponent& owner = Scene::cell()) {
    for (const auto& element : owner.element()->children("connection"))
        if (element->getId(true) == id) element->removeFromParent();
}

Operation builds(const char* name, End source, End destination, int index) {
    return {name,
            [=](Scene& scene) {
                smartcomp::Connection::Build(&scene.cell(), 40, source.component, source.member,
                                             destination.component, destination.member, index);
            },
            [](Scene&) {}, [](Scene&) { takeAwayConnection(40); }};
}

// Something done by the belt, in the middle of a delivery from the lamp.
Operation edits(
    const char* name, const std::function<void()>& edit,
    const std::function<void()>& repair = [] {}) {
    const auto prepare = [edit](Scene& scene) {
        scene.belt().onInput = [edit](unsigned, int, long long) { edit(); };
    };
    return {name,
            [](Scene& scene) {
                if (auto* const source = scene.find<Plain>(lamp))
                    source->handleSignalValue(2, 1, 7);
            },
            prepare, [repair](Scene&) { repair(); }};
}

// And what would lead to it.
void removeBelt() {
    if (Scene::find<Plain>(belt)) smartcomp::RemoveSmartComponent(belt);
    for (const unsigned id : {1u, 4u, 5u})
        if (tableOf(Scene::cell()).contains(id)) Scene::cell().deleteConnection(id);
}

Operation sets(const char* name, std::function<void(Scene&)> act) { return {name, std::move(act)}; }

// Makes a component from an element that describes it whole.
Operation creates(const char* type) {
    return {.name = type,
            .act = [](Scene& scene) { smartcomp::Create(scene.element); },
            .prepare =
                [type](Scene& scene) {
                    Draft draft(type, fresh, longName);
                    draft.in(cell)
                        .property(1, "a property with a long name", "String", longText)
                        .property(2, "Speed", "Double", 2.5)
                        .signal(1, "in", "DigitalInput")
                        .signal(2, "a signal with a long name", "AnalogInput")
                        .connection(2, {fresh, 1}, {fresh, 1}, 1)
                        .connection(1, {fresh, 1}, {fresh, 1}, 0)
                        .connection(3, {fresh, 2}, {fresh, 1}, 3)
                        .connection(4, {fresh, 2}, {fresh, 1}, std::nullopt)
                        .child(lamp)
                        .child(belt)
                        .xy(lamp, 1, 2)
                        .xy(belt, 1, 2);
                    scene.element = draft.element();
                },
            // A type may throw when it reads its values, and is in the table by then.
            .repair =
                [](Scene& scene) {
                    Scene::takeAway(fresh);
                    GetStationElem()->append(scene.element);
                },
            .losesRecords = true};
}

}  // namespace

std::vector<Operation> operationsOfAggregations() {
    return {
        builds("Connection::Build at the front", {lamp, 2}, {belt, 3}, 0),
        builds("Connection::Build in the middle", {lamp, 2}, {belt, 3}, 2),
        builds("Connection::Build at the end", {lamp, 2}, {belt, 3}, 5),
        builds("Connection::Build beyond the end", {lamp, 2}, {belt, 3}, 50),
        {"Connection::Build of the first",
         [](Scene& scene) {
             smartcomp::Connection::Build(scene.find<Box>(fresh), 40, lamp, 2, belt, 3, 0);
         },
         [](Scene&) { Draft("Box", fresh, longName).in(cell).make<Box>(); },
         [](Scene& scene) { takeAwayConnection(40, *scene.find<Box>(fresh)); }},
        // So many that the order takes more memory.
        {"Connection::Build of ten",
         [](Scene& scene) {
             for (unsigned id = 40; id < 50; ++id)
                 if (!tableOf(scene.cell()).contains(id))
                     smartcomp::Connection::Build(&scene.cell(), id, lamp, 2, belt, 3,
                                                  static_cast<int>(id) - 35);
         },
         [](Scene&) {},
         [](Scene& scene) {
             for (unsigned id = 40; id < 50; ++id)
                 if (!tableOf(scene.cell()).contains(id)) takeAwayConnection(id);
         }},
        builds("Connection::Build of a binding", {lamp, 1}, {belt, 1}, -1),
        {"Connection::Create",
         [](Scene& scene) { smartcomp::Connection::Create(&scene.cell(), scene.element); },
         [](Scene& scene) {
             scene.element = scene.cell().element()->append("connection")->setId(40);
             scene.element->touch("source")->setValue(packed({lamp, 2}));
             scene.element->touch("destination")->setValue(packed({belt, 1}));
             scene.element->touch("index")->setValue(1u);
         }},
        {"Connection::Create of what is none",
         [](Scene& scene) { smartcomp::Connection::Create(&scene.cell(), scene.element); },
         [](Scene& scene) {
             scene.element = scene.cell().element()->append("connection")->setId(40);
             scene.element->touch("index")->setValue(std::string("first"));
         }},
        {"Connection::modify",
         [](Scene& scene) { scene.cell().getConnection(2)->modify(lamp, 4, belt, 3); }},
        {"Connection::setIndex",
         [](Scene& scene) {
             scene.cell().getConnection(5)->setIndex(9);
             scene.cell().getConnection(5)->setIndex(4);
         }},
        {"deleteConnection", [](Scene& scene) { scene.cell().deleteConnection(2); }},
        {"deleteConnection of none", [](Scene& scene) { scene.cell().deleteConnection(noSuchId); }},
        {"deleteBinding", [](Scene& scene) { scene.cell().deleteBinding(6); }},
        {"moveSgConnOrderForward", [](Scene& scene) { scene.cell().moveSgConnOrderForward(2); }},
        {"moveSgConnOrderBackward", [](Scene& scene) { scene.cell().moveSgConnOrderBackward(2); }},
        {"moveSgConnOrderForward of the first",
         [](Scene& scene) { scene.cell().moveSgConnOrderForward(1); }},
        {"the next ids",
         [](Scene& scene) {
             scene.answer =
                 std::to_string(scene.cell().getNextSgConnId() + scene.cell().getNextPropertyId() +
                                scene.cell().getNextSignalId());
         }},
        {"the views of connections",
         [](Scene& scene) {
             std::size_t count = 0;
             for ([[maybe_unused]] const auto& entry : scene.cell().connections()) ++count;
             for ([[maybe_unused]] const auto& entry : scene.cell().bindings()) count += 100;
             scene.answer = std::to_string(count);
         }},
        sets("addChildComponent",
             [](Scene& scene) { scene.cell().addChildComponent(fresh, position); }),
        sets("addChildComponent of a child",
             [](Scene& scene) { scene.cell().addChildComponent(lamp, position); }),
        // Among so many that the element makes an index of its children.
        sets("addChildComponent of many",
             [](Scene& scene) {
                 for (unsigned id = 30; id < 60; ++id)
                     scene.group().addChildComponent(id, std::nullopt);
             }),
        sets("removeChildComponent", [](Scene& scene) { scene.cell().removeChildComponent(lamp); }),
        sets("moveChild", [](Scene& scene) { scene.cell().moveChild(lamp, 2); }),
        sets("setChildXY", [](Scene& scene) { scene.group().setChildXY(inner, 5, 6); }),
        sets("getChildXY",
             [](Scene& scene) {
                 scene.answer = std::to_string(scene.cell().getChildXY(lamp).value().second);
             }),
        sets("setRoleObject", [](Scene& scene) { scene.cell().setRoleObject(7); }),
        sets("AnyOfDescendant",
             [](Scene& scene) {
                 const auto isInner = [](const sdf::SdfObject* object) {
                     return object->id() == inner;
                 };
                 scene.answer =
                     std::to_string(sdf::SdfObject::AnyOfDescendant(cell, isInner, true));
             }),
        sets("isObjectUsed",
             [](Scene& scene) { scene.answer = std::to_string(scene.cell().isObjectUsed(7)); }),
        {"StationLogic::addController", [](Scene&) { logic().addController(robot); }},
        {"StationLogic::removeController", [](Scene&) { logic().removeController(robot); },
         [](Scene&) {
             logic().addController(robot);
             connect(logic(), {robot, 1}, {cell, 1});
             connect(logic(), {cell, 2}, {robot, 1});
             connect(logic(), {cell, 2}, {cell, 1});
             bind(logic(), {cell, 2}, {robot, 1});
         }},
        {"StationLogic::isObjectUsedByComponent",
         [](Scene& scene) {
             scene.answer = std::to_string(logic().isObjectUsedByComponent(lamp));
         }},
    };
}

std::vector<Operation> operationsOfDeliveries() {
    return {
        sets("setPropertyValue of a number",
             [](Scene& scene) { scene.lamp().setPropertyValue(1, "-0.123456789012345"); }),
        sets("setPropertyValue of a text",
             [](Scene& scene) { scene.lamp().setPropertyValue(2, longText); }),
        // The belt refuses every object, which is an event.
        sets("setPropertyValue of an object",
             [](Scene& scene) { scene.lamp().setPropertyValue(3, "20"); }),
        sets("setPropertyValue of no object",
             [](Scene& scene) { scene.lamp().setPropertyValue(3, longText); }),
        sets("setPropertyValue of a vector",
             [](Scene& scene) { scene.lamp().setPropertyValue(4, "1.2345678 2.3456789 3.456"); }),
        sets("setPropertyValue in a group",
             [](Scene& scene) { scene.group().setPropertyValue(2, longText); }),
        {"shouldSetProperty in a ring",
         [](Scene& scene) {
             scene.answer = std::to_string(scene.belt().shouldSetProperty(2, longText));
         },
         [](Scene& scene) { markProperty(scene.belt(), 2, "this"); },
         [](Scene& scene) { markProperty(scene.belt(), 2, "this"); }},
        {"checkSignalIsSet in a ring",
         [](Scene& scene) { scene.answer = std::to_string(scene.belt().checkSignalIsSet(2, 1)); },
         [](Scene& scene) { markSignal(scene.belt(), 2, 2); },
         [](Scene& scene) { markSignal(scene.belt(), 2, 2); }},
        sets("setStaticSignalValue of an output",
             [](Scene& scene) { scene.lamp().setStaticSignalValue(2, 1); }),
        sets("setStaticSignalValue of a pulse",
             [](Scene& scene) { scene.lamp().setStaticSignalValue(4, 1); }),
        sets("setStaticSignalValue of an input",
             [](Scene& scene) { scene.lamp().setStaticSignalValue(1, 1); }),
        sets("setDstSignalValue", [](Scene&) { Plain::setDstSignalValue(group, 1, 1); }),
        sets("setStaticSignalValue of a group's input",
             [](Scene& scene) { scene.group().setStaticSignalValue(1, 1); }),
        sets("handleSignalValue of an output",
             [](Scene& scene) { scene.lamp().handleSignalValue(2, 1, 7); }),
        sets("handleSignalValue of a pulse",
             [](Scene& scene) { scene.lamp().handleSignalValue(4, 1, 7); }),
        sets("handleSignalValue of a group's input",
             [](Scene& scene) { scene.group().handleSignalValue(1, 1, 7); }),
        sets("handleSignalValue, again and again",
             [](Scene& scene) {
                 for (int value = 1; value <= 12; ++value)
                     scene.lamp().handleSignalValue(2, value, 7);
             }),
        edits("a delivery that deletes the next connection",
              [] {
                  if (tableOf(Scene::cell()).contains(2)) Scene::cell().deleteConnection(2);
              }),
        edits(
            "a delivery that moves a connection",
            [] { Scene::cell().moveSgConnOrderBackward(orderOf(Scene::cell()).front()); },
            [] {
                if (orderOf(Scene::cell()).front() != 1) Scene::cell().moveSgConnOrderForward(1);
            }),
        edits(
            "a delivery that makes a connection",
            [] { smartcomp::Connection::Build(&Scene::cell(), 40, lamp, 2, belt, 3, 0); },
            [] {
                if (tableOf(Scene::cell()).contains(40)) Scene::cell().deleteConnection(40);
                takeAwayConnection(40);
            }),
        edits("a delivery that deletes its source",
              [] {
                  if (Scene::lamp().hasSignal(2)) Scene::lamp().deleteSignal(2);
              }),
        edits("a delivery that deletes a property",
              [] {
                  if (Scene::belt().hasProperty(2)) Scene::belt().deleteProperty(2);
              }),
        edits("a delivery that removes its source",
              [] {
                  if (Scene::find<Plain>(lamp)) smartcomp::RemoveSmartComponent(lamp);
              }),
        edits("a delivery that removes its destination", removeBelt,
              [] {
                  if (!Scene::find<Plain>(belt)) removeBelt();
              }),
        edits("a delivery that removes all",
              [] {
                  if (Scene::find<Box>(cell)) smartcomp::RemoveSmartComponent(cell);
              }),
    };
}

std::vector<Operation> operationsOfLifecycle() {
    std::vector<Operation> operations = {
        {.name = "Build",
         .act = [](Scene&) { smartcomp::Build("Starter", fresh, longName, cell); },
         .repair =
             [](Scene& scene) {
                 Scene::takeAway(fresh);
                 scene.cell().removeChildComponent(fresh);
             },
         .losesRecords = true},
        {.name = "Build of an unknown type",
         .act = [](Scene&) { smartcomp::Build("a type that is not known", fresh, longName, cell); },
         .repair =
             [](Scene& scene) {
                 Scene::takeAway(fresh);
                 scene.cell().removeChildComponent(fresh);
             }},
        {.name = "Recover",
         .act = [](Scene& scene) { smartcomp::Recover(scene.element, scene.elements, position); },
         .prepare =
             [](Scene& scene) {
                 scene.element = scene.group().element();
                 scene.elements = {scene.find<Plain>(inner)->element()};
                 smartcomp::RemoveSubSmartComponent(inner);
                 smartcomp::RemoveSmartComponent(group);
             },
         .repair =
             [](Scene& scene) {
                 Scene::takeAway(inner);
                 Scene::takeAway(group);
                 scene.cell().removeChildComponent(group);
             },
         .losesRecords = true},
        {"RemoveSmartComponent", [](Scene&) { smartcomp::RemoveSmartComponent(lamp); }},
        {"RemoveSmartComponent of none", [](Scene&) { smartcomp::RemoveSmartComponent(noSuchId); }},
        {"RemoveSubSmartComponent", [](Scene&) { smartcomp::RemoveSubSmartComponent(inner); }},
        {"BuildVisual of none",
         [](Scene& scene) { smartcomp::BuildVisual(&scene.lamp(), nullptr); }},
        {"ElementBuilder::Build",
         [](Scene& scene) {
             scene.answer = smartcomp::ElementBuilder::Build(&scene.lamp())->name();
         }},
    };
    for (const char* type : {"Plain", "Framed", "Box", "Group", "Eye"})
        operations.push_back(creates(type));
    return operations;
}

}  // namespace trel::test
