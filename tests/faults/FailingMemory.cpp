#include "tests/faults/FailingMemory.h"

#include <atomic>
#include <cstdlib>
#include <new>
#include <pugixml.hpp>

#include "smartcomp/Roster.h"

namespace trel::test {

namespace {

struct Memory {
    bool isOn = false;
    bool onlyOnce = false;
    bool hasFailed = false;
    std::size_t n = 0;  // when many more until it fails
};

thread_local Memory memory;
std::atomic<long> blocks = 0;

bool fails() {
    if (!memory.isOn) return false;
    if (memory.n > 1) return --memory.n, false;
    if (memory.hasFailed && memory.onlyOnce) return false;
    return memory.hasFailed = true;
}

// Null where there is none.
void* take(std::size_t size, std::size_t alignment = alignof(std::max_align_t)) {
    if (fails()) return nullptr;
    if (size == 0) size = 1;
    void* const block =
        alignment <= alignof(std::max_align_t)
            ? std::malloc(size)
            : std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment);
    if (block) ++blocks;
    return block;
}

void* takeOrThrow(std::size_t size, std::size_t alignment = alignof(std::max_align_t)) {
    if (void* const block = take(size, alignment)) return block;
    throw std::bad_alloc();
}

void give(void* block) noexcept {
    if (block) --blocks;
    std::free(block);
}

// The parser takes its memory otherwise.
void* takeForParser(std::size_t size) { return take(size); }
[[maybe_unused]] const bool parserIsTold = [] {
    pugi::set_memory_management_functions(takeForParser, give);
    return true;
}();

}  // namespace

FailingMemory::FailingMemory(When when, std::size_t n) {
    memory = {.isOn = true, .onlyOnce = when == When::Once, .hasFailed = false, .n = n};
}

FailingMemory::~FailingMemory() { memory.isOn = false; }

bool FailingMemory::hasFailed() const { return memory.hasFailed; }

SafeMemory::SafeMemory() : wasOn_(memory.isOn) { memory.isOn = false; }
SafeMemory::~SafeMemory() { memory.isOn = wasOn_; }

long blocksInUse() { return blocks; }

long blocksLeaked(long before) {
    return (blocks - before) % static_cast<long>(smartcomp::Roster::entriesAtOnce);
}

}  // namespace trel::test

using trel::test::give;
using trel::test::take;
using trel::test::takeOrThrow;

// In place of the standard library's, for every library of the program.

void* operator new(std::size_t size) { return takeOrThrow(size); }
void* operator new[](std::size_t size) { return takeOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return take(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return take(size); }
void* operator new(std::size_t size, std::align_val_t alignment) {
    return takeOrThrow(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
    return takeOrThrow(size, static_cast<std::size_t>(alignment));
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return take(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return take(size, static_cast<std::size_t>(alignment));
}

void operator delete(void* block) noexcept { give(block); }
void operator delete[](void* block) noexcept { give(block); }
void operator delete(void* block, std::size_t) noexcept { give(block); }
void operator delete[](void* block, std::size_t) noexcept { give(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { give(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { give(block); }
void operator delete(void* block, std::align_val_t) noexcept { give(block); }
void operator delete[](void* block, std::align_val_t) noexcept { give(block); }
void operator delete(void* block, std::size_t, std::align_val_t) noexcept { give(block); }
void operator delete[](void* block, std::size_t, std::align_val_t) noexcept { give(block); }
void operator delete(void* block, std::align_val_t, const std::nothrow_t&) noexcept { give(block); }
void operator delete[](void* block, std::align_val_t, const std::nothrow_t&) noexcept {
    give(block);
}
