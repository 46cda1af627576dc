#include "radio/language/Script.h"

#include "radio/files/InputError.h"
#include "radio/text/WordError.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

namespace Radio {
namespace {

using testing::ElementsAre;

/** Scripts that include others, which are no files but texts by their names. */
class ScriptTest : public testing::Test {
protected:
    ScriptTest() { m_board.channels = {{1, ::FrequencyHandler::RfModule, {}}}; }

    /** The lines, each behind its place. */
    std::vector<std::string> linesOf(const std::string& text, const std::string& file = "main") {
        std::vector<std::string> lines;
        for (const ScriptLine& line : readScript(text, file, CommandCheck(m_board), reader())) {
            lines.push_back(toString(line.place) + " " + line.text);
        }
        return lines;
    }

    std::string complaintAbout(const std::string& text, const std::string& file = "main") {
        try {
            linesOf(text, file);
        } catch (const InputError& error) {
            return error.what();
        }
        return "";
    }

    ScriptReader reader() {
        return [this](const std::filesystem::path& file) {
            const auto found = m_files.find(file.string());
            if (found == m_files.end()) {
                throw InputError({file.string(), 0}, "is not there");
            }
            return found->second;
        };
    }

    Board m_board;
    std::map<std::string, std::string> m_files;
};

TEST_F(ScriptTest, IncludedLinesStandInThePlaceOfTheLineThatIncludesThem) {
    m_files["other"] = "# comment\nwait 2\n";
    EXPECT_THAT(linesOf("wait 1\ninclude other\nwait 3\n"),
                ElementsAre("main:1 wait 1", "other:2 wait 2", "main:3 wait 3"));
}

TEST_F(ScriptTest, ScriptMayBeIncludedTwice) {
    m_files["other"] = "wait 2\n";
    EXPECT_THAT(linesOf("include other\ninclude other\n"), ElementsAre("other:1 wait 2", "other:1 wait 2"));
}

TEST_F(ScriptTest, NamesAreRelativeToTheFolderOfTheScript) {
    m_files["tests/parts/one"] = "include two\ninclude ../three\ninclude /four\n";
    m_files["tests/parts/two"] = "wait 2\n";
    m_files["tests/three"] = "wait 3\n";
    m_files["/four"] = "wait 4\n";
    EXPECT_THAT(linesOf("include parts/one\n", "tests/main"),
                ElementsAre("tests/parts/two:1 wait 2", "tests/three:1 wait 3", "/four:1 wait 4"));
}

TEST_F(ScriptTest, MessagesNameTheIncludedFileAndLine) {
    m_files["other"] = "\ntune up\n";
    EXPECT_EQ(complaintAbout("include other\n"), "other:2: tune: \"up\" is out of place, expected tx or rx");
    m_files["other"] = "tune tx 2 1\n";
    EXPECT_EQ(complaintAbout("include other\n"), "other:1: the board has no channel 2, expected 1");
}

TEST_F(ScriptTest, FileThatCannotBeReadIsNamedWithTheLineThatIncludesIt) {
    EXPECT_EQ(complaintAbout("wait 1\ninclude other\n"), "main:2: include: other: is not there");
}

TEST_F(ScriptTest, CircleIsRefused) {
    m_files["main"] = "include a\n";
    m_files["a"] = "wait 1\ninclude b\n";
    m_files["b"] = "include ./x/../a\n";
    EXPECT_EQ(complaintAbout("include a\n"), "b:1: include: \"a\" includes itself");
    m_files["b"] = "include main\n";
    EXPECT_EQ(complaintAbout(m_files["main"]), "main:1: include: \"a\" includes itself");
}

TEST_F(ScriptTest, SixteenScriptsInsideEachOtherAreTheMost) {
    for (int depth = 1; depth <= 17; ++depth) {
        m_files["s" + std::to_string(depth)] = "include s" + std::to_string(depth + 1) + "\n";
    }
    m_files["s17"] = "wait 1\n";
    EXPECT_THAT(linesOf("include s2\n"), ElementsAre("s17:1 wait 1"));
    EXPECT_EQ(complaintAbout("include s1\n"),
              "s16:1: include: \"s17\" is more than 16 deep, expected scripts "
              "that include fewer inside each other");
}

TEST_F(ScriptTest, ScriptsHave16MiBTogether) {
    m_files["large"] = std::string(std::size_t{9} * 1024 * 1024, '\n');
    EXPECT_EQ(complaintAbout("include large\n"), "");
    EXPECT_EQ(complaintAbout("include large\ninclude large\n"),
              "large: makes the script larger than 16 MiB, with all that it includes");
}

TEST_F(ScriptTest, LineAtAPromptStandsForTheLinesThatItIncludes) {
    const CommandCheck check(m_board);
    m_files["other"] = "wait 2\nwait 3\n";
    EXPECT_EQ(readLines("include other", {}, check, reader()).size(), 2U);
    EXPECT_EQ(readLines("wait 1", {}, check, reader()).size(), 1U);
    EXPECT_EQ(readLines("# nothing", {}, check, reader()).size(), 0U);
    m_files["other"] = "wait\n";
    EXPECT_THROW(readLines("include other", {}, check, reader()), InputError);
    EXPECT_THROW(readLines("include missing", {}, check, reader()), WordError);
}

} // namespace
} // namespace Radio
