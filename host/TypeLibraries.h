#pragma once

#include <filesystem>

namespace trel::host {

/// Loads a library of component types and has it register them. The library
/// stays loaded as long as the process: the registry keeps its texts.
/// \throws Failure (usage) naming the library, for one that cannot be loaded, is
/// no library of component types, was built for another layout of the classes,
/// or fails while registering.
void loadTypeLibrary(const std::filesystem::path& library);

/// The library of component types that comes with this program: beside it, or in
/// the folder "lib" beside its folder.
/// \throws Failure (usage) if it is at neither place.
std::filesystem::path ownTypeLibrary();

}  // namespace trel::host
