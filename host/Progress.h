#pragma once

#include <chrono>

#include "host/Clock.h"

namespace trel::host {

/// Shows on a terminal how far a long run is; says nothing elsewhere, nor in a run's
/// first second.
class Progress {
public:
    explicit Progress(Time length);

    /// Takes its line off the terminal.
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// The run came to `time`.
    void show(Time time);

private:
    using Wall = std::chrono::steady_clock;

    const Time length_;
    const bool isShown_;
    const char* const end_;  // of a line
    Wall::time_point next_;
    bool isDirty_ = false;
};

}  // namespace trel::host
