#pragma once

#include <filesystem>
#include <vector>

#include "host/Faults.h"

namespace trel::host {

/// All that is wrong with a station file, in the order of the file. The libraries
/// of component types are loaded, and the components made, in a process of its
/// own.
/// \throws Failure (usage) for a library that cannot be loaded.
Faults faultsOfFile(const std::filesystem::path& file,
                    const std::vector<std::filesystem::path>& libraries);

}  // namespace trel::host
