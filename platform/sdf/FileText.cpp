#include "platform/sdf/FileText.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <system_error>
#include <utility>

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
    ~Descriptor() { reset(-1); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    // Keeps errno, which the caller has yet to read.
    void reset(int number) {
        const int error = errno;
        if (number_ >= 0) ::close(number_);
        number_ = number;
        errno = error;
    }

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
    std::error_code error;
    for (int i = 0; fs::is_symlink(fs::symlink_status(file, error)); ++i) {
        if (i == mostLinks) fail("the file cannot be found", ELOOP);
        const fs::path next = fs::read_symlink(file, error);
        if (error) fail("the file cannot be found", error.value());
        file = file.parent_path() / next;
    }
    return file;
}

// What a file beside its target is called while it has yet to take its place.
constexpr std::string_view temporaryPrefix = ".saving-";

// The new file until it takes its target's place. It has no name until then, so
// that nothing is left where the process dies; where the file system knows no such
// files it has a temporary one. Who saves holds the lock on it: a temporary name
// whose lock is free belongs to nobody.
class TemporaryFile {
public:
    TemporaryFile(int folder, mode_t mode) : folder_(folder) {
        if (!openNameless(mode)) openNamed(mode);
    }
    ~TemporaryFile() {
        if (!name_.empty()) ::unlinkat(folder_, name_.c_str(), 0);
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    // Takes over owner, where this user may give files away, and permissions.
    void become(const struct stat& old) const {
        const auto own = [this](uid_t user, gid_t group) {
            return uninterrupted([&] { return ::fchown(file_.number(), user, group); }) == 0;
        };
        constexpr auto sameUser = static_cast<uid_t>(-1);
        static_cast<void>(own(old.st_uid, old.st_gid) || own(sameUser, old.st_gid));
        const mode_t mode = old.st_mode & 07777;
        if (uninterrupted([&] { return ::fchmod(file_.number(), mode); }) != 0)
            fail("the permissions of the file cannot be kept", errno);
    }

    void write(std::string_view text) const {
        while (!text.empty()) {
            const auto written =
                uninterrupted([&] { return ::write(file_.number(), text.data(), text.size()); });
            if (written < 0) fail("the text cannot be written", errno);
            text.remove_prefix(static_cast<std::size_t>(written));
        }
        if (uninterrupted([&] { return ::fsync(file_.number()); }) != 0)
            fail("the text cannot be written to the disk", errno);
    }

    void moveTo(const std::string& name) {
        if (name_.empty()) giveName();
        if (uninterrupted([&] {
                return ::renameat(folder_, name_.c_str(), folder_, name.c_str());
            }) != 0)
            fail("the file cannot be replaced", errno);
        name_.clear();
    }

private:
    static std::string freshName() {
        static std::atomic<unsigned> count = 0;
        return std::string(temporaryPrefix) + std::to_string(::getpid()) + '-' +
               std::to_string(count++);
    }

    // The way to a file without a name; there is none where /proc is missing.
    std::string wayToIt() const { return "/proc/self/fd/" + std::to_string(file_.number()); }

    bool openNameless(mode_t mode) {
        file_.reset(uninterrupted([&] {
            return ::openat(folder_, ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, mode);
        }));
        if (!file_.isOpen() || ::access(wayToIt().c_str(), F_OK) != 0) return false;
        ::flock(file_.number(), LOCK_EX | LOCK_NB);
        return true;
    }

    void openNamed(mode_t mode) {
        do {
            std::string name = freshName();
            file_.reset(uninterrupted([&] {
                return ::openat(folder_, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC,
                                mode);
            }));
            if (!file_.isOpen() && errno != EEXIST)
                fail("no file can be made in the folder", errno);
            name_ = std::move(name);
        } while (!file_.isOpen() || !isKept());
    }

    // Locks it, unless another process took it for a stray one before that.
    bool isKept() const {
        if (::flock(file_.number(), LOCK_EX | LOCK_NB) != 0) return errno != EWOULDBLOCK;
        struct stat status{};
        return ::fstat(file_.number(), &status) != 0 || status.st_nlink > 0;
    }

    void giveName() {
        const std::string way = wayToIt();
        while (true) {
            std::string name = freshName();
            if (uninterrupted([&] {
                    return ::linkat(AT_FDCWD, way.c_str(), folder_, name.c_str(),
                                    AT_SYMLINK_FOLLOW);
                }) == 0) {
                name_ = std::move(name);
                return;
            }
            if (errno != EEXIST) fail("the file cannot be replaced", errno);
        }
    }

    int folder_;
    Descriptor file_{-1};
    std::string name_;  // empty while there is none that is ours
};

// Removes what processes that died while they saved have left in the folder.
void removeStrays(int folder) {
    const int again = ::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    DIR* const entries = again < 0 ? nullptr : ::fdopendir(again);
    if (!entries) {
        if (again >= 0) ::close(again);
        return;
    }
    while (const dirent* const entry = ::readdir(entries)) {
        const std::string_view name = entry->d_name;
        if (!name.starts_with(temporaryPrefix)) continue;
        const std::string_view number = name.substr(temporaryPrefix.size());
        if (number.find_first_not_of("0123456789-") != std::string_view::npos) continue;
        const Descriptor stray(::openat(folder, entry->d_name,
                                        O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
        if (stray.isOpen() && ::flock(stray.number(), LOCK_EX | LOCK_NB) == 0)
            ::unlinkat(folder, entry->d_name, 0);
    }
    ::closedir(entries);
}

}  // namespace

std::string readFile(const fs::path& file) {
    const Descriptor opened(
        uninterrupted([&] { return ::open(file.c_str(), O_RDONLY | O_CLOEXEC); }));
    if (!opened.isOpen()) fail("the file cannot be opened", errno);
    struct stat status{};
    if (uninterrupted([&] { return ::fstat(opened.number(), &status); }) != 0)
        fail("the file cannot be read", errno);
    std::string text;
    text.reserve(static_cast<std::size_t>(status.st_size));
    std::array<char, 1 << 16> buffer;
    while (true) {
        const auto count =
            uninterrupted([&] { return ::read(opened.number(), buffer.data(), buffer.size()); });
        if (count < 0) fail("the file cannot be read", errno);
        if (count == 0) return text;
        text.append(buffer.data(), static_cast<std::size_t>(count));
    }
}

void replaceFile(const fs::path& file, std::string_view text) {
    const fs::path path = target(file);
    const std::string name = path.filename();
    const fs::path parent = path.has_parent_path() ? path.parent_path() : fs::path(".");
    const Descriptor folder(
        uninterrupted([&] { return ::open(parent.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    if (!folder.isOpen()) fail("the folder cannot be opened", errno);

    struct stat old{};
    const bool isNew =
        uninterrupted([&] {
            return ::fstatat(folder.number(), name.c_str(), &old, AT_SYMLINK_NOFOLLOW);
        }) != 0;
    if (isNew && errno != ENOENT) fail("the file cannot be replaced", errno);
    if (name.empty() || (!isNew && S_ISDIR(old.st_mode)))
        fail("the file cannot be replaced", EISDIR);
    if (!isNew && !S_ISREG(old.st_mode))
        throw FileFault("the file cannot be replaced: it is a device; a file is expected");

    constexpr mode_t newMode = 0666;  // less what the process masks out
    removeStrays(folder.number());
    TemporaryFile temporary(folder.number(), isNew ? newMode : S_IRUSR | S_IWUSR);
    if (!isNew) temporary.become(old);
    temporary.write(text);
    temporary.moveTo(name);
    // Some file systems have no such operation for folders, and no need of it.
    if (uninterrupted([&] { return ::fsync(folder.number()); }) != 0 && errno != EINVAL)
        fail("the new file stands, but its folder cannot be written to the disk", errno);
}

}  // namespace sdf
