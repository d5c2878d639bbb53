#pragma once

#include <string>

#include "host/Run.h"

namespace trel::host {

/// A run as a JUnit report, which CI servers read: a test case for each expectation, and
/// for each component that failed. Times are simulation time. What a stopped run did not
/// reach is skipped.
std::string textOfJUnit(const RunOutcome& outcome, const std::string& scenario);

}  // namespace trel::host
