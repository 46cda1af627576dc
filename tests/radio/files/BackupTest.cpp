#include "radio/files/Backup.h"

#include "radio/files/AtomicFile.h"
#include "radio/files/InputError.h"
#include "tests/radio/files/OwnDirectory.h"
#include "tests/support/PoorFileSystem.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>

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

using PoorFileSystem::Unknown;

/** On file systems that know less. */
class PoorFileSystemTest : public OwnDirectory, public testing::WithParamInterface<Unknown> {
public:
    void SetUp() override {
        if (!holdsThere([] { return true; })) {
            GTEST_SKIP() << "the kernel answers for no file system here, in an emulator for example";
        }
    }

protected:
    template <typename Work>
    static bool holdsThere(Work work) {
        return PoorFileSystem::holdsThere(GetParam(), work);
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
