#pragma once

#include "smartcomp/Aggregation.h"
#include "smartcomp/Export.h"

namespace trel::smartcomp {

/// The one aggregation at the root of the station: its children are the
/// top-level components and the robot controllers.
class TREL_API StationLogic : public Aggregation {
public:
    /// Made on the first call, from any thread, on the station's element, and
    /// entered in the object table; destroyed at exit.
    /// \throws std::logic_error "object exists" if its id is taken.
    static StationLogic* inst();

    /// A value that reaches one of its inputs while the simulation runs is
    /// ignored.
    void handleInputSignal(unsigned signalId, int value, long long time) override;
    void execute(long long time) override;

    void addController(unsigned controllerId);

    /// Deletes every connection and binding that begins or ends at the
    /// controller, telling the broker of each, and takes the controller out.
    void removeController(unsigned controllerId);

    /// Whether any component refers to the object or to one of its descendants.
    /// \throws what a component throws when it is asked.
    bool isObjectUsedByComponent(unsigned objectId) const;

private:
    StationLogic();
    ~StationLogic() override;
};

}  // namespace trel::smartcomp
