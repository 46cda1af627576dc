#include "radio/calibration/LockFile.h"

#include "tests/radio/support/FileFixture.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <optional>
#include <utility>

namespace Radio::Calibration {
namespace {

namespace fs = std::filesystem;
using Taken = LockFile::Answer;

/** An open file. */
class Open {
public:
    explicit Open(const char* file, int flags = O_RDWR) : m_descriptor(open(file, flags | O_CLOEXEC)) {}
    Open(const Open&) = delete;
    Open& operator=(const Open&) = delete;
    ~Open() { close(m_descriptor); }
    int descriptor() const { return m_descriptor; }

private:
    int m_descriptor;
};

class LockFileTest : public FileFixture {
protected:
    LockFileTest() { write("journal", "x"); }
    static Taken answer() {
        const Open file("journal");
        return LockFile().take("journal", file.descriptor());
    }
    static mode_t permissions(const char* file) {
        struct stat status {};
        EXPECT_EQ(stat(file, &status), 0);
        return status.st_mode & 0777U;
    }
};

TEST_F(LockFileTest, OneAtATimeHasTheFileAndLeavesNothingBehind) {
    const Open file("journal");
    std::optional<LockFile> lock(std::in_place);
    EXPECT_EQ(lock->take("journal", file.descriptor()), Taken::taken);
    EXPECT_TRUE(fs::exists("journal.lock"));
    EXPECT_EQ(answer(), Taken::heldByAnother);
    lock.reset();
    EXPECT_FALSE(fs::exists("journal.lock"));
    EXPECT_EQ(answer(), Taken::taken);
}

TEST_F(LockFileTest, WhoMayOnlyReadTheFileKeepsNobodyFromIt) {
    const Open reader("journal", O_RDONLY);
    ASSERT_EQ(flock(reader.descriptor(), LOCK_EX), 0);
    struct flock shared {};
    shared.l_type = F_RDLCK;
    ASSERT_EQ(fcntl(reader.descriptor(), F_OFD_SETLK, &shared), 0);
    EXPECT_EQ(answer(), Taken::taken);
}

TEST_F(LockFileTest, WhoMayNotWriteTheFileMayNotOpenTheLock) {
    const Open file("journal");
    LockFile lock;
    ASSERT_EQ(chmod("journal", 0644), 0);
    ASSERT_EQ(lock.take("journal", file.descriptor()), Taken::taken);
    EXPECT_EQ(permissions("journal.lock"), 0600U);
}

TEST_F(LockFileTest, WhoMayWriteTheFileMayOpenTheLock) {
    const Open file("journal");
    LockFile lock;
    ASSERT_EQ(chmod("journal", 0664), 0);
    ASSERT_EQ(lock.take("journal", file.descriptor()), Taken::taken);
    EXPECT_EQ(permissions("journal.lock"), 0660U);
}

TEST_F(LockFileTest, LockThatAKilledProgramLeftIsTakenOver) {
    const pid_t child = fork();
    if (child == 0) {
        const Open file("journal");
        LockFile lock;
        static_cast<void>(lock.take("journal", file.descriptor()));
        static_cast<void>(kill(getpid(), SIGKILL));
    }
    waitpid(child, nullptr, 0);
    EXPECT_TRUE(fs::exists("journal.lock"));
    EXPECT_EQ(answer(), Taken::taken);
    EXPECT_FALSE(fs::exists("journal.lock"));
}

TEST_F(LockFileTest, LinkInItsPlaceIsNotFollowed) {
    write("other", "precious");
    fs::create_symlink("other", "journal.lock");
    EXPECT_EQ(answer(), Taken::notAllowed);
    EXPECT_TRUE(fs::exists("other"));
}

TEST_F(LockFileTest, LockMovesWithItsObject) {
    const Open file("journal");
    LockFile first;
    ASSERT_EQ(first.take("journal", file.descriptor()), Taken::taken);
    LockFile second;
    second = std::move(first);
    EXPECT_EQ(answer(), Taken::heldByAnother);
}

} // namespace
} // namespace Radio::Calibration
