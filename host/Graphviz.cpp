#include "host/Graphviz.h"

#include <fmt/format.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

#include "host/Failure.h"

namespace trel::host {

namespace {

// A file without a name: neither process waits for the other.
class Scratch {
public:
    explicit Scratch(const std::string& text = "")
        : descriptor_(memfd_create("station", MFD_CLOEXEC)) {
        if (descriptor_ < 0)
            throw std::system_error(errno, std::generic_category(), "no memory file");
        for (std::size_t done = 0; done != text.size();) {
            const ssize_t size = ::write(descriptor_, text.data() + done, text.size() - done);
            if (size < 0) throw std::system_error(errno, std::generic_category(), "no memory");
            done += static_cast<std::size_t>(size);
        }
        lseek(descriptor_, 0, SEEK_SET);
    }
    ~Scratch() { close(descriptor_); }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    int descriptor() const { return descriptor_; }

    std::string text() const {
        std::string result;
        std::array<char, 65536> buffer;
        lseek(descriptor_, 0, SEEK_SET);
        for (ssize_t size; (size = ::read(descriptor_, buffer.data(), buffer.size())) > 0;)
            result.append(buffer.data(), static_cast<std::size_t>(size));
        return result;
    }

private:
    int descriptor_;
};

}  // namespace

std::optional<std::string> drawn(const std::string& dot, const std::string& format) {
    const Scratch in(dot);
    const Scratch out;
    const Scratch errors;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, in.descriptor(), STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, out.descriptor(), STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errors.descriptor(), STDERR_FILENO);
    std::string program = "dot";
    std::string option = "-T" + format;
    const std::array<char*, 3> arguments = {program.data(), option.data(), nullptr};
    pid_t child = 0;
    const int error =
        posix_spawnp(&child, program.c_str(), &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error == ENOENT) return std::nullopt;
    if (error != 0) throw std::system_error(error, std::generic_category(), "no process");
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {}
    if (status != 0)
        throw Failure(ExitCode::CannotSave,
                      fmt::format("Graphviz does not draw the graph ({}); write it as a file that "
                                  "ends in .dot, and look there",
                                  errors.text()));
    return out.text();
}

}  // namespace trel::host
