#pragma once

#include "smartcomp/Aggregation.h"
#include "smartcomp/DeliveryObserver.h"
#include "smartcomp/Hold.h"
#include "smartcomp/Inlined.h"
#include "smartcomp/Lookup.h"
#include "smartcomp/SCSignal.h"
#include "smartcomp/Walk.h"

/// How a value goes along signal connections, for the sources of the library only. All of it is
/// inlined, so that a hop has one place to return to: where deliveries nest deeply, the processor
/// foresees that place, and not the last of two.
namespace trel::smartcomp {

TREL_INLINED inline void SmartComponent::setStatic(unsigned id, InputHint& hint,
                                                   const SignalValue& value) {
    if (hint.state != signalsNumber_) [[unlikely]]
        return setStaticAnew(id, hint, value);
    const NestedHold hold(*this);
    if (!hint.ahead.isOf(held_.lastSignal)) [[unlikely]]
        hint.ahead = aheadOfSignal();
    if (hint.isInput) [[likely]]
        setStaticInputSignal(id, value);
    else
        setStaticOutputSignal(id, value);
}

TREL_INLINED inline void SmartComponent::handle(unsigned id, InputHint& hint, int value,
                                                long long time) {
    if (hint.state != signalsNumber_) [[unlikely]]
        return handleAnew(id, hint, value, time);
    const NestedHold hold(*this);
    if (!hint.ahead.isOf(held_.lastSignal)) [[unlikely]]
        hint.ahead = aheadOfSignal();
    if (hint.isInput) [[likely]]
        handleInputSignal(id, value, time);
    else
        handleOutputSignal(id, value, time);
}

void sendToController(sdf::SdfObject* controller, unsigned signalId, const SignalValue& value,
                      bool isDynamic);

/// \name How a value reaches what was found
/// Gives back the object that gets the 0 of a pulse too, or nothing where every value has its
/// own look-up.
/// @{
struct SmartComponent::StaticDelivery {
    TREL_INLINED sdf::SdfObject* operator()(sdf::SdfObject* destination, unsigned signalId,
                                            InputHint& hint, const SignalValue& value) const {
        if (auto* const component = castTo<SmartComponent>(destination))
            component->setStatic(signalId, hint, value);
        else
            sendToController(destination, signalId, value, false);
        return nullptr;
    }
};

struct SmartComponent::DynamicDelivery {
    long long time;

    // A component lives while it is reached; of a controller nobody here knows how long.
    TREL_INLINED sdf::SdfObject* operator()(sdf::SdfObject* destination, unsigned signalId,
                                            InputHint& hint, int value) const {
        if (auto* const component = castTo<SmartComponent>(destination)) {
            component->handle(signalId, hint, value, time);
            return destination;
        }
        sendToController(destination, signalId, value, true);
        return nullptr;
    }
};

// Inwards there are no controllers.
struct SmartComponent::InwardDelivery {
    long long time;

    TREL_INLINED sdf::SdfObject* operator()(sdf::SdfObject* destination, unsigned signalId,
                                            InputHint& hint, int value) const {
        as<SmartComponent>(destination).handle(signalId, hint, value, time);
        return destination;
    }
};
/// @}

/// Delivers as `deliverAlong` does while somebody observes: apart from it, because
/// deliveries nest and have no stack to spare.
template <typename Value, typename Deliver>
[[gnu::noinline]] void deliverObserved(Aggregation& owner, unsigned component, SCSignal& source,
                                       Value value, Deliver deliver) {
    Walk walk(owner, component, source, Walk::known(owner, source));
    while (walk.next()) {
        sdf::SdfObject* same = nullptr;
        const auto deliverOne = [&](const Value& one) {
            if (!walk.announce(one)) return;
            same =
                deliver(same ? same : objectAt(walk.component()), walk.member(), walk.hint(), one);
            walk.done(one);
        };
        deliverOne(value);
        if (source.isAutoReset() && walk.reaches()) deliverOne(Value(0));
    }
}

/// Delivers `value` along the signal connections of `owner` that begin at
/// `source`, a signal of `component`, front to back. An auto-reset signal sends a
/// pulse: each destination gets 0 right after the value. Who calls holds the
/// component, may have begun to read the object table, and gives the wiring that is known.
template <typename Value, typename Deliver>
TREL_INLINED inline void deliverAlong(TableReading& reading, Aggregation& owner, unsigned component,
                                      SCSignal& source, const Wiring* wiring, const Value& value,
                                      const Deliver& deliver) {
    static constexpr Value zero(0);
    if (DeliveryObserver::present()) [[unlikely]] {
        reading.end();
        return deliverObserved(owner, component, source, value, deliver);
    }
    Walk walk(owner, component, source, wiring);
    while (walk.next()) {
        sdf::SdfObject* const same =
            deliver(reading.last(walk.component()), walk.member(), walk.hint(), value);
        if (source.isAutoReset() && walk.reaches())
            deliver(same ? same : reading.last(walk.component()), walk.member(), walk.hint(), zero);
    }
    reading.end();
}

}  // namespace trel::smartcomp
