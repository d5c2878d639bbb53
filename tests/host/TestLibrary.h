#pragma once

#include <string>

namespace trel::test {

/// The path of a library in tests/host/libraries.
inline std::string library(const std::string& name) {
    return std::string(TEST_LIBRARIES) + "/libstation_test_" + name + ".so";
}

}  // namespace trel::test
