#pragma once

#include <cstddef>

namespace trel::test {

/// Has allocations of this thread fail while one lives: `operator new` in all its
/// forms, and what the XML parser takes.
class FailingMemory {
public:
    enum class When {
        Once,        // allocation n fails, counted from 1
        FromThenOn,  // and every one behind it
    };

    FailingMemory(When when, std::size_t n);
    ~FailingMemory();
    FailingMemory(const FailingMemory&) = delete;
    FailingMemory& operator=(const FailingMemory&) = delete;

    bool hasFailed() const;
};

/// Memory is there while one lives: for what a test does in the middle.
class SafeMemory {
public:
    SafeMemory();
    ~SafeMemory();
    SafeMemory(const SafeMemory&) = delete;
    SafeMemory& operator=(const SafeMemory&) = delete;

private:
    bool wasOn_;
};

/// How many allocations of the program are in use.
long blocksInUse();

/// How many more are in use than `before`, but for entries of the list of components, which
/// stay.
long blocksLeaked(long before);

}  // namespace trel::test
