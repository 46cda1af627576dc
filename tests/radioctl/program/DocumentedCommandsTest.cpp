#include "tests/radioctl/program/ProgramTest.h"

#include <sys/wait.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <iterator>
#include <regex>
#include <sstream>

namespace {

using testing::Contains;
using testing::HasSubstr;

/** Carries out what the documentation shows, in its order, in a folder with a copy of the boards. */
class DocumentedCommandsTest : public ProgramTest {
protected:
    DocumentedCommandsTest() {
        std::filesystem::create_directories("shown/bin");
        std::filesystem::copy(RADIOCTL_BOARDS, "shown/boards", std::filesystem::copy_options::recursive);
        std::filesystem::create_symlink(RADIOCTL_PROGRAM, "shown/bin/radioctl");
        std::filesystem::current_path("shown");
    }

    /** The commands that a page shows on lines of their own, comments behind them taken off. */
    static std::vector<std::string> commandsIn(const std::filesystem::path& page) {
        std::ifstream stream(page);
        std::vector<std::string> commands;
        for (std::string line; std::getline(stream, line);) {
            line = std::regex_replace(line, std::regex(R"(^(\$|#) +)"), "");
            line = std::regex_replace(line, std::regex(R"(^\./run )"), "radioctl ");
            line = std::regex_replace(line, std::regex(" +# .*"), "");
            if (std::regex_match(line, std::regex("(echo .*\\| )?radioctl [a-z].*"))) {
                commands.push_back(line);
            }
        }
        return commands;
    }

    static std::vector<std::string> wordsOf(const std::string& command) {
        std::istringstream stream(command);
        return {std::istream_iterator<std::string>(stream), {}};
    }

    /** Nothing in it stands for something else, the files that it reads are there, and it needs no radio on a
     * bench and no database that the program was built without. */
    static bool canBeCarriedOut(const std::string& command) {
        std::string before;
        for (const std::string& word : wordsOf(command)) {
            const bool isPlaceholder =
                !word.empty() && std::all_of(word.begin(), word.end(), [](unsigned char letter) {
                    return std::isupper(letter) != 0 || letter == '.' || letter == '[' || letter == ']';
                });
            const bool isWritten = before == "--csv" || before == "--html" || before == "--out";
            const bool isFile =
                std::regex_match(word, std::regex(R"([^*]+\.(toml|csv|script|journal|results)|.+\.rec)"));
            const bool isStore = word == "store" || word == "--store";
            if (isPlaceholder || word == "--hardware" || (isStore && !RADIOCTL_HAS_STORE) ||
                (isFile && !isWritten && !std::filesystem::exists(word))) {
                return false;
            }
            before = word;
        }
        return true;
    }

    static int exitCodeOf(const std::string& command) {
        const std::string line = "LSAN_OPTIONS=suppressions=\"" RADIOCTL_LEAKS
                                 "\" PATH=\"$PWD/bin:$PATH\"; export LSAN_OPTIONS; { " +
                                 command + "; } < /dev/null > output 2>&1";
        const int status = std::system(line.c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    static std::string output() {
        std::ifstream stream("output");
        return {std::istreambuf_iterator<char>(stream), {}};
    }
};

TEST_F(DocumentedCommandsTest, EndWell) {
    const std::filesystem::path project = std::filesystem::path(RADIOCTL_BOARDS).parent_path();
    std::vector<std::filesystem::path> pages{project / "README.md"};
    for (const char* const folder : {"docs", "docs/man", "boards"}) {
        for (const auto& entry : std::filesystem::directory_iterator(project / folder)) {
            const std::string kind = entry.path().extension().string();
            if (kind == ".md" || kind == ".script" || kind == ".toml") {
                pages.push_back(entry.path());
            }
        }
    }
    std::sort(pages.begin() + 1, pages.end());
    std::vector<std::string> done;
    for (const std::filesystem::path& page : pages) {
        for (const std::string& command : commandsIn(page)) {
            const bool isDone = std::find(done.begin(), done.end(), command) != done.end();
            if (isDone || !canBeCarriedOut(command)) {
                continue;
            }
            done.push_back(command);
            EXPECT_EQ(exitCodeOf(command), 0) << page << ": " << command << "\n" << output();
        }
    }
    EXPECT_THAT(done, Contains("radioctl check boards/rf-module-7ghz.toml"));
    EXPECT_THAT(done, Contains(HasSubstr("radioctl plan audit --csv carriers.csv ")));
    EXPECT_THAT(done, Contains(HasSubstr("radioctl calibrate ")));
    EXPECT_THAT(done, Contains(HasSubstr("radioctl run boards/rau-18ghz.toml boards/rau-18ghz.script")));
    EXPECT_GE(done.size(), 20U);
}

} // namespace
