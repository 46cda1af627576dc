#include "tests/radioctl/program/ProgramTest.h"

namespace {

class BadInputTest : public ProgramTest {
protected:
    /** Runs a script whose last line makes no sense: nothing may be carried out, and the message is all there
     * is. */
    static void expectRefusal(const std::string& line, const std::string& message) {
        const Ending ending = runScript("tune tx 1 7442000\n" + line + "\n");
        EXPECT_EQ(ending.errors, "radioctl: script:2: " + message + "\n");
        EXPECT_EQ(ending.output, "");
        EXPECT_EQ(ending.exitCode, 3);
    }

    static void expectUnusable(const Invocation& invocation, const std::string& message) {
        const Ending ending = runProgram(invocation);
        EXPECT_EQ(ending.errors, "radioctl: " + message + "\n");
        EXPECT_EQ(ending.output, "");
        EXPECT_EQ(ending.exitCode, 3);
    }

    static void expectWrongCommandLine(const std::vector<std::string>& arguments,
                                       const std::string& message) {
        const Ending ending = runProgram({arguments});
        EXPECT_EQ(ending.errors, "radioctl: " + message + "\nRun with --help for more information.\n");
        EXPECT_EQ(ending.output, "");
        EXPECT_EQ(ending.exitCode, 2);
    }
};

TEST_F(BadInputTest, UnknownCommand) {
    expectRefusal("tun tx 1 7442000",
                  "unknown command \"tun\" (did you mean \"tune\"?), expected one of tune, sweep, "
                  "temperature, set, phase, fault, clear, interface, observe, trace, show, read, write, "
                  "watch, wait, repeat, include, expect, help, ?, quit, exit");
}

TEST_F(BadInputTest, FrequencyOutOf32Bits) {
    expectRefusal("tune tx 1 5000 GHz", "tune: \"5000 GHz\" is too high, expected at most 4294967295 kHz");
}

TEST_F(BadInputTest, FractionOfAKhz) {
    expectRefusal("tune tx 1 7442.0001 MHz",
                  "tune: \"7442.0001 MHz\" has a fraction of a kHz, expected whole kHz");
}

TEST_F(BadInputTest, MissingWord) {
    expectRefusal("tune tx",
                  "tune: CHANNEL is missing, expected: tune tx|rx CHANNEL FREQUENCY [kHz|MHz|GHz] [force]");
}

TEST_F(BadInputTest, SurplusWord) {
    expectRefusal("temperature 25 C",
                  "temperature: \"C\" is one word too many, expected: temperature DEGREES [force]");
}

TEST_F(BadInputTest, UnknownChannel) {
    expectRefusal("tune tx 2 7442000", "the board has no channel 2, expected 1");
}

TEST_F(BadInputTest, MisspeltDriver) {
    expectRefusal(
        "expect driver chanel.1.tx.rf.frequency 0",
        R"(the board has no driver "chanel.1.tx.rf.frequency" (did you mean "channel.1.tx.rf.frequency"?))");
}

TEST_F(BadInputTest, UnknownVariable) {
    expectRefusal("set Spacing 28000", "the board has no variable \"Spacing\": it has no variable at all");
}

TEST_F(BadInputTest, UnknownOperation) {
    expectRefusal(
        "fault driver-right 0x8000",
        "fault: unknown operation \"driver-right\", expected one of broker-register, broker-unregister, "
        "broker-lookup, broker-open, broker-get, broker-close, module-register, module-unregister, "
        "module-register-c, callback-register, driver-lookup, driver-write, driver-write-buffer, "
        "driver-read, variable-get, variable-address, table-lookup, table-linear, table-bilinear, "
        "temperature-register, rau-tx, rau-rx");
}

TEST_F(BadInputTest, MisspeltOperation) {
    expectRefusal(
        "clear rau-xt",
        "clear: unknown operation \"rau-xt\" (did you mean \"rau-tx\"?), expected one of broker-register, "
        "broker-unregister, broker-lookup, broker-open, broker-get, broker-close, module-register, "
        "module-unregister, module-register-c, callback-register, driver-lookup, driver-write, "
        "driver-write-buffer, driver-read, variable-get, variable-address, table-lookup, table-linear, "
        "table-bilinear, temperature-register, rau-tx, rau-rx");
}

TEST_F(BadInputTest, OpenQuotation) {
    expectRefusal("expect trace \"Write to",
                  "the quotation that begins in column 14 is not closed, expected a second \"");
}

TEST_F(BadInputTest, WriteWithoutValue) {
    expectRefusal(
        "expect writes channel.1.tx.rf.frequency",
        "expect writes: \"channel.1.tx.rf.frequency\" is no write, expected NAME=VALUE or the number of "
        "writes alone");
}

TEST_F(BadInputTest, BytesThatAreNoText) {
    expectRefusal(std::string("\x01\x02\x7f", 3),
                  "unknown command \"\\x01\\x02\\x7f\", expected one of tune, sweep, temperature, set, "
                  "phase, fault, clear, interface, observe, trace, show, read, write, watch, wait, repeat, "
                  "include, expect, help, ?, quit, exit");
}

TEST_F(BadInputTest, PipeIsNamedInTheMessage) {
    const Ending ending = runProgram({{"run", "board.toml", "-"}}, "quit\nfrequency\n");
    EXPECT_THAT(ending.errors, testing::StartsWith("radioctl: stdin:2: unknown command \"frequency\""));
    EXPECT_EQ(ending.exitCode, 3);
}

TEST_F(BadInputTest, ScriptThatIsNotThere) {
    const Ending ending = runProgram({{"run", "board.toml", "none.script"}});
    EXPECT_EQ(ending.errors, "radioctl: none.script: cannot be read: No such file or directory\n");
    EXPECT_EQ(ending.exitCode, 3);
}

TEST_F(BadInputTest, ScriptThatIsADirectory) {
    const Ending ending = runProgram({{"run", "board.toml", "."}});
    EXPECT_EQ(ending.errors, "radioctl: .: is a directory, expected a script\n");
    EXPECT_EQ(ending.exitCode, 3);
}

TEST_F(BadInputTest, EmptyScriptNameIsNotAScriptLeftOut) {
    expectUnusable({{"run", "board.toml", ""}}, "SCRIPT: is empty, expected a file or \"-\"");
}

TEST_F(BadInputTest, EmptyBoardNameIsShownAsSuch) {
    expectUnusable({{"run", ""}}, "\"\": cannot be read: No such file or directory");
}

TEST_F(BadInputTest, FileNameThatATerminalWouldObeyIsShownHarmlessly) {
    expectUnusable({{"check", "a\033[2J"}}, "a\\x1b[2J: cannot be read: No such file or directory");
}

TEST_F(BadInputTest, BoardIsNotReadFromStandardInput) {
    expectUnusable({{"check", "-"}}, "-: a board is not read from standard input, expected a file");
}

TEST_F(BadInputTest, StandardInputThatCannotBeReadIsNoEmptyScript) {
    Invocation invocation{{"run", "board.toml"}};
    invocation.inputFile = ".";
    expectUnusable(invocation, "stdin: cannot be read: Is a directory");
    invocation.arguments = {"run", "board.toml", "-"};
    expectUnusable(invocation, "stdin: cannot be read: Is a directory");
}

TEST_F(BadInputTest, ScriptOfMoreThan16Mebibytes) {
    expectUnusable({{"run", "board.toml", "/dev/zero"}},
                   "/dev/zero: is larger than 16 MiB, expected a script");
    Invocation endless{{"run", "board.toml"}};
    endless.inputFile = "/dev/zero";
    expectUnusable(endless, "stdin: is larger than 16 MiB, expected a script");
}

TEST_F(BadInputTest, ScriptOf16MebibytesIsTaken) {
    const Ending ending = runScript(std::string(16 * 1024 * 1024 - 5, '\n') + "quit\n");
    EXPECT_EQ(ending.errors, "");
    EXPECT_EQ(ending.exitCode, 0);
}

TEST_F(BadInputTest, LineOfAConsolePipeOfMoreThan64Kibibytes) {
    const Ending ending =
        runProgram({{"console", "board.toml"}}, "# first\n#" + std::string(65536, ' ') + "\n");
    EXPECT_EQ(ending.errors, "radioctl: stdin:2: longer than 64 KiB, expected one command\n");
    EXPECT_EQ(ending.exitCode, 3);
}

TEST_F(BadInputTest, BoardThatIsNoToml) {
    write("board.toml", "name = \"Test\n");
    const Ending ending = runScript("quit\n");
    EXPECT_THAT(ending.errors, testing::StartsWith("radioctl: board.toml:1: "));
    EXPECT_EQ(ending.output, "");
    EXPECT_EQ(ending.exitCode, 3);
}

TEST_F(BadInputTest, NoCommand) {
    expectWrongCommandLine({}, "One of run, console, new, check, plan, thermal, qualify, calibrate, "
                               "laboratory, serve, tables, record, replay, "
                               "describe, store and completion is required");
}

TEST_F(BadInputTest, NoBoard) {
    expectWrongCommandLine({"run"}, "BOARD is required");
    expectWrongCommandLine({"check"}, "BOARD is required");
}

TEST_F(BadInputTest, UnknownWordOnTheCommandLine) {
    expectWrongCommandLine({"boot"},
                           "unknown command \"boot\", expected one of run, console, new, check, plan, "
                           "thermal, qualify, calibrate, laboratory, serve, tables, record, replay, "
                           "describe, store, completion");
    expectWrongCommandLine({"run", "board.toml", "script", "more"},
                           "The following argument was not expected: more");
    expectWrongCommandLine({"run", "--fast", "board.toml"}, "unknown option \"--fast\"");
}

TEST_F(BadInputTest, UnknownTraceLevel) {
    expectWrongCommandLine({"run", "board.toml", "--trace", "loud"},
                           "--trace: loud not in {off,error,warning,notice,information}");
}

TEST_F(BadInputTest, UnknownShell) {
    expectWrongCommandLine({"completion", "csh"}, "SHELL: csh not in {bash,zsh,fish}");
}

} // namespace
