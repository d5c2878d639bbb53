#pragma once

#include <cstdlib>
#include <iostream>
#include <string>

namespace fuzz {

/// Ends the process, as a finding, where there is a fault to tell of.
inline void requireNone(const std::string& faults) {
    if (faults.empty()) return;
    std::cerr << faults << std::endl;
    std::abort();
}

}  // namespace fuzz
