#include "tests/smartcomp/Types.h"

#include <QString>
#include <stdexcept>
#include <string_view>
#include <unordered_set>

#include "platform/sdf/ObjectType.h"
#include "smartcomp/Hold.h"
#include "smartcomp/Manager.h"

namespace trel::test {

namespace {

std::unordered_set<const smartcomp::SmartComponent*>& alive() {
    static auto* const all = new std::unordered_set<const smartcomp::SmartComponent*>;
    return *all;
}

template <typename Type, sdf::ObjectType objectType>
smartcomp::SmartComponent* create(ElementPtr element) {
    ++made().created;
    made().element = element;
    return new Type(std::move(element), objectType);
}

template <typename Type, sdf::ObjectType objectType>
smartcomp::SmartComponent* build(ElementPtr element) {
    ++made().built;
    made().element = element;
    return new Type(std::move(element), objectType);
}

smartcomp::SmartComponent* buildStarter(ElementPtr element) {
    const auto property = element->appendObject("property", 1, "Speed");
    property->setValue(2.5);
    property->touch("type")->setValue(std::string("Double"));
    const auto signal = element->append("signal")->setId(1);
    signal->touch("type")->setValue(std::string("DigitalInput"));
    return build<Plain, sdf::ObjectType::Component>(element);
}

smartcomp::SmartComponent* fail(ElementPtr) { throw std::runtime_error("no such part"); }

template <typename Type, sdf::ObjectType objectType>
void registerType(std::string_view name) {
    smartcomp::Manager::inst()->registerType(name, create<Type, objectType>,
                                             build<Type, objectType>,
                                             [] { return QString("a part of the tests"); });
}

}  // namespace

Alive::Alive(const smartcomp::SmartComponent* owner) : owner_(owner) { alive().insert(owner); }
Alive::~Alive() { alive().erase(owner_); }
bool Alive::contains(const smartcomp::SmartComponent* component) {
    return alive().contains(component);
}
std::size_t Alive::count() { return alive().size(); }

std::function<void(Plain&)> Plain::whenRead;

void Plain::handleInputSignal(unsigned signalId, int value, long long time) {
    say("input " + std::to_string(signalId) + " = " + std::to_string(value) + " at " +
        std::to_string(time));
    if (onInput) onInput(signalId, value, time);
}

void Plain::readPropertyValues() {
    say("read");
    if (whenRead) whenRead(*this);
}

bool Plain::checkPropertyObjectType(unsigned propertyId, sdf::SdfObject* object) const {
    return accepts ? accepts(propertyId, object)
                   : SmartComponent::checkPropertyObjectType(propertyId, object);
}

void Framed::setPropertyValue(unsigned propertyId, const std::string& value) {
    const smartcomp::Hold hold(*this);
    if (!shouldSetProperty(propertyId, value)) return;
    SmartComponent::setPropertyValue(propertyId, value);
    if (onProperty) onProperty(propertyId, value);
    endSetPropertyValue(propertyId);
}

Thing::Thing(unsigned id, const std::string& name)
    : SdfObject(
          [&] {
              auto element = sdf::Element::Create("thing");
              element->setId(id);
              element->setName(name);
              return element;
          }(),
          sdf::ObjectType::Controller) {}

void Controller::setSignalValue(unsigned signalId, SignalValue value, bool dynamic) {
    eventLog().add(name() + ".set " + std::to_string(signalId) + " = " + text(value) +
                   (dynamic ? " dynamic" : " static"));
}

void registerTypes() {
    using sdf::ObjectType;
    registerType<Plain, ObjectType::Component>("Plain");
    registerType<Framed, ObjectType::Component>("Framed");
    registerType<Box, ObjectType::Component>("Box");
    registerType<Box, ObjectType::UserComponent>("Group");
    registerType<Eye, ObjectType::Sensor>("Eye");
    const auto describe = [] { return QString("a part of the tests"); };
    smartcomp::Manager::inst()->registerType("Starter", create<Plain, ObjectType::Component>,
                                             buildStarter, describe);
    smartcomp::Manager::inst()->registerType("Failing", fail, fail, describe);
}

Made& made() {
    static Made all;
    return all;
}

}  // namespace trel::test
