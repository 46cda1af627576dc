#include "tests/radio/support/LeakageBoard.h"
#include "tests/radio/support/MadeUpRecording.h"
#include "tests/radioctl/program/ProgramTest.h"

#include <sys/stat.h>

#include <cstdlib>
#include <iterator>
#include <utility>

namespace {

using testing::HasSubstr;

using Words = std::vector<std::string>;
using Kind = Recording::Kind;

/** What a terminal would obey, each in a way of its own, and what is no UTF-8. */
const std::string escape = "\x1b[31m";
const std::string lineEnd = "\nFORGED";
const std::string introducer = "\xC2\x9B"
                               "31m"; // U+009B
const std::string turned = "\xE2\x80\xAE"
                           "evil";            // U+202E
const std::string isolated = "\xE2\x81\xA6";  // U+2066
const std::string separator = "\xE2\x80\xA8"; // U+2028
const std::string eightBit = "\x9B"
                             "31m"; // no UTF-8
const std::string broken = "\xFF\xC3";

/** Of what a file that has to be UTF-8 can have in a string. */
const std::string inUtf8 = "x" + introducer + turned + isolated + separator + "x";
/** Of what an argument or the name of a file can have. */
const std::string hostile = "x" + escape + lineEnd + inUtf8 + eightBit + broken + "x";

/** What of all that reached a reader as it is; empty: nothing. */
std::string rawIn(const std::string& text) {
    for (const std::string& raw : {std::string("\x1b"), std::string("\nFORGED"), std::string("\xC2\x9B"),
                                   std::string("\xE2\x80\xAE"), std::string("\xE2\x81\xA6"),
                                   std::string("\xE2\x80\xA8"), std::string("\x9B"), std::string("\xFF")}) {
        const std::size_t at = text.find(raw);
        if (at != std::string::npos) {
            return text.substr(at - std::min<std::size_t>(at, 60), 100);
        }
    }
    return {};
}

std::string shown(const Words& words) {
    std::string text;
    for (const std::string& word : words) {
        text += " [" + word + "]";
    }
    return text;
}

/** Every verb, with names in all that it is given which a terminal would obey: none reaches it as it is. */
class HostileNamesTest : public ProgramTest {
protected:
    static std::string contentOf(const std::string& file) {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    /** Runs it, and looks at what people and programs are shown. */
    static Ending expectHarmless(const Words& arguments, const std::string& input = "") {
        const Ending ending = runProgram({arguments}, input);
        EXPECT_EQ(rawIn(ending.output), "") << "on standard output of" << shown(arguments);
        EXPECT_EQ(rawIn(ending.errors), "") << "on standard error of" << shown(arguments);
        EXPECT_GE(ending.exitCode, 0) << shown(arguments);
        return ending;
    }
    /** The same for people and for programs. */
    static void expectHarmlessBothWays(Words arguments, const std::string& input = "") {
        expectHarmless(arguments, input);
        arguments.emplace_back("--json");
        expectHarmless(arguments, input);
    }
    static void expectHarmlessFile(const std::string& file) {
        EXPECT_EQ(rawIn(contentOf(file)), "") << file;
        EXPECT_NE(contentOf(file), "") << file;
    }

    /** `text` as a string of TOML, line ends escaped. */
    static std::string inToml(const std::string& text) {
        std::string quoted = "\"";
        for (const char character : text) {
            quoted += character == '\n' ? "\\n" : std::string(1, character);
        }
        return quoted + "\"";
    }
    /** A radio with a modelled transmitter, whose names are all hostile, and tables beside it. */
    static std::string hostileBoard() {
        std::string board = leakageBoard();
        const auto replace = [&board](const std::string& what, const std::string& with) {
            for (std::size_t at = board.find(what); at != std::string::npos;
                 at = board.find(what, at + with.size())) {
                board.replace(at, what.size(), with);
            }
        };
        replace("name = \"Test radio\"", "name = " + inToml("Radio" + lineEnd + inUtf8) +
                                             "\ndescription = " + inToml("first" + lineEnd + inUtf8));
        replace("serial = \"T-1\"", "serial = " + inToml("T" + inUtf8));
        replace("[drivers]", "[drivers]\n" + inToml("spare" + inUtf8) + " = {}");
        replace("[variables]", "[variables]\n" + inToml("Variable" + inUtf8) + " = 7");
        return board + "\n[tables." + inToml("Table" + inUtf8) + "]\naxis = [1, 2]\nvalues = [3, 4]\n" +
               "\n[[raster]]\nname = " + inToml("Raster" + lineEnd + inUtf8) +
               "\ndirection = \"tx\"\nfirst = 17900000\nstep = 100000\nlast = 18100000\n";
    }
    static constexpr const char* tables = "# channel: 1\n"
                                          "frequency_khz,temperature_c,i,q\n"
                                          "17900000,-10,-480,10\n"
                                          "18100000,-10,-500,30\n"
                                          "17900000,50,-500,20\n"
                                          "18100000,50,-520,40\n";
    static std::string hostileRecording() {
        MadeUpRecording made(32, 16, 4);
        made.text(Recording::At::unit, hostile.substr(0, 14));
        made.name(Recording::ObjectKind::driver, 1, hostile.substr(0, 28));
        made.name(Recording::ObjectKind::driver, 2, inUtf8.substr(0, 28));
        made.name(Recording::ObjectKind::module, 3, "FrequencyHandler", 1, 0);
        made.record(Kind::setTx, 3, 0, 7442000, 0, 1, 0);
        made.record(Kind::driverWrite, 1, 0, 7442000, 0, 0, 0, 1);
        made.record(Kind::driverWrite, 2, 0x8001, 1, 0, 0, 0, 1);
        made.record(Kind::traceMessage, 1, 0, 0, 0, 0, 0, 1, hostile.substr(0, 28));
        made.record(Kind::finished, 3, 0, static_cast<std::int32_t>(Kind::setTx), 0, 1, 0);
        return made.bytes();
    }
};

TEST_F(HostileNamesTest, NamesOfABoardAreShownHarmlesslyByEveryVerb) {
    write("board.toml", hostileBoard());
    write("board.channel-1.csv", tables);
    write("script", "tune tx 1 18 GHz\nshow drivers\nshow variables\nshow tables\nshow leakage\n"
                    "read \"spare" +
                        inUtf8 + "\"\nset \"Variable" + inUtf8 + "\" 8\nfault driver-write \"spare" + inUtf8 +
                        "\" 0x8001\nshow faults\nwrite \"spare" + inUtf8 + "\" 1\nexpect driver \"spare" +
                        inUtf8 + "\" 5\nexpect writes \"spare" + inUtf8 + "=3\"\nexpect trace \"" + inUtf8 +
                        "\"\n");
    const Ending ending = expectHarmless({"run", "board.toml", "script", "--verbose"});
    EXPECT_THAT(ending.output, HasSubstr("FAILED 0x8001"));
    expectHarmlessBothWays({"run", "board.toml", "script", "--junit", "junit.xml"});
    expectHarmlessFile("junit.xml");
    expectHarmlessBothWays({"run", "board.toml", "script", "--dry-run"});
    expectHarmlessBothWays({"console", "board.toml"}, contentOf("script"));
    expectHarmlessBothWays({"check", "board.toml"});
    expectHarmlessBothWays({"check", "--all", "board.toml"});
    expectHarmlessBothWays({"plan", "audit", "board.toml", "--csv", "audit.csv"});
    expectHarmlessFile("audit.csv");
    expectHarmlessBothWays({"plan", "explain", "board.toml", "--channel", "1", "--tx", "18GHz"});
    expectHarmlessBothWays({"tables", "lint", "board.toml"});
    expectHarmlessBothWays({"tables", "diff", "board.toml", "board.channel-1.csv"});
    expectHarmlessBothWays(
        {"tables", "why", "board.toml", "--channel", "1", "--frequency", "18GHz", "--temperature", "25"});
    expectHarmlessBothWays({"qualify", "board.toml", "--channel", "1"});
    const Ending calibrated =
        expectHarmless({"calibrate", "board.toml", "--channel", "1", "--restart", "--out", "out.csv",
                        "--html", "page.html", "--station", "here"});
    EXPECT_EQ(calibrated.exitCode, 0) << calibrated.output << calibrated.errors;
    expectHarmlessFile("page.html");
    expectHarmlessFile("out.csv");
}

TEST_F(HostileNamesTest, NamesOfACompensatedRadioAreHarmlessInItsReplay) {
    std::string board = compensatedBoard;
    board.replace(board.find("Test radio"), 10, "Radio\\nFORGED" + inUtf8);
    write(hostile + ".toml", board);
    write(hostile + ".csv", "seconds,degrees\n0,0\n60,5\n");
    expectHarmlessBothWays(
        {"thermal", hostile + ".toml", hostile + ".csv", "--html", "page.html", "--csv", "out.csv"});
    expectHarmlessFile("page.html");
    expectHarmlessFile("out.csv");
}

TEST_F(HostileNamesTest, FileNamesAreShownHarmlesslyByEveryVerb) {
    std::string board = leakageBoard();
    board.replace(board.find("board.channel-1.csv"), 19, "tables.csv");
    board.replace(board.find("board.channel-1.csv"), 19, "tables.csv");
    const std::string file = hostile + ".toml";
    const std::string csv = hostile + ".csv";
    write(file, board);
    write("tables.csv", tables);
    write(csv, tables);
    write(hostile, "tune tx 1 18 GHz\nexpect writes 77\n");
    expectHarmlessBothWays({"run", file, hostile});
    expectHarmlessBothWays({"run", file, hostile, "--junit", hostile + ".xml"});
    expectHarmlessFile(hostile + ".xml");
    expectHarmlessBothWays({"check", "--all", file});
    expectHarmlessBothWays({"check", "--hardware", file});
    expectHarmlessBothWays({"run", "--hardware", file, hostile});
    expectHarmlessBothWays({"plan", "audit", file});
    expectHarmless({"plan", "audit", file, "--csv", "-"});
    expectHarmlessBothWays({"plan", "explain", file, "--channel", "1", "--tx", "18GHz"});
    expectHarmlessBothWays({"tables", "lint", file, csv});
    expectHarmlessBothWays({"tables", "diff", file, csv});
    expectHarmlessBothWays(
        {"tables", "why", file, "--channel", "1", "--frequency", "18GHz", "--temperature", "25"});
    expectHarmlessBothWays({"tables", "why", file, "--channel", "7", "--frequency", "18GHz"});
    expectHarmlessBothWays({"qualify", file, "--channel", "1"});
    expectHarmlessBothWays({"calibrate", file, "--channel", "1", "--restart", "--out", csv + "2", "--html",
                            hostile + ".html", "--journal", hostile + ".journal"});
    expectHarmlessFile(hostile + ".html");
    expectHarmlessBothWays({"calibrate", file, "--channel", "1", "--journal", file});
    expectHarmlessBothWays({"calibrate", file, "--channel", "1", "--out", hostile + "/none.csv"});
    expectHarmlessBothWays({"thermal", file, csv});
    write("include", "include \"" + hostile.substr(0, hostile.find('\n')) + inUtf8 + "\"\n");
    expectHarmlessBothWays({"run", file, "include"});
}

TEST_F(HostileNamesTest, RefusedArgumentsAreShownHarmlessly) {
    for (const Words& words :
         std::vector<Words>{{hostile},
                            {"--" + hostile},
                            {"-" + hostile},
                            {"run", hostile},
                            {"run", "board.toml", hostile},
                            {"run", "board.toml", "script", hostile},
                            {"run", "--" + hostile, "board.toml"},
                            {"run", "--" + hostile + "=1", "board.toml"},
                            {"run", "--trace", hostile, "board.toml"},
                            {"run", "--trace=" + hostile, "board.toml"},
                            {"run", "board.toml", "--junit", hostile + "/x"},
                            {"run", "--verbose=" + hostile, "board.toml"},
                            {"console", hostile},
                            {"check", hostile},
                            {"check", "board.toml", "--strict=" + hostile},
                            {"completion", hostile},
                            {"new", "--type", hostile, "--band", "1", "2", "new.toml"},
                            {"new", "--type", "rau", "--band", "1", hostile, "new.toml"},
                            {"new", "--type", "rau", "--band", "1", "2", hostile + "/x"},
                            {"plan", hostile},
                            {"plan", "explain", "board.toml", "--tx", hostile},
                            {"plan", "explain", "board.toml", "--channel", hostile},
                            {"plan", "audit", "board.toml", "--csv", hostile + "/x"},
                            {"thermal", "board.toml", hostile},
                            {"thermal", "board.toml", "log", "--carrier", hostile},
                            {"thermal", "board.toml", "log", "--station", hostile},
                            {"tables", hostile},
                            {"tables", "lint", hostile},
                            {"tables", "diff", hostile, hostile},
                            {"tables", "why", "board.toml", "--frequency", hostile},
                            {"tables", "why", "board.toml", "--temperature", hostile},
                            {"calibrate", "board.toml", "--channel", hostile},
                            {"calibrate", "board.toml", "--channel", "1", "--serial", hostile},
                            {"calibrate", "board.toml", "--channel", "1", "--station", hostile},
                            {"calibrate", "board.toml", "--channel", "1", "--band", hostile, hostile},
                            {"calibrate", "board.toml", "--channel", "1", "--temperatures", hostile},
                            {"calibrate", "board.toml", "--channel", "1", "--method", hostile},
                            {"calibrate", "board.toml", "--channel", "1", "--detector", hostile},
                            {"calibrate", "board.toml", "--channel", "1", "--i-range", hostile},
                            {"qualify", "board.toml", "--channel", "1", "--settle-time", hostile},
                            {"record", hostile},
                            {"record", "show", hostile},
                            {"record", "show", "none", "--channel", hostile},
                            {"record", "diff", hostile, hostile},
                            {"record", "diff", "a", "b", "--driver", hostile, "--from", hostile},
                            {"replay", hostile},
                            {"replay", "none", "--jobs", hostile},
                            {"describe", hostile},
                            {"describe", "none", "--script", hostile + "/x"}}) {
        const Ending ending = expectHarmless(words);
        EXPECT_NE(ending.exitCode, 0) << shown(words);
    }
}

TEST_F(HostileNamesTest, WordsOfScriptsAreShownHarmlessly) {
    const std::string word = "x" + escape + inUtf8 + eightBit + broken;
    for (const std::string& line : {word,
                                    "tune " + word,
                                    "tune tx " + word,
                                    "tune tx 1 " + word,
                                    "sweep tx 1 7 8 " + word,
                                    "temperature " + word,
                                    "set " + word + " 1",
                                    "set \"" + word + "\" 1",
                                    "phase " + word,
                                    "fault " + word,
                                    "fault driver-write " + word + " 0x8000",
                                    "fault driver-write " + word,
                                    "clear " + word,
                                    "interface " + word + " absent",
                                    "observe " + word,
                                    "trace " + word,
                                    "show " + word,
                                    "show drivers " + word,
                                    "read " + word,
                                    "write " + word + " 1",
                                    "watch " + word,
                                    "wait " + word,
                                    "repeat " + word,
                                    "repeat 2 " + word,
                                    "include " + word,
                                    "expect " + word,
                                    "expect driver " + word + " 1",
                                    "expect writes " + word,
                                    "expect writes " + word + "=1",
                                    "expect trace " + word,
                                    "expect no trace " + word,
                                    "expect result " + word,
                                    "help " + word,
                                    "expect trace \"" + word,
                                    "# " + word}) {
        write("script", "tune tx 1 7442000\n" + line + "\n");
        expectHarmlessBothWays({"run", "board.toml", "script", "--junit", "junit.xml"});
        expectHarmlessFile("junit.xml");
        expectHarmlessBothWays({"console", "board.toml"}, line + "\n");
    }
}

TEST_F(HostileNamesTest, KeysAndValuesOfTomlAreShownHarmlessly) {
    const std::string start = std::string(rfModuleBoard);
    for (const std::string& text :
         {"\"" + inUtf8 + "\" = 1\n" + start, "\"x" + escape + "\" = 1\n" + start,
          "\"x" + eightBit + "\" = 1\n" + start, "\"" + broken + "\" = 1\n" + start,
          inUtf8 + " = 1\n" + start, "name = \"" + escape + "\"\n", "name = \"" + broken + "\"\n",
          "serial = \"a\\u001b\"\n" + start, start + "\"" + inUtf8 + "\" = { \"" + inUtf8 + "\" = 2 }\n",
          start + "\"" + inUtf8 + "\" = {}\n\"" + inUtf8 + "\" = {}\n",
          start + "\"d\" = { value = \"" + inUtf8 + "\" }\n",
          start + "\n[[channel]]\nnumber = 2\ntype = \"" + inUtf8 + "\"\n",
          start + "\n[interfaces]\n\"" + inUtf8 + "\" = \"" + inUtf8 + "\"\n",
          start + "\n[tables.\"" + inUtf8 + "\"]\nfile = \"" + inUtf8 + ".csv\"\ncolumn = \"" + inUtf8 +
              "\"\n",
          start + "\n[hardware.\"" + inUtf8 + "\"]\nwrite = \"/dev/null\"\n",
          start + "\n[devices]\n\"" + inUtf8 + "\" = { uri = \"" + inUtf8 + "\" }\n"}) {
        write("board.toml", text);
        expectHarmlessBothWays({"check", "board.toml"});
        expectHarmlessBothWays({"run", "board.toml"}, "show drivers\n");
        expectHarmlessBothWays({"check", "--hardware", "board.toml"});
    }
}

TEST_F(HostileNamesTest, CellsAndPropertiesOfCsvAreShownHarmlessly) {
    write("board.toml", leakageBoard());
    const std::string bad = "x" + inUtf8 + eightBit + broken;
    for (const std::string& text :
         {bad, bad + "\n1\n", "frequency_khz,temperature_c," + bad + ",q\n1,1,1,1\n",
          "frequency_khz,temperature_c,i,q\n" + bad + ",1,1,1\n", "a,b\n" + bad + "\n",
          "frequency_khz,temperature_c,i,q\n1,1,1,\"" + bad + "\"\n",
          "# " + bad + ": " + bad + "\nfrequency_khz,temperature_c,i,q\n1,1,1,1\n",
          "# channel: " + bad + "\nfrequency_khz,temperature_c,i,q\n1,1,1,1\n",
          "# serial: " + bad + "\n# channel: 1\nfrequency_khz,temperature_c,i,q\n1,1,1,1\n",
          "i" + bad + ",i" + bad + "\n1,1\n", "x" + escape + ",y\n1,1\n"}) {
        write("board.channel-1.csv", text);
        write("log.csv", text);
        expectHarmlessBothWays({"tables", "lint", "board.toml", "board.channel-1.csv"});
        expectHarmlessBothWays({"tables", "diff", "board.channel-1.csv", "board.channel-1.csv"});
        expectHarmlessBothWays({"check", "--all", "board.toml"});
        expectHarmlessBothWays({"thermal", "board.toml", "log.csv"});
        expectHarmlessBothWays({"run", "board.toml"}, "show tables\n");
    }
}

TEST_F(HostileNamesTest, NamesOfRecordingsAreShownHarmlessly) {
    const std::string file = hostile + ".rec";
    write(file, hostileRecording());
    write("other.rec", hostileRecording());
    expectHarmlessBothWays({"record", "show", file});
    expectHarmless({"record", "show", "--verbose", file});
    expectHarmlessBothWays({"record", "diff", file, "other.rec"});
    MadeUpRecording empty(32, 16, 4);
    write("empty.rec", empty.bytes());
    expectHarmlessBothWays({"record", "diff", file, "empty.rec"});
    expectHarmlessBothWays({"replay", file});
    expectHarmlessBothWays({"describe", file, "--script", hostile + ".script"});
    write("text", hostile);
    expectHarmlessBothWays({"record", "show", "text"});
}

TEST_F(HostileNamesTest, JournalsAreShownHarmlessly) {
    write("board.toml", leakageBoard());
    const Words calibrate{"calibrate", "board.toml",   "--channel", "1",      "--max-iterations",
                          "1",         "--no-qualify", "--out",     "out.csv"};
    const auto with = [&calibrate](const Words& more) {
        Words words = calibrate;
        words.insert(words.end(), more.begin(), more.end());
        return words;
    };
    ASSERT_NE(contentOf("board.toml"), "");
    static_cast<void>(runProgram({calibrate}));
    const std::string journal = contentOf("board.channel-1.journal");
    ASSERT_NE(journal, "");
    for (const auto& [what, instead] :
         std::vector<std::pair<std::string, std::string>>{{"T-1", "T\\u001b[31m\\nFORGED" + inUtf8},
                                                          {"Test radio", "R\\u001b[31m\\nFORGED" + inUtf8},
                                                          {"{", "{\"" + inUtf8 + escape + "\":1,"},
                                                          {"{", broken},
                                                          {"\"khz\"", "\"" + inUtf8 + "\""},
                                                          {"T-1", broken}}) {
        std::string changed = journal;
        const std::size_t at = changed.find(what);
        ASSERT_NE(at, std::string::npos) << what;
        changed.replace(at, what.size(), instead);
        for (const Words& more :
             {Words{"--resume"}, Words{"--offline", "board.channel-1.journal"}, Words{}}) {
            write("board.channel-1.journal", changed);
            expectHarmlessBothWays(with(more));
        }
    }
    write("board.channel-1.journal", broken + escape);
    expectHarmless(with({"--restart"}));
}

TEST_F(HostileNamesTest, PromptOffersNothingThatATerminalWouldObey) {
    write("board.toml", std::string(rfModuleBoard) + "\"zz" + inUtf8 + "\" = {}\n\"zz.b\" = {}\n");
    Process process({{"console", "board.toml"},
                     {{"XDG_STATE_HOME", std::filesystem::current_path()}, {"TERM", "xterm"}},
                     true});
    ASSERT_TRUE(process.waitFor("radio> "));
    process.type("read zz\t\r");
    ASSERT_TRUE(process.waitFor("zz.b = "));
    process.type("show drivers\rread \t");
    ASSERT_TRUE(process.waitFor("\r\n  channel.1.rx.rf.frequency\r\n"));
    process.type("\x15quit\r");
    const std::string output = process.finish().output;
    for (const char* const raw : {"\xC2\x9B", "\xE2\x80\xAE", "\xE2\x81\xA6", "\xE2\x80\xA8"}) {
        EXPECT_EQ(output.find(raw), std::string::npos);
    }
}

} // namespace
