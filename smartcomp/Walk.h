#pragma once

#include "smartcomp/Aggregation.h"
#include "smartcomp/Connection.h"
#include "smartcomp/DeliveryObserver.h"
#include "smartcomp/Hold.h"
#include "smartcomp/Inlined.h"
#include "smartcomp/Lookup.h"
#include "smartcomp/Property.h"
#include "smartcomp/SCSignal.h"
#include "smartcomp/Wiring.h"

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
    /// The wiring of `owner` in which the routes of `source`, a signal or property, are
    /// known; null where they have to be found first.
    template <typename Source>
    static const Wiring* known(const Aggregation& owner, const Source& source) {
        const Wiring* const wiring = owner.madeWiring(servedFrom(source));
        return wiring && wiring->knows(source.routeHint_) ? wiring : nullptr;
    }

    /// Whether a source is known to have no routes, as most are. `wiring` is the known one.
    static bool leadsNowhere(const SCSignal& source, const Wiring* wiring) {
        return wiring && source.routeHint_.first == source.routeHint_.end;
    }

    /// A walk along the connections that begin at a signal of a component, or along
    /// the bindings that begin at a property of it. `wiring` is the known one.
    template <typename Source>
    TREL_INLINED Walk(Aggregation& owner, unsigned component, Source& source, const Wiring* wiring)
        : hold_(owner),
          outer_(owner.wired_.innermost),
          component_(component),
          member_(source.id()),
          over_(servedFrom(source)) {
        if (wiring) [[likely]]
            follow(*wiring, source.routeHint_);
        else
            followAnew(source.routeHint_);
        owner.wired_.innermost = this;
    }

    TREL_INLINED ~Walk() {
        owner().wired_.innermost = outer_;
        if (in_ == In::Frozen) [[unlikely]]
            delete[] routes_;
    }
    Walk(const Walk&) = delete;
    Walk& operator=(const Walk&) = delete;

    /// Goes to the next connection that begins there now and whose destination was
    /// not removed since the walk began; false when there is none, or when its source
    /// or the aggregation was removed.
    TREL_INLINED bool next() {
        if (in_ != In::Routes || since_.any()) [[unlikely]]
            return nextClosely();
        if (place_ == end_) return false;
        const Wiring::Route& route = routes_[place_++];
        route.hint.ahead.fetch();
        destination_ = route.destination;
        return true;
    }

    bool isOf(const SmartComponent& owner) const { return &hold_.component() == &owner; }

    /// \name Where it leads
    /// @{
    unsigned component() const { return Connection::componentOf(destination_); }
    unsigned member() const { return Connection::memberOf(destination_); }

    /// Of no use to anybody once the walk was frozen.
    InputHint& hint() const {
        static InputHint none;
        return in_ == In::Routes ? routes_[place_ - 1].hint : none = {};
    }
    /// @}

    /// Whether neither the source nor the destination was removed since the walk
    /// began.
    TREL_INLINED bool reaches() const {
        return !since_.any() || (!isGone(component_, member_) && !isGone(component(), member()));
    }

    /// Whether `next` is known to find nothing more.
    bool isDone() const { return in_ == In::Routes && !since_.any() && place_ == end_; }

    bool isSourceGone() const { return since_.any() && isGone(component_, member_); }

    /// Whether the observer lets the next delivery through; whom it removes gets nothing. Not
    /// while the object table is read.
    bool announce(const SignalValue& value, const std::string* text = nullptr) const;
    void done(const SignalValue& value, const std::string* text = nullptr) const;

    /// Keeps what is yet to serve, once.
    void freeze();

    Walk* outer() const { return outer_; }

private:
    using Over = Aggregation::Served;

    // What the places are counted in.
    enum class In : unsigned char {
        Order,   // the aggregation's order, all of it
        Routes,  // what its wiring has from this end
        Frozen,  // what was yet to serve at the first edit, owned
    };

    static constexpr Over servedFrom(const SCSignal&) { return Over::Connections; }
    static constexpr Over servedFrom(const Property&) { return Over::Bindings; }
    void follow(const Wiring& wiring, const RouteHint& hint) {
        routes_ = wiring.routes() + hint.first;
        end_ = hint.end - hint.first;
        in_ = In::Routes;
    }
    void followAnew(RouteHint& hint);
    Aggregation& owner() const { return static_cast<Aggregation&>(hold_.component()); }
    bool nextClosely();
    DeliveryObserver::Delivery delivery(const SignalValue& value, const std::string* text) const;
    bool isGone(unsigned component, unsigned member) const;
    bool suits(const Connection& connection) const;

    // Deliveries nest: every word counts here.
    const NestedHold hold_;
    const Removals::Since since_;
    Walk* const outer_;
    const Wiring::Route* routes_;  // given where the walk begins to follow
    Connection::End destination_;  // given by `next`
    const unsigned component_;
    const unsigned member_;
    unsigned place_ = 0;  // of the next
    unsigned end_;
    const Over over_;
    In in_;
};

}  // namespace trel::smartcomp
