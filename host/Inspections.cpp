#include "host/Inspections.h"

namespace trel::host {

void inspectDocument(const sdf::Element& station, const StationMap& map, FaultList& faults) {
    faults.allow(station);
    inspectKeys(station, map, faults);
    inspectObjects(map, faults);
    inspectContents(map, faults);
    inspectConnections(map, faults);
}

}  // namespace trel::host
