#pragma once

#include <filesystem>
#include <memory>
#include <vector>

#include "host/Controller.h"
#include "host/StationMap.h"

namespace trel::host {

/// The station of a file with everything that lives in it: station logic,
/// components, controllers. There is one in a process, ever.
class LiveStation {
public:
    /// Opens the file and makes all objects, whose types must be registered.
    /// \throws Failure (file invalid) naming every fault with its place.
    explicit LiveStation(const std::filesystem::path& file);

    /// Removes all components and controllers.
    ~LiveStation();
    LiveStation(const LiveStation&) = delete;
    LiveStation& operator=(const LiveStation&) = delete;

    const std::vector<std::unique_ptr<Controller>>& controllers() const { return controllers_; }

    /// Writes the station to a file.
    /// \throws Failure (cannot save).
    void save(const std::filesystem::path& file) const;

private:
    // Also empties a station that could not be loaded to the end.
    struct Emptying {
        ~Emptying();
    };

    void makeLogic(const std::string& file, const StationMap& map);
    void makeComponents(const std::string& file, const StationMap& map);
    void makeControllers();

    Emptying emptying_;
    std::vector<std::unique_ptr<Controller>> controllers_;
};

}  // namespace trel::host
