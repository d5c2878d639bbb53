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
    /// \throws std::logic_error as `expectUnlocked`.
    static void called();

    /// To be called wherever the library calls the test.
    /// \throws std::logic_error if the object table is locked.
    static void expectUnlocked();

    /// From here on until the next time calls are counted, and the edits of the
    /// script made and told to `log`.
    static void follow(const Script& script, std::vector<std::string>& log);
    static void rest();

    static void apply(const Edit& edit);
};

}  // namespace network
