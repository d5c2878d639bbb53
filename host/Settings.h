#pragma once

#include <map>
#include <set>
#include <vector>

#include "host/Script.h"
#include "host/TraceSink.h"

namespace trel::host {

/// Gives a signal a value while the simulation runs: an input as if it was delivered, an
/// output as if its owner had set it. The member is there.
void setSignal(const Member& signal, int value, Time time);

/// Does what a setting says, but for holding and releasing. The member is there.
void carryOut(const Setting& setting, Time time);

/// The signals that the scenario holds at a value. One of them that takes another value
/// in a run is put right by who plays the run, see disturbed().
class Held : public TraceSink {
public:
    void hold(const Member& signal, int value) { values_[signal] = value; }
    void release(const Member& signal);

    const std::map<Member, int>& values() const { return values_; }

    /// Those to which something else was written since the last call, each with the
    /// value to set again.
    std::map<Member, int> disturbed();

    void changed(const Change& change) override;

private:
    std::map<Member, int> values_;
    std::set<Member> disturbed_;
};

}  // namespace trel::host
