#pragma once

#include <random>
#include <span>
#include <vector>

namespace network {

/// Numbers that are the same everywhere for one seed, or for the same bytes.
class Random {
public:
    explicit Random(unsigned seed) : engine_(seed) {}

    /// Takes its numbers from the bytes, which must outlive it, one byte for a
    /// small number. Behind their end it goes on as any other does.
    explicit Random(std::span<const unsigned char> bytes) : bytes_(bytes) {}

    /// Whether there are bytes left.
    bool hasBytes() const { return !bytes_.empty(); }

    unsigned below(unsigned n) {
        if (!hasBytes()) return static_cast<unsigned>(engine_() % n);
        unsigned number = next();
        for (unsigned most = 255; most < n - 1 && hasBytes(); most = most << 8 | 255)
            number = number << 8 | next();
        return number % n;
    }
    bool oneIn(unsigned n) { return below(n) == 0; }
    template <typename T>
    const T& from(const std::vector<T>& choices) {
        return choices[below(static_cast<unsigned>(choices.size()))];
    }

private:
    unsigned next() {
        const unsigned byte = bytes_.front();
        bytes_ = bytes_.subspan(1);
        return byte;
    }

    std::mt19937 engine_{1};
    std::span<const unsigned char> bytes_;
};

}  // namespace network
