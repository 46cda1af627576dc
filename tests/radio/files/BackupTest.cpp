#include "radio/files/Backup.h"

#include "radio/files/AtomicFile.h"
#include "radio/files/InputError.h"
#include "tests/radio/files/OwnDirectory.h"

#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace Radio {
namespace {

namespace fs = std::filesystem;

using BackupTest = OwnDirectory;

TEST_F(BackupTest, BackupTakesTheFirstNameThatIsFree) {
    write("out.csv", "first\n");
    EXPECT_EQ(keepBackup("out.csv"), "out.csv.~1~");
    write("out.csv", "second\n");
    EXPECT_EQ(keepBackup("out.csv"), "out.csv.~2~");
    write("out.csv", "third\n");
    EXPECT_EQ(contentOf("out.csv.~1~"), "first\n");
    EXPECT_EQ(contentOf("out.csv.~2~"), "second\n");
}

TEST_F(BackupTest, FileStaysWhereItIsDuringItsBackup) {
    write("out.csv", "first\n");
    keepBackup("out.csv");
    EXPECT_EQ(contentOf("out.csv"), "first\n");
}

TEST_F(BackupTest, NothingNeedsNoBackup) {
    EXPECT_EQ(keepBackup("out.csv"), "");
    EXPECT_EQ(keepBackup("/dev/null"), "");
}

TEST_F(BackupTest, FileThatMadeRoomCanHaveItsNameBack) {
    write("out.csv", "old");
    const fs::path backup = moveToBackup("out.csv");
    EXPECT_EQ(backup, "out.csv.~1~");
    EXPECT_FALSE(fs::exists("out.csv"));
    moveBack(backup, "out.csv");
    EXPECT_EQ(contentOf("out.csv"), "old");
    EXPECT_FALSE(fs::exists(backup));
}

TEST_F(BackupTest, MovingBackWritesNothingOver) {
    write("out.csv", "old");
    const fs::path backup = moveToBackup("out.csv");
    write("out.csv", "new");
    moveBack(backup, "out.csv");
    EXPECT_EQ(contentOf("out.csv"), "new");
    EXPECT_EQ(contentOf(backup), "old");
}

TEST_F(BackupTest, BackupOfALinkedFileIsBesideTheFile) {
    fs::create_directory("elsewhere");
    write("elsewhere/out.csv", "old\n");
    fs::create_symlink("elsewhere/out.csv", "link.csv");
    const fs::path backup = keepBackup("link.csv");
    write("link.csv", "new\n");
    EXPECT_EQ(backup, fs::canonical("elsewhere") / "out.csv.~1~");
    EXPECT_EQ(contentOf(backup), "old\n");
}

/** What a file system does not know. */
enum class Unknown { renamingToNew, renamingToNewAndLinks };

/** From now on this process works as on a file system that does not know it: the kernel answers so. */
bool forget(Unknown unknown) {
    constexpr unsigned number = offsetof(seccomp_data, nr);
    constexpr unsigned flags = offsetof(seccomp_data, args) + 4 * sizeof(std::uint64_t);
    std::vector<sock_filter> filter = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, number),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_renameat2, 0, 3),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, flags),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, 0, 1, 0),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EINVAL),
    };
    if (unknown == Unknown::renamingToNewAndLinks) {
        for (const long link : {
#ifdef SYS_link
                 long{SYS_link},
#endif
                 long{SYS_linkat}}) {
            filter.push_back(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, number));
            filter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned>(link), 0, 1));
            filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EPERM));
        }
    }
    filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    const sock_fprog program = {static_cast<unsigned short>(filter.size()), filter.data()};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

/** On file systems that know less. */
class PoorFileSystemTest : public OwnDirectory, public testing::WithParamInterface<Unknown> {
public:
    void SetUp() override {
        if (!holdsThere([] { return true; })) {
            GTEST_SKIP() << "the kernel answers for no file system here, in an emulator for example";
        }
    }

protected:
    /** What `work` says, in a process for which the file system knows less. */
    template <typename Work>
    static bool holdsThere(Work work) {
        const pid_t child = fork();
        if (child == 0) {
            _exit(forget(GetParam()) && work() ? 0 : 1);
        }
        int status = -1;
        waitpid(child, &status, 0);
        return status == 0;
    }
    static bool commitsNew(const std::string& text) {
        try {
            AtomicFile atomic("new.csv");
            atomic.stream() << text;
            atomic.commitNew();
            return true;
        } catch (const InputError& error) {
            return std::string(error.what()) != "new.csv: could not be written: File exists";
        }
    }
};

TEST_P(PoorFileSystemTest, NewFileIsPutWhereNothingIs) {
    EXPECT_TRUE(holdsThere([] { return commitsNew("new"); }));
    EXPECT_EQ(contentOf("new.csv"), "new");
    EXPECT_EQ(filesHere(), 1);
}

TEST_P(PoorFileSystemTest, NewFileReplacesNothing) {
    write("new.csv", "old");
    EXPECT_FALSE(holdsThere([] { return commitsNew("new"); }));
    EXPECT_EQ(contentOf("new.csv"), "old");
    EXPECT_EQ(filesHere(), 1);
}

TEST_P(PoorFileSystemTest, BackupTakesTheFirstNameThatIsFree) {
    write("out.csv.~1~", "older");
    write("out.csv", "old");
    EXPECT_TRUE(holdsThere([] { return moveToBackup("out.csv") == "out.csv.~2~"; }));
    EXPECT_EQ(contentOf("out.csv.~1~"), "older");
    EXPECT_EQ(contentOf("out.csv.~2~"), "old");
    EXPECT_EQ(filesHere(), 2);
}

TEST_P(PoorFileSystemTest, MovingBackWritesNothingOver) {
    write("out.csv.~1~", "old");
    write("out.csv", "new");
    EXPECT_TRUE(holdsThere([] {
        moveBack("out.csv.~1~", "out.csv");
        return true;
    }));
    EXPECT_EQ(contentOf("out.csv"), "new");
    EXPECT_EQ(contentOf("out.csv.~1~"), "old");
}

INSTANTIATE_TEST_SUITE_P(Knows, PoorFileSystemTest,
                         testing::Values(Unknown::renamingToNew, Unknown::renamingToNewAndLinks),
                         [](const testing::TestParamInfo<Unknown>& test) {
                             return test.param == Unknown::renamingToNew ? "Links" : "Nothing";
                         });

} // namespace
} // namespace Radio
