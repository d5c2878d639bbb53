#pragma once

#include <filesystem>
#include <optional>

#include "host/Faults.h"
#include "platform/sdf/Document.h"

namespace trel::host {

/// A station file, read for what is wrong with it.
struct StationFile {
    /// Empty if there is none, or no station in it.
    std::optional<sdf::Document> document;

    /// Whether a station can be opened from the document; it then has an element
    /// for the station logic.
    bool isStation = false;

    Faults faults;        // of the text, and of the station as such
    NotedElements noted;  // that have one of them
};

StationFile readStationFile(const std::filesystem::path& file);

}  // namespace trel::host
