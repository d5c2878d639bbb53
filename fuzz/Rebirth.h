#pragma once

#include <string_view>

#include "smartcomp/StationLogic.h"

namespace fuzz {

/// Ends the station of this process with everything that lives in it, and begins
/// another from text, as a new process would: what an input does depends on no
/// input before it. Controllers are their owner's, who ends them first.
/// \throws what Station::openText and the station logic throw for a text that is
/// no station; an empty station lives then.
trel::smartcomp::StationLogic& beginStation(std::string_view text);

/// The same with an empty station.
trel::smartcomp::StationLogic& beginStation();

}  // namespace fuzz
