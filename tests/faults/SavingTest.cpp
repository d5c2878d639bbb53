#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "platform/sdf/Document.h"
#include "tests/faults/FailingDisk.h"
#include "tests/platform/Files.h"

// A save that is killed, or whose calls fail, at every single one of them.

namespace trel::test {
namespace {

namespace fs = std::filesystem;
using How = FailingDisk::How;
using sdf::Document;
using sdf::DocumentError;
using sdf::Element;

struct Situation {
    const char* name;
    bool isNew;        // there is no file yet
    bool overLink;     // the file is named by a link
    bool isNameless;   // the file system knows files without names
    std::size_t size;  // of the text, in bytes
};

constexpr std::size_t mostAtOnce = 512;  // bytes, so that a text takes many writes

constexpr std::array<Situation, 6> situations = {{
    {"a new file", true, false, true, 20'000},
    {"an old file", false, false, true, 100'000},
    {"a link to an old file", false, true, true, 2'000},
    {"a link to a new file", true, true, true, 2'000},
    {"a new file, named from the start", true, false, false, 20'000},
    {"an old file, named from the start", false, false, false, 100'000},
}};

std::size_t openFiles() {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator("/proc/self/fd"),
                                                  fs::directory_iterator()));
}

// In memory where that can be: thousands of files take a disk its time.
fs::path quickestFolder() {
    const fs::path memory = "/dev/shm";
    return ::access(memory.c_str(), W_OK) == 0 ? memory : fs::temp_directory_path();
}

class SavingOnABadDisk : public testing::Test {
protected:
    // The folder as it is before a save, and what is saved.
    void prepare(const Situation& situation) {
        for (const std::string& name : folder_.names()) fs::remove(folder_ / name);
        if (!situation.isNew) writeBytes(folder_ / "cell.xml", "old");
        if (situation.overLink) fs::create_symlink("cell.xml", folder_ / "link.xml");
        file_ = folder_ / (situation.overLink ? "link.xml" : "cell.xml");
        names_ = {"cell.xml"};
        if (situation.overLink) names_.push_back("link.xml");
        root_->setValue(std::string(situation.size, 'x'));
        text_ = document_.text();
    }

    std::string left() const {
        if (!fs::exists(folder_ / "cell.xml")) return "nothing";
        const std::string bytes = bytesOf(folder_ / "cell.xml");
        return bytes == "old" ? "old" : bytes == text_ ? "new" : "neither";
    }
    std::string leftBefore(const Situation& situation) const {
        return situation.isNew ? "nothing" : "old";
    }

    // The names that are not to be there.
    std::size_t strays() const {
        const auto names = folder_.names();
        return static_cast<std::size_t>(std::ranges::count_if(names, [&](const std::string& name) {
            return std::ranges::find(names_, name) == names_.end();
        }));
    }

    // A later save goes well, and leaves nothing else in the folder.
    void expectNextSaveWorks() {
        const FailingDisk healthy(How::Count, 0);
        document_.save(file_);
        EXPECT_EQ(left(), "new");
        EXPECT_EQ(folder_.names(), names_);
    }

    // Saves in a process that is killed at call n. Gives false if the save made
    // fewer calls.
    bool killAt(std::size_t n, How how, const Situation& situation) {
        const pid_t child = ::fork();
        if (child == 0) {
            FailingDisk disk(how, n, 0, mostAtOnce);
            if (!situation.isNameless) disk.refuseNameless();
            document_.save(file_);
            ::_exit(0);
        }
        int status = 0;
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status) ? WEXITSTATUS(status) == 0 : WTERMSIG(status) == SIGKILL);
        return WIFSIGNALED(status);
    }

    // Saves here with a disk that fails; gives what was thrown, "" for nothing.
    std::string save(FailingDisk& disk, const Situation& situation) {
        if (!situation.isNameless) disk.refuseNameless();
        try {
            document_.save(file_);
        } catch (const DocumentError& error) {
            return error.fault();
        }
        return "";
    }

    TemporaryFolder folder_{quickestFolder()};
    fs::path file_;
    std::vector<std::string> names_;
    std::shared_ptr<Element> root_ = Element::Create("station");
    Document document_{root_};
    std::string text_;
};

TEST_F(SavingOnABadDisk, KilledAtAnyCallLeavesTheOldFileOrTheNewOne) {
    std::size_t points = 0;
    std::size_t leftovers = 0;
    for (const Situation& situation : situations) {
        SCOPED_TRACE(situation.name);
        std::size_t straysHere = 0;
        for (const How how : {How::KillBefore, How::KillAfter})
            for (std::size_t n = 1;; ++n) {
                SCOPED_TRACE(n);
                prepare(situation);
                if (!killAt(n, how, situation)) break;
                ++points;
                EXPECT_TRUE(left() == leftBefore(situation) || left() == "new") << left();
                EXPECT_LE(strays(), 1u);
                straysHere += strays();
                if (strays() > 0) expectNextSaveWorks();
                ASSERT_FALSE(HasFailure());
            }
        if (situation.isNameless) {
            EXPECT_EQ(straysHere, 2u) << "behind linkat and before renameat";
        }
        leftovers += straysHere;
        expectNextSaveWorks();
    }
    EXPECT_GE(points, 1000u);
    RecordProperty("points", std::to_string(points));
    std::cout << points << " kills, each left the old file or the new one; " << leftovers
              << " left a temporary name, which the next save removed\n";
}

TEST_F(SavingOnABadDisk, FailingAtAnyCallLeavesTheOldFileOrTheNewOneAndNoOther) {
    std::size_t points = 0;
    for (Situation situation : situations)
        for (const int error : {ENOSPC, EIO, EACCES, EROFS, EDQUOT, EINTR}) {
            SCOPED_TRACE(std::string(situation.name) + ", " + std::to_string(error));
            situation.size = 1'500;
            for (std::size_t n = 1;; ++n) {
                prepare(situation);
                const std::size_t open = openFiles();
                std::string fault;
                std::string failed;
                {
                    FailingDisk disk(How::Once, n, error, mostAtOnce);
                    fault = save(disk, situation);
                    failed = disk.failed();
                }
                if (failed.empty()) break;
                SCOPED_TRACE(failed + ": " + fault);
                ++points;
                // The file stands before its folder is synced.
                const bool stands = fault.empty() || fault.starts_with("the new file stands");
                EXPECT_EQ(left(), stands ? "new" : leftBefore(situation));
                EXPECT_TRUE(fault.empty() || fault.ends_with("expected"));
                if (error == EINTR && failed != "readlink") {
                    EXPECT_EQ(fault, "") << "an interrupted call is repeated";
                }
                EXPECT_EQ(strays(), 0u);
                EXPECT_EQ(openFiles(), open);
                ASSERT_FALSE(HasFailure());
            }
        }
    std::cout << points << " failing calls\n";
}

TEST_F(SavingOnABadDisk, FailingFromAnyCallOnLeavesTheOldFileOrTheNewOne) {
    for (Situation situation : situations)
        for (const int error : {ENOSPC, EIO, EROFS}) {
            SCOPED_TRACE(std::string(situation.name) + ", " + std::to_string(error));
            situation.size = 1'500;
            for (std::size_t n = 1;; ++n) {
                SCOPED_TRACE(n);
                prepare(situation);
                bool hasFailed = false;
                std::string fault;
                {
                    FailingDisk disk(How::FromThenOn, n, error, mostAtOnce);
                    fault = save(disk, situation);
                    hasFailed = *disk.failed() != '\0';
                }
                const bool stands = fault.empty() || fault.starts_with("the new file stands");
                EXPECT_EQ(left(), stands ? "new" : leftBefore(situation)) << fault;
                // A name that cannot be taken away stays until the next save.
                EXPECT_LE(strays(), 1u);
                expectNextSaveWorks();
                ASSERT_FALSE(HasFailure());
                if (!hasFailed) break;
            }
        }
}

TEST_F(SavingOnABadDisk, WritesOnBehindAShortWrite) {
    for (const Situation& situation : situations) {
        std::size_t calls = 0;
        for (std::size_t n = 1; n == 1 || n <= std::min<std::size_t>(calls, 60); ++n) {
            prepare(situation);
            FailingDisk disk(How::Short, n, 0, mostAtOnce);
            EXPECT_EQ(save(disk, situation), "");
            EXPECT_EQ(left(), "new") << situation.name << ", call " << n;
            calls = std::max(calls, disk.calls());
        }
    }
}

struct Message {
    std::size_t call;
    int error;
    const char* failed;
    const char* fault;
};

// The calls of a save over an old file, in their order.
TEST_F(SavingOnABadDisk, SaysWhatFailedAndWhatIsExpected) {
    constexpr Situation situation = {"an old file", false, false, false, 100};
    for (const Message& message : {
             Message{1, EACCES, "open",
                     "the folder cannot be opened: Permission denied; a file and a folder that "
                     "this user may use are expected"},
             Message{2, EIO, "fstatat",
                     "the file cannot be replaced: Input/output error; a disk and a folder in "
                     "working order are expected"},
             Message{4, EROFS, "openat",
                     "no file can be made in the folder: Read-only file system; a file and a "
                     "folder that this user may use are expected"},
             Message{8, EPERM, "fchmod",
                     "the permissions of the file cannot be kept: Operation not permitted; a file "
                     "and a folder that this user may use are expected"},
             Message{9, ENOSPC, "write",
                     "the text cannot be written: No space left on device; free space on the disk "
                     "is expected"},
             Message{10, EIO, "fsync",
                     "the text cannot be written to the disk: Input/output error; a disk and a "
                     "folder in working order are expected"},
             Message{11, EDQUOT, "renameat",
                     "the file cannot be replaced: Disk quota exceeded; free space on the disk is "
                     "expected"},
             Message{12, EIO, "fsync",
                     "the new file stands, but its folder cannot be written to the disk: "
                     "Input/output error; a disk and a folder in working order are expected"},
         }) {
        prepare(situation);
        FailingDisk disk(How::Once, message.call, message.error);
        EXPECT_EQ(save(disk, situation), message.fault);
        EXPECT_STREQ(disk.failed(), message.failed);
    }
}

TEST_F(SavingOnABadDisk, WithoutANamelessFileSaysSoToo) {
    constexpr Situation situation = {"an old file", false, false, true, 100};
    prepare(situation);
    std::size_t n = 1;
    for (;; ++n) {
        FailingDisk disk(How::Once, n, EMLINK);
        const std::string fault = save(disk, situation);
        if (disk.failed() != std::string("linkat")) continue;
        EXPECT_EQ(fault, "the file cannot be replaced: Too many links; a disk and a folder in "
                         "working order are expected");
        break;
    }
    EXPECT_EQ(folder_.names(), names_);
}

TEST_F(SavingOnABadDisk, KeepsPermissionsAndOwnerWhateverTheFileSystemKnows) {
    constexpr uid_t nobody = 65534;
    const bool mayGiveAway = ::geteuid() == 0;
    for (const bool isNameless : {true, false})
        for (const unsigned mode : {0600u, 0644u, 0640u, 0444u}) {
            const Situation situation = {"an old file", false, false, isNameless, 100};
            prepare(situation);
            const std::string file = file_.string();
            if (mayGiveAway) {
                ASSERT_EQ(::chown(file.c_str(), nobody, nobody), 0);
            }
            ASSERT_EQ(::chmod(file.c_str(), mode), 0);
            FailingDisk disk(How::Count, 0);
            EXPECT_EQ(save(disk, situation), "");
            struct stat status{};
            ASSERT_EQ(::stat(file.c_str(), &status), 0);
            EXPECT_EQ(status.st_mode & 07777, mode);
            EXPECT_EQ(status.st_uid, mayGiveAway ? nobody : ::geteuid());
            EXPECT_EQ(left(), "new");
        }
}

TEST_F(SavingOnABadDisk, ReadsAllOrSaysThatItCannot) {
    prepare({"an old file", false, false, true, 200'000});
    document_.save(file_);
    for (const int error : {EIO, EINTR}) {
        for (std::size_t n = 1;; ++n) {
            const std::size_t open = openFiles();
            {
                FailingDisk disk(How::Once, n, error);
                try {
                    EXPECT_EQ(Document::read(file_).text(), text_);
                } catch (const DocumentError& thrown) {
                    EXPECT_EQ(error, EIO) << "an interrupted call is repeated";
                    const std::string what = disk.failed() == std::string("open") ? "opened"
                                                                                  : "read";
                    EXPECT_EQ(thrown.fault(), "the file cannot be " + what +
                                                  ": Input/output error; a disk and a folder in "
                                                  "working order are expected");
                }
                if (!*disk.failed()) break;
            }
            EXPECT_EQ(openFiles(), open);
        }
    }
}

}  // namespace
}  // namespace trel::test
