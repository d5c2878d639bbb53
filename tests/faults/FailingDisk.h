#pragma once

#include <cstddef>

namespace trel::test {

/// Makes the system's file calls fail, or end the process, while one lives: those
/// that saving makes, counted from 1 in this thread. Calls to sync are counted
/// and not carried out, for no power is cut here.
class FailingDisk {
public:
    enum class How {
        Count,       // nothing fails
        Once,        // call n fails
        FromThenOn,  // and every one behind it
        Short,       // call n, if it writes, writes half
        KillBefore,  // the process ends when it makes call n
        KillAfter,   // or when that has been carried out
    };

    /// `error` is what a failing call says. No call writes more than `mostAtOnce`
    /// bytes, as a disk may have it; 0 for no bound.
    FailingDisk(How how, std::size_t n, int error = 0, std::size_t mostAtOnce = 0);
    ~FailingDisk();
    FailingDisk(const FailingDisk&) = delete;
    FailingDisk& operator=(const FailingDisk&) = delete;

    /// From here on the file system knows no files without names.
    void refuseNameless();

    std::size_t calls() const;

    /// The name of the call that failed; "" when there was none.
    const char* failed() const;
};

}  // namespace trel::test
