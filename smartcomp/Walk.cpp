#include "smartcomp/Walk.h"

#include <algorithm>
#include <vector>

#include "smartcomp/Lookup.h"
#include "smartcomp/Wiring.h"

namespace trel::smartcomp {

Walk::Walk(Aggregation& owner, Over over, unsigned component, unsigned member)
    : owner_(owner),
      hold_(owner),
      outer_(owner.wired_.innermost),
      component_(component),
      member_(member),
      over_(over) {
    if (const Wiring* const wiring = owner.wiring(over)) {
        const Wiring::Routes routes = wiring->from(component, member);
        routes_ = routes.data();
        end_ = static_cast<unsigned>(routes.size());
        in_ = In::Routes;
    }
    owner.wired_.innermost = this;
}

Walk::~Walk() {
    owner_.wired_.innermost = outer_;
    if (in_ == In::Frozen) delete[] routes_;
}

const Connection* Walk::next() {
    if (owner_.isRemoved() || isGone(component_, member_)) return nullptr;
    while (true) {
        const Connection* connection;
        if (in_ == In::Order) {
            if (place_ >= owner_.order_.size()) return nullptr;
            connection = at(owner_.connections_, owner_.order_[place_++]);
        } else {
            if (place_ >= end_) return nullptr;
            connection = routes_[place_++];
        }
        if (suits(*connection)) return connection;
    }
}

bool Walk::reaches(unsigned component, unsigned member) const {
    return !isGone(component_, member_) && !isGone(component, member);
}

bool Walk::isGone(unsigned component, unsigned member) const {
    return over_ == Over::Connections ? hold_.goneSignal(component, member)
                                      : hold_.goneProperty(component, member);
}

bool Walk::suits(const Connection& connection) const {
    return connection.matchSrc(component_, member_) && !Aggregation::isDeleted(connection) &&
           connection.isBinding() == (over_ == Over::Bindings);
}

// All that lies behind the last one served: one that begins elsewhere now may be
// modified to begin here before it is reached.
void Walk::freeze() {
    if (in_ == In::Frozen) return;
    auto rest = owner_.inOrderOfService(over_);
    auto next = rest.begin();
    if (in_ == In::Order)
        next += place_;
    else if (place_ > 0)
        next = std::find(rest.begin(), rest.end(), routes_[place_ - 1]) + 1;
    end_ = static_cast<unsigned>(rest.end() - next);
    auto* const frozen = new const Connection*[end_];
    std::copy(next, rest.end(), frozen);
    routes_ = frozen;
    place_ = 0;
    in_ = In::Frozen;
}

}  // namespace trel::smartcomp
