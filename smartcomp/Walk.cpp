#include "smartcomp/Walk.h"

#include "smartcomp/Lookup.h"

namespace trel::smartcomp {

Walk::Walk(Aggregation& owner, Over over, unsigned component, unsigned member)
    : owner_(owner),
      hold_(owner),
      outer_(owner.walks_.innermost),
      component_(component),
      member_(member),
      entry_(owner.connections_.begin()),
      over_(over) {
    owner.walks_.innermost = this;
}

Walk::~Walk() { owner_.walks_.innermost = outer_; }

const Connection* Walk::next() {
    if (owner_.isRemoved() || isGone(component_, member_)) return nullptr;
    return frozen_ ? nextFrozen() : nextLive();
}

bool Walk::reaches(unsigned component, unsigned member) const {
    return !isGone(component_, member_) && !isGone(component, member);
}

bool Walk::isGone(unsigned component, unsigned member) const {
    return over_ == Over::Connections ? hold_.goneSignal(component, member)
                                      : hold_.goneProperty(component, member);
}

bool Walk::suits(const Connection& connection) const {
    return connection.matchSrc(component_, member_) &&
           connection.isBinding() == (over_ == Over::Bindings);
}

const Connection* Walk::nextLive() {
    if (over_ == Over::Connections) {
        while (place_ < owner_.order_.size()) {
            const Connection* const connection =
                at(owner_.connections_, owner_.order_[place_++]);
            if (suits(*connection)) return connection;
        }
        return nullptr;
    }
    while (entry_ != owner_.connections_.end()) {
        const Connection* const binding = (entry_++)->second;
        if (suits(*binding)) return binding;
    }
    return nullptr;
}

const Connection* Walk::nextFrozen() {
    while (place_ < frozen_->size()) {
        const Connection* const connection = (*frozen_)[place_++];
        if (!Aggregation::isDeleted(*connection) && suits(*connection)) return connection;
    }
    return nullptr;
}

void Walk::freeze() {
    if (frozen_) return;
    auto rest = std::make_unique<Frozen>();
    if (over_ == Over::Connections)
        for (std::size_t place = place_; place < owner_.order_.size(); ++place)
            rest->push_back(at(owner_.connections_, owner_.order_[place]));
    else
        for (auto entry = entry_; entry != owner_.connections_.end(); ++entry)
            rest->push_back(entry->second);
    frozen_ = std::move(rest);
    place_ = 0;
}

}  // namespace trel::smartcomp
