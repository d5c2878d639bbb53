#pragma once

#include <cstddef>

#include "smartcomp/Aggregation.h"
#include "smartcomp/Connection.h"
#include "smartcomp/Hold.h"
#include "smartcomp/SCSignal.h"

namespace trel::smartcomp {

/// One delivery along the connections or the bindings of an aggregation that
/// begin at one end, for the sources of the library only. Lives on the stack of
/// the delivery and holds the aggregation.
///
/// It goes over the aggregation's own tables until somebody edits them. Before
/// that happens it keeps what it has yet to serve (freeze): deleted connections
/// are passed over from then on, added ones are not met, and the order is that of
/// before.
class Walk {
public:
    using Over = Aggregation::Served;

    /// A walk along what begins at a signal (or, over bindings, a property) of a
    /// component.
    Walk(Aggregation& owner, Over over, unsigned component, unsigned member);
    ~Walk();
    Walk(const Walk&) = delete;
    Walk& operator=(const Walk&) = delete;

    /// The next connection that begins there now; null when there is none, or
    /// when its source or the aggregation was removed.
    const Connection* next();

    /// Whether neither the source nor that destination was removed since the walk
    /// began.
    bool reaches(unsigned component, unsigned member) const;

    /// Keeps what is yet to serve, once.
    void freeze();

    Walk* outer() const { return outer_; }

private:
    // What the places are counted in.
    enum class In : unsigned char {
        Order,   // the aggregation's order, all of it
        Routes,  // what its wiring has from this end
        Frozen,  // what was yet to serve at the first edit, owned
    };

    bool isGone(unsigned component, unsigned member) const;
    bool suits(const Connection& connection) const;

    // Deliveries nest: every word counts here.
    Aggregation& owner_;
    const Hold hold_;
    Walk* const outer_;
    const Connection* const* routes_ = nullptr;
    const unsigned component_;
    const unsigned member_;
    unsigned place_ = 0;  // of the next
    unsigned end_ = 0;
    const Over over_;
    In in_ = In::Order;
};

/// Delivers `value` along the signal connections of `owner` that begin at
/// `source`, a signal of `component`, front to back. An auto-reset signal sends a
/// pulse: each destination gets 0 right after the value. Who calls holds the
/// component.
template <typename Value, typename Deliver>
void deliverAlong(Aggregation& owner, unsigned component, const SCSignal& source,
                  const Value& value, const Deliver& deliver) {
    Walk walk(owner, Walk::Over::Connections, component, source.id());
    while (const Connection* const connection = walk.next()) {
        const unsigned dstComponent = connection->getDstComponentId();
        const unsigned dstSignal = connection->getDstSignalId();
        if (walk.reaches(dstComponent, dstSignal)) deliver(dstComponent, dstSignal, value);
        if (source.isAutoReset() && walk.reaches(dstComponent, dstSignal))
            deliver(dstComponent, dstSignal, Value(0));
    }
}

}  // namespace trel::smartcomp
