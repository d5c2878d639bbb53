#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <string>

#include "platform/sdf/Document.h"
#include "tests/platform/Files.h"
#include "tests/support/Expect.h"

namespace {

namespace fs = std::filesystem;
using sdf::Document;
using sdf::DocumentError;
using sdf::Element;
using trel::test::bytesOf;
using trel::test::expectThrow;
using trel::test::TemporaryFolder;
using trel::test::writeBytes;
using Names = std::vector<std::string>;

class Saving : public testing::Test {
protected:
    Saving() { root_->setValue(std::string("new")); }

    void expectFault(const fs::path& file, const std::string& fault) {
        expectThrow<DocumentError>(file.string() + ": " + fault, [&] { document_.save(file); });
    }

    TemporaryFolder folder_;
    std::shared_ptr<Element> root_ = Element::Create("station");
    Document document_{root_};
    const std::string text_ =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<station string=\"new\" />\n";
};

TEST_F(Saving, MakesANewFileWithTheUsualPermissions) {
    const mode_t mask = ::umask(027);
    document_.save(folder_ / "cell.xml");
    ::umask(mask);
    EXPECT_EQ(bytesOf(folder_ / "cell.xml"), text_);
    EXPECT_EQ(fs::status(folder_ / "cell.xml").permissions(), fs::perms(0640));
    EXPECT_EQ(folder_.names(), Names{"cell.xml"});
}

TEST_F(Saving, ReplacesAFileAndKeepsItsPermissions) {
    for (const unsigned mode : {0600u, 0644u, 0755u, 0444u}) {
        writeBytes(folder_ / "cell.xml", "old");
        fs::permissions(folder_ / "cell.xml", fs::perms(mode));
        document_.save(folder_ / "cell.xml");
        EXPECT_EQ(bytesOf(folder_ / "cell.xml"), text_);
        EXPECT_EQ(fs::status(folder_ / "cell.xml").permissions(), fs::perms(mode));
        EXPECT_EQ(folder_.names(), Names{"cell.xml"});
        fs::remove(folder_ / "cell.xml");
    }
}

TEST_F(Saving, PutsAnotherFileInPlaceOfTheOld) {
    writeBytes(folder_ / "cell.xml", "old");
    fs::create_hard_link(folder_ / "cell.xml", folder_ / "other.xml");
    document_.save(folder_ / "cell.xml");
    EXPECT_EQ(bytesOf(folder_ / "other.xml"), "old") << "the old file was not written into";
}

TEST_F(Saving, FollowsLinksAndLeavesThemLinks) {
    fs::create_directory(folder_ / "inner");
    writeBytes(folder_ / "inner/cell.xml", "old");
    fs::create_symlink("inner/cell.xml", folder_ / "link.xml");
    fs::create_symlink(folder_ / "link.xml", folder_ / "link2.xml");
    document_.save(folder_ / "link2.xml");
    EXPECT_EQ(bytesOf(folder_ / "inner/cell.xml"), text_);
    EXPECT_TRUE(fs::is_symlink(folder_ / "link.xml"));
    EXPECT_TRUE(fs::is_symlink(folder_ / "link2.xml"));
    EXPECT_EQ(folder_.names(), (Names{"inner", "link.xml", "link2.xml"}));
}

TEST_F(Saving, MakesTheFileThatALinkPromises) {
    fs::create_symlink("cell.xml", folder_ / "link.xml");
    document_.save(folder_ / "link.xml");
    EXPECT_EQ(bytesOf(folder_ / "cell.xml"), text_);
    EXPECT_TRUE(fs::is_symlink(folder_ / "link.xml"));
}

TEST_F(Saving, RefusesLinksThatGoRound) {
    fs::create_symlink("b.xml", folder_ / "a.xml");
    fs::create_symlink("a.xml", folder_ / "b.xml");
    expectFault(folder_ / "a.xml",
                "the file cannot be found: Too many levels of symbolic links; links that lead to a "
                "file are expected");
    EXPECT_EQ(folder_.names(), (Names{"a.xml", "b.xml"}));
}

TEST_F(Saving, WorksWithANameAlone) {
    fs::current_path(folder_.path());
    document_.save("cell.xml");
    EXPECT_EQ(bytesOf(folder_ / "cell.xml"), text_);
}

TEST_F(Saving, WorksWithTheLongestName) {
    const std::string name(255, 'n');
    document_.save(folder_ / name);
    EXPECT_EQ(folder_.names(), Names{name});
}

TEST_F(Saving, SaysThatTheFolderIsMissing) {
    expectFault(folder_ / "none/cell.xml",
                "the folder cannot be opened: No such file or directory; a path that exists is "
                "expected");
    EXPECT_TRUE(folder_.names().empty());
}

TEST_F(Saving, SaysThatAFileStandsWhereAFolderIsNeeded) {
    writeBytes(folder_ / "file", "x");
    expectFault(folder_ / "file/cell.xml",
                "the folder cannot be opened: Not a directory; a path that exists is expected");
}

TEST_F(Saving, SaysThatTheNameIsAFolder) {
    fs::create_directory(folder_ / "cell.xml");
    expectFault(folder_ / "cell.xml",
                "the file cannot be replaced: Is a directory; a file is expected");
    expectFault(folder_ / "cell.xml/",
                "the file cannot be replaced: Is a directory; a file is expected");
    EXPECT_EQ(folder_.names(), Names{"cell.xml"});
}

TEST_F(Saving, SaysThatTheNameIsTooLong) {
    expectFault(folder_ / std::string(256, 'n'),
                "the file cannot be replaced: File name too long; a shorter path is expected");
    EXPECT_TRUE(folder_.names().empty());
}

TEST_F(Saving, DoesNotReplaceADevice) {
    expectFault("/dev/full", "the file cannot be replaced: it is a device; a file is expected");
    EXPECT_TRUE(fs::is_character_file("/dev/full"));
}

TEST_F(Saving, ThatRunsOutOfSpaceLeavesTheOldFileAndNoOther) {
    writeBytes(folder_ / "cell.xml", "old");
    root_->setValue(std::string(100000, 'x'));
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{5000, RLIM_INFINITY};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    expectFault(folder_ / "cell.xml",
                "the text cannot be written: File too large; a limit on file sizes above that of "
                "the text is expected");
    EXPECT_EQ(bytesOf(folder_ / "cell.xml"), "old");
    EXPECT_EQ(folder_.names(), Names{"cell.xml"});

    const rlimit none{RLIM_INFINITY, RLIM_INFINITY};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &none), 0);
    document_.save(folder_ / "cell.xml");
    EXPECT_EQ(bytesOf(folder_ / "cell.xml").size(), text_.size() - 3 + 100000);
}

TEST_F(Saving, IntoAFolderThatMayNotBeWrittenLeavesTheOldFile) {
    writeBytes(folder_ / "cell.xml", "old");
    fs::permissions(folder_.path(), fs::perms(0555));
    // The superuser may write anywhere, so it is nobody who saves.
    constexpr uid_t nobody = 65534;
    const uid_t user = ::geteuid();
    if (user == 0 && ::seteuid(nobody) != 0) GTEST_SKIP() << "the user cannot be changed";
    expectFault(folder_ / "cell.xml",
                "no file can be made in the folder: Permission denied; a file and a folder that "
                "this user may use are expected");
    ASSERT_EQ(::seteuid(user), 0);
    fs::permissions(folder_.path(), fs::perms(0700));
    EXPECT_EQ(folder_.names(), Names{"cell.xml"});
    EXPECT_EQ(bytesOf(folder_ / "cell.xml"), "old");
}

TEST_F(Saving, RemovesWhatProcessesThatDiedHaveLeft) {
    // One of them had the very number of this process.
    for (int i = 0; i < 3; ++i)
        writeBytes(folder_ / (".saving-" + std::to_string(::getpid()) + "-" + std::to_string(i)),
                   "stray");
    writeBytes(folder_ / ".saving-77-0", "stray");
    document_.save(folder_ / "cell.xml");
    EXPECT_EQ(bytesOf(folder_ / "cell.xml"), text_);
    EXPECT_EQ(folder_.names(), Names{"cell.xml"});
}

TEST_F(Saving, LeavesAloneWhatAnotherSaveIsWriting) {
    writeBytes(folder_ / ".saving-77-0", "half");
    const int other = ::open((folder_ / ".saving-77-0").c_str(), O_WRONLY | O_CLOEXEC);
    ASSERT_EQ(::flock(other, LOCK_EX), 0);
    document_.save(folder_ / "cell.xml");
    EXPECT_EQ(bytesOf(folder_ / ".saving-77-0"), "half");
    ::close(other);
}

TEST_F(Saving, LeavesAloneWhatIsOnlyCalledAlike) {
    for (const char* name : {".saving-money", "saving-1-1", ".saving"})
        writeBytes(folder_ / name, "mine");
    document_.save(folder_ / "cell.xml");
    EXPECT_EQ(folder_.names(), (Names{".saving", ".saving-money", "cell.xml", "saving-1-1"}));
}

// What XML cannot hold is refused before the file is touched.
class Unwritable : public Saving {
protected:
    void expectRefused(const std::string& fault) {
        writeBytes(folder_ / "cell.xml", "old");
        expectFault(folder_ / "cell.xml", fault);
        EXPECT_EQ(bytesOf(folder_ / "cell.xml"), "old");
        EXPECT_EQ(folder_.names(), Names{"cell.xml"});
        expectThrow<DocumentError>("station: " + fault, [&] { document_.text(); });
    }
};

TEST_F(Unwritable, AreControlCharacters) {
    const auto part = root_->appendObject("part", 4, "Box");
    part->touch("label")->setValue(std::string("a\x02 b"));
    expectRefused("\"station/part Box/label\" cannot be written: XML cannot hold the text \"a? b\" "
                  "from byte 2 on; UTF-8 without control characters is expected");
}

TEST_F(Unwritable, IsWhatIsNoUtf8) {
    root_->setName("F\xF6rder");
    expectRefused("\"station F?rder\" cannot be written: XML cannot hold the text \"F?rder\" from "
                  "byte 2 on; UTF-8 without control characters is expected");
}

TEST_F(Unwritable, AreNonCharactersInAttributesAndNotes) {
    root_->addAttribute("other", "string", "\xEF\xBF\xBF");
    expectRefused("\"station\" cannot be written: XML cannot hold the text \"?\" from byte 1 on; "
                  "UTF-8 without control characters is expected");
    root_->get("other")->removeFromParent();
    root_->append(Element::CreateNote(Element::Kind::Text, "", std::string("\0", 1)));
    expectRefused("\"station/\" cannot be written: XML cannot hold the text \"?\" from byte 1 on; "
                  "UTF-8 without control characters is expected");
}

TEST_F(Unwritable, AreNotesThatWouldEndTooEarly) {
    for (const char* text : {"a--b", "a-", "--"}) {
        const auto note = root_->append(Element::CreateNote(Element::Kind::Comment, "", text));
        expectRefused("\"station/\" cannot be written: \"--\" stands in the comment, or \"-\" at "
                      "its end; neither is expected");
        note->removeFromParent();
    }
    root_->append(Element::CreateNote(Element::Kind::Instruction, "do", "a?>b"));
    expectRefused("\"station/do\" cannot be written: \"?>\" stands in the processing instruction; "
                  "an instruction without is expected");
}

TEST_F(Unwritable, IsNestingBeyondTheLimit) {
    auto deepest = root_;
    for (unsigned i = 1; i < Document::maxDepth; ++i) deepest = deepest->append("a");
    EXPECT_NO_THROW(document_.text());
    deepest->append("a");
    std::string path = "station";
    while (path.size() < 200) path += "/a";
    expectRefused("\"" + path.substr(0, 200) +
                  "...\" cannot be written: it stands too deep; at most 256 elements inside each "
                  "other are expected");
}

TEST_F(Unwritable, AreNotesWithACarriageReturn) {
    for (const auto kind : {Element::Kind::Comment, Element::Kind::Instruction}) {
        const auto note = root_->append(Element::CreateNote(kind, "do", "a\r\nb"));
        expectRefused("\"station/do\" cannot be written: it holds a carriage return, which only "
                      "values and texts keep; line feeds are expected");
        note->removeFromParent();
    }
}

}  // namespace
