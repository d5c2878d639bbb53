#pragma once

#include <string>

namespace trel::smartcomp {

/// A text mostly follows one of the same length, and takes its place without a call.
inline void assign(std::string& to, const std::string& from) {
    if (to.size() == from.size())
        from.copy(to.data(), from.size());
    else
        to = from;
}

}  // namespace trel::smartcomp
