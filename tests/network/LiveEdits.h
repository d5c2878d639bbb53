#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "tests/network/Script.h"

namespace network {

/// Carries out in the library what a script did in the model, at the same calls.
class LiveEdits {
public:
    /// To be called by every component type and listener of the test, where the
    /// model asks its outsider.
    static void called();

    /// From here on until the next time calls are counted, and the edits of the
    /// script made and told to `log`.
    static void follow(const Script& script, std::vector<std::string>& log);
    static void rest();

    static void apply(const Edit& edit);
};

}  // namespace network
