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

using How = FailingDisk::How;

struct State {
    bool isOn = false;
    How how = How::Count;
    std::size_t n = 0;
    int error = 0;
    std::size_t mostAtOnce = 0;
    bool refusesNameless = false;
    std::size_t calls = 0;
    const char* failed = "";
};

thread_local State state;

[[noreturn]] void die() {
    ::kill(::getpid(), SIGKILL);
    while (true) ::pause();
}

// Carries a call out by its number, past the functions below, or has it fail.
template <typename... Arguments>
long carryOut(const char* name, long number, Arguments... arguments) {
    if (!state.isOn) return ::syscall(number, arguments...);
    const std::size_t call = ++state.calls;
    const bool isIt = call == state.n;
    if (isIt && state.how == How::KillBefore) die();
    if ((isIt && state.how == How::Once) || (call >= state.n && state.how == How::FromThenOn)) {
        if (!*state.failed) state.failed = name;
        errno = state.error;
        // A file that fails to close is closed.
        if (number == SYS_close) {
            ::syscall(number, arguments...);
            errno = state.error;
        }
        return -1;
    }
    const long result = number == SYS_fsync ? 0 : ::syscall(number, arguments...);
    if (isIt && state.how == How::KillAfter) die();
    return result;
}

int openAt(const char* name, int folder, const char* path, int flags, mode_t mode) {
    if (state.isOn && state.refusesNameless && (flags & O_TMPFILE) == O_TMPFILE) {
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
    state = State();
    state.how = how;
    state.n = n;
    state.error = error;
    state.mostAtOnce = mostAtOnce;
    state.isOn = true;
}

FailingDisk::~FailingDisk() { state.isOn = false; }

void FailingDisk::refuseNameless() { state.refusesNameless = true; }

std::size_t FailingDisk::calls() const { return state.calls; }

const char* FailingDisk::failed() const { return state.failed; }

}  // namespace trel::test

// In place of the system's, for every library of the program.

using trel::test::carryOut;
using trel::test::How;
using trel::test::state;

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
    if (state.isOn && state.mostAtOnce > 0) size = std::min(size, state.mostAtOnce);
    if (state.isOn && state.how == How::Short && state.calls + 1 == state.n) size = (size + 1) / 2;
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
