#pragma once

#include <string_view>

namespace fuzz {

/// Lets the station run, drives and edits it a little, through operations that
/// everybody may call. `seed` decides which; what they throw ends the one
/// operation.
void actOn(std::string_view seed);

}  // namespace fuzz
