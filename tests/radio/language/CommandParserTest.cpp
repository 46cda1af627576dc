#include "radio/language/CommandParser.h"

#include "radio/board/PlatformWords.h"
#include "radio/text/Tokenizer.h"
#include "radio/text/WordError.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace Radio {
namespace {

using testing::ElementsAre;
using testing::Pair;

/** The command on `line`, which is to be of this type. */
template <typename Type>
Type parsed(const std::string& line) {
    const Command command = parseCommand(line).value();
    if constexpr (std::is_constructible_v<Action, Type>) {
        return std::get<Type>(std::get<Action>(command));
    } else {
        return std::get<Type>(std::get<Expectation>(command));
    }
}

std::string complaintAbout(const std::string& line) {
    try {
        parseCommand(line);
    } catch (const WordError& error) {
        return error.what();
    }
    return "";
}

TEST(Tokenizer, PartsWordsAtWhiteSpace) {
    EXPECT_THAT(splitIntoWords("  tune\ttx 1  7442000 \r"), ElementsAre("tune", "tx", "1", "7442000"));
}

TEST(Tokenizer, KeepsQuotedWordsTogether) {
    EXPECT_THAT(splitIntoWords(R"(expect trace "Write to driver")"),
                ElementsAre("expect", "trace", "Write to driver"));
    EXPECT_THAT(splitIntoWords(R"("a \"b\" \\ \c")"), ElementsAre(R"(a "b" \ \c)"));
    EXPECT_THAT(splitIntoWords(R"("")"), ElementsAre(""));
}

TEST(Tokenizer, LeavesCommentsOut) {
    EXPECT_THAT(splitIntoWords("quit # and go"), ElementsAre("quit"));
    EXPECT_THAT(splitIntoWords(R"("# no comment" a#b)"), ElementsAre("# no comment", "a#b"));
}

TEST(Tokenizer, RefusesOpenQuotation) {
    EXPECT_EQ(complaintAbout(R"(expect trace "Write)"),
              "the quotation that begins in column 14 is not closed, expected a second \"");
}

TEST(CommandParser, FindsNoCommandOnEmptyLinesAndComments) {
    EXPECT_FALSE(parseCommand("").has_value());
    EXPECT_FALSE(parseCommand(" \t\r").has_value());
    EXPECT_FALSE(parseCommand("  # tune tx 1 7442000").has_value());
}

TEST(CommandParser, ReadsTune) {
    const auto command = parsed<Tune>("tune rx 12 7442.5 MHz # pair 3");
    EXPECT_EQ(command.direction, Direction::rx);
    EXPECT_EQ(command.channel, 12);
    EXPECT_EQ(command.frequency, 7442500U);
}

TEST(CommandParser, ReadsTemperatureBelowZero) {
    EXPECT_EQ(parsed<SetTemperature>("temperature -40").degrees, -40);
}

TEST(CommandParser, RefusesTemperaturesThatNoSensorGives) {
    EXPECT_EQ(parsed<SetTemperature>("temperature -100").degrees, -100);
    EXPECT_EQ(parsed<SetTemperature>("temperature 200").degrees, 200);
    for (const std::string word : {"-101", "201", "298.15", "2147483648"}) {
        EXPECT_EQ(complaintAbout("temperature " + word),
                  "temperature: \"" + word +
                      "\" is no number of degrees, expected a number from -100 to 200");
    }
}

TEST(CommandParser, ReadsListOfValues) {
    const auto command = parsed<SetVariable>("set a.b 1,-2,0x10");
    EXPECT_EQ(command.name, "a.b");
    EXPECT_THAT(command.values, ElementsAre(1, -2, 16));
}

TEST(CommandParser, ReadsPhaseByNameAndNumber) {
    EXPECT_EQ(parsed<RunPhase>("phase init").phase, Standalone::phaseModuleInit);
    EXPECT_EQ(parsed<RunPhase>("phase storage").phase, Standalone::phaseStorageObjectsRetrieved);
    EXPECT_EQ(parsed<RunPhase>("phase 20").phase, Standalone::phasePostFrameformatLoad);
}

TEST(CommandParser, ReadsFaultOnEveryObjectUntilCleared) {
    const auto fault = parsed<InjectFault>("fault driver-write 0x8001").fault;
    EXPECT_EQ(fault.operation, Standalone::Operation::driverWrite);
    EXPECT_EQ(fault.object, "");
    EXPECT_EQ(fault.code, 0x8001);
    EXPECT_EQ(fault.times, std::nullopt);
}

TEST(CommandParser, ReadsFaultOnOneObjectForSomeTurns) {
    const auto fault = parsed<InjectFault>("fault rau-rx IRauHandler_2 0xFFFFFFFF 3 times").fault;
    EXPECT_EQ(fault.operation, Standalone::Operation::rauRx);
    EXPECT_EQ(fault.object, "IRauHandler_2");
    EXPECT_EQ(fault.code, -1);
    EXPECT_EQ(fault.times, 3U);
    EXPECT_EQ(parsed<InjectFault>("fault rau-tx 5 once").fault.times, 1U);
    EXPECT_EQ(parsed<InjectFault>("fault rau-tx 5 always").fault.times, std::nullopt);
}

TEST(CommandParser, ReadsWhatToClear) {
    EXPECT_EQ(parsed<ClearFaults>("clear all").operation, std::nullopt);
    const auto command = parsed<ClearFaults>("clear table-lookup Channel.1.Table");
    EXPECT_EQ(command.operation, Standalone::Operation::tableLookup);
    EXPECT_EQ(command.object, "Channel.1.Table");
}

TEST(CommandParser, ReadsPresence) {
    const auto command = parsed<SetPresence>("interface IDriverLayer null-record");
    EXPECT_EQ(command.name, "IDriverLayer");
    EXPECT_EQ(command.presence, Standalone::Presence::nullRecord);
}

TEST(CommandParser, ReadsExpectedWritesInOrder) {
    EXPECT_EQ(parsed<ExpectWriteCount>("expect writes 0").count, 0U);
    EXPECT_THAT(parsed<ExpectWrites>("expect writes b=2 a=-1 c=0x10").writes,
                ElementsAre(Pair("b", 2), Pair("a", -1), Pair("c", 16)));
}

TEST(CommandParser, ReadsExpectedResult) {
    EXPECT_EQ(parsed<ExpectResult>("expect result failed").kind, ExpectResult::Kind::failed);
    const auto code = parsed<ExpectResult>("expect result 0x8000");
    EXPECT_EQ(code.kind, ExpectResult::Kind::code);
    EXPECT_EQ(code.code, 0x8000);
}

TEST(CommandParser, ReadsExpectedTrace) {
    EXPECT_EQ(parsed<ExpectTrace>(R"(expect trace "no driver")").text, "no driver");
    EXPECT_EQ(parsed<ExpectNoTrace>("expect no trace").text, "");
    EXPECT_EQ(parsed<ExpectNoTrace>("expect no trace failed").text, "failed");
}

TEST(CommandParser, ReadsExpectedLeakage) {
    const auto command = parsed<ExpectLeakage>("expect leakage 2 below -55.5");
    EXPECT_EQ(command.channel, 2);
    EXPECT_EQ(command.limit, -55.5);
    EXPECT_EQ(parsed<ExpectLeakage>("expect leakage 0 below 120").limit, 120.0);
}

TEST(CommandParser, RefusesLeakageThatIsNoLevel) {
    for (const std::string word : {"-120.1", "x", "-1e1", "nan", "inf", "0x10", "-55dBc"}) {
        EXPECT_EQ(complaintAbout("expect leakage 1 below " + word),
                  "expect leakage: \"" + word + "\" is no level, expected a number of dBc from -120 to 120");
    }
    EXPECT_EQ(complaintAbout("expect leakage 1 above -50"),
              "expect leakage: \"above\" is out of place, expected: expect leakage CHANNEL below DBC");
    EXPECT_EQ(complaintAbout("expect leakage 1 below"),
              "expect leakage: DBC is missing, expected: expect leakage CHANNEL below DBC");
}

TEST(CommandParser, OffersTheNearestCommand) {
    EXPECT_EQ(
        complaintAbout("tone tx 1 7442000"),
        "unknown command \"tone\" (did you mean \"tune\"?), expected one of tune, sweep, temperature, set, "
        "phase, fault, clear, interface, observe, trace, show, read, write, watch, wait, repeat, include, "
        "expect, help, ?, quit, exit");
    EXPECT_EQ(
        complaintAbout("expect drivers x 1"),
        "unknown expectation \"drivers\" (did you mean \"driver\"?), expected one of driver, frequency, rau, "
        "notified, result, trace, no, writes, leakage");
    EXPECT_EQ(complaintAbout("expect"),
              "the line ends after \"expect\", expected one of driver, frequency, rau, notified, result, "
              "trace, no, writes, leakage");
}

TEST(CommandParser, ShowsTheUsageForMissingAndSurplusWords) {
    EXPECT_EQ(complaintAbout("tune tx 1"),
              "tune: FREQUENCY is missing, expected: tune tx|rx CHANNEL FREQUENCY [kHz|MHz|GHz] [force]");
    EXPECT_EQ(complaintAbout("tune tx 1 7442000 kHz now"),
              "tune: \"now\" is one word too many, expected: tune tx|rx CHANNEL FREQUENCY [kHz|MHz|GHz] "
              "[force]");
    EXPECT_EQ(complaintAbout("set a 1, 2"),
              "set: \"\" is no value, expected a number from -2147483648 to 2147483647");
}

TEST(CommandParser, NamesTheChoicesForAWordThatIsNoneOfThem) {
    EXPECT_EQ(complaintAbout("tune up 1 7442000"), "tune: \"up\" is out of place, expected tx or rx");
    EXPECT_EQ(complaintAbout("phase 12"),
              "phase: unknown phase \"12\", expected one of init, storage, frame-format, 11, 5, 20");
    EXPECT_EQ(complaintAbout("expect result good"),
              "expect result: unknown result \"good\", expected ok, failed or a code such as 0x8000");
}

TEST(CommandParser, OffersTheNearestWordOfAList) {
    EXPECT_EQ(complaintAbout("show driver"),
              "show: unknown list \"driver\" (did you mean \"drivers\"?), expected "
              "one of drivers, variables, observers, faults, interfaces, tables, leakage, channels");
    EXPECT_EQ(complaintAbout("trace warnning"),
              "trace: unknown level \"warnning\" (did you mean \"warning\"?), expected one of off, error, "
              "warning, notice, information");
    EXPECT_EQ(
        complaintAbout("expect result faild"),
        "expect result: unknown result \"faild\" (did you mean \"failed\"?), expected ok, failed or a code "
        "such as 0x8000");
}

TEST(CommandParser, SaysWhatIsMissingBehindANumberOfTurns) {
    EXPECT_EQ(complaintAbout("fault driver-write 0x8001 3"), "fault: \"3\" lacks \"times\"");
    EXPECT_EQ(complaintAbout("fault driver-write a.driver 0x8001 3"), "fault: \"3\" lacks \"times\"");
}

TEST(CommandParser, RefusesTextThatIsInEveryMessage) {
    EXPECT_EQ(complaintAbout("expect trace \"\""),
              "expect trace: an empty text is in every message, expected some text");
    EXPECT_EQ(complaintAbout("expect no trace \"\""),
              "expect no trace: an empty text is in every message, expected some text");
}

TEST(CommandParser, SaysWhatAnUnfinishedExpectationLacks) {
    EXPECT_EQ(complaintAbout("expect no"), "the line ends after \"expect no\", expected trace");
    EXPECT_EQ(complaintAbout("trace"),
              "trace: LEVEL is missing, expected: trace off|error|warning|notice|information");
}

TEST(CommandParser, RefusesNumbersOutOfRange) {
    EXPECT_EQ(complaintAbout("fault rau-tx 0x100000000"),
              "fault: \"0x100000000\" is no code, expected a number from -2147483648 to 4294967295");
    EXPECT_EQ(complaintAbout("tune tx -1 7442000"),
              "tune: \"-1\" is no channel, expected a number from 0 to 2147483647");
    EXPECT_EQ(complaintAbout("fault rau-tx 5 0 times"), "fault: \"0\" times is never, expected at least 1");
}

TEST(CommandParser, ShowsControlCharactersHarmlessly) {
    EXPECT_THAT(complaintAbout("\033[2J"), testing::StartsWith("unknown command \"\\x1b[2J\""));
}

} // namespace
} // namespace Radio
