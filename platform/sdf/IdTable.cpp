#include "platform/sdf/IdTable.h"

#include <random>

namespace sdf {

// Ids mostly follow each other, and multiplied they step round the row. How evenly the
// steps divide it depends on the factor as a fraction of 2^64: no two homes lie close where
// the terms of its continued fraction are small, and otherwise the terms are free (three-gap
// theorem: V. T. Sós, 1958).
static std::uint64_t drawFactor() {
    constexpr unsigned half = 32;
    std::random_device random;
    std::uint64_t numerator = 0;
    std::uint64_t denominator = 1;
    while (denominator >> (half - 2) == 0) {
        const std::uint64_t term = 1 + random() % 3;
        numerator = std::exchange(denominator, term * denominator + numerator);
    }
    const std::uint64_t rest = (numerator << half) % denominator;
    return ((numerator << half) / denominator) << half | (rest << half) / denominator | 1;
}

std::uint64_t idFactor() {
    static const std::uint64_t factor = drawFactor();
    return factor;
}

}  // namespace sdf
