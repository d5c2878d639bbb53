#include "smartcomp/Roster.h"

namespace trel::smartcomp {

Roster::Entry::Entry(Roster& roster) : roster_(roster) {
    if (roster_.spare_.empty()) roster_.spare_.resize(entriesAtOnce);
    entry_.splice(entry_.end(), roster_.spare_, roster_.spare_.begin());
}

Roster::Entry::~Entry() { roster_.spare_.splice(roster_.spare_.end(), entry_); }

void Roster::Entry::list(SmartComponent* component) noexcept {
    entry_.front() = component;
    roster_.all_.splice(roster_.all_.end(), entry_);
}

}  // namespace trel::smartcomp
