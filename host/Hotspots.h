#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "host/Deliveries.h"

namespace trel::host {

/// A member that got much in one step, and what is behind that.
struct Hotspot {
    Member member;
    unsigned long long deliveries;
    std::string reason;  // "ways that part at A.Out meet at D.Out"
};

/// The members that got the most in the present step. Ways reconverge before a hot one
/// where a value that came one way is sent on along several, which meet again: then each
/// delivery becomes as many as there are ways.
std::vector<Hotspot> hotspots(const Deliveries& deliveries, std::size_t most);

}  // namespace trel::host
