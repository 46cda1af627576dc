#include "radio/files/FileWait.h"
#include "tests/radio/support/BoardFileFixture.h"
#include "tests/support/Sanitized.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <limits>
#include <string>

namespace Radio {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class BoardFileTest : public BoardFileFixture {
protected:
    /** The type of a channel whose board file says `type`. */
    static ::FrequencyHandler::FrequencyHandlerType typeOf(const std::string& type) {
        return load("name = \"Radio\"\n[[channel]]\nnumber = 1\ntype = " + type).channels.at(0).type;
    }
};

TEST_F(BoardFileTest, NameDescriptionAndFileAreKept) {
    const Board board =
        load("name = \"Radio\"\ndescription = \"Bench\"\n[[channel]]\nnumber = 0\ntype = 1\n");
    EXPECT_EQ(board.name, "Radio");
    EXPECT_EQ(board.description, "Bench");
    EXPECT_EQ(board.file, "board.toml");
}

TEST_F(BoardFileTest, ChannelsComeInTheOrderOfTheFile) {
    const Board board = load("name = \"Radio\"\n[[channel]]\nnumber = 2147483647\ntype = "
                             "\"rau\"\n[[channel]]\nnumber = 0\ntype = \"microwave-if\"\n");
    ASSERT_EQ(board.channels.size(), 2U);
    EXPECT_EQ(board.channels[0].number, 2147483647);
    EXPECT_EQ(board.channels[0].type, ::FrequencyHandler::Rau);
    EXPECT_EQ(board.channels[0].place.line, 2U);
    EXPECT_EQ(board.channels[1].number, 0);
    EXPECT_EQ(board.channels[1].place.line, 5U);
}

TEST_F(BoardFileTest, EveryTypeHasAWordAndANumber) {
    const std::vector<std::string> words = {"microwave-if",           "rf-module", "microwave-dsp-offset",
                                            "microwave-hz-cs-offset", "rau",       "microwave-hz"};
    for (int number = 0; number < 6; ++number) {
        const std::string& word = words[static_cast<std::size_t>(number)];
        EXPECT_EQ(typeOf('"' + word + '"'), number);
        EXPECT_EQ(typeOf(std::to_string(number)), number);
        EXPECT_EQ(toString(static_cast<::FrequencyHandler::FrequencyHandlerType>(number)), word);
        EXPECT_EQ(handlerTypeFromString(word), number);
    }
}

TEST_F(BoardFileTest, DriverHasValueAndMissingWords) {
    const Board board =
        loadAfterChannel("[drivers]\n\"plain\" = {}\n\"odd\" = { value = -7, without = [\"read\", "
                         "\"context\"] }\n\"rest\" = { without = [\"write\", \"write-buffer\"] }\n");
    ASSERT_EQ(board.drivers.size(), 3U);
    EXPECT_EQ(board.drivers[0].name, "plain");
    EXPECT_EQ(board.drivers[0].value, 0);
    EXPECT_EQ(board.drivers[0].missingWords, 0U);
    EXPECT_EQ(board.drivers[1].value, -7);
    EXPECT_EQ(board.drivers[1].missingWords, Standalone::wordRead | Standalone::wordContext);
    EXPECT_EQ(board.drivers[1].place.line, 7U);
    EXPECT_EQ(board.drivers[2].missingWords, Standalone::wordWrite | Standalone::wordWriteBuffer);
}

TEST_F(BoardFileTest, DriverMayStandInASectionOfItsOwn) {
    const Board board = loadAfterChannel("[drivers.\"a.b\"]\nvalue = 3\n");
    ASSERT_EQ(board.drivers.size(), 1U);
    EXPECT_EQ(board.drivers[0].name, "a.b");
    EXPECT_EQ(board.drivers[0].value, 3);
}

TEST_F(BoardFileTest, VariableIsOneIntegerOrAnArray) {
    const Board board =
        loadAfterChannel("[variables]\n\"One\" = -2147483648\n\"Many\" = [250, 2147483647]\n");
    ASSERT_EQ(board.variables.size(), 2U);
    EXPECT_THAT(board.variables[0].values, ElementsAre(std::numeric_limits<std::int32_t>::min()));
    EXPECT_FALSE(board.variables[0].isArray);
    EXPECT_THAT(board.variables[1].values, ElementsAre(250, 2147483647));
    EXPECT_TRUE(board.variables[1].isArray);
}

TEST_F(BoardFileTest, TableWithOneAxisHasAValueForEachNode) {
    const Board board = loadAfterChannel("[tables]\n\"T\" = { axis = [-5, 0, 9], values = [1, 2, 3] }\n");
    ASSERT_EQ(board.tables.size(), 1U);
    EXPECT_EQ(board.tables[0].table.name, "T");
    EXPECT_THAT(board.tables[0].table.axis1, ElementsAre(-5, 0, 9));
    EXPECT_THAT(board.tables[0].table.axis2, IsEmpty());
    EXPECT_THAT(board.tables[0].table.values, ElementsAre(1, 2, 3));
}

TEST_F(BoardFileTest, TableWithTwoAxesHasARowForEachNodeOfTheFirst) {
    const Board board = loadAfterChannel(
        "[tables.T]\naxes = [[10, 20], [1, 2, 3]]\nvalues = [[11, 12, 13],\n[21, 22, 23]]\n");
    EXPECT_THAT(board.tables.at(0).table.axis1, ElementsAre(10, 20));
    EXPECT_THAT(board.tables.at(0).table.axis2, ElementsAre(1, 2, 3));
    EXPECT_THAT(board.tables.at(0).table.values, ElementsAre(11, 12, 13, 21, 22, 23));
}

TEST_F(BoardFileTest, InterfaceHasAPresence) {
    using Standalone::Presence;
    const Board board =
        loadAfterChannel("[interfaces]\n\"IDriverLayer\" = \"null-record\"\n\"ITemperatureHandler\" = "
                         "\"foreign\"\n\"IRauHandler\" = \"null\"\n\"IRauHandler_2\" = "
                         "\"absent\"\n\"IRauHandler_1\" = \"present\"\n");
    std::vector<Presence> presences;
    for (const InterfaceDescription& interface : board.interfaces) {
        presences.push_back(interface.presence);
    }
    EXPECT_THAT(presences, ElementsAre(Presence::nullRecord, Presence::foreign, Presence::null,
                                       Presence::absent, Presence::present));
    EXPECT_EQ(board.interfaces[4].name, "IRauHandler_1");
}

TEST_F(BoardFileTest, EntriesComeInTheOrderOfTheFile) {
    const Board board = loadAfterChannel("[drivers]\n\"z\" = {}\n\"a\" = {}\n\"m\" = {}\n");
    std::vector<std::string> names;
    for (const DriverDescription& driver : board.drivers) {
        names.push_back(driver.name);
    }
    EXPECT_THAT(names, ElementsAre("z", "a", "m"));
}

// Files that cannot be read.

TEST_F(BoardFileTest, AbsentFileIsRefused) {
    EXPECT_EQ(refusedFile("nowhere.toml"), "nowhere.toml: cannot be read: No such file or directory");
}

TEST_F(BoardFileTest, DirectoryIsRefused) {
    std::filesystem::create_directory("boards");
    EXPECT_EQ(refusedFile("boards"), "boards: is a directory, expected a board file");
}

TEST_F(BoardFileTest, FileAboveFourMebibytesIsRefused) {
    const std::string start = "name = \"Radio\"\n[[channel]]\nnumber = 1\ntype = 1\n#";
    const std::size_t limit = std::size_t{4} * 1024 * 1024;
    EXPECT_EQ(refused(start + std::string(limit - start.size(), 'x')), "accepted");
    EXPECT_EQ(refused(start + std::string(limit - start.size() + 1, 'x')),
              "board.toml: is larger than 4 MiB, expected a board file");
}

TEST_F(BoardFileTest, EmptyFileLacksAName) {
    EXPECT_EQ(refused(""), "board.toml: name: missing, expected the name of the radio");
}

// Files that are not TOML.

TEST_F(BoardFileTest, SyntaxErrorIsRefusedWithItsLine) {
    EXPECT_EQ(refused("name = \"Radio\"\nchannel 1\n"),
              "board.toml:2: not valid TOML: key-value pair: expected '=', saw '1'");
}

TEST_F(BoardFileTest, DuplicateKeyIsRefused) {
    EXPECT_EQ(refusedAfterChannel("[drivers]\n\"a.b\" = {}\n\"a.b\" = {}\n"),
              "board.toml:7: defined a second time: \"a.b\" = {}");
}

TEST_F(BoardFileTest, InvalidUtf8IsRefused) {
    EXPECT_EQ(refused("name = \"Radio\"\ndescription = \"\xFF\"\n"),
              "board.toml:2: not valid TOML: Encountered invalid utf-8 sequence");
}

TEST_F(BoardFileTest, KeyOfVeryManyPartsIsRefused) {
    std::string key;
    for (int part = 0; part < 1000000; ++part) {
        key += "a.";
    }
    EXPECT_EQ(refused("name = \"Radio\"\n" + key + "a = 1\n"),
              "board.toml:2: more than 100 dots, expected at most 100 in a line");
}

TEST_F(BoardFileTest, CharactersBeyondAsciiStandInStringsAndComments) {
    EXPECT_EQ(load("\xEF\xBB\xBFname = \"\"\"\"H\u00f6he\"\"\"\"\" # H\u00f6he\n"
                   "serial = 'H\u00f6he'\n[[channel]]\nnumber = 1\ntype = \"rf-module\"\n")
                  .name,
              "\"H\u00f6he\"\"");
}

TEST_F(BoardFileTest, CharactersBeyondAsciiTellNamesApart) {
    const Board board = loadAfterChannel("[drivers]\n\"\u00e9\" = {}\n\"\u00f6\" = {}\n\"?C3?A9\" = {}\n");
    EXPECT_EQ(board.drivers.size(), 3U);
}

TEST_F(BoardFileTest, CharacterBeyondAsciiOutsideOfStrings) {
    EXPECT_EQ(refused("name = H\u00f6he\n"),
              "board.toml:1: not valid TOML: value: could not determine value type");
    EXPECT_EQ(refused("name = 'R'\n[ \u00f6 ]\n"), "board.toml:2: not valid TOML: key: expected bare key "
                                                   "starting character or string delimiter, saw '?'");
    EXPECT_EQ(refused("name = 5='\u00f6'\n"),
              "board.toml:1: not valid TOML: decimal integer: expected digit, saw '='");
}

TEST_F(BoardFileTest, CharacterBeyondAsciiBehindABackslash) {
    EXPECT_EQ(refused("name = \"\\\u00f6\"\n"),
              "board.toml:1: not valid TOML: string: unknown escape sequence '\\?'");
    EXPECT_EQ(refused("name = \"\"\"a \\\n  \u00f6\"\"\"\n"),
              "board.toml:2: begins with a character beyond ASCII, expected another one behind a backslash");
}

TEST_F(BoardFileTest, ControlCharactersAreNotShownAsTheyAre) {
    EXPECT_EQ(refused("\"\\u001b[2J\" = 1\n"),
              "board.toml:1: \"\\u001B[2J\": expected a name of printable text");
}

// Keys.

TEST_F(BoardFileTest, UnknownKeyIsRefusedAndTheNearestOffered) {
    EXPECT_EQ(refused("nmae = \"Radio\"\n"),
              "board.toml:1: nmae: unknown key (did you mean \"name\"?), expected one of name, serial, "
              "description, channel, transmitter, leakage, calibration, drivers, variables, tables, "
              "interfaces, raster, limits, devices, hardware, sensor");
}

TEST_F(BoardFileTest, UnknownSectionIsRefusedAndTheNearestOffered) {
    EXPECT_EQ(refusedAfterChannel("[Driver]\n"),
              "board.toml:5: Driver: unknown key (did you mean \"drivers\"?), expected one of name, serial, "
              "description, channel, transmitter, leakage, calibration, drivers, variables, tables, "
              "interfaces, raster, limits, devices, hardware, sensor");
}

TEST_F(BoardFileTest, UnknownKeyOfAChannelIsRefused) {
    EXPECT_EQ(refusedAfterChannel("colour = 3\n"),
              "board.toml:5: channel.colour: unknown key, expected one of number, type, iq_compensation");
}

TEST_F(BoardFileTest, UnknownKeyOfADriverIsRefused) {
    EXPECT_EQ(refusedAfterChannel("[drivers]\n\"a.b\" = { vlaue = 3 }\n"),
              "board.toml:6: drivers.\"a.b\".vlaue: unknown key (did you mean \"value\"?), expected one of "
              "value, without");
}

TEST_F(BoardFileTest, UnknownKeyOfATableIsRefused) {
    EXPECT_EQ(refusedAfterChannel("[tables]\n\"T\" = { axis = [1], value = [3] }\n"),
              "board.toml:6: tables.T.value: unknown key (did you mean \"values\"?), expected one of axis, "
              "axes, values, file, column");
}

TEST_F(BoardFileTest, DriverNameWithoutQuotesIsRefused) {
    EXPECT_EQ(refusedAfterChannel("[drivers]\nchannel.1.tx.rf.frequency = {}\n"),
              "board.toml:6: drivers.channel.1: unknown key, expected names with dots in quotes");
}

TEST_F(BoardFileTest, VariableNameWithoutQuotesIsRefused) {
    EXPECT_EQ(refusedAfterChannel("[variables]\nchannel.1.tx.if.frequency = 140000\n"),
              "board.toml:6: variables.channel: expected an integer or an array of integers (a name with "
              "dots stands in quotes), found a table");
}

TEST_F(BoardFileTest, EmptyNameOfADriverIsRefused) {
    EXPECT_EQ(refusedAfterChannel("[drivers]\n\"\" = {}\n"),
              "board.toml:6: drivers.\"\": expected a name of printable text");
}

// Types and ranges.

TEST_F(BoardFileTest, NameThatIsNoTextIsRefused) {
    EXPECT_EQ(refused("name = 7\n"), "board.toml:1: name: expected a string of printable text, found 7");
}

TEST_F(BoardFileTest, EmptyNameIsRefused) {
    EXPECT_EQ(refused("name = \"\"\n"), "board.toml:1: name: expected the name of the radio, found \"\"");
}

TEST_F(BoardFileTest, NameThatATerminalWouldObeyIsRefused) {
    EXPECT_EQ(refused("name = \"\\u001b[2J\"\n"),
              "board.toml:1: name: expected a string of printable text, found \"\\x1b[2J\"");
}

TEST_F(BoardFileTest, SectionThatIsNoTableIsRefused) {
    EXPECT_EQ(refused("name = \"Radio\"\nchannel = [{ number = 1, type = 1 }]\ndrivers = 5\n"),
              "board.toml:3: drivers: expected a table, found 5");
}

TEST_F(BoardFileTest, DriverThatIsNoTableIsRefused) {
    EXPECT_EQ(refusedAfterChannel("[drivers]\n\"a\" = true\n"),
              "board.toml:6: drivers.a: expected a table, found true");
}

TEST_F(BoardFileTest, VariableThatIsNoIntegerIsRefused) {
    const std::string expected = "expected an integer from -2147483648 to 2147483647, found ";
    EXPECT_EQ(refusedAfterChannel("[variables]\nA = \"250\"\n"),
              "board.toml:6: variables.A: " + expected + "\"250\"");
    EXPECT_EQ(refusedAfterChannel("[variables]\nA = 2.5\n"),
              "board.toml:6: variables.A: " + expected + "2.5");
    EXPECT_EQ(refusedAfterChannel("[variables]\nA = 2024-01-01\n"),
              "board.toml:6: variables.A: " + expected + "a date or a time");
    EXPECT_EQ(refusedAfterChannel("[variables]\nA = [1,\n2,\n[3]]\n"),
              "board.toml:8: variables.A: " + expected + "an array");
}

TEST_F(BoardFileTest, ValueBeyond32BitsIsRefused) {
    const std::string expected = "expected an integer from -2147483648 to 2147483647, found ";
    EXPECT_EQ(refusedAfterChannel("[variables]\nA = 2147483648\n"),
              "board.toml:6: variables.A: " + expected + "2147483648");
    EXPECT_EQ(refusedAfterChannel("[variables]\nA = -2147483649\n"),
              "board.toml:6: variables.A: " + expected + "-2147483649");
    EXPECT_EQ(refusedAfterChannel("[drivers]\nA = { value = 4294967296 }\n"),
              "board.toml:6: drivers.A.value: " + expected + "4294967296");
}

TEST_F(BoardFileTest, ValueBeyond64BitsIsRefused) {
    EXPECT_EQ(refused("name = 99999999999999999999\n"),
              "board.toml:1: not valid TOML: decimal integer: '99999999999999999999' is not representable in "
              "64 bits");
}

TEST_F(BoardFileTest, EmptyArrayIsRefused) {
    EXPECT_EQ(refusedAfterChannel("[variables]\nA = []\n"),
              "board.toml:6: variables.A: expected an array of at least one element, found an empty array");
    EXPECT_EQ(refusedAfterChannel("[tables]\nT = { axis = [], values = [1] }\n"),
              "board.toml:6: tables.T.axis: expected an array of at least one element, found an empty array");
}

// Channels.

TEST_F(BoardFileTest, BoardWithoutAChannelIsRefused) {
    EXPECT_EQ(refused("name = \"Radio\"\n"),
              "board.toml: no channel, expected at least one [[channel]] with number and type");
    EXPECT_EQ(refused("name = \"Radio\"\nchannel = []\n"),
              "board.toml:2: channel: expected an array of at least one element, found an empty array");
}

TEST_F(BoardFileTest, ChannelInSingleBracketsIsRefused) {
    EXPECT_EQ(refused("name = \"Radio\"\n[channel]\nnumber = 1\n"),
              "board.toml:2: channel: expected [[channel]] tables, one for each channel, found a table");
}

TEST_F(BoardFileTest, DuplicateChannelIsRefusedWithTheLineOfTheFirst) {
    EXPECT_EQ(
        refusedAfterChannel("[[channel]]\ntype = \"rau\"\nnumber = 1\n"),
        "board.toml:7: channel.number: 1 is taken by the channel on line 3, expected a number of its own");
}

TEST_F(BoardFileTest, ChannelWithoutNumberOrTypeIsRefused) {
    EXPECT_EQ(refused("name = \"Radio\"\n[[channel]]\ntype = 1\n"),
              "board.toml:2: channel.number: missing, expected an integer from 0 to 2147483647");
    EXPECT_EQ(refused("name = \"Radio\"\n[[channel]]\nnumber = 1\n"),
              "board.toml:2: channel.type: missing, expected one of the words microwave-if, rf-module, "
              "microwave-dsp-offset, microwave-hz-cs-offset, rau, microwave-hz");
}

TEST_F(BoardFileTest, ChannelNumberBelowZeroIsRefused) {
    EXPECT_EQ(refused("name = \"Radio\"\n[[channel]]\nnumber = -1\ntype = 1\n"),
              "board.toml:3: channel.number: expected an integer from 0 to 2147483647, found -1");
}

TEST_F(BoardFileTest, UnknownTypeWordIsRefusedAndTheNearestOffered) {
    EXPECT_EQ(
        refused("name = \"Radio\"\n[[channel]]\nnumber = 1\ntype = \"RF_Module\"\n"),
        "board.toml:4: channel.type: unknown word \"RF_Module\" (did you mean \"rf-module\"?), expected one "
        "of microwave-if, rf-module, microwave-dsp-offset, microwave-hz-cs-offset, rau, microwave-hz");
}

TEST_F(BoardFileTest, TypeNumberAboveFiveIsRefused) {
    EXPECT_EQ(refused("name = \"Radio\"\n[[channel]]\nnumber = 1\ntype = 6\n"),
              "board.toml:4: channel.type: expected a type from 0 to 5 or one of the words microwave-if, "
              "rf-module, microwave-dsp-offset, microwave-hz-cs-offset, rau, microwave-hz, found 6");
}

// Drivers, tables, interfaces.

TEST_F(BoardFileTest, UnknownWordOfADriverIsRefused) {
    EXPECT_EQ(refusedAfterChannel("[drivers]\n\"a\" = { without = [\"read\",\n\"wirte\"] }\n"),
              "board.toml:7: drivers.a.without: unknown word \"wirte\" (did you mean \"write\"?), expected "
              "one of context, write, write-buffer, read");
    EXPECT_EQ(refusedAfterChannel("[drivers]\n\"a\" = { without = [1] }\n"),
              "board.toml:6: drivers.a.without: expected one of the words context, write, write-buffer, "
              "read, found 1");
}

TEST_F(BoardFileTest, WordOfADriverTwiceIsRefused) {
    EXPECT_EQ(refusedAfterChannel("[drivers]\na = { without = [\"read\", \"write\", \"read\"] }\n"),
              "board.toml:6: drivers.a.without: expected each word once, found \"read\" twice");
}

TEST_F(BoardFileTest, OffsetArraySizeAboveItsPlacesIsRefused) {
    const std::string array = "[variables]\n\"channel.1.rx.rf.frequency.cs.offset.array\" = [27, 15000]\n";
    EXPECT_EQ(refusedAfterChannel(array + "\"channel.1.rx.rf.frequency.cs.offset.arraysize\" = 3\n"),
              "board.toml:7: variable \"channel.1.rx.rf.frequency.cs.offset.arraysize\" is 3, but "
              "\"channel.1.rx.rf.frequency.cs.offset.array\" has 2 places");
    EXPECT_EQ(refusedAfterChannel(array + "\"channel.1.rx.rf.frequency.cs.offset.arraysize\" = 2\n"),
              "accepted");
}

TEST_F(BoardFileTest, AxisThatDoesNotAscendIsRefusedWithTheTwoNodes) {
    EXPECT_EQ(refusedAfterChannel("[tables]\n\"T\" = { axis = [1, 20, 10], values = [1, 2, 3] }\n"),
              "board.toml:6: tables.T.axis: expected ascending nodes, found 10 after 20");
    EXPECT_EQ(
        refusedAfterChannel("[tables]\n\"T\" = { axes = [[1, 2], [7, 7]], values = [[1, 2], [3, 4]] }\n"),
        "board.toml:6: tables.T.axes: expected ascending nodes, found 7 after 7");
}

TEST_F(BoardFileTest, TableNeedsOneKindOfAxes) {
    EXPECT_EQ(refusedAfterChannel("[tables]\n\"T\" = { values = [1] }\n"),
              "board.toml:6: tables.T: expected either axis or axes, found neither");
    EXPECT_EQ(refusedAfterChannel("[tables]\n\"T\" = { axis = [1], axes = [[1], [1]], values = [1] }\n"),
              "board.toml:6: tables.T: expected either axis or axes, found both");
}

TEST_F(BoardFileTest, TableWithoutValuesIsRefused) {
    EXPECT_EQ(refusedAfterChannel("[tables]\n\"T\" = { axis = [1] }\n"),
              "board.toml:6: tables.T.values: missing, expected an array of integers");
}

TEST_F(BoardFileTest, WrongNumberOfValuesIsRefused) {
    EXPECT_EQ(refusedAfterChannel("[tables]\n\"T\" = { axis = [1, 2, 3], values = [1, 2] }\n"),
              "board.toml:6: tables.T.values: expected one value for each node of the axis: 3, found 2");
}

TEST_F(BoardFileTest, ThreeAxesAreRefused) {
    EXPECT_EQ(refusedAfterChannel("[tables]\n\"T\" = { axes = [[1], [1], [1]], values = [[1]] }\n"),
              "board.toml:6: tables.T.axes: expected two axes: 2, found 3");
}

TEST_F(BoardFileTest, WrongNumberOfRowsIsRefused) {
    EXPECT_EQ(refusedAfterChannel("[tables]\n\"T\" = { axes = [[1, 2], [1]], values = [[1], [2], [3]] }\n"),
              "board.toml:6: tables.T.values: expected one row for each node of the first axis: 2, found 3");
}

TEST_F(BoardFileTest, RowOfWrongLengthIsRefusedWithItsLine) {
    EXPECT_EQ(
        refusedAfterChannel("[tables]\n\"T\" = { axes = [[1, 2], [1, 2]], values = [\n[1, 2],\n[3]] }\n"),
        "board.toml:8: tables.T.values: expected one value in each row for each node of the second axis: 2, "
        "found 1");
}

TEST_F(BoardFileTest, FileOfManyTablesIsReadOnce) {
    std::string text = "name = \"Radio\"\n[[channel]]\nnumber = 1\ntype = 1\n[tables]\n";
    for (int table = 0; table < 40; ++table) {
        text += "\"table " + std::to_string(table) + "\" = { file = \"t.csv\", column = \"i\" }\n";
    }
    int reads = 0;
    const Board board = readBoard(text, "board.toml", [&reads](const std::filesystem::path& file) {
        ++reads;
        return CsvFile("f,t,i\n1,2,3\n", file.string(), "a calibration table");
    });
    EXPECT_EQ(reads, 1);
    ASSERT_EQ(board.tables.size(), 40U);
    EXPECT_THAT(board.tables[39].table.values, ElementsAre(3));
}

/** 100,000 nodes in one file, of which the 40 first tables make 4,000,000. */
TEST_F(BoardFileTest, TablesHaveALimitOfNodesTogether) {
    std::string rows = "f,t,i\n";
    for (int row = 0; row < 100'000; ++row) {
        rows += std::to_string(row) + ",2,3\n";
    }
    std::string text = "name = \"Radio\"\n[[channel]]\nnumber = 1\ntype = 1\n[tables]\n";
    for (int table = 1; table <= 40; ++table) {
        text += "\"table " + std::to_string(table) + "\" = { file = \"t.csv\", column = \"i\" }\n";
    }
    const auto read = [&](const std::string& board) {
        return readBoard(board, "board.toml", [&](const std::filesystem::path& file) {
            return CsvFile(rows, file.string(), "a calibration table");
        });
    };
    EXPECT_EQ(read(text).tables.size(), 40U);
    const std::string said = ", which makes more than 4000000 of all tables of the board, expected fewer or "
                             "smaller ones";
    EXPECT_EQ(refusal([&] { read(text + "\"x\" = { file = \"t.csv\", column = \"i\" }\n"); }),
              "board.toml:46: tables.x: has 100000 nodes" + said);
    EXPECT_EQ(refusal([&] { read(text + "\"x\" = { axis = [1], values = [2] }\n"); }),
              "board.toml:46: tables.x: has 1 node" + said);
}

TEST_F(BoardFileTest, EntriesOfABoardHaveALimit) {
    for (const char* const section : {"drivers", "variables", "tables", "interfaces", "nothing known"}) {
        // The name, a table for the section and "x" in each line: 100,000 with the last but one.
        std::string text = std::string("name = \"Radio\"\n[\"") + section + "\"]\n# = [ does not count\n";
        for (int entry = 0; entry < 99'998; ++entry) {
            text += "x" + std::to_string(entry) + " = 1\n";
        }
        EXPECT_THAT(refusal([&] { load(text); }), Not(HasSubstr("100000"))) << section;
        EXPECT_EQ(
            refusal([&] { load(text + "x = 1\n"); }),
            "board.toml:100002: more than 100000 of the signs = and [, expected at most 100000 in a board")
            << section;
    }
}

TEST_F(BoardFileTest, ArraysAndHeadingsCountAsEntries) {
    std::string text = "a = [";
    for (int array = 0; array < 99'998; ++array) {
        text += "[],\n";
    }
    EXPECT_THAT(refusal([&] { load(text + "]\n"); }), Not(HasSubstr("100000")));
    EXPECT_EQ(refusal([&] { load(text + "]\n[b]\n"); }),
              "board.toml:100000: more than 100000 of the signs = and [, expected at most 100000 in a board");
}

TEST_F(BoardFileTest, NumbersOfABoardHaveALimit) {
    std::string numbers;
    for (int number = 0; number < 500'000; ++number) {
        numbers += "1,";
    }
    EXPECT_EQ(refusal([&] { loadAfterChannel("[variables]\nv = [" + numbers + "]\n"); }), "accepted");
    EXPECT_EQ(refusal([&] { loadAfterChannel("[variables]\nv = [" + numbers + "\n1,]\n"); }),
              "board.toml:7: more than 500000 commas, expected at most 500000 in a board");
}

/** Gives up waiting at once, as if the program were to end. */
TEST_F(BoardFileTest, SignalEndsTheReadingOfTables) {
    setFileWait([](FileUse, int, std::chrono::milliseconds) { return SIGTERM; });
    const std::string said = refusedAfterChannel("[tables]\n\"T\" = { axis = [1], values = [2] }\n");
    setFileWait(nullptr);
    EXPECT_EQ(said, "board.toml:6: was not waited for");
}

TEST_F(BoardFileTest, FilesOfTablesHaveALimitTogether) {
    const std::string rows = "f,t,i\n1,2,3\n" + std::string(4'000'000, '\n');
    std::string text = "[tables]\n";
    for (const char digit : {'1', '2', '3', '4', '5'}) {
        std::ofstream(std::string("t") + digit + ".csv") << rows;
        text += std::string("\"table ") + digit + "\" = { file = \"t" + digit + ".csv\", column = \"i\" }\n";
    }
    EXPECT_EQ(refusal([&] { loadAfterChannel(text); }),
              "t5.csv: is one of the files of a board that have more than 16 MiB together, expected fewer or "
              "shorter ones");
}

constexpr std::size_t littleMemory = std::size_t{48} << 20U;

/** From now on there is little memory; false where nobody sees to that, in an emulator for example. */
bool takeMemoryAway() {
    rlimit most{};
    most.rlim_cur = most.rlim_max = littleMemory;
    return setrlimit(RLIMIT_AS, &most) == 0 &&
           mmap(nullptr, littleMemory, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) == MAP_FAILED;
}

bool canTakeMemoryAway() {
    const pid_t child = fork();
    if (child == 0) {
        _exit(takeMemoryAway() ? 0 : 1);
    }
    int status = -1;
    return waitpid(child, &status, 0) == child && status == 0;
}

/** Ends with 0 when the message is the right one. */
[[noreturn]] void endWithoutMemory() {
    static_cast<void>(takeMemoryAway());
    try {
        loadBoard("board.toml");
    } catch (const InputError& error) {
        _exit(std::string(error.what()) == "board.toml: needs more memory than there is" ? 0 : 2);
    }
    _exit(1);
}

TEST_F(BoardFileTest, WantOfMemoryNamesTheFile) {
    if (isSanitized || !canTakeMemoryAway()) {
        GTEST_SKIP() << "there is no limit for memory: a sanitizer needs it itself, an emulator has none";
    }
    std::string text = "name = \"Radio\"\n[[channel]]\nnumber = 1\ntype = 1\n[drivers]\n";
    for (int driver = 0; driver < 90'000; ++driver) {
        text += "\"driver." + std::to_string(driver) + "\" = {}\n";
    }
    write("board.toml", text);
    EXPECT_EXIT(endWithoutMemory(), testing::ExitedWithCode(0), "");
}

TEST_F(BoardFileTest, ThereAreAtMost1024Channels) {
    std::string text = "name = \"Radio\"\n";
    for (int number = 0; number < 1025; ++number) {
        text += "[[channel]]\nnumber = " + std::to_string(number) + "\ntype = 1\n";
    }
    EXPECT_EQ(refusal([&] { load(text); }), "board.toml:3074: channel: expected at most 1024 channels");
}

TEST_F(BoardFileTest, UnknownPresenceIsRefused) {
    EXPECT_EQ(refusedAfterChannel("[interfaces]\n\"IDriverLayer\" = \"abscent\"\n"),
              "board.toml:6: interfaces.IDriverLayer: unknown word \"abscent\" (did you mean \"absent\"?), "
              "expected one of present, absent, null, foreign, null-record");
}

TEST_F(BoardFileTest, InterfaceThatThePlatformDoesNotHaveIsRefused) {
    EXPECT_EQ(
        refusedAfterChannel("[interfaces]\n\"IDriverLayr\" = \"absent\"\n"),
        "board.toml:6: interfaces.IDriverLayr: unknown interface (did you mean \"IDriverLayer\"?), expected "
        "one of IDriverLayer, ITemperatureHandler, IRauHandler, IRauHandler_1, IRauHandler_2 and so on");
}

TEST_F(BoardFileTest, RauNumberIsWrittenAsTheBrokerWritesIt) {
    for (const std::string name : {"IRauHandler_0", "IRauHandler_01", "IRauHandler_-1", "IRauHandler_",
                                   "IRauHandler_2147483648", "IRauHandler_1x"}) {
        EXPECT_NE(refusedAfterChannel("[interfaces]\n\"" + name + "\" = \"present\"\n"), "accepted") << name;
    }
    EXPECT_EQ(refusedAfterChannel("[interfaces]\n\"IRauHandler_2147483647\" = \"present\"\n"), "accepted");
}

} // namespace
} // namespace Radio
