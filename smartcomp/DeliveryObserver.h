#pragma once

#include <string>

#include "smartcomp/Export.h"
#include "smartcomp/SignalInterface.h"

namespace trel::smartcomp {

/// Sees every value on its way along a connection or a binding, and may keep it from
/// arriving: for whoever traces, counts or brakes deliveries. There is one at most, on
/// the thread that edits or runs the station; nothing in the library depends on it.
class TREL_API DeliveryObserver {
public:
    /// From a signal to a signal, or from a property to a property. A pulse is two.
    struct Delivery {
        unsigned sourceComponent;
        unsigned source;
        unsigned destinationComponent;
        unsigned destination;
        SignalValue value;        // of a signal
        const std::string* text;  // of a property; null where signals are connected
    };

    virtual ~DeliveryObserver() = default;

    /// Before the destination is looked up. False refuses the delivery: the destination
    /// gets nothing, `after` is not called, and the next in order is served.
    virtual bool before(const Delivery& delivery) = 0;

    /// When the delivery is done, with all that it led to. One that ended in a throw has
    /// no `after`.
    virtual void after(const Delivery& delivery) = 0;

    /// Puts an observer in the place of the present one, and gives that back; null stands
    /// for none. It has to live until it is replaced.
    /// Of the deliveries under way it may be told the end alone, or nothing.
    static DeliveryObserver* replace(DeliveryObserver* observer);
    static DeliveryObserver* present() { return present_; }

private:
    static DeliveryObserver* present_;
};

}  // namespace trel::smartcomp
