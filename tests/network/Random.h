#pragma once

#include <random>
#include <vector>

namespace network {

/// Numbers that are the same everywhere for one seed.
class Random {
public:
    explicit Random(unsigned seed) : engine_(seed) {}
    unsigned below(unsigned n) { return static_cast<unsigned>(engine_() % n); }
    bool oneIn(unsigned n) { return below(n) == 0; }
    template <typename T>
    const T& from(const std::vector<T>& choices) {
        return choices[below(static_cast<unsigned>(choices.size()))];
    }

private:
    std::mt19937 engine_;
};

}  // namespace network
