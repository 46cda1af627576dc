#include "radio/files/AtomicFile.h"

#include "radio/files/InputError.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace Radio {
namespace {

namespace fs = std::filesystem;

/** Works in an empty directory of its own. */
class AtomicFileTest : public testing::Test {
public:
    AtomicFileTest() {
        std::string directory = testing::TempDir() + "atomicXXXXXX";
        if (mkdtemp(directory.data()) == nullptr) {
            throw std::runtime_error("no temporary directory");
        }
        m_directory = directory;
        fs::current_path(m_directory);
    }
    ~AtomicFileTest() override {
        fs::current_path(m_before);
        fs::remove_all(m_directory);
    }

protected:
    static void write(const fs::path& file, const std::string& text) {
        AtomicFile atomic(file);
        atomic.stream() << text;
        atomic.commit();
    }
    static std::string contentOf(const fs::path& file) {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    static std::ptrdiff_t filesHere() {
        return std::distance(fs::directory_iterator("."), fs::directory_iterator());
    }
    static std::string refusal(const fs::path& file) {
        try {
            const AtomicFile atomic(file);
        } catch (const InputError& error) {
            return error.what();
        }
        return "accepted";
    }

private:
    fs::path m_before = fs::current_path();
    fs::path m_directory;
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

TEST_F(AtomicFileTest, BackupTakesTheFirstNameThatIsFree) {
    write("out.csv", "first\n");
    EXPECT_EQ(keepBackup("out.csv"), "out.csv.~1~");
    write("out.csv", "second\n");
    EXPECT_EQ(keepBackup("out.csv"), "out.csv.~2~");
    write("out.csv", "third\n");
    EXPECT_EQ(contentOf("out.csv.~1~"), "first\n");
    EXPECT_EQ(contentOf("out.csv.~2~"), "second\n");
}

TEST_F(AtomicFileTest, FileStaysWhereItIsDuringItsBackup) {
    write("out.csv", "first\n");
    keepBackup("out.csv");
    EXPECT_EQ(contentOf("out.csv"), "first\n");
}

TEST_F(AtomicFileTest, NothingNeedsNoBackup) {
    EXPECT_EQ(keepBackup("out.csv"), "");
    EXPECT_EQ(keepBackup("/dev/null"), "");
}

TEST_F(AtomicFileTest, FileThatMadeRoomCanHaveItsNameBack) {
    write("out.csv", "old");
    const fs::path backup = moveToBackup("out.csv");
    EXPECT_EQ(backup, "out.csv.~1~");
    EXPECT_FALSE(fs::exists("out.csv"));
    moveBack(backup, "out.csv");
    EXPECT_EQ(contentOf("out.csv"), "old");
    EXPECT_FALSE(fs::exists(backup));
}

TEST_F(AtomicFileTest, MovingBackWritesNothingOver) {
    write("out.csv", "old");
    const fs::path backup = moveToBackup("out.csv");
    write("out.csv", "new");
    moveBack(backup, "out.csv");
    EXPECT_EQ(contentOf("out.csv"), "new");
    EXPECT_EQ(contentOf(backup), "old");
}

TEST_F(AtomicFileTest, BackupOfALinkedFileIsBesideTheFile) {
    fs::create_directory("elsewhere");
    write("elsewhere/out.csv", "old\n");
    fs::create_symlink("elsewhere/out.csv", "link.csv");
    const fs::path backup = keepBackup("link.csv");
    write("link.csv", "new\n");
    EXPECT_EQ(backup, fs::canonical("elsewhere") / "out.csv.~1~");
    EXPECT_EQ(contentOf(backup), "old\n");
}

} // namespace
} // namespace Radio
