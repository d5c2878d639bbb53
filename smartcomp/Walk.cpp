#include "smartcomp/Walk.h"

#include <algorithm>
#include <vector>

namespace trel::smartcomp {

// Apart from the deliveries, most of which begin where the routes are known.
[[gnu::noinline]] void Walk::followAnew(RouteHint& hint) {
    const Wiring* const wiring = owner().wiring(over_);
    if (!wiring) {
        routes_ = nullptr;
        end_ = 0;
        in_ = In::Order;
        return;
    }
    wiring->find(component_, member_, hint);
    follow(*wiring, hint);
}

[[gnu::noinline]] bool Walk::nextClosely() {
    if (owner().isRemoved() || isGone(component_, member_)) return false;
    while (true) {
        const Connection* connection;
        if (in_ == In::Order) {
            if (place_ >= owner().order_.size()) return false;
            connection = at(owner().connections_, owner().order_[place_++]);
        } else {
            if (place_ >= end_) return false;
            connection = routes_[place_++].connection;
        }
        if (!suits(*connection)) continue;
        destination_ = connection->destination();
        if (!isGone(component(), member())) return true;
    }
}

bool Walk::isGone(unsigned component, unsigned member) const {
    return over_ == Over::Connections ? since_.signal(component, member)
                                      : since_.property(component, member);
}

bool Walk::suits(const Connection& connection) const {
    return connection.matchSrc(component_, member_) && !Aggregation::isDeleted(connection) &&
           connection.isBinding() == (over_ == Over::Bindings);
}

// All that lies behind the last one served: one that begins elsewhere now may be
// modified to begin here before it is reached.
[[gnu::noinline]] void Walk::freeze() {
    if (in_ == In::Frozen) return;
    const auto rest = owner().inOrderOfService(over_);
    auto next = rest.begin();
    if (in_ == In::Order)
        next += place_;
    else if (place_ > 0)
        next = std::find(rest.begin(), rest.end(), routes_[place_ - 1].connection) + 1;
    end_ = static_cast<unsigned>(rest.end() - next);
    auto* const frozen = new Wiring::Route[end_];
    std::transform(next, rest.end(), frozen,
                   [](const Connection* connection) { return Wiring::Route{connection, 0}; });
    routes_ = frozen;
    place_ = 0;
    in_ = In::Frozen;
}

bool Walk::announce(const SignalValue& value, const std::string* text) const {
    DeliveryObserver* const observer = DeliveryObserver::present();
    return !observer || (observer->before(delivery(value, text)) && reaches());
}

void Walk::done(const SignalValue& value, const std::string* text) const {
    if (auto* const observer = DeliveryObserver::present()) observer->after(delivery(value, text));
}

DeliveryObserver::Delivery Walk::delivery(const SignalValue& value, const std::string* text) const {
    return {component_, member_, component(), member(), value, text};
}

}  // namespace trel::smartcomp
