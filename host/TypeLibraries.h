#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace trel::host {

/// Loads the library of component types that comes with this program, then
/// these: each by its path, or by its name, which is looked for in
/// `libraryFolders`. A library stays loaded as long as the process: the registry
/// keeps its texts.
/// \throws Failure (usage) naming the library, for one that is not found, cannot
/// be loaded, is no library of component types, was built for another layout of
/// the classes, fails or ends the process while registering, registers nothing, or
/// brings a type that one before it brings.
void loadTypeLibraries(const std::vector<std::filesystem::path>& libraries);

/// Where a library is looked for by its name: the folders that the environment
/// variable STATION_COMPONENTS names, with colons between them; that of this
/// program; "lib/station" and "lib" beside that.
std::vector<std::filesystem::path> libraryFolders();

/// A library, not loaded yet, that brings a type: in the folders of
/// STATION_COMPONENTS or in "lib/station". Each that is there is tried in a
/// process of its own.
std::optional<std::filesystem::path> libraryThatBrings(const std::string& type);

/// The registered type whose name is nearest; empty if none is near.
std::string_view nearestType(std::string_view name);

}  // namespace trel::host
