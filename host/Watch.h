#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace trel::host {

/// Which members are looked at: those whose path of names suits one of the
/// patterns, or all where there is no pattern. In a pattern "*" stands for any
/// text and "?" for any character.
class Watch {
public:
    Watch() = default;
    explicit Watch(std::vector<std::string> patterns) : patterns_(std::move(patterns)) {}

    bool isAll() const { return patterns_.empty(); }
    bool suits(std::string_view path) const;

    /// \throws Failure (usage) for a pattern that suits no member of the station.
    void refuseIdle() const;

private:
    std::vector<std::string> patterns_;
};

}  // namespace trel::host
