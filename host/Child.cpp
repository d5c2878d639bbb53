#include "host/Child.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <system_error>

#include "host/Failure.h"

namespace trel::host {

namespace {

void writeAll(int descriptor, const std::string& text) {
    for (std::size_t done = 0; done != text.size();) {
        const ssize_t size = write(descriptor, text.data() + done, text.size() - done);
        if (size < 0 && errno != EINTR) return;
        if (size > 0) done += static_cast<std::size_t>(size);
    }
}

std::string readAll(int descriptor) {
    std::string text;
    std::array<char, 65536> buffer;
    while (true) {
        const ssize_t size = read(descriptor, buffer.data(), buffer.size());
        if (size == 0 || (size < 0 && errno != EINTR)) return text;
        if (size > 0) text.append(buffer.data(), static_cast<std::size_t>(size));
    }
}

void silence() {
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (nowhere < 0) return;
    dup2(nowhere, STDOUT_FILENO);
    dup2(nowhere, STDERR_FILENO);
}

constexpr int cameToItsEnd = 0;
constexpr int threw = 1;

// Ends the process without what it would do at its exit: that is its parent's.
[[noreturn]] void live(const std::function<std::string()>& work, unsigned seconds, int descriptor) {
    silence();
    // A time that is over ends it, whatever it has come to.
    signal(SIGALRM, SIG_DFL);
    alarm(seconds);
    int code = cameToItsEnd;
    std::string output;
    try {
        output = work();
    } catch (...) {
        output = textOfThrown();
        code = threw;
    }
    writeAll(descriptor, output);
    _exit(code);
}

}  // namespace

ChildResult inChild(const std::function<std::string()>& work, unsigned seconds) {
    std::array<int, 2> ends;
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        throw std::system_error(errno, std::generic_category(), "no pipe");
    const pid_t child = fork();
    if (child < 0) {
        const int error = errno;
        close(ends[0]);
        close(ends[1]);
        throw std::system_error(error, std::generic_category(), "no process");
    }
    if (child == 0) {
        close(ends[0]);
        live(work, seconds, ends[1]);
    }
    close(ends[1]);
    ChildResult result{readAll(ends[0]), {}};
    close(ends[0]);
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {}
    if (WIFSIGNALED(status))
        result.end = WTERMSIG(status) == SIGALRM
                         ? fmt::format("took more than {} s", seconds)
                         : fmt::format("ended with \"{}\"", strsignal(WTERMSIG(status)));
    else if (WEXITSTATUS(status) == threw)
        result.end = fmt::format("failed: {}", result.output);
    else if (WEXITSTATUS(status) != cameToItsEnd)
        result.end = fmt::format("left the process with code {}", WEXITSTATUS(status));
    return result;
}

}  // namespace trel::host
