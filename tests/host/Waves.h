#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace trel::test {

/// A value change dump as it was read: for each variable, by its place
/// ("Cell.Gripper.Close"), the stamps and values in order, the first one being what it
/// begins with. A vector's bits are a number; what has an x is "x".
struct Waves {
    using Stamp = long long;
    std::map<std::string, std::vector<std::pair<Stamp, std::string>>> changes;
    std::map<std::string, std::string> kinds;  // "wire 1"
    std::string timescale;
    Stamp end = 0;

    /// \throws std::runtime_error for text that is no value change dump.
    explicit Waves(const std::string& text);
};

}  // namespace trel::test
