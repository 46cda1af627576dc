#include "radio/session/HardwareMark.h"

#include "tests/radio/support/FileFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <string>

namespace Radio {
namespace {

using testing::HasSubstr;
using testing::MatchesRegex;

/** Who drives the hardware of a board, on the disk. */
class HardwareMarkTest : public FileFixture {
protected:
    HardwareMarkTest() { write("board.toml", ""); }

    /** Has a process set its mark, and kills it. */
    static void killAfterMarking() {
        const pid_t child = fork();
        if (child == 0) {
            HardwareMark mark("ip:radio", "board.toml", "marks");
            mark.set();
            raise(SIGKILL);
        }
        waitpid(child, nullptr, 0);
    }
};

TEST_F(HardwareMarkTest, AtFirstNobodyHasLeftAnything) {
    EXPECT_EQ(HardwareMark("ip:radio", "board.toml", "marks").leftBehind(), "");
}

TEST_F(HardwareMarkTest, KilledProcessIsTheOneThatLeftTheHardwareAsItWas) {
    killAfterMarking();
    EXPECT_THAT(HardwareMark("ip:radio", "board.toml", "marks").leftBehind(),
                MatchesRegex("process [0-9]+ on [0-9-]{10} at [0-9:]{8}"));
}

TEST_F(HardwareMarkTest, MarkThatIsTakenBackLeavesNothing) {
    {
        HardwareMark mark("ip:radio", "board.toml", "marks");
        mark.set();
        mark.takeBack();
    }
    EXPECT_EQ(HardwareMark("ip:radio", "board.toml", "marks").leftBehind(), "");
}

TEST_F(HardwareMarkTest, MarkThatIsNotTakenBackStays) {
    { HardwareMark("ip:radio", "board.toml", "marks").set(); }
    EXPECT_THAT(HardwareMark("ip:radio", "board.toml", "marks").leftBehind(), HasSubstr("process "));
}

TEST_F(HardwareMarkTest, WhoOnlyLooksAtItDoesNotTakeItBack) {
    killAfterMarking();
    EXPECT_NE(HardwareMark("ip:radio", "board.toml", "marks").leftBehind(), "");
    EXPECT_NE(HardwareMark("ip:radio", "board.toml", "marks").leftBehind(), "");
}

TEST_F(HardwareMarkTest, DeviceIsDrivenByOneProgramAtATimeWhateverTheBoard) {
    HardwareMark mark("ip:radio", "board.toml", "marks");
    mark.set();
    const std::string holder = contentOf(std::filesystem::directory_iterator("marks")->path());
    EXPECT_EQ(refusal([] { HardwareMark("ip:radio", "other.toml", "marks"); }),
              "other.toml: ip:radio is driven by " + holder.substr(0, holder.find('\n')) +
                  ", expected one program at a time");
    EXPECT_EQ(refusal([] { HardwareMark("ip:other", "other.toml", "marks"); }), "accepted");
}

TEST_F(HardwareMarkTest, MarkSaysWhoDrivesWhatAndForWhichBoard) {
    { HardwareMark("ip:radio", "board.toml", "marks").set(); }
    EXPECT_THAT(contentOf(std::filesystem::directory_iterator("marks")->path()),
                MatchesRegex("process [0-9]+ on [0-9-]{10} at [0-9:]{8}\nip:radio\nboard.toml\n"));
}

/** The file of the mark, which a first program leaves there. */
std::filesystem::path fileOfMark() {
    { HardwareMark("ip:radio", "board.toml", "marks").takeBack(); }
    return std::filesystem::directory_iterator("marks")->path();
}

/** What is said of a mark whose place leads to another file, by a symbolic link or by a second name. */
TEST_F(HardwareMarkTest, MarkIsNotWrittenThroughALink) {
    const std::filesystem::path file = fileOfMark();
    const std::string said = file.string() + ": is a link or somebody else's, expected an ordinary file of "
                                             "this user's for the mark that the hardware is in use";
    write("precious", "precious");
    std::filesystem::remove(file);
    std::filesystem::create_symlink("../precious", file);
    EXPECT_EQ(refusal([] { HardwareMark("ip:radio", "board.toml", "marks").set(); }), said);
    std::filesystem::remove(file);
    std::filesystem::create_hard_link("precious", file);
    EXPECT_EQ(refusal([] { HardwareMark("ip:radio", "board.toml", "marks").set(); }), said);
    EXPECT_EQ(contentOf("precious"), "precious");
}

TEST_F(HardwareMarkTest, FolderOfMarksIsItsOwnersAlone) {
    static_cast<void>(fileOfMark());
    EXPECT_EQ(std::filesystem::status("marks").permissions(), std::filesystem::perms::owner_all);
}

TEST_F(HardwareMarkTest, WithoutAPlaceForItNothingIsDriven) {
    write("marks", "a file\n");
    EXPECT_THAT(refusal([] { HardwareMark("ip:radio", "board.toml", "marks"); }),
                HasSubstr("expected a place for the mark that the hardware is in use"));
}

} // namespace
} // namespace Radio
