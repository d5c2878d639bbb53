#include "smartcomp/SmartComponent.h"

#include <array>
#include <stdexcept>
#include <utility>

#include "platform/broker/SignalBroker.h"
#include "platform/station/ControllerInterface.h"
#include "smartcomp/Aggregation.h"
#include "smartcomp/Connection.h"
#include "smartcomp/Lookup.h"
#include "smartcomp/Property.h"
#include "smartcomp/SCSignal.h"
#include "smartcomp/StationLogic.h"
#include "smartcomp/Text.h"

namespace trel::smartcomp {

using broker::SignalBroker;

SmartComponent::SmartComponent(std::shared_ptr<sdf::Element> element, sdf::ObjectType type)
    : AttachableNode(element, type) {
    setVisAndObjParent(element->touch("parent")->asUInt(""));
    for (const auto& child : element->children("property")) Property::Create(this, child);
    for (const auto& child : element->children("signal")) SCSignal::Create(this, child);
}

SmartComponent::SmartComponent(const SmartComponent&) = default;
SmartComponent& SmartComponent::operator=(const SmartComponent&) = default;

SmartComponent::~SmartComponent() {
    for (const auto& [id, property] : properties_) delete property;
    for (const auto& [id, signal] : signals_) delete signal;
    element()->removeFromParent();
}

// Answers of a component that does nothing.

bool SmartComponent::canAttachTo(sdf::SdfNode*) const { return false; }
bool SmartComponent::hasVisual() const { return false; }
bool SmartComponent::isMovable() const { return false; }
bool SmartComponent::isActivated() const { return false; }
void SmartComponent::initialize() {}
void SmartComponent::reset() {}
void SmartComponent::start(long long) {}
void SmartComponent::stop() {}
bool SmartComponent::isObjectUsed(unsigned) const { return false; }
bool SmartComponent::validatePropertyValue(unsigned, const std::string&) const { return true; }
bool SmartComponent::checkPropertyObjectType(unsigned, sdf::SdfObject*) const { return false; }
std::vector<std::string> SmartComponent::getEnumPropertyList(unsigned, const std::string&) {
    return {};
}
unsigned SmartComponent::getDependentPropId(unsigned) const { return 0; }
rob::Vec3Template<double> SmartComponent::getDisplayVec3(
    unsigned, const std::unordered_map<unsigned, std::string>&, float x, float y, float z) {
    return {x, y, z};
}
std::any SmartComponent::getPropertyValueImpl(unsigned) {
    throw std::logic_error("not implemented");
}

// Look-ups and bookkeeping.

Property* SmartComponent::getProperty(unsigned id) const { return at(properties_, id); }

SignalInterface* SmartComponent::getSignal(unsigned id) const { return at(signals_, id); }

// Only addSignal enters signals, and it takes nothing else.
SCSignal& SmartComponent::signalAt(unsigned id) const {
    return static_cast<SCSignal&>(*getSignal(id));
}

bool SmartComponent::hasProperty(unsigned id) const { return properties_.contains(id); }

bool SmartComponent::hasSignal(unsigned id) const { return signals_.contains(id); }

Property* SmartComponent::addProperty(Property* property) {
    return properties_[property->id()] = property;
}

SCSignal* SmartComponent::addSignal(SCSignal* signal) {
    signals_[signal->id()] = signal;
    return signal;
}

void SmartComponent::deleteProperty(unsigned id) {
    const std::unique_ptr<Property> property(getProperty(id));
    properties_.erase(id);
}

void SmartComponent::deleteSignal(unsigned id) {
    const std::unique_ptr<SCSignal> signal(&signalAt(id));
    signals_.erase(id);
    // Other than a deleted property's, its element leaves the document.
    signal->element()->removeFromParent();
}

// Flags and notices.

bool SmartComponent::isSensor() const { return asType(sdf::ObjectType::Sensor); }

bool SmartComponent::isUser() const { return asType(sdf::ObjectType::UserComponent); }

// The type itself, where the other two accept what counts as their type.
bool SmartComponent::isStationLogic() const {
    return objectType() == sdf::ObjectType::StationLogic;
}

bool SmartComponent::isTopLevel() const {
    return getObjParentId() == StationLogic::inst()->id();
}

bool SmartComponent::objectIsInvalid(unsigned id) {
    auto& manager = *sdf::SdfManager::inst();
    const std::shared_lock lock(manager.mutex());
    const auto entry = manager.objects().find(id);
    return entry == manager.objects().end() || !entry->second;
}

std::string SmartComponent::GetTypeName(unsigned id) {
    return objectAs<sdf::SdfObject>(id).element()->asString("type");
}

void SmartComponent::notifyPropertyValueChanged(unsigned propertyId) {
    SignalBroker::scPropertyValueChanged(propertyId, id());
}

void SmartComponent::notifySignalValueChanged(unsigned signalId) {
    SignalBroker::scSignalValueChanged(signalId, id());
}

void SmartComponent::updateModel() { SignalBroker::smartComponentUpdated(id()); }

// Property values.

void SmartComponent::setPropertyValue(unsigned propertyId, const std::string& value) {
    // The caller's text may be the property's own, which changes on the way.
    const std::string text = value;
    getProperty(propertyId)->setValue(text);
    settingPropertyValues_.try_emplace(propertyId, text);
    notifyPropertyValueChanged(propertyId);
    propagateProperty(propertyId, text);
}

bool SmartComponent::shouldSetProperty(unsigned id, const std::string& value) {
    const Property& property = *getProperty(id);
    if (property.value() == value) return false;
    if (!settingPropertyValues_.contains(id)) return true;
    SignalBroker::reportEvent("10007", name(), property.name(), value);
    return false;
}

void SmartComponent::endSetPropertyValue(unsigned id) { settingPropertyValues_.erase(id); }

void SmartComponent::propagateProperty(unsigned id, const std::string& value) {
    if (isStationLogic()) return;
    const unsigned ownId = this->id();
    for (const auto& [bindingId, binding] : objectAs<Aggregation>(getObjParentId()).bindings()) {
        if (!binding->matchSrc(ownId, id)) continue;
        auto& destination = objectAs<SmartComponent>(binding->getDstComponentId());
        if (!refusesObject(id, *binding, destination, value))
            destination.setPropertyValue(binding->getDstPropertyId(), value);
    }
    if (!isUser()) return;
    // Inwards no object type is asked for.
    for (const auto& [bindingId, binding] : as<Aggregation>(this).bindings())
        if (binding->matchSrc(ownId, id))
            objectAs<SmartComponent>(binding->getDstComponentId())
                .setPropertyValue(binding->getDstPropertyId(), value);
}

// Whether the value of an "ObjectId" property names an object that does not
// suit the destination, which is then reported.
bool SmartComponent::refusesObject(unsigned id, const Connection& binding,
                                   SmartComponent& destination, const std::string& value) const {
    if (!getProperty(id)->isObjectId()) return false;
    const unsigned named = text::toUnsigned(value);
    // What names nothing is checked as the station.
    auto& object = objectAs<sdf::SdfObject>(named == 0 ? 1 : named);
    const unsigned destinationId = binding.getDstPropertyId();
    if (destination.checkPropertyObjectType(destinationId, &object)) return false;
    SignalBroker::reportEvent("10007", destination.name(),
                              destination.getProperty(destinationId)->name(), value);
    return true;
}

void SmartComponent::getPropertyDouble(unsigned id, double& out) const {
    out = getProperty(id)->element()->asDouble("value");
}

void SmartComponent::getPropertyXYZ(unsigned id, rob::XYZTemplate<double>& out) const {
    std::array<double, 3> numbers = {out.x, out.y, out.z};
    text::readNumbers(getProperty(id)->value(), numbers);
    out = {numbers[0], numbers[1], numbers[2]};
}

// Signal values while the station is edited.

void SmartComponent::setStaticSignalValue(unsigned id, SignalValue value) {
    if (getSignal(id)->isInput())
        setStaticInputSignal(id, value);
    else
        setStaticOutputSignal(id, value);
}

void SmartComponent::setStaticInputSignal(unsigned signalId, SignalValue value) {
    SCSignal& signal = signalAt(signalId);
    signal.setValue(value);
    if (signal.isAutoReset()) signal.setValue(0);
    notifySignalValueChanged(signalId);
    settingSignalValues_.try_emplace(signalId, value);
}

void SmartComponent::setStaticOutputSignal(unsigned id, SignalValue value) {
    if (checkSignalIsSet(id, value)) return;
    SCSignal& signal = signalAt(id);
    if (signal.getValue() == value) return;
    signal.setValue(value);
    // An analog one, too, is the int 0 after its pulse.
    if (signal.isAutoReset()) signal.setValue(0);
    notifySignalValueChanged(id);
    settingSignalValues_.try_emplace(id, value);
    propagateStaticOutputSignal(id, value);
    // Not reached after a throw: the mark of an interrupted setting stays.
    endSetSignalValue(id);
}

void SmartComponent::propagateStaticOutputSignal(unsigned id, SignalValue& value) {
    if (getObjParentId() == 0) return;
    const SCSignal& source = signalAt(id);
    objectAs<Aggregation>(getObjParentId())
        .forEachConnection(this->id(), id, [&](const Connection& connection) {
            const unsigned component = connection.getDstComponentId();
            const unsigned signal = connection.getDstSignalId();
            setDstSignalValue(component, signal, value);
            if (source.isAutoReset()) setDstSignalValue(component, signal, 0);
        });
}

void SmartComponent::setDstSignalValue(unsigned dstComponentId, unsigned dstSignalId,
                                       SignalValue value) {
    sdf::SdfObject* const object = objectAt(dstComponentId);
    if (auto* const component = dynamic_cast<SmartComponent*>(object))
        component->setStaticSignalValue(dstSignalId, value);
    else
        as<ControllerInterface>(object).setSignalValue(dstSignalId, value, false);
}

// Signal values while the simulation runs.

void SmartComponent::handleSignalValue(unsigned id, int value, long long time) {
    if (getSignal(id)->isInput())
        handleInputSignal(id, value, time);
    else
        handleOutputSignal(id, value, time);
}

void SmartComponent::handleOutputSignal(unsigned id, int value, long long time) {
    if (checkSignalIsSet(id, value)) return;
    SCSignal& signal = signalAt(id);
    const int old = signal.getDigitalValue();
    if (old == value) return;
    signal.setValue(value);
    // Back to what it was, where a static pulse ends at 0.
    if (signal.isAutoReset()) signal.setValue(old);
    notifySignalValueChanged(id);
    settingSignalValues_.try_emplace(id, value);
    propagateDynamicOutputSignal(id, value, time);
    // Not reached after a throw: the mark of an interrupted setting stays.
    endSetSignalValue(id);
}

void SmartComponent::propagateDynamicOutputSignal(unsigned id, int value, long long time) {
    if (isStationLogic()) return;
    const SCSignal& source = signalAt(id);
    objectAs<Aggregation>(getObjParentId())
        .forEachConnection(this->id(), id, [&](const Connection& connection) {
            const unsigned component = connection.getDstComponentId();
            const unsigned signal = connection.getDstSignalId();
            handleDstSignalValue(component, signal, value, time);
            if (source.isAutoReset()) handleDstSignalValue(component, signal, 0, time);
        });
}

void SmartComponent::handleDstSignalValue(unsigned dstComponentId, unsigned dstSignalId, int value,
                                          long long time) {
    sdf::SdfObject* const object = objectAt(dstComponentId);
    if (auto* const component = dynamic_cast<SmartComponent*>(object))
        component->handleSignalValue(dstSignalId, value, time);
    else
        as<ControllerInterface>(object).setSignalValue(dstSignalId, value, true);
}

// The marks of what is being set.

bool SmartComponent::checkSignalIsSet(unsigned id, SignalValue value) {
    const auto entry = settingSignalValues_.find(id);
    if (entry == settingSignalValues_.end()) return false;
    if (entry->second != value)
        SignalBroker::reportEvent("10008", name(), getSignal(id)->getName(), "");
    return true;
}

void SmartComponent::endSetSignalValue(unsigned id) { settingSignalValues_.erase(id); }

}  // namespace trel::smartcomp
