#include "tests/faults/FailingDisk.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdarg>

namespace trel::test {

namespace {

struct Disk {
    bool isOn = false;
    FailingDisk::How how = FailingDisk::How::Count;
    std::size_t n = 0;
    int error = 0;
    std::size_t mostAtOnce = 0;
    bool refusesNameless = false;
    std::size_t calls = 0;
    const char* failed = "";
};

thread_local Disk disk;

[[noreturn]] void die() {
    ::kill(::getpid(), SIGKILL);
    while (true) ::pause();
}

// Carries a call out by its number, past the functions below, or has it fail.
template <typename... Arguments>
long carryOut(const char* name, long number, Arguments... arguments) {
    using enum FailingDisk::How;
    if (!disk.isOn) return ::syscall(number, arguments...);
    const std::size_t call = ++disk.calls;
    const bool isIt = call == disk.n;
    if (isIt && disk.how == KillBefore) die();
    if ((isIt && disk.how == Once) || (call >= disk.n && disk.how == FromThenOn)) {
        if (!*disk.failed) disk.failed = name;
        errno = disk.error;
        // A file that fails to close is closed.
        if (number == SYS_close) {
            ::syscall(number, arguments...);
            errno = disk.error;
        }
        return -1;
    }
    const long result = number == SYS_fsync ? 0 : ::syscall(number, arguments...);
    if (isIt && disk.how == KillAfter) die();
    return result;
}

int openAt(const char* name, int folder, const char* path, int flags, mode_t mode) {
    if (disk.isOn && disk.refusesNameless && (flags & O_TMPFILE) == O_TMPFILE) {
        errno = EOPNOTSUPP;
        return -1;
    }
    return static_cast<int>(carryOut(name, SYS_openat, folder, path, flags, mode));
}

mode_t modeOf(int flags, va_list arguments) {
    return flags & (O_CREAT | O_TMPFILE) ? static_cast<mode_t>(va_arg(arguments, unsigned)) : 0;
}

}  // namespace

FailingDisk::FailingDisk(How how, std::size_t n, int error, std::size_t mostAtOnce) {
    disk = Disk();
    disk.how = how;
    disk.n = n;
    disk.error = error;
    disk.mostAtOnce = mostAtOnce;
    disk.isOn = true;
}

FailingDisk::~FailingDisk() { disk.isOn = false; }

void FailingDisk::refuseNameless() { disk.refusesNameless = true; }

std::size_t FailingDisk::calls() const { return disk.calls; }

const char* FailingDisk::failed() const { return disk.failed; }

}  // namespace trel::test

// In place of the system's, for every library of the program.

using trel::test::carryOut;
using trel::test::disk;
using trel::test::FailingDisk;

extern "C" {

int open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = trel::test::modeOf(flags, arguments);
    va_end(arguments);
    return trel::test::openAt("open", AT_FDCWD, path, flags, mode);
}

int openat(int folder, const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = trel::test::modeOf(flags, arguments);
    va_end(arguments);
    return trel::test::openAt("openat", folder, path, flags, mode);
}

ssize_t read(int file, void* bytes, size_t size) {
    return carryOut("read", SYS_read, file, bytes, size);
}

ssize_t write(int file, const void* bytes, size_t size) {
    if (disk.isOn && disk.mostAtOnce > 0) size = std::min(size, disk.mostAtOnce);
    if (disk.isOn && disk.how == FailingDisk::How::Short && disk.calls + 1 == disk.n)
        size = (size + 1) / 2;
    return carryOut("write", SYS_write, file, bytes, size);
}

int fsync(int file) { return static_cast<int>(carryOut("fsync", SYS_fsync, file)); }

int close(int file) { return static_cast<int>(carryOut("close", SYS_close, file)); }

int fstat(int file, struct stat* status) noexcept {
    return static_cast<int>(carryOut("fstat", SYS_fstat, file, status));
}

int fstatat(int folder, const char* path, struct stat* status, int flags) noexcept {
    return static_cast<int>(carryOut("fstatat", SYS_newfstatat, folder, path, status, flags));
}

int fchmod(int file, mode_t mode) noexcept {
    return static_cast<int>(carryOut("fchmod", SYS_fchmod, file, mode));
}

int fchown(int file, uid_t user, gid_t group) noexcept {
    return static_cast<int>(carryOut("fchown", SYS_fchown, file, user, group));
}

// Under another name here, where flock is a struct as well.
int lockFile(int file, int operation) noexcept asm("flock");
int lockFile(int file, int operation) noexcept {
    return static_cast<int>(carryOut("flock", SYS_flock, file, operation));
}

int linkat(int from, const char* old, int to, const char* path, int flags) noexcept {
    return static_cast<int>(carryOut("linkat", SYS_linkat, from, old, to, path, flags));
}

int renameat(int from, const char* old, int to, const char* path) noexcept {
    return static_cast<int>(carryOut("renameat", SYS_renameat2, from, old, to, path, 0));
}

int unlinkat(int folder, const char* path, int flags) noexcept {
    return static_cast<int>(carryOut("unlinkat", SYS_unlinkat, folder, path, flags));
}

ssize_t readlink(const char* path, char* text, size_t size) noexcept {
    return carryOut("readlink", SYS_readlinkat, AT_FDCWD, path, text, size);
}

}  // extern "C"
