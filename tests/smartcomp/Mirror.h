#pragma once

#include "smartcomp/SmartComponent.h"
#include "tests/smartcomp/EventLog.h"

namespace trel::test {

/// What of a component, its members and its connections is other than its
/// element: "Lamp/signal 1 value". Empty for a true mirror.
Lines mirrorFaults(smartcomp::SmartComponent& component);

}  // namespace trel::test
