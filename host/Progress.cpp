#include "host/Progress.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdio>

namespace trel::host {

using namespace std::chrono_literals;

// Where the trace is printed on a terminal too, a line that stays is not written over.
Progress::Progress(Time length)
    : length_(length),
      isShown_(isatty(STDERR_FILENO) != 0),
      end_(isatty(STDOUT_FILENO) != 0 ? "\n" : "\x1b[K\r"),
      next_(Wall::now() + 1s) {}

Progress::~Progress() {
    if (isDirty_ && *end_ != '\n') fmt::print(stderr, "\x1b[K");
}

void Progress::show(Time time) {
    if (!isShown_ || Wall::now() < next_) return;
    const bool stays = *end_ == '\n';
    next_ = Wall::now() + (stays ? 5000ms : 200ms);
    isDirty_ = true;
    const Time percent = length_ == 0 ? 100 : time * 100 / length_;
    fmt::print(stderr, "{:3} % : {} of {}{}", percent, textOfTime(time), textOfTime(length_), end_);
    std::fflush(stderr);
}

}  // namespace trel::host
