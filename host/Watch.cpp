#include "host/Watch.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/Failure.h"
#include "host/Members.h"
#include "host/Names.h"
#include "host/Tree.h"

namespace trel::host {

namespace {

// Goes back to the last "*" where the rest does not suit.
bool matches(std::string_view pattern, std::string_view text) {
    std::size_t p = 0;
    std::size_t t = 0;
    std::size_t star = std::string_view::npos;
    std::size_t behindStar = 0;  // in the text
    while (t < text.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            behindStar = t;
        } else if (p < pattern.size() && (pattern[p] == '?' || pattern[p] == text[t])) {
            ++p;
            ++t;
        } else if (star != std::string_view::npos) {
            p = star + 1;
            t = ++behindStar;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', p) == std::string_view::npos;
}

}  // namespace

bool Watch::suits(std::string_view path) const {
    return isAll() || std::ranges::any_of(patterns_, [&](const std::string& pattern) {
               return matches(pattern, path);
           });
}

void Watch::refuseIdle() const {
    std::vector<std::string> paths;
    if (!isAll())
        for (const unsigned object : Tree().all())
            for (const Member& member : membersOf(object)) paths.push_back(pathOf(member));
    for (const std::string& pattern : patterns_)
        if (std::ranges::none_of(paths,
                                 [&](const std::string& path) { return matches(pattern, path); }))
            throw Failure(ExitCode::Usage,
                          fmt::format("--watch: \"{}\" suits no signal or property of the station; "
                                      "see their names with station show",
                                      pattern));
}

}  // namespace trel::host
