#include "radio/calibration/Claim.h"

#include "tests/radio/support/FileFixture.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <optional>

namespace Radio::Calibration {
namespace {

namespace fs = std::filesystem;
using Answer = Claim::Answer;

class ClaimTest : public FileFixture {
protected:
    ClaimTest() { write("board.toml", "x"); }
    static Answer answer(const fs::path& path, std::int32_t number) { return Claim(path).take(number); }
};

TEST_F(ClaimTest, OneAtATimeHasANumber) {
    std::optional<Claim> claim(std::in_place, "board.toml");
    EXPECT_EQ(claim->take(1), Answer::taken);
    EXPECT_EQ(answer("board.toml", 1), Answer::heldByAnother);
    claim.reset();
    EXPECT_EQ(answer("board.toml", 1), Answer::taken);
}

TEST_F(ClaimTest, NumbersDoNotHinderEachOther) {
    Claim claim("board.toml");
    EXPECT_EQ(claim.take(0), Answer::taken);
    EXPECT_EQ(answer("board.toml", 1), Answer::taken);
    EXPECT_EQ(answer("board.toml", 2147483647), Answer::taken);
}

TEST_F(ClaimTest, FileIsTheSameUnderEachOfItsNames) {
    fs::create_symlink("board.toml", "link.toml");
    fs::create_hard_link("board.toml", "second.toml");
    write("other.toml", "x");
    Claim claim("./link.toml");
    EXPECT_EQ(claim.take(1), Answer::taken);
    EXPECT_EQ(answer(fs::absolute("board.toml"), 1), Answer::heldByAnother);
    EXPECT_EQ(answer("second.toml", 1), Answer::heldByAnother);
    EXPECT_EQ(answer("other.toml", 1), Answer::taken);
}

TEST_F(ClaimTest, WhatCannotBeWrittenCanBeClaimed) {
    fs::permissions("board.toml", fs::perms::owner_read);
    Claim claim("board.toml");
    EXPECT_EQ(claim.take(1), Answer::taken);
    EXPECT_EQ(answer("board.toml", 1), Answer::heldByAnother);
}

TEST_F(ClaimTest, FoldersCanBeClaimed) {
    Claim claim(".");
    EXPECT_EQ(claim.take(numberOf("a.csv")), Answer::taken);
    EXPECT_EQ(answer(".", numberOf("a.csv")), Answer::heldByAnother);
    EXPECT_EQ(answer(".", numberOf("b.csv")), Answer::taken);
}

TEST_F(ClaimTest, LeavesNoFileBehind) {
    EXPECT_EQ(answer("board.toml", 1), Answer::taken);
    EXPECT_EQ(std::distance(fs::directory_iterator("."), fs::directory_iterator()), 1);
}

TEST_F(ClaimTest, MissingFileCannotBeClaimed) {
    EXPECT_EQ(answer("missing", 1), Answer::impossible);
    EXPECT_EQ(errno, ENOENT);
}

TEST_F(ClaimTest, EndsWithTheProgramThatWasKilled) {
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    const pid_t child = fork();
    if (child == 0) {
        Claim claim("board.toml");
        const char answered = claim.take(1) == Answer::taken ? 'y' : 'n';
        static_cast<void>(::write(ends[1], &answered, 1));
        pause();
        _exit(0);
    }
    char answered = 0;
    ASSERT_EQ(read(ends[0], &answered, 1), 1);
    close(ends[0]);
    close(ends[1]);
    EXPECT_EQ(answered, 'y');
    EXPECT_EQ(answer("board.toml", 1), Answer::heldByAnother);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    EXPECT_EQ(answer("board.toml", 1), Answer::taken);
}

TEST(NumberOfAName, IsNeverNegative) {
    EXPECT_EQ(numberOf(""), 0x408e4ee2); // half of 0x811c9dc5
    EXPECT_GE(numberOf("board.channel-1.csv"), 0);
    EXPECT_NE(numberOf("a"), numberOf("b"));
}

} // namespace
} // namespace Radio::Calibration
