#include "smartcomp/SmartComponent.h"

#include <array>
#include <stdexcept>
#include <utility>

#include "platform/broker/SignalBroker.h"
#include "platform/station/ControllerInterface.h"
#include "smartcomp/Aggregation.h"
#include "smartcomp/Connection.h"
#include "smartcomp/Hold.h"
#include "smartcomp/Lookup.h"
#include "smartcomp/Property.h"
#include "smartcomp/Removals.h"
#include "smartcomp/SCSignal.h"
#include "smartcomp/StationLogic.h"
#include "smartcomp/Text.h"
#include "smartcomp/Walk.h"

namespace trel::smartcomp {

using broker::SignalBroker;

namespace {

// Apart from the deliveries, which nest and have no stack to spare for its texts.
[[gnu::noinline]] void report(const char* code, const SmartComponent& component,
                              const std::string& member, const std::string& value) {
    SignalBroker::reportEvent(code, component.name(), member, value);
}

}  // namespace

struct SmartComponent::Remains {
    bool component = false;  // the component itself
    std::vector<std::unique_ptr<sdf::SdfObject>> members;
    std::vector<std::unique_ptr<SCSignal>> signals;
};

SmartComponent::Held::Held() = default;
SmartComponent::Held::Held(const Held&) {}
SmartComponent::Held& SmartComponent::Held::operator=(const Held&) { return *this; }
SmartComponent::Held::~Held() = default;

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
    // One removed while it was held left the document then; its element may
    // stand there again, under another component.
    if (!isRemoved() && !held_.keepsElement) element()->removeFromParent();
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

[[gnu::noinline]] Property* SmartComponent::getProperty(unsigned id) const { return at(properties_, id); }

[[gnu::noinline]] SignalInterface* SmartComponent::getSignal(unsigned id) const { return at(signals_, id); }

// Only addSignal enters signals, and it takes nothing else.
[[gnu::noinline]] SCSignal& SmartComponent::signalAt(unsigned id) const {
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
    Property* const property = getProperty(id);
    makeRoom();
    Removals::inst().add(Removals::What::Property, this->id(), id);
    properties_.erase(id);
    discard(std::unique_ptr<Property>(property));
}

void SmartComponent::deleteSignal(unsigned id) {
    SCSignal* const signal = &signalAt(id);
    makeRoom();
    Removals::inst().add(Removals::What::Signal, this->id(), id);
    signals_.erase(id);
    // Other than a deleted property's, its element leaves the document.
    signal->element()->removeFromParent();
    if (held_.holds > 0)
        held_.remains->signals.emplace_back(signal);
    else
        delete signal;
}

// Removal while calls are under way.

void SmartComponent::makeRoom() {
    Removals::inst().makeRoom();
    if (held_.holds == 0) return;
    if (!held_.remains) held_.remains = std::make_unique<Remains>();
    const auto roomForOne = [](auto& remains) {
        if (remains.size() == remains.capacity()) remains.reserve(2 * remains.size() + 4);
    };
    roomForOne(held_.remains->members);
    roomForOne(held_.remains->signals);
}

void SmartComponent::discard(std::unique_ptr<sdf::SdfObject> member) noexcept {
    if (held_.holds > 0) held_.remains->members.push_back(std::move(member));
}

// Out of the table and the document now; destroyed when nobody holds it.
void SmartComponent::retire() {
    makeRoom();
    Removals::inst().add(Removals::What::Component, id(), 0);
    sdf::SdfManager::Remove(id());
    if (held_.holds == 0) {
        delete this;
        return;
    }
    element()->removeFromParent();
    held_.removed = true;
    held_.remains->component = true;
}

// The last hold is gone.
void SmartComponent::bury() {
    const std::unique_ptr<Remains> remains = std::move(held_.remains);
    if (remains->component) delete this;
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

[[gnu::noinline]] Aggregation& SmartComponent::parentAggregation() const {
    return objectAs<Aggregation>(getObjParentId());
}

bool SmartComponent::objectIsInvalid(unsigned id) { return !findObject(id); }

std::string SmartComponent::GetTypeName(unsigned id) {
    return elementAt(id)->asString("type");
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
    const Hold hold(*this);
    if (isRemoved()) return;
    // The caller's text may be the property's own, which changes on the way.
    const std::string text = value;
    getProperty(propertyId)->setValue(text);
    markProperty(propertyId, text);
    notifyPropertyValueChanged(propertyId);
    if (hold.goneProperty(id(), propertyId) || hold.goneComponent(getObjParentId())) return;
    propagateProperty(propertyId, text);
}

bool SmartComponent::shouldSetProperty(unsigned id, const std::string& value) {
    const Property& property = *getProperty(id);
    if (property.value() == value) return false;
    if (!settingPropertyValues_.contains(id)) return true;
    report("10007", *this, property.name(), value);
    return false;
}

void SmartComponent::endSetPropertyValue(unsigned id) { settingPropertyValues_.erase(id); }

void SmartComponent::propagateProperty(unsigned id, const std::string& value) {
    if (isStationLogic()) return;
    const Hold hold(*this);
    offerAlong(parentAggregation(), id, value, true);
    // Inwards no object type is asked for.
    if (isUser() && !hold.goneProperty(this->id(), id))
        offerAlong(as<Aggregation>(this), id, value, false);
}

// Offers the text to every property that a binding of `owner` leads to; if it
// `asks`, an object that does not suit the destination is not offered.
void SmartComponent::offerAlong(Aggregation& owner, unsigned id, const std::string& value,
                                bool asks) {
    Walk walk(owner, Walk::Over::Bindings, this->id(), id);
    while (const Connection* const binding = walk.next()) {
        const unsigned component = binding->getDstComponentId();
        const unsigned property = binding->getDstPropertyId();
        if (!walk.reaches(component, property)) continue;
        SmartComponent& destination = componentAt(component);
        const Hold hold(destination);
        if (asks && getProperty(id)->isObjectId() && refusesObject(destination, property, value))
            continue;
        if (walk.reaches(component, property)) destination.setPropertyValue(property, value);
    }
}

[[gnu::noinline]] SmartComponent& SmartComponent::componentAt(unsigned id) {
    return objectAs<SmartComponent>(id);
}

// Whether the object that the text names does not suit the destination, which
// is then reported.
[[gnu::noinline]] bool SmartComponent::refusesObject(SmartComponent& destination, unsigned destinationId,
                                   const std::string& value) const {
    const unsigned named = text::toUnsigned(value);
    // What names nothing is checked as the station.
    auto& object = objectAs<sdf::SdfObject>(named == 0 ? 1 : named);
    const Hold hold(destination);
    if (destination.checkPropertyObjectType(destinationId, &object)) return false;
    if (!hold.goneProperty(destination.id(), destinationId))
        report("10007", destination, destination.getProperty(destinationId)->name(), value);
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
    const Hold hold(*this);
    if (isRemoved()) return;
    if (getSignal(id)->isInput())
        setStaticInputSignal(id, value);
    else
        setStaticOutputSignal(id, value);
}

void SmartComponent::setStaticInputSignal(unsigned signalId, SignalValue value) {
    const Hold hold(*this);
    SCSignal& signal = signalAt(signalId);
    signal.setValue(value);
    if (signal.isAutoReset()) signal.setValue(0);
    notifySignalValueChanged(signalId);
    markSignal(signalId, value);
}

void SmartComponent::setStaticOutputSignal(unsigned id, SignalValue value) {
    const Hold hold(*this);
    if (isRemoved() || checkSignalIsSet(id, value)) return;
    SCSignal& signal = signalAt(id);
    if (signal.getValue() == value) return;
    signal.setValue(value);
    // An analog one, too, is the int 0 after its pulse.
    if (signal.isAutoReset()) signal.setValue(0);
    notifySignalValueChanged(id);
    if (isCutOff(hold, id)) return;
    markSignal(id, value);
    propagateStaticOutputSignal(id, value);
    // Not reached after a throw: the mark of an interrupted setting stays.
    endSetSignalValue(id);
}

// Whether the signal, the component or its parent was removed under the hold.
[[gnu::noinline]] bool SmartComponent::isCutOff(const Hold& hold, unsigned signalId) const {
    return hold.goneSignal(id(), signalId) || hold.goneComponent(getObjParentId());
}

void SmartComponent::propagateStaticOutputSignal(unsigned id, SignalValue& value) {
    if (getObjParentId() == 0) return;
    deliverAlong(parentAggregation(), this->id(), signalAt(id), value,
                 setDstSignalValue);
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
    const Hold hold(*this);
    if (isRemoved()) return;
    if (getSignal(id)->isInput())
        handleInputSignal(id, value, time);
    else
        handleOutputSignal(id, value, time);
}

void SmartComponent::handleOutputSignal(unsigned id, int value, long long time) {
    const Hold hold(*this);
    if (isRemoved() || checkSignalIsSet(id, value)) return;
    SCSignal& signal = signalAt(id);
    const int old = signal.getDigitalValue();
    if (old == value) return;
    signal.setValue(value);
    // Back to what it was, where a static pulse ends at 0.
    if (signal.isAutoReset()) signal.setValue(old);
    notifySignalValueChanged(id);
    if (isCutOff(hold, id)) return;
    markSignal(id, value);
    propagateDynamicOutputSignal(id, value, time);
    // Not reached after a throw: the mark of an interrupted setting stays.
    endSetSignalValue(id);
}

void SmartComponent::propagateDynamicOutputSignal(unsigned id, int value, long long time) {
    if (isStationLogic()) return;
    deliverAlong(parentAggregation(), this->id(), signalAt(id), value,
                 [time](unsigned component, unsigned signal, int delivered) {
                     handleDstSignalValue(component, signal, delivered, time);
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

// The marks of what is being set. Kept out of line: deliveries nest, and their
// stack is for what they need after the next one.

[[gnu::noinline]] bool SmartComponent::checkSignalIsSet(unsigned id, SignalValue value) {
    const auto entry = settingSignalValues_.find(id);
    if (entry == settingSignalValues_.end()) return false;
    if (entry->second != value) report("10008", *this, getSignal(id)->getName(), "");
    return true;
}

// An entry that is there keeps its value.
[[gnu::noinline]] void SmartComponent::markSignal(unsigned id, const SignalValue& value) {
    settingSignalValues_.try_emplace(id, value);
}

[[gnu::noinline]] void SmartComponent::markProperty(unsigned id, const std::string& value) {
    settingPropertyValues_.try_emplace(id, value);
}

[[gnu::noinline]] void SmartComponent::endSetSignalValue(unsigned id) { settingSignalValues_.erase(id); }

}  // namespace trel::smartcomp
