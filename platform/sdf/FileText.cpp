#include "platform/sdf/FileText.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <system_error>

namespace sdf {

namespace {

namespace fs = std::filesystem;

// What a person can do about it.
std::string_view expectedAfter(int error) {
    switch (error) {
        case ENOENT:
        case ENOTDIR: return "a path that exists is expected";
        case EACCES:
        case EPERM:
        case EROFS: return "a file and a folder that this user may use are expected";
        case ENOSPC:
        case EDQUOT: return "free space on the disk is expected";
        case EFBIG: return "a limit on file sizes above that of the text is expected";
        case ELOOP: return "links that lead to a file are expected";
        case ENAMETOOLONG: return "a shorter path is expected";
        case EISDIR: return "a file is expected";
        default: return "a disk and a folder in working order are expected";
    }
}

[[noreturn]] void fail(const std::string& what, int error) {
    throw FileFault(what + ": " + std::generic_category().message(error) + "; " +
                    std::string(expectedAfter(error)));
}

// An open file; closed in the end, whatever happens.
class Descriptor {
public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0) ::close(number_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int number() const { return number_; }
    bool isOpen() const { return number_ >= 0; }

private:
    int number_;
};

// Repeats a call that a signal interrupted.
template <typename Call>
auto uninterrupted(const Call& call) {
    auto result = call();
    while (result == -1 && errno == EINTR) result = call();
    return result;
}

// Where the links lead, so that they stay links; the file need not exist.
fs::path target(fs::path file) {
    constexpr int mostLinks = 40;
    std::error_code ignored;
    for (int i = 0; fs::is_symlink(fs::symlink_status(file, ignored)); ++i) {
        if (i == mostLinks) fail("the file cannot be found", ELOOP);
        file = file.parent_path() / fs::read_symlink(file, ignored);
    }
    return file;
}

// A file beside its target until it takes the target's place; removed if it
// never does.
class TemporaryFile {
public:
    TemporaryFile(int folder, mode_t mode) : folder_(folder), file_(-1) { open(mode); }
    ~TemporaryFile() {
        if (!name_.empty()) ::unlinkat(folder_, name_.c_str(), 0);
        if (file_ >= 0) ::close(file_);
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    void setMode(mode_t mode) const {
        if (::fchmod(file_, mode) != 0) fail("the permissions of the file cannot be kept", errno);
    }

    void write(std::string_view text) const {
        while (!text.empty()) {
            const auto written =
                uninterrupted([&] { return ::write(file_, text.data(), text.size()); });
            if (written < 0) fail("the text cannot be written", errno);
            text.remove_prefix(static_cast<std::size_t>(written));
        }
        if (uninterrupted([&] { return ::fsync(file_); }) != 0)
            fail("the text cannot be written to the disk", errno);
    }

    void moveTo(const std::string& name) {
        const int number = file_;
        file_ = -1;
        if (::close(number) != 0 && errno != EINTR) fail("the text cannot be written", errno);
        if (::renameat(folder_, name_.c_str(), folder_, name.c_str()) != 0)
            fail("the file cannot be replaced", errno);
        name_.clear();
    }

private:
    void open(mode_t mode) {
        static std::atomic<unsigned> count = 0;
        do {
            name_ = ".saving-" + std::to_string(::getpid()) + "-" + std::to_string(count++);
            file_ = uninterrupted([&] {
                return ::openat(folder_, name_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC,
                                mode);
            });
        } while (file_ < 0 && errno == EEXIST);
        if (file_ >= 0) return;
        name_.clear();
        fail("no file can be made in the folder", errno);
    }

    int folder_;
    int file_;
    std::string name_;
};

}  // namespace

std::string readFile(const fs::path& file) {
    const Descriptor opened(
        uninterrupted([&] { return ::open(file.c_str(), O_RDONLY | O_CLOEXEC); }));
    if (!opened.isOpen()) fail("the file cannot be opened", errno);
    struct stat status {};
    if (::fstat(opened.number(), &status) != 0) fail("the file cannot be read", errno);
    std::string text;
    text.reserve(static_cast<std::size_t>(status.st_size));
    std::array<char, 1 << 16> buffer;
    while (true) {
        const auto count = uninterrupted(
            [&] { return ::read(opened.number(), buffer.data(), buffer.size()); });
        if (count < 0) fail("the file cannot be read", errno);
        if (count == 0) return text;
        text.append(buffer.data(), static_cast<std::size_t>(count));
    }
}

void replaceFile(const fs::path& file, std::string_view text) {
    const fs::path path = target(file);
    const std::string name = path.filename();
    const fs::path parent = path.has_parent_path() ? path.parent_path() : fs::path(".");
    const Descriptor folder(uninterrupted(
        [&] { return ::open(parent.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    if (!folder.isOpen()) fail("the folder cannot be opened", errno);

    struct stat old {};
    const bool isNew = ::fstatat(folder.number(), name.c_str(), &old, AT_SYMLINK_NOFOLLOW) != 0;
    if (isNew && errno != ENOENT) fail("the file cannot be replaced", errno);
    if (name.empty() || (!isNew && S_ISDIR(old.st_mode)))
        fail("the file cannot be replaced", EISDIR);
    if (!isNew && !S_ISREG(old.st_mode))
        throw FileFault("the file cannot be replaced: it is a device; a file is expected");

    constexpr mode_t newMode = 0666;  // less what the process masks out
    TemporaryFile temporary(folder.number(), isNew ? newMode : S_IRUSR | S_IWUSR);
    if (!isNew) temporary.setMode(old.st_mode & 07777);
    temporary.write(text);
    temporary.moveTo(name);
    // Some file systems have no such operation for folders, and no need of it.
    if (uninterrupted([&] { return ::fsync(folder.number()); }) != 0 && errno != EINVAL)
        fail("the new file stands, but its folder cannot be written to the disk", errno);
}

}  // namespace sdf
