#pragma once

#include <string>

namespace trel::test {

/// A station file of buffers "B10", "B11" and so on, by their ids, each handing
/// its value on to the next; in a ring the last to the first.
std::string rowText(unsigned size, unsigned firstId, bool ring);

}  // namespace trel::test
