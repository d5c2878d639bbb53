#pragma once

#include <functional>
#include <string>

namespace trel::host {

/// What became of a piece of work that a process of its own did.
struct ChildResult {
    std::string output;  // what it gave
    std::string end;     // empty if it came to its end; else how it ended instead
};

/// Does work in a copy of this process, so that whatever it does to the process
/// harms nobody: somebody else's code may crash, or never come back. What it
/// prints is lost.
ChildResult inChild(const std::function<std::string()>& work, unsigned seconds);

}  // namespace trel::host
