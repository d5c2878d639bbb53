#include "smartcomp/SmartComponent.h"

#include <array>
#include <cstddef>
#include <new>
#include <optional>
#include <stdexcept>
#include <utility>

#include "platform/broker/SignalBroker.h"
#include "platform/station/ControllerInterface.h"
#include "smartcomp/Aggregation.h"
#include "smartcomp/Connection.h"
#include "smartcomp/Deliver.h"
#include "smartcomp/Hold.h"
#include "smartcomp/Inlined.h"
#include "smartcomp/Lookup.h"
#include "smartcomp/Property.h"
#include "smartcomp/Removals.h"
#include "smartcomp/SCSignal.h"
#include "smartcomp/StationLogic.h"
#include "smartcomp/Text.h"
#include "smartcomp/Walk.h"

namespace trel::smartcomp {

using broker::SignalBroker;

// A text that is on its way to one destination after the other.
struct SmartComponent::Passing::Open {
    Open(Aggregation& owner, unsigned component, Property& from)
        : walk(owner, component, from, Walk::known(owner, from)), source(from) {}

    Walk walk;
    std::optional<NestedHold> hold;  // on the destination
    Property& source;
};

TREL_INLINED inline void SmartComponent::Passing::begin(Aggregation& owner, unsigned component,
                                                        Property& source) {
    static_assert(sizeof(Open) <= sizeof place_ && alignof(Open) <= alignof(std::max_align_t));
    open_ = new (place_) Open(owner, component, source);
}

void SmartComponent::Passing::close() noexcept { std::exchange(open_, nullptr)->~Open(); }

namespace {

// Apart from the deliveries, which nest and have no stack to spare for its texts.
[[gnu::noinline]] void report(const char* code, const SmartComponent& component,
                              const std::string& member, const std::string& value) {
    SignalBroker::reportEvent(code, component.name(), member, value);
}

}  // namespace

// Apart from the deliveries to components, which have no stack to spare.
[[gnu::noinline]] void sendToController(sdf::SdfObject* controller, unsigned signalId,
                                        const SignalValue& value, bool isDynamic) {
    as<ControllerInterface>(controller).setSignalValue(signalId, value, isDynamic);
}

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

Property* SmartComponent::getProperty(unsigned id) const {
    if (!held_.lastProperty || held_.lastProperty->id() != id)
        held_.lastProperty = findProperty(id);
    return held_.lastProperty;
}

// Apart from the deliveries, most of which ask for the one that was asked for last.
[[gnu::noinline]] Property* SmartComponent::findProperty(unsigned id) const {
    return atFew(properties_, id);
}

SignalInterface* SmartComponent::getSignal(unsigned id) const { return atFew(signals_, id); }

// Only addSignal enters signals, and it takes nothing else.
SCSignal& SmartComponent::signalAt(unsigned id) const {
    if (!held_.lastSignal || held_.lastSignal->id() != id) [[unlikely]]
        held_.lastSignal = findSignal(id);
    return *held_.lastSignal;
}

[[gnu::noinline]] SCSignal* SmartComponent::findSignal(unsigned id) const {
    return static_cast<SCSignal*>(getSignal(id));
}

Ahead SmartComponent::aheadOfSignal() const {
    const SCSignal* const signal = held_.lastSignal;
    if (!signal) return {this, nullptr, nullptr, nullptr};
    return {this, signal, signal->element().get(), signal->key_};
}

Ahead SmartComponent::aheadOfProperty() const {
    const Property* const property = held_.lastProperty;
    if (!property) return {this, nullptr, nullptr, nullptr};
    sdf::Element& element = *property->element();
    return {this, property, &element, element.get("value").get()};
}

bool SmartComponent::hasProperty(unsigned id) const { return properties_.contains(id); }

bool SmartComponent::hasSignal(unsigned id) const { return signals_.contains(id); }

Property* SmartComponent::addProperty(Property* property) {
    held_.lastProperty = nullptr;
    return properties_[property->id()] = property;
}

SCSignal* SmartComponent::addSignal(SCSignal* signal) {
    signalsNumber_ = nextNumber();
    held_.lastSignal = nullptr;
    signals_[signal->id()] = signal;
    return signal;
}

// Flags and notices.

bool SmartComponent::isSensor() const { return asType(sdf::ObjectType::Sensor); }

bool SmartComponent::isUser() const { return asType(sdf::ObjectType::UserComponent); }

// The type itself, where the other two accept what counts as their type.
bool SmartComponent::isStationLogic() const {
    return objectType() == sdf::ObjectType::StationLogic;
}

bool SmartComponent::isTopLevel() const { return getObjParentId() == StationLogic::inst()->id(); }

bool SmartComponent::objectIsInvalid(unsigned id) { return !findObject(id); }

std::string SmartComponent::GetTypeName(unsigned id) { return elementAt(id)->asString("type"); }

void SmartComponent::notifyPropertyValueChanged(unsigned propertyId) {
    SignalBroker::scPropertyValueChanged(propertyId, id());
}

void SmartComponent::notifySignalValueChanged(unsigned signalId) {
    SignalBroker::scSignalValueChanged(signalId, id());
}

void SmartComponent::updateModel() { SignalBroker::smartComponentUpdated(id()); }

// Property values.

// Stores, marks and tells the text; null when it is not to be passed on.
TREL_INLINED inline Property* SmartComponent::beginProperty(unsigned propertyId,
                                                            const std::string& text) {
    if (isRemoved()) return nullptr;
    const Removals::Since since;
    Property* const property = getProperty(propertyId)->setValue(text);
    settingPropertyValues_.begin(propertyId, text);
    notifyPropertyValueChanged(propertyId);
    const bool isGone = since.property(id(), propertyId) || since.component(getObjParentId());
    return isGone ? nullptr : property;
}

// Goes over into the first destination (a tail call), and leaves no frame: what is to be done
// behind it waits in `passing`.
void SmartComponent::passOn(unsigned propertyId, const std::string& value, Passing& passing) {
    if (&value != offered_ || !isHeld()) return setCopyOf(propertyId, value);
    if (SmartComponent* const taker = firstTaker(propertyId, value, passing))
        taker->setPropertyValue(passing.open_->walk.member(), value);
}

TREL_INLINED_IN_TAIL_CALLER SmartComponent* SmartComponent::firstTaker(
    unsigned propertyId, const std::string& value, Passing& passing) {
    Property* const source = beginProperty(propertyId, value);
    if (!source || isStationLogic()) return nullptr;
    TableReading reading;
    auto& owner = as<Aggregation>(reading.next(getObjParentId()));
    passing.begin(owner, id(), *source);
    if (DeliveryObserver::present()) [[unlikely]] {
        reading.end();
        passObserved(*passing.open_, value);
        return nullptr;
    }
    return nextTaker(reading, *passing.open_, value);
}

// Behind the first destination, where mostly nothing is left to do.
void SmartComponent::passOnRest(const std::string& value, Passing& passing) {
    if (!passing.open_->walk.isDone() || isUser()) [[unlikely]]
        return passFurther(value, passing);
    passing.close();
}

[[gnu::noinline]] void SmartComponent::passFurther(const std::string& value, Passing& passing) {
    Passing::Open& open = *passing.open_;
    open.hold.reset();
    passAlong(open, value);
    Property& source = open.source;
    const bool isGone = open.walk.isSourceGone();
    passing.close();
    if (isUser() && !isGone) passInwards(source, value);
}

// A user aggregation has bindings of its own.
[[gnu::noinline]] void SmartComponent::passInwards(Property& source, const std::string& value) {
    Passing passing;
    passing.begin(as<Aggregation>(this), id(), source);
    passAlong(*passing.open_, value);
}

// Anybody's text may change on the way, and a property's own does.
[[gnu::noinline]] void SmartComponent::setCopyOf(unsigned propertyId, const std::string& value) {
    const Hold hold(*this);
    const std::string text = value;  // NOLINT(performance-unnecessary-copy-initialization)
    const Offer offer(text);
    SmartComponent::setPropertyValue(propertyId, text);
}

bool SmartComponent::shouldSetProperty(unsigned id, const std::string& value) {
    const Property& property = *getProperty(id);
    if (property.value() == value) return false;
    if (!settingPropertyValues_.find(id)) return true;
    report("10007", *this, property.name(), value);
    return false;
}

// Offers the text to every property that a binding still leads to.
[[gnu::noinline]] void SmartComponent::passAlong(Passing::Open& open, const std::string& value) {
    if (DeliveryObserver::present()) [[unlikely]]
        return passObserved(open, value);
    TableReading reading;
    while (SmartComponent* const taker = nextTaker(reading, open, value)) {
        taker->setPropertyValue(open.walk.member(), value);
        open.hold.reset();
    }
}

[[gnu::noinline]] void SmartComponent::passObserved(Passing::Open& open, const std::string& value) {
    TableReading reading;
    while (open.walk.next()) {
        if (!open.walk.announce({}, &value)) continue;
        if (SmartComponent* const taker = takerOf(reading, open, value))
            taker->setPropertyValue(open.walk.member(), value);
        open.hold.reset();
        open.walk.done({}, &value);
    }
}

TREL_INLINED inline SmartComponent* SmartComponent::nextTaker(
    TableReading& reading, Passing::Open& open, const std::string& value) {
    while (open.walk.next()) {
        if (SmartComponent* const taker = takerOf(reading, open, value)) return taker;
        open.hold.reset();
    }
    reading.end();
    return nullptr;
}

// Whom the walk leads to now, held; null where the text is not for it.
TREL_INLINED inline SmartComponent* SmartComponent::takerOf(
    TableReading& reading, Passing::Open& open, const std::string& value) {
    const Walk& walk = open.walk;
    auto& destination = as<SmartComponent>(reading.last(walk.component()));
    open.hold.emplace(destination);
    Ahead& ahead = walk.hint().ahead;
    if (!ahead.isOf(destination.held_.lastProperty)) [[unlikely]]
        ahead = destination.aheadOfProperty();
    // Inwards no object type is asked for.
    if (!walk.isOf(*this) && getProperty(open.source.id())->isObjectId() &&
        refusesObject(destination, walk.member(), value))
        return nullptr;
    return walk.reaches() ? &destination : nullptr;
}

// Whether the object that the text names does not suit the destination, which
// is then reported.
[[gnu::noinline]] bool SmartComponent::refusesObject(
    SmartComponent& destination, unsigned destinationId, const std::string& value) const {
    const unsigned named = text::toUnsigned(value);
    // What names nothing is checked as the station.
    auto& object = objectAs<sdf::SdfObject>(named == 0 ? 1 : named);
    const Removals::Since since;
    if (destination.checkPropertyObjectType(destinationId, &object)) return false;
    if (!since.property(destination.id(), destinationId))
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

// False for a component that was removed.
bool SmartComponent::renew(InputHint& hint, unsigned signalId) const {
    if (isRemoved()) return false;
    const bool isInput = signalAt(signalId).takes();
    hint = {signalsNumber_, isInput, aheadOfSignal()};
    return true;
}

[[gnu::noinline]] void SmartComponent::setStaticAnew(unsigned id, InputHint& hint,
                                                     const SignalValue& value) {
    if (renew(hint, id)) setStatic(id, hint, value);
}

[[gnu::noinline]] void SmartComponent::handleAnew(unsigned id, InputHint& hint, int value,
                                                  long long time) {
    if (renew(hint, id)) handle(id, hint, value, time);
}

void SmartComponent::setStaticSignalValue(unsigned id, SignalValue value) {
    const Hold hold(*this);
    if (isRemoved()) return;
    if (signalAt(id).takes())
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
    settingSignalValues_.begin(signalId, value);
}

// Whether the signal, the component or its parent was removed.
bool SmartComponent::isCutOff(const Removals::Since& since, unsigned signalId) const {
    return since.any() && (since.signal(id(), signalId) || since.component(getObjParentId()));
}

// Marks the value for as long as it goes along the connections of the parent. Most outputs
// lead nowhere, and there nobody could come by the mark; but who is interrupted stays marked.
template <typename Value, typename Deliver>
TREL_INLINED inline void SmartComponent::propagate(SCSignal& source, const Value& value,
                                                   const Deliver& deliver) {
    TableReading reading;
    Aggregation* parent = nullptr;
    try {
        parent = &as<Aggregation>(reading.next(getObjParentId()));
    } catch (...) {
        settingSignalValues_.begin(source.id(), value);
        throw;
    }
    const Wiring* const wiring = Walk::known(*parent, source);
    if (Walk::leadsNowhere(source, wiring)) return;
    settingSignalValues_.begin(source.id(), value);
    deliverAlong(reading, *parent, id(), source, wiring, value, deliver);
}

inline void SmartComponent::propagateStaticOutputSignal(SCSignal& source,
                                                        const SignalValue& value) {
    if (getObjParentId() != 0) propagate(source, value, StaticDelivery());
}

template <typename Value>
inline bool SmartComponent::isBeingSet(unsigned id, const Value& value) {
    return !settingSignalValues_.empty() && checkSignalIsSet(id, value);
}

// Stores and tells the value; null when it is not to be delivered.
TREL_INLINED inline SCSignal* SmartComponent::beginStaticOutput(unsigned id,
                                                                const SignalValue& value) {
    if (isRemoved() || isBeingSet(id, value)) return nullptr;
    SCSignal& signal = signalAt(id);
    if (signal.SCSignal::getValue() == value) return nullptr;
    const Removals::Since since;
    signal.setValue(value);
    // An analog one, too, is the int 0 after its pulse.
    if (signal.isAutoReset()) signal.setValue(0);
    notifySignalValueChanged(id);
    return isCutOff(since, id) ? nullptr : &signal;
}

void SmartComponent::setStaticOutputSignal(unsigned id, SignalValue value) {
    if (!isHeld()) [[unlikely]]
        return whileHeld([=, this] { setStaticOutputSignal(id, value); });
    SCSignal* const signal = beginStaticOutput(id, value);
    if (!signal) return;
    propagateStaticOutputSignal(*signal, value);
    // Not reached after a throw: the mark of an interrupted setting stays.
    settingSignalValues_.end(id);
}

void SmartComponent::setDstSignalValue(unsigned dstComponentId, unsigned dstSignalId,
                                       SignalValue value) {
    InputHint hint;
    StaticDelivery()(objectAt(dstComponentId), dstSignalId, hint, value);
}

// Signal values while the simulation runs.

void SmartComponent::handleSignalValue(unsigned id, int value, long long time) {
    const Hold hold(*this);
    if (isRemoved()) return;
    if (signalAt(id).takes())
        handleInputSignal(id, value, time);
    else
        handleOutputSignal(id, value, time);
}

inline void SmartComponent::propagateDynamicOutputSignal(SCSignal& source, int value,
                                                         long long time) {
    if (!isStationLogic()) propagate(source, value, DynamicDelivery{time});
}

// Stores and tells the value; null when it is not to be delivered.
TREL_INLINED inline SCSignal* SmartComponent::beginDynamicOutput(unsigned id, int value) {
    if (isRemoved() || isBeingSet(id, value)) return nullptr;
    SCSignal& signal = signalAt(id);
    const int old = signal.SCSignal::getDigitalValue();
    if (old == value) return nullptr;
    const Removals::Since since;
    signal.setValue(value);
    // Back to what it was, where a static pulse ends at 0.
    if (signal.isAutoReset()) signal.setValue(old);
    notifySignalValueChanged(id);
    return isCutOff(since, id) ? nullptr : &signal;
}

void SmartComponent::handleOutputSignal(unsigned id, int value, long long time) {
    if (!isHeld()) [[unlikely]]
        return whileHeld([=, this] { handleOutputSignal(id, value, time); });
    SCSignal* const signal = beginDynamicOutput(id, value);
    if (!signal) return;
    propagateDynamicOutputSignal(*signal, value, time);
    // Not reached after a throw: the mark of an interrupted setting stays.
    settingSignalValues_.end(id);
}

// The marks of what is being set.

bool SmartComponent::checkSignalIsSet(unsigned id, SignalValue value) {
    const SignalValue* const set = settingSignalValues_.find(id);
    if (!set) return false;
    if (*set != value) report("10008", *this, getSignal(id)->getName(), "");
    return true;
}

void SmartComponent::endSetSignalValue(unsigned id) { settingSignalValues_.end(id); }

void SmartComponent::clearMarks() {
    settingSignalValues_.clear();
    settingPropertyValues_.clear();
}

}  // namespace trel::smartcomp
