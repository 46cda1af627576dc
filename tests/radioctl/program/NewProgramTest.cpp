#include "tests/radioctl/program/ProgramTest.h"

#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

using testing::EndsWith;
using testing::HasSubstr;

class NewProgramTest : public ProgramTest {
protected:
    static Ending create(const std::string& type, const std::string& file,
                         std::vector<std::string> more = {}) {
        more.insert(more.begin(), {"new", "--type", type, "--band", "7.425", "GHz", "7725000", file});
        return runProgram({more});
    }
    static std::string contentOf(const std::string& file) {
        std::ifstream stream(file);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
};

TEST_F(NewProgramTest, WritesABoardThatRuns) {
    const Ending ending = create("rf-module", "new.toml");
    EXPECT_EQ(ending.output, "new.toml: written; radioctl check finds nothing that is missing\n");
    EXPECT_EQ(ending.errors, "");
    EXPECT_EQ(ending.exitCode, 0);
    EXPECT_EQ(runProgram({{"check", "--strict", "new.toml"}}).output, "new.toml: good\n");
    write("script", "tune tx 1 7.442 GHz\nexpect writes channel.1.tx.rf.frequency=7442000\n");
    EXPECT_EQ(runProgram({{"run", "new.toml", "script"}}).exitCode, 0);
}

TEST_F(NewProgramTest, CountsTheOpenPointsThatCheckNames) {
    EXPECT_EQ(create("microwave-hz", "new.toml").output,
              "new.toml: written; radioctl check finds 4 errors and 6 warnings to fill in\n");
    const Ending checked = runProgram({{"check", "new.toml"}});
    EXPECT_THAT(checked.output, HasSubstr("variable \"channel.1.tx.mixer.multiplicationfactor\" is missing"));
    EXPECT_THAT(checked.output, EndsWith("new.toml: 4 errors, 6 warnings\n"));
    EXPECT_EQ(checked.exitCode, 1);
}

TEST_F(NewProgramTest, TellsAsAnEvent) {
    EXPECT_EQ(create("rau", "new.toml", {"--json"}).output,
              R"({"schema":1,"event":"created","file":"new.toml","type":"rau","errors":0,"warnings":0})"
              "\n");
}

TEST_F(NewProgramTest, LeavesAloneWhatIsThere) {
    const std::string before = contentOf("board.toml");
    const Ending ending = create("rau", "board.toml");
    EXPECT_EQ(ending.errors, "radioctl: board.toml: is there already, expected a name for a new file\n");
    EXPECT_EQ(ending.exitCode, 3);
    EXPECT_EQ(contentOf("board.toml"), before);
    std::filesystem::create_symlink("nowhere", "link.toml");
    EXPECT_EQ(create("rau", "link.toml").exitCode, 3);
    EXPECT_FALSE(std::filesystem::exists("nowhere"));
}

TEST_F(NewProgramTest, LeavesNothingWhereItCannotWrite) {
    EXPECT_EQ(create("rau", "none/new.toml").exitCode, 3);
    EXPECT_FALSE(std::filesystem::exists("none"));
}

TEST_F(NewProgramTest, BandIsRefusedThatIsNone) {
    for (const auto& [first, last, complaint] :
         {std::tuple("8000000", "7000000", "--band: 8000000 and 7000000, expected the lowest carrier first"),
          std::tuple("0", "7000000", "--band: 0 and 7000000, expected carriers from 1 to 2147483647 kHz"),
          std::tuple("1", "2147483648",
                     "--band: 1 and 2147483648, expected carriers from 1 to 2147483647 kHz")}) {
        const Ending ending = runProgram({{"new", "--type", "rau", "--band", first, last, "new.toml"}});
        EXPECT_EQ(ending.errors, "radioctl: " + std::string(complaint) + "\n");
        EXPECT_EQ(ending.exitCode, 2);
        EXPECT_FALSE(std::filesystem::exists("new.toml"));
    }
    EXPECT_EQ(runProgram({{"new", "--type", "rau", "new.toml"}}).exitCode, 2);
    EXPECT_EQ(runProgram({{"new", "--band", "1", "2", "new.toml"}}).exitCode, 2);
}

} // namespace
