#pragma once

#include <vector>

#include "tests/network/Random.h"

namespace trel::test {

/// Something of the live station that can be deleted.
struct Deletion {
    enum class Kind { Signal, Property, Connection, Controller, Component };

    Kind kind;
    unsigned component;  // whose it is; itself
    unsigned member = 0;
};

/// Everything that the live station has, in random order.
std::vector<Deletion> everything(network::Random& random);

/// Deletes it, unless it went with something else.
/// \throws std::logic_error if the tables or the document are not as they must be
/// then.
void apply(const Deletion& deletion);

/// \throws std::logic_error if there is anything but a bare station logic.
void expectNothingLeft();

}  // namespace trel::test
