#pragma once

#include <cstddef>
#include <cstdint>

namespace trel::smartcomp {

/// Asks for memory that will be needed soon. By its address alone, which may be null: what stood
/// there may be gone, and nobody looks. Always inline: the compiler takes a function of nothing
/// else for one that does nothing, and leaves its calls out.
[[gnu::always_inline]] inline void prefetch(const void* part, std::size_t size) {
    constexpr std::uintptr_t line = 64;  // bytes
    const auto from = reinterpret_cast<std::uintptr_t>(part);
    for (std::size_t offset = 0; offset < size; offset += line)
        __builtin_prefetch(reinterpret_cast<const void*>(from + offset));
}

}  // namespace trel::smartcomp
