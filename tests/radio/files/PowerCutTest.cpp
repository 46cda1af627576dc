// What is on a disk when the power goes: what was asked of it, in that order, and nothing beyond it.

#include "radio/files/Backup.h"
#include "tests/radio/files/OwnDirectory.h"
#include "tests/radio/support/DiskSteps.h"

#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

namespace Radio {
namespace {

using Steps = std::vector<std::string>;

class PowerCutTest : public OwnDirectory {
protected:
    PowerCutTest() {
        write("out.csv", "old\n");
        DiskSteps::forget();
    }
    /** What is there when the power goes instead of a step of a new text's. */
    static std::string afterACutAt(unsigned step) {
        const pid_t child = fork();
        if (child == 0) {
            DiskSteps::endInPlaceOf(step);
            write("out.csv", "the new one\n");
            _exit(0);
        }
        waitpid(child, nullptr, 0);
        return contentOf("out.csv");
    }
};

TEST_F(PowerCutTest, TextIsOnTheDiskBeforeItHasItsNameAndTheNameAfterwards) {
    write("out.csv", "new\n");
    EXPECT_EQ(DiskSteps::taken(),
              (Steps{"sync out.csv.part, 4 bytes", "rename out.csv.part to out.csv", "sync folder"}));
}

TEST_F(PowerCutTest, TextOfANewNameIsAsWell) {
    AtomicFile file("first.csv");
    file.stream() << "new\n";
    file.commitNew();
    EXPECT_EQ(DiskSteps::taken(),
              (Steps{"sync first.csv.part, 4 bytes", "rename first.csv.part to first.csv", "sync folder"}));
}

TEST_F(PowerCutTest, OldOrNewIsThereWholeWheneverItComes) {
    EXPECT_EQ(afterACutAt(1), "old\n");
    EXPECT_EQ(afterACutAt(2), "old\n");
    EXPECT_EQ(afterACutAt(3), "the new one\n");
    EXPECT_EQ(afterACutAt(0), "the new one\n");
}

TEST_F(PowerCutTest, BackupHasItsNameOnTheDiskBeforeAnythingElseIsDone) {
    EXPECT_EQ(moveToBackup("out.csv"), "out.csv.~1~");
    EXPECT_EQ(DiskSteps::taken(), (Steps{"rename out.csv to out.csv.~1~", "sync folder"}));
}

} // namespace
} // namespace Radio
