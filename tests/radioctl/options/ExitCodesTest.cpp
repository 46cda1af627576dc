#include "radioctl/options/ExitCodes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace Radio {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

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
    EXPECT_EQ(exitCodeHelp("new"), "Exit codes:\n"
                                   "  0    good\n"
                                   "  2    wrong command line\n"
                                   "  3    the file is there already\n"
                                   "       output cannot be written\n");
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

} // namespace
} // namespace Radio
