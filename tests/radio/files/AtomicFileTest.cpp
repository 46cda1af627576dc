#include "radio/files/AtomicFile.h"

#include "radio/files/FileWait.h"
#include "radio/files/InputError.h"
#include "tests/radio/files/OwnDirectory.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace Radio {
namespace {

namespace fs = std::filesystem;

class AtomicFileTest : public OwnDirectory {
protected:
    static std::string refusal(const fs::path& file) {
        try {
            const AtomicFile atomic(file);
        } catch (const InputError& error) {
            return error.what();
        }
        return "accepted";
    }
};

TEST_F(AtomicFileTest, IsThereAfterCommit) {
    write("out.csv", "new\n");
    EXPECT_EQ(contentOf("out.csv"), "new\n");
    EXPECT_EQ(filesHere(), 1);
}

TEST_F(AtomicFileTest, WithoutCommitNothingIsLeft) {
    {
        AtomicFile atomic("out.csv");
        atomic.stream() << "half a line" << std::flush;
    }
    EXPECT_EQ(filesHere(), 0);
}

TEST_F(AtomicFileTest, WhatWasThereStaysUntilCommit) {
    write("out.csv", "old\n");
    AtomicFile atomic("out.csv");
    atomic.stream() << "new\n" << std::flush;
    EXPECT_EQ(contentOf("out.csv"), "old\n");
    atomic.commit();
    EXPECT_EQ(contentOf("out.csv"), "new\n");
}

TEST_F(AtomicFileTest, PermissionsOfWhatWasThereStay) {
    write("out.csv", "old\n");
    ASSERT_EQ(chmod("out.csv", 0640), 0);
    write("out.csv", "new\n");
    EXPECT_EQ(fs::status("out.csv").permissions(), static_cast<fs::perms>(0640));
}

TEST_F(AtomicFileTest, NewFileHasThePermissionsOfAnyOther) {
    std::ofstream("other") << "x";
    write("out.csv", "new\n");
    EXPECT_EQ(fs::status("out.csv").permissions(), fs::status("other").permissions());
}

TEST_F(AtomicFileTest, SymbolicLinkStaysOne) {
    fs::create_directory("elsewhere");
    write("elsewhere/out.csv", "old\n");
    fs::create_symlink("elsewhere/out.csv", "link.csv");
    write("link.csv", "new\n");
    EXPECT_TRUE(fs::is_symlink("link.csv"));
    EXPECT_EQ(contentOf("elsewhere/out.csv"), "new\n");
}

TEST_F(AtomicFileTest, DeviceIsWrittenDirectly) {
    write("/dev/null", "new\n");
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST_F(AtomicFileTest, MissingDirectoryIsRefused) {
    EXPECT_EQ(refusal("none/out.csv"), "none/out.csv: cannot be written: No such file or directory");
}

TEST_F(AtomicFileTest, DirectoryIsRefused) {
    EXPECT_EQ(refusal("."), ".: cannot be written: Is a directory");
}

TEST_F(AtomicFileTest, FullDiskIsTold) {
    AtomicFile atomic("/dev/full");
    atomic.stream() << "new\n";
    EXPECT_THROW(atomic.commit(), InputError);
}

/** As another process of the same directory: the file that is written gets another one's name. */
void swapWhatIsWritten(const fs::path& file, const fs::path& target) {
    for (const fs::directory_entry& entry : fs::directory_iterator(".")) {
        if (entry.path().filename().string().rfind(file.string() + ".", 0) == 0) {
            fs::rename(entry.path(), "taken-away");
            fs::create_symlink(target, entry.path());
            return;
        }
    }
}

TEST_F(AtomicFileTest, LinkPutInThePlaceOfWhatIsWrittenHasNoOtherFileWritten) {
    std::ofstream("other") << "precious";
    AtomicFile atomic("out.csv");
    swapWhatIsWritten("out.csv", "other");
    atomic.stream() << "new\n" << std::flush;
    EXPECT_THROW(atomic.commit(), InputError);
    EXPECT_EQ(contentOf("other"), "precious");
    EXPECT_FALSE(fs::exists("out.csv"));
}

/** What has to happen while a pipe is waited for. */
void (*meanwhile)() = nullptr;

/** Whoever waits for a file has `meanwhile` done, once, and then gives up. */
class SwappedPipeTest : public AtomicFileTest {
protected:
    SwappedPipeTest() {
        std::ofstream("other") << "precious";
        setFileWait([](FileUse, int, std::chrono::milliseconds) {
            if (meanwhile == nullptr) {
                return SIGTERM;
            }
            meanwhile();
            meanwhile = nullptr;
            return 0;
        });
    }
    ~SwappedPipeTest() override {
        setFileWait(nullptr);
        meanwhile = nullptr;
    }
};

TEST_F(SwappedPipeTest, LinkPutInThePlaceOfAPipeHasNoOtherFileWritten) {
    ASSERT_EQ(mkfifo("out.csv", 0600), 0);
    meanwhile = [] {
        fs::create_symlink("other", "link");
        fs::rename("link", "out.csv");
    };
    EXPECT_EQ(refusal("out.csv"), "out.csv: is another file by now");
    EXPECT_EQ(contentOf("other"), "precious");
}

TEST_F(SwappedPipeTest, FilePutInThePlaceOfAPipeIsNotWritten) {
    ASSERT_EQ(mkfifo("out.csv", 0600), 0);
    meanwhile = [] { fs::rename("other", "out.csv"); };
    EXPECT_EQ(refusal("out.csv"), "out.csv: is another file by now");
    EXPECT_EQ(contentOf("out.csv"), "precious");
}

TEST_F(SwappedPipeTest, PipeThatIsTakenAwayIsNotWaitedForAnyMore) {
    ASSERT_EQ(mkfifo("out.csv", 0600), 0);
    meanwhile = [] { fs::remove("out.csv"); };
    EXPECT_EQ(refusal("out.csv"), "out.csv: cannot be written: No such file or directory");
}

TEST_F(AtomicFileTest, WhatSomebodyElsePutThereIsNotTakenAwayAgain) {
    std::ofstream("other") << "precious";
    {
        const AtomicFile atomic("out.csv");
        swapWhatIsWritten("out.csv", "other");
    }
    EXPECT_EQ(filesHere(), 3);
}

TEST_F(AtomicFileTest, UmaskThatLetsNobodyWriteIsNoHindrance) {
    const mode_t before = umask(0222);
    write("out.csv", "new\n");
    umask(before);
    EXPECT_EQ(contentOf("out.csv"), "new\n");
    EXPECT_EQ(fs::status("out.csv").permissions(), static_cast<fs::perms>(0444));
}

TEST_F(AtomicFileTest, LongTextIsWrittenWhole) {
    const std::string text(100000, 'x');
    write("out.csv", text);
    EXPECT_EQ(contentOf("out.csv"), text);
}

/** What was remarked, which a function without an object is told. */
std::string remarks;

class RemarkTest : public AtomicFileTest {
protected:
    RemarkTest() {
        remarks.clear();
        setFileRemark([](const std::string& remark) { remarks += remark + "\n"; });
    }
    ~RemarkTest() override { setFileRemark(nullptr); }
};

/** A process that is killed while it writes. */
void writeAndBeKilled(const fs::path& file) {
    const pid_t child = fork();
    if (child == 0) {
        AtomicFile atomic(file);
        atomic.stream() << "half" << std::flush;
        static_cast<void>(kill(getpid(), SIGKILL));
    }
    waitpid(child, nullptr, 0);
}

/** The name of what is there beside `file`. */
std::string besideOf(const std::string& file) {
    for (const fs::directory_entry& entry : fs::directory_iterator(".")) {
        if (entry.path().filename().string().rfind(file + ".", 0) == 0) {
            return entry.path().filename().string();
        }
    }
    return {};
}

TEST_F(RemarkTest, WhatAKilledRunLeftIsNamedByTheNextOneThatWritesTheSameFile) {
    writeAndBeKilled("out.csv");
    const std::string left = besideOf("out.csv");
    EXPECT_THAT(left, testing::MatchesRegex("out\\.csv\\.......\\.part"));
    EXPECT_EQ(remarks, "");
    write("other.csv", "x");
    EXPECT_EQ(remarks, "");
    write("out.csv", "new\n");
    EXPECT_EQ(remarks, left + " was left behind by a run that was killed while it wrote out.csv; it may be "
                              "deleted\n");
    EXPECT_TRUE(fs::exists(left));
}

TEST_F(RemarkTest, WhatIsBeingWrittenJustNowWasNotLeft) {
    const AtomicFile other("out.csv");
    write("out.csv", "new\n");
    EXPECT_EQ(remarks, "");
}

TEST_F(RemarkTest, FilesThatAreCalledOtherwiseWereNotLeft) {
    for (const char* const name : {"out.csv.backup", "out.csv.12345.part", "out.csv.1234567.part",
                                   "out.csv.part", "out.csvx123456.part"}) {
        std::ofstream(name) << "x";
    }
    fs::create_directory("out.csv.123456.part");
    write("out.csv", "new\n");
    EXPECT_EQ(remarks, "");
}

TEST_F(RemarkTest, OwnersThatStayAreNotRemarked) {
    write("out.csv", "old\n");
    write("out.csv", "new\n");
    EXPECT_EQ(remarks, "");
}

/** Whatever a number of the C library's has on this processor. */
TEST_F(RemarkTest, OffsetsTimesAndNumbersOfFilesHave64Bits) {
    EXPECT_EQ(sizeof(off_t), 8U);
    EXPECT_EQ(sizeof(time_t), 8U);
    EXPECT_EQ(sizeof(ino_t), 8U);
    EXPECT_EQ(sizeof(timespec::tv_sec), 8U);
}

TEST_F(AtomicFileTest, FileOverTwoGibibytesIsReplacedLikeAnyOther) {
    write("out.csv", "old\n");
    ASSERT_EQ(chmod("out.csv", 0640), 0);
    // It has a hole in it, and takes no room.
    if (truncate("out.csv", off_t{3} << 30U) != 0) {
        GTEST_SKIP() << "no file of 3 GiB can be made here";
    }
    EXPECT_TRUE(isSameFile("out.csv", "./out.csv"));
    write("out.csv", "new\n");
    EXPECT_EQ(contentOf("out.csv"), "new\n");
    EXPECT_EQ(fs::status("out.csv").permissions(), static_cast<fs::perms>(0640));
}

TEST_F(AtomicFileTest, FileOfADateAfter2038IsReplacedLikeAnyOther) {
    write("out.csv", "old\n");
    const std::array<timespec, 2> late{{{4102444800, 0}, {4102444800, 0}}}; // 2100
    if (utimensat(AT_FDCWD, "out.csv", late.data(), 0) != 0) {
        GTEST_SKIP() << "no such date can be given to a file here";
    }
    write("out.csv", "new\n");
    EXPECT_EQ(contentOf("out.csv"), "new\n");
}

/** The tests of what belongs to whom run as a user who can give files away. */
class OwnersTest : public AtomicFileTest {
public:
    void SetUp() override {
        if (geteuid() != 0) {
            GTEST_SKIP() << "needs the superuser, who can give files away";
        }
    }

protected:
    static constexpr uid_t someUser = 12345;
    static constexpr uid_t someGroup = 23456;
    /** What `work` says, carried out in a process of another user and group. */
    template <typename Work>
    static void asAnother(uid_t user, gid_t group, Work work) {
        const pid_t child = fork();
        if (child == 0) {
            const bool isOther = setgroups(0, nullptr) == 0 && setgid(group) == 0 && setuid(user) == 0;
            _exit(isOther && work() ? 0 : 1);
        }
        int status = -1;
        waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }
};

TEST_F(OwnersTest, OwnerAndGroupStay) {
    write("out.csv", "old\n");
    ASSERT_EQ(chown("out.csv", someUser, someGroup), 0);
    ASSERT_EQ(chmod("out.csv", 06755), 0);
    write("out.csv", "new\n");
    struct stat status {};
    ASSERT_EQ(stat("out.csv", &status), 0);
    EXPECT_EQ(status.st_uid, someUser);
    EXPECT_EQ(status.st_gid, someGroup);
    EXPECT_EQ(status.st_mode & 07777U, 06755U);
}

TEST_F(OwnersTest, SetIdBitsAreNotAnotherUsers) {
    write("out.csv", "old\n");
    ASSERT_EQ(chown("out.csv", someUser, someGroup), 0);
    ASSERT_EQ(chmod("out.csv", 06755), 0);
    ASSERT_EQ(chmod(".", 0777), 0);
    asAnother(1, someGroup, [] {
        write("out.csv", "new\n");
        return true;
    });
    struct stat status {};
    ASSERT_EQ(stat("out.csv", &status), 0);
    EXPECT_EQ(contentOf("out.csv"), "new\n");
    EXPECT_EQ(status.st_uid, 1U);
    EXPECT_EQ(status.st_gid, someGroup);
    EXPECT_EQ(status.st_mode & 07777U, 0755U);
}

/** A link or a second name of a set-id file takes the place while the file is written. */
TEST_F(OwnersTest, SetIdBitsOfAFileThatWasPutThereMeanwhileAreNotTaken) {
    std::ofstream("suid") << "x";
    ASSERT_EQ(chmod("suid", 06755), 0);
    const auto statusAfter = [](void (*put)()) {
        AtomicFile atomic("out.csv");
        put();
        atomic.commit();
        struct stat status {};
        EXPECT_EQ(lstat("out.csv", &status), 0);
        return status;
    };
    const mode_t before = umask(022);
    const struct stat overLink = statusAfter([] { fs::create_symlink("suid", "out.csv"); });
    EXPECT_EQ(overLink.st_mode, S_IFREG | 0644U);
    fs::remove("out.csv");
    const struct stat overName = statusAfter([] { fs::create_hard_link("suid", "out.csv"); });
    EXPECT_EQ(overName.st_mode, S_IFREG | 0755U);
    umask(before);
}

TEST_F(OwnersTest, LinkOfAnotherUserInASharedDirectoryIsNotFollowed) {
    ASSERT_EQ(chown(".", someUser, someGroup), 0);
    ASSERT_EQ(chmod(".", 01777), 0);
    std::ofstream("precious") << "precious";
    fs::create_symlink("precious", "out.csv");
    fs::create_symlink("out.csv", "over.csv");
    EXPECT_EQ(refusal("out.csv"), "accepted");
    ASSERT_EQ(lchown("out.csv", someUser, someGroup), 0);
    EXPECT_EQ(refusal("out.csv"), "accepted"); // the directory's owner
    ASSERT_EQ(lchown("out.csv", someUser + 1, someGroup), 0);
    EXPECT_EQ(refusal("out.csv"),
              "out.csv: is a link that somebody else made, in a directory where everybody may make files");
    EXPECT_EQ(refusal("over.csv"),
              "over.csv: is a link that somebody else made, in a directory where everybody may make files");
    ASSERT_EQ(chmod(".", 0777), 0);
    EXPECT_EQ(refusal("out.csv"), "accepted");
}

TEST_F(OwnersTest, OwnerThatCannotBeKeptIsRemarked) {
    write("out.csv", "old\n");
    ASSERT_EQ(chown("out.csv", someUser, someGroup), 0);
    ASSERT_EQ(chmod(".", 0777), 0);
    asAnother(1, 2, [] {
        remarks.clear();
        setFileRemark([](const std::string& remark) { remarks += remark + "\n"; });
        write("out.csv", "new\n");
        return remarks == "out.csv belongs to user 1 and group 2 now, and no longer to user 12345 and group "
                          "23456, whom this user may not give it to\n";
    });
}

TEST_F(OwnersTest, WhatOnlyItsOwnerMayReplaceIsRefusedAtOnce) {
    write("out.csv", "old\n");
    ASSERT_EQ(chown("out.csv", someUser, someGroup), 0);
    ASSERT_EQ(chmod("out.csv", 0666), 0);
    ASSERT_EQ(chmod(".", 01777), 0);
    asAnother(1, 1, [] {
        return refusal("out.csv") == "out.csv: belongs to somebody else, in a directory where only its owner "
                                     "may replace it";
    });
    EXPECT_EQ(refusal("out.csv"), "accepted");
}

} // namespace
} // namespace Radio
