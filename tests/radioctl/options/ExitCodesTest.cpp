#include "radioctl/options/ExitCodes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iterator>
#include <regex>
#include <string>

namespace Radio {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

/** The exit codes of the man page without its macros, and with one space between two words. */
std::string manualExitCodes() {
    std::ifstream stream(RADIOCTL_MAN_PAGE);
    const std::string page{std::istreambuf_iterator<char>(stream), {}};
    const std::size_t begin = page.find(".SH EXIT STATUS\n");
    const std::string section = page.substr(begin, page.find("\n.SH ENVIRONMENT") - begin);
    const std::string words = std::regex_replace(section, std::regex("\n\\.[A-Za-z]+ ?"), "\n");
    return std::regex_replace(words, std::regex("\\s+"), " ");
}

TEST(ExitCodes, HelpOfACommandHasThoseThatItCanGive) {
    EXPECT_EQ(exitCodeHelp("check"),
              "Exit codes:\n"
              "  0    good\n"
              "  1    there are errors\n"
              "       with --strict there are warnings, or with --all a carrier is outside its\n"
              "       limits\n"
              "       with --hardware an attribute cannot be used\n"
              "  2    wrong command line\n"
              "  3    a board cannot be used\n"
              "       output cannot be written\n"
              "  4    with --all the radio did not boot\n"
              "  130  with --all the audit was interrupted likewise\n");
    EXPECT_EQ(exitCodeHelp("completion"), "Exit codes:\n"
                                          "  0    good\n"
                                          "  2    wrong command line\n"
                                          "  3    output cannot be written\n");
}

TEST(ExitCodes, HelpAboutSeveralCommandsSaysWhichGiveThem) {
    EXPECT_THAT(exitCodeHelp("tables"), AllOf(HasSubstr("  1    tables lint: there are errors\n"
                                                        "       tables diff: there are differences\n"),
                                              Not(HasSubstr("expectation")), Not(HasSubstr("130"))));
    EXPECT_THAT(exitCodeHelp(""),
                AllOf(HasSubstr("  2    wrong command line\n"), HasSubstr("check, tables lint: "),
                      HasSubstr("\n  130  run, console, ")));
}

TEST(ExitCodes, WhatHardwareBringsIsTold) {
    for (const std::string command : {"run", "console", "plan audit", "qualify", "calibrate"}) {
        EXPECT_THAT(exitCodeHelp(command),
                    AllOf(HasSubstr("with --hardware an on_exit value could not be written\n"),
                          HasSubstr("with --hardware the hardware is missing or in use by another program")))
            << command;
    }
    EXPECT_THAT(exitCodeHelp("plan explain"), Not(HasSubstr("--hardware")));
    EXPECT_THAT(exitCodeHelp("plan explain"), HasSubstr("or the board forbids it\n"));
}

TEST(ExitCodes, HelpFitsIntoEightyColumns) {
    for (const std::string command :
         {"", "run", "check", "plan", "plan explain", "thermal", "calibrate", "tables"}) {
        EXPECT_THAT(exitCodeHelp(command), Not(testing::ContainsRegex("[^\n]{80}"))) << command;
    }
}

TEST(ExitCodes, ManPageHasEveryReason) {
    const std::string page = manualExitCodes();
    std::size_t at = 0;
    for (const ExitReason& reason : exitReasons()) {
        const std::string told = reasonWithCommands(reason) + ".";
        // At the beginning of a sentence, or behind the names of commands.
        const std::string sentence = static_cast<char>(std::toupper(told.front())) + told.substr(1);
        const std::size_t found = std::min(page.find(told, at), page.find(sentence, at));
        EXPECT_NE(found, std::string::npos) << reason.code << " " << told;
        at = found == std::string::npos ? at : found;
    }
}

} // namespace
} // namespace Radio
