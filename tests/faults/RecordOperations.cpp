#include <filesystem>

#include "platform/broker/SignalBroker.h"
#include "platform/sdf/Document.h"
#include "platform/sdf/ValueText.h"
#include "tests/faults/Operations.h"
#include "tests/platform/Files.h"

// Properties, signals, components by themselves, and the document.

namespace trel::test {

namespace {

using sdf::Document;
using sdf::Element;

Property& number(Scene& scene) { return *scene.lamp().getProperty(1); }
Property& words(Scene& scene) { return *scene.lamp().getProperty(2); }
SCSignal& input(Scene& scene) { return signalOf(scene.lamp(), 1); }

void setLongValues(Scene& scene) {
    number(scene).setValue("1234567890123456");
    scene.lamp().getProperty(3)->setValue("11");
    scene.lamp().getProperty(4)->setValue("1234567890 1234567890 0.5");
}

// An element with so many children that it has an index.
ElementPtr elementWithMany() {
    const auto parent = Element::Create("parent");
    for (int i = 0; i < 20; ++i) parent->append("child_" + std::to_string(i))->setValue(i);
    return parent;
}

// An aggregation that allocates nothing of its own behind its base.
class Twin : public Aggregation {
public:
    explicit Twin(const Aggregation& other) : Aggregation(other) {}
    void execute(long long) override {}
};

Operation onElement(const char* name, std::function<void(Element&)> act) {
    return {name, [act](Scene& scene) { act(*scene.element); },
            [](Scene& scene) { scene.element = elementWithMany(); }};
}

// Moves an element of the lamp into another one, and back where that failed.
Operation moves(const char* name, std::function<void(Scene&)> act) {
    return {name, std::move(act), [](Scene& scene) {
                scene.element = elementWithMany();
                const auto other = Element::Create("other");
                scene.elements = {other->append("moved"), other};
            }};
}

}  // namespace

std::vector<Operation> operationsOfRecords() {
    return {
        {"Property::Create", [](Scene& scene) { Property::Create(&scene.lamp(), scene.element); },
         [](Scene& scene) {
             scene.element =
                 propertyElement(9, "New", "String", longText, "a long unit, a very long one");
             scene.lamp().element()->append(scene.element);
         }},
        {"Property::setDescription", [](Scene& scene) { number(scene).setDescription(longText); }},
        {"Property::setReadOnly", [](Scene& scene) { number(scene).setReadOnly(true); }},
        {"Property::setType", [](Scene& scene) { number(scene).setType("ReferenceFrame"); }},
        {"Property::setUnit", [](Scene& scene) { number(scene).setUnit(longText); }},
        {"Property::setUnit for the first time",
         [](Scene& scene) { words(scene).setUnit(longText); }},
        {"Property::setVisible", [](Scene& scene) { number(scene).setVisible(true); }},
        {"Property::setName", [](Scene& scene) { number(scene).setName(longText); }},
        {"Property::setValue of a text", [](Scene& scene) { words(scene).setValue(longText); }},
        {"Property::setValue of a long number",
         [](Scene& scene) { number(scene).setValue("-0.12345678901234567"); }},
        {"Property::setValue of a vector",
         [](Scene& scene) {
             scene.lamp().getProperty(4)->setValue("-0.1234567 2.3456789 3.45678");
         }},
        {"Property::setValue of what is none",
         [](Scene& scene) { number(scene).setValue(longText); }},
        {"Property::getObjectId of what is none",
         [](Scene& scene) { scene.lamp().getProperty(3)->getObjectId(); },
         [](Scene& scene) { scene.lamp().getProperty(3)->setValue("none"); },
         [](Scene& scene) { scene.lamp().getProperty(3)->setValue("none"); }},
        {"Property::getDisplayValue",
         [](Scene& scene) {
             for (const unsigned id : {1u, 2u, 3u, 4u})
                 scene.answer += scene.lamp().getProperty(id)->getDisplayValue();
         },
         setLongValues, setLongValues},
        {"Property::getDisplayValue of a rotation",
         [](Scene& scene) { scene.answer = words(scene).getDisplayValue(); },
         [](Scene& scene) { words(scene).setType("Orient")->setValue("0.7 0.1 0.2 0.3"); },
         [](Scene& scene) { words(scene).setValue("0.7 0.1 0.2 0.3"); }},
        {"Property, copied",
         [](Scene& scene) {
             Property copy(words(scene));
             copy = number(scene);
             scene.answer = copy.value() + copy.unit();
         }},
        {"SCSignal::Create", [](Scene& scene) { SCSignal::Create(&scene.lamp(), scene.element); },
         [](Scene& scene) {
             scene.element = signalElement(9, longText, "AnalogInput", 1.5);
             scene.lamp().element()->append(scene.element);
         }},
        {.name = "SCSignal::setName",
         .act = [](Scene& scene) { input(scene).setName(longText); },
         .mayDiffer = {"Lamp/signal 1 name"}},
        {.name = "SCSignal::setAutoReset",
         .act = [](Scene& scene) { input(scene).setAutoReset(true); },
         .mayDiffer = {"Lamp/signal 1 auto_reset"}},
        {"SCSignal::setVisible", [](Scene& scene) { input(scene).setVisible(true); }},
        {"SCSignal::setDescription", [](Scene& scene) { input(scene).setDescription(longText); }},
        {"SCSignal::setValue",
         [](Scene& scene) {
             input(scene).setValue(1);
             input(scene).setValue(2.5);
             input(scene).setValue(SignalValue(3));
             input(scene).setValue(std::string("4"));
         }},
        {.name = "SCSignal::setValue for the first time",
         .act = [](Scene& scene) { input(scene).setValue(7); },
         .prepare = [](Scene& scene) { input(scene).element()->get("value")->removeFromParent(); },
         .mayDiffer = {"Lamp/signal 1 value"}},
        {"SCSignal::getValueString",
         [](Scene& scene) {
             scene.answer = signalOf(scene.lamp(), 3).getValueString() +
                            input(scene).getTypeString() + input(scene).getValueString();
         },
         [](Scene& scene) { signalOf(scene.lamp(), 3).setValue(1e30); },
         [](Scene& scene) { signalOf(scene.lamp(), 3).setValue(1e30); }},
        {"SCSignal, copied",
         [](Scene& scene) {
             SCSignal copy(input(scene));
             copy = signalOf(scene.lamp(), 3);
             scene.answer = copy.getName() + copy.type();
         }},
        {"Connection, copied",
         [](Scene& scene) {
             Connection copy(*scene.cell().getConnection(1));
             copy = *scene.cell().getConnection(2);
             scene.answer = std::to_string(copy.getDstComponentId());
         }},
        {"Connection::SetComponentId",
         [](Scene& scene) {
             Connection::SetComponentId(scene.element, 9);
             scene.answer = std::to_string(Connection::GetComponentId(scene.element));
         },
         [](Scene& scene) { scene.element = Element::Create("source"); }},
    };
}

std::vector<Operation> operationsOfComponents() {
    return {
        {"getProperty of none", [](Scene& scene) { scene.lamp().getProperty(noSuchId); }},
        {"getSignal of none", [](Scene& scene) { scene.lamp().getSignal(noSuchId); }},
        {"deleteProperty", [](Scene& scene) { scene.lamp().deleteProperty(2); }},
        {"deleteSignal", [](Scene& scene) { scene.lamp().deleteSignal(1); }},
        {"GetTypeName",
         [](Scene& scene) { scene.answer = SmartComponent::GetTypeName(Scene::lampId); }},
        {"GetTypeName of none", [](Scene&) { SmartComponent::GetTypeName(noSuchId); }},
        {"questions",
         [](Scene& scene) {
             const Plain& lamp = scene.lamp();
             scene.answer = std::to_string(lamp.isTopLevel() + lamp.isUser() + lamp.isSensor() +
                                           lamp.hasSignal(1) + Plain::objectIsInvalid(noSuchId));
         }},
        {"notices",
         [](Scene& scene) {
             scene.lamp().updateModel();
             scene.lamp().notifySignalValueChanged(1);
             scene.lamp().notifyPropertyValueChanged(1);
         }},
        {"the choices of a property",
         [](Scene& scene) {
             scene.answer = std::to_string(scene.lamp().getEnumPropertyList(1, longText).size() +
                                           scene.lamp().validatePropertyValue(1, longText));
         }},
        {"getPropertyValueImpl", [](Scene& scene) { scene.lamp().getPropertyValueImpl(1); }},
        {"getPropertyDouble",
         [](Scene& scene) {
             double number = 0;
             scene.lamp().getPropertyDouble(1, number);
             scene.answer = std::to_string(number);
         }},
        {"getPropertyXYZ",
         [](Scene& scene) {
             rob::XYZTemplate<double> xyz{};
             scene.lamp().getPropertyXYZ(4, xyz);
             scene.answer = std::to_string(xyz.x + 10 * xyz.y + 100 * xyz.z);
         }},
        {"setName", [](Scene& scene) { scene.lamp().setName(longText); }},
        {"getDisplayString", [](Scene& scene) { scene.answer = scene.lamp().getDisplayString(); }},
        {"setPose", [](Scene& scene) { scene.cell().setPose({{1, 2, 3}, {1, 0, 0, 0}}); }},
        {.name = "a copy",
         .act =
             [](Scene& scene) {
                 // It shares what it holds, so that it is never destroyed.
                 leakOnPurpose([&] {
                     const auto* const copy = new Twin(scene.cell());
                     scene.answer = std::to_string(copy->getSignals().size());
                 });
             },
         .losesRecords = true},
        {"Sensor::setVisualPos",
         [](Scene& scene) {
             Eye eye(scene.element, sdf::ObjectType::Sensor);
             eye.setVisualPos();
         },
         [](Scene& scene) { scene.element = Element::Create("smart_component"); }},
        {"SignalBroker::subscribe",
         [](Scene&) {
             broker::Listener listener;
             std::vector<broker::Listener> others(20);
             struct Ended {
                 ~Ended() {
                     for (auto& other : all) broker::SignalBroker::unsubscribe(other);
                 }
                 std::vector<broker::Listener>& all;
             } ended{others};
             for (auto& other : others) broker::SignalBroker::subscribe(other);
         }},
    };
}

std::vector<Operation> operationsOfDocuments() {
    std::vector<Operation> operations = {
        onElement("Element::touch", [](Element& e) { e.touch("a_key_with_a_rather_long_name"); }),
        onElement("Element::append", [](Element& e) { e.append("child_3"); }),
        onElement("Element::appendObject",
                  [](Element& e) { e.appendObject("child_3", 7, longText); }),
        onElement("Element::setValue", [](Element& e) { e.setValue(longText); }),
        onElement("Element::setValueFromString",
                  [](Element& e) { e.setValueFromString(longText); }),
        onElement("Element::setName", [](Element& e) { e.setName(longText); }),
        onElement("Element::addAttribute",
                  [](Element& e) { e.addAttribute("colour", "string", longText); }),
        onElement("Element::getId of none", [](Element& e) { e.getId(false); }),
        onElement("Element::setValue of no value", [](Element& e) { e.setValue('c'); }),
        onElement("Element::append of itself", [](Element& e) { e.append(e.shared_from_this()); }),
        onElement("the seventeenth child",
                  [](Element& e) {
                      const auto small = Element::Create("small");
                      for (int i = 0; i < 18; ++i) small->append("one_of_those_with_long_names");
                      e.append(small);
                  }),
        moves("Element::append of another's child",
              [](Scene& scene) { scene.element->append(scene.elements[0]); }),
        moves("Element::moveBefore",
              [](Scene& scene) {
                  const auto last = scene.element->get("child_19");
                  scene.element->moveBefore(*last, scene.element->firstChild());
              }),
        {"Station::text", [](Scene& scene) { scene.answer = Station::inst().text(); }},
        {"Station::save",
         [](Scene& scene) {
             Station::inst().save(scene.answer);
             scene.answer = bytesOf(scene.answer);
         },
         [](Scene& scene) {
             scene.answer = (std::filesystem::temp_directory_path() /
                             ("trel-memory-" + std::to_string(::getpid()) + ".xml"))
                                .string();
         },
         [](Scene& scene) {
             if (scene.answer.starts_with("<"))
                 scene.answer = (std::filesystem::temp_directory_path() /
                                 ("trel-memory-" + std::to_string(::getpid()) + ".xml"))
                                    .string();
         }},
    };
    for (const char* file :
         {"roundtrip/value_types.xml", "roundtrip/mixed_content.xml", "roundtrip/instructions.xml",
          "roundtrip/signals_and_connections.xml", "roundtrip/own_value_and_keys.xml"})
        operations.push_back(
            {file,
             [](Scene& scene) {
                 const Document read = Document::read(scene.answer);
                 scene.answer = read.text();
             },
             [file](Scene& scene) { scene.answer = (testFiles() / file).string(); }});
    return operations;
}

}  // namespace trel::test
