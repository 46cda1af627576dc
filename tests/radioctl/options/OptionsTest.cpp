#include "radioctl/options/Options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Radio::CommandLine {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

/** A program "radioctl" with the commands tune and check, of which a test gives tune its options. */
class OptionsTest : public testing::Test {
protected:
    /** What the parser gives for a command line that begins with "tune"; what it prints stays behind. */
    std::optional<bool> tune(const std::vector<std::string>& words) {
        std::vector<std::string> line{"tune"};
        line.insert(line.end(), words.begin(), words.end());
        return parse(line);
    }
    std::optional<bool> parse(const std::vector<std::string>& words) {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        const std::optional<bool> end = m_parser.parse(words);
        m_printed = testing::internal::GetCapturedStdout();
        m_complaint = testing::internal::GetCapturedStderr();
        return end;
    }
    /** What is printed when a command line is refused; empty when it is not. */
    std::string complaintAbout(const std::vector<std::string>& words) {
        const std::optional<bool> end = tune(words);
        EXPECT_EQ(m_printed, "");
        return end == false ? m_complaint : "";
    }
    /** What help about tune says. */
    std::string help() {
        EXPECT_EQ(tune({"--help"}), true);
        EXPECT_EQ(m_complaint, "");
        return m_printed;
    }
    /** "WORD: HELP" for each word that can stand there, and "files ENDING..." where a file can. */
    std::string offered(const std::vector<std::string>& before, const std::string& typed) const {
        const Offers offers = m_parser.offersFor(before, typed);
        std::string text;
        for (const Offers::Word& offer : offers.words) {
            text += offer.word + ": " + offer.help + "\n";
        }
        if (offers.areFiles) {
            text += "files";
            for (const std::string& ending : offers.endings) {
                text += " " + ending;
            }
            text += "\n";
        }
        return text;
    }
    void endHelpWith(const std::function<std::string(std::string_view)>& footer) {
        m_parser.endHelpWith(footer);
    }
    const std::string& printed() const { return m_printed; }
    const std::string& complaint() const { return m_complaint; }

private:
    Parser m_parser{"Tunes radios.", "radioctl", "radioctl 1.2.3"};
    std::string m_printed;
    std::string m_complaint;

protected:
    Command m_top = m_parser.top();
    Command m_tune = m_top.command("tune", "Sets a carrier.");
    Command m_check = m_top.command("check", "Looks at a board.");
};

// Values.

TEST_F(OptionsTest, WordGoesToItsOption) {
    std::string board;
    m_tune.option("--board", board, "");
    EXPECT_EQ(tune({"--board", "radio.toml"}), std::nullopt);
    EXPECT_EQ(board, "radio.toml");
    EXPECT_EQ(printed() + complaint(), "");
}

TEST_F(OptionsTest, WordGoesToItsArgument) {
    std::string board;
    std::string script;
    m_tune.option("BOARD", board, "");
    m_tune.option("SCRIPT", script, "");
    EXPECT_EQ(tune({"radio.toml", "radio.script"}), std::nullopt);
    EXPECT_EQ(board, "radio.toml");
    EXPECT_EQ(script, "radio.script");
}

TEST_F(OptionsTest, WholeNumberGoesToItsOption) {
    int channel = 0;
    std::optional<int> degrees;
    std::optional<std::uint32_t> seed;
    m_tune.option("--channel", channel, "");
    m_tune.option("--degrees", degrees, "");
    m_tune.option("--seed", seed, "");
    EXPECT_EQ(tune({"--channel", "2", "--degrees=-33", "--seed", "4294967295"}), std::nullopt);
    EXPECT_EQ(channel, 2);
    EXPECT_EQ(degrees, -33);
    EXPECT_EQ(seed, 4294967295U);
}

TEST_F(OptionsTest, FractionGoesToItsOption) {
    std::optional<double> factor;
    m_tune.option("--factor", factor, "");
    EXPECT_EQ(tune({"--factor", "0.75"}), std::nullopt);
    EXPECT_EQ(factor, 0.75);
}

TEST_F(OptionsTest, OptionThatIsNotThereLeavesItsValueAlone) {
    int channel = 7;
    std::optional<int> degrees;
    std::vector<std::string> boards;
    m_tune.option("--channel", channel, "");
    m_tune.option("--degrees", degrees, "");
    m_tune.option("BOARD", boards, "");
    EXPECT_EQ(tune({}), std::nullopt);
    EXPECT_EQ(channel, 7);
    EXPECT_EQ(degrees, std::nullopt);
    EXPECT_THAT(boards, IsEmpty());
}

TEST_F(OptionsTest, SeveralArgumentsGoToAList) {
    std::vector<std::string> boards;
    m_tune.option("BOARD", boards, "");
    EXPECT_EQ(tune({"a.toml", "b.toml", "c.toml"}), std::nullopt);
    EXPECT_THAT(boards, ElementsAre("a.toml", "b.toml", "c.toml"));
}

TEST_F(OptionsTest, WordThatIsNoNumberIsRefused) {
    int channel = 0;
    m_tune.option("--channel", channel, "");
    EXPECT_THAT(complaintAbout({"--channel", "two"}),
                AllOf(StartsWith("radioctl: "), HasSubstr("--channel"), HasSubstr("two")));
    EXPECT_THAT(complaintAbout({"--channel", "1.5"}), HasSubstr("1.5"));
    EXPECT_THAT(complaintAbout({"--channel", "2147483648"}), HasSubstr("2147483648"));
}

TEST_F(OptionsTest, OptionWithoutItsValueIsRefused) {
    int channel = 0;
    m_tune.option("--channel", channel, "");
    EXPECT_THAT(complaintAbout({"--channel"}), HasSubstr("--channel"));
}

TEST_F(OptionsTest, FlagIsThereOrNot) {
    bool json = false;
    bool quiet = false;
    m_tune.json(json);
    m_tune.flag("--quiet", quiet, "");
    EXPECT_EQ(tune({"--json"}), std::nullopt);
    EXPECT_TRUE(json);
    EXPECT_FALSE(quiet);
}

// What an option asks for.

TEST_F(OptionsTest, RequiredOptionIsNotLeftOut) {
    std::string board;
    m_tune.option("--board", board, "").required();
    const std::string complaint = complaintAbout({});
    EXPECT_THAT(complaint, AllOf(StartsWith("radioctl: "), HasSubstr("--board")));
    EXPECT_THAT(complaint, HasSubstr("\nRun with --help for more information.\n"));
    EXPECT_EQ(tune({"--board", "radio.toml"}), std::nullopt);
}

TEST_F(OptionsTest, RequiredOptionOfAnotherCommandIsNotMissed) {
    std::string board;
    m_check.option("--board", board, "").required();
    EXPECT_EQ(tune({}), std::nullopt);
}

TEST_F(OptionsTest, NumberIsWithinItsLimits) {
    int channel = 0;
    m_tune.option("--channel", channel, "").within(-1, 10);
    EXPECT_EQ(tune({"--channel=-1"}), std::nullopt);
    EXPECT_EQ(tune({"--channel", "10"}), std::nullopt);
    EXPECT_THAT(complaintAbout({"--channel=-2"}), HasSubstr("-2"));
    EXPECT_THAT(complaintAbout({"--channel", "11"}), HasSubstr("11"));
}

TEST_F(OptionsTest, NumberThatIsNotWholeSaysOfWhatItIs) {
    int time = 0;
    int channel = 0;
    std::vector<std::int32_t> degrees;
    m_tune.option("--settle-time", time, "").within(0, 60000, "ms");
    m_tune.option("--channel", channel, "").within(0, 10);
    m_tune.option("--temperatures", degrees, "").separatedBy(',').within(-100, 200, "degrees");
    EXPECT_THAT(
        complaintAbout({"--settle-time", "12.5"}),
        StartsWith(
            "radioctl: --settle-time: \"12.5\" is no whole number of ms, expected one from 0 to 60000\n"));
    EXPECT_THAT(
        complaintAbout({"--settle-time", "60001"}),
        StartsWith(
            "radioctl: --settle-time: \"60001\" is out of range, expected a whole number of ms from 0 to "
            "60000\n"));
    EXPECT_THAT(complaintAbout({"--channel", "two"}),
                StartsWith("radioctl: --channel: \"two\" is no whole number, expected one from 0 to 10\n"));
    EXPECT_THAT(
        complaintAbout({"--temperatures", "-33,0.5"}),
        StartsWith(
            "radioctl: --temperatures: \"0.5\" is no whole number of degrees, expected one from -100 to "
            "200\n"));
    EXPECT_EQ(tune({"--settle-time", "+12", "--temperatures", "-100,200"}), std::nullopt);
}

TEST_F(OptionsTest, WordIsOneOfThoseThatThereAre) {
    std::string branch;
    m_tune.option("--branch", branch, "").oneOf({"i", "q"});
    EXPECT_EQ(tune({"--branch", "q"}), std::nullopt);
    EXPECT_THAT(complaintAbout({"--branch", "z"}), AllOf(HasSubstr("--branch"), HasSubstr("z")));
    EXPECT_THAT(complaintAbout({"--branch", "I"}), HasSubstr("I"));
}

TEST_F(OptionsTest, CheckSaysWhatIsWrong) {
    std::string carrier;
    m_tune.option("--tx", carrier, "").check([](const std::string& value) {
        return value == "18GHz" ? std::string() : "\"" + value + "\" is too low";
    });
    EXPECT_EQ(tune({"--tx", "18GHz"}), std::nullopt);
    EXPECT_THAT(complaintAbout({"--tx", "1GHz"}), HasSubstr("\"1GHz\" is too low"));
}

TEST_F(OptionsTest, ThereIsExactlyOneOfTheAlternatives) {
    std::string carrier;
    bool all = false;
    Command what = m_tune.alternatives("What", "");
    what.option("--carrier", carrier, "");
    what.flag("--all", all, "");
    EXPECT_EQ(tune({"--carrier", "18GHz"}), std::nullopt);
    EXPECT_EQ(tune({"--all"}), std::nullopt);
    EXPECT_THAT(complaintAbout({}), StartsWith("radioctl: "));
    EXPECT_THAT(complaintAbout({"--all", "--carrier", "18GHz"}), StartsWith("radioctl: "));
}

// More than one value.

TEST_F(OptionsTest, RepeatedOptionTakesOneValueEachTime) {
    std::vector<std::string> carriers;
    std::string board;
    m_tune.option("--tx", carriers, "").repeated();
    m_tune.option("BOARD", board, "");
    EXPECT_EQ(tune({"--tx", "1", "radio.toml", "--tx", "2"}), std::nullopt);
    EXPECT_THAT(carriers, ElementsAre("1", "2"));
    EXPECT_EQ(board, "radio.toml");
}

TEST_F(OptionsTest, WordBehindTheValueOfARepeatedOptionIsNotItsOwn) {
    std::vector<std::string> carriers;
    m_tune.option("--tx", carriers, "").repeated();
    EXPECT_THAT(complaintAbout({"--tx", "1", "2"}), HasSubstr("2"));
}

TEST_F(OptionsTest, ValuesStandInOneWord) {
    std::vector<std::int32_t> spacings;
    m_tune.option("--spacing", spacings, "").separatedBy(',');
    EXPECT_EQ(tune({"--spacing", "125,-250,500"}), std::nullopt);
    EXPECT_THAT(spacings, ElementsAre(125, -250, 500));
}

TEST_F(OptionsTest, EachValueOfAWordIsChecked) {
    std::vector<std::int32_t> spacings;
    m_tune.option("--spacing", spacings, "").separatedBy(',').within(100, 500);
    EXPECT_EQ(tune({"--spacing", "125,500"}), std::nullopt);
    EXPECT_THAT(complaintAbout({"--spacing", "125,501"}), HasSubstr("501"));
}

TEST_F(OptionsTest, AsManyValuesAsAnOptionWants) {
    std::vector<std::int64_t> range;
    std::string board;
    m_tune.option("--range", range, "").values(2);
    m_tune.option("BOARD", board, "");
    EXPECT_EQ(tune({"radio.toml", "--range", "-200", "200"}), std::nullopt);
    EXPECT_THAT(range, ElementsAre(-200, 200));
    EXPECT_EQ(board, "radio.toml");
    EXPECT_THAT(complaintAbout({"--range", "200"}), HasSubstr("--range"));
}

// What was there.

TEST_F(OptionsTest, OptionKnowsWhetherItIsThere) {
    std::string board;
    std::string script;
    const Option boardOption = m_tune.option("BOARD", board, "");
    const Option scriptOption = m_tune.option("SCRIPT", script, "");
    EXPECT_EQ(tune({"radio.toml"}), std::nullopt);
    EXPECT_TRUE(boardOption.isThere());
    EXPECT_FALSE(scriptOption.isThere());
}

TEST_F(OptionsTest, CommandHasTheOptionsThatAreThere) {
    std::string board;
    int channel = 0;
    m_tune.option("BOARD", board, "");
    m_tune.option("-c,--channel", channel, "");
    EXPECT_EQ(tune({"-c", "0"}), std::nullopt);
    EXPECT_TRUE(m_tune.has("--channel"));
    EXPECT_TRUE(m_tune.has("-c"));
    EXPECT_FALSE(m_tune.has("BOARD"));
}

TEST_F(OptionsTest, CommandThatStandsInTheLineIsCalled) {
    EXPECT_EQ(parse({"check"}), std::nullopt);
    EXPECT_TRUE(m_check.isCalled());
    EXPECT_FALSE(m_tune.isCalled());
}

TEST_F(OptionsTest, CommandsBelowACommandAreCalledWithIt) {
    const Command tx = m_tune.command("tx", "");
    const Command rx = m_tune.command("rx", "");
    m_tune.requireCommand();
    EXPECT_EQ(tune({"rx"}), std::nullopt);
    EXPECT_TRUE(m_tune.isCalled());
    EXPECT_TRUE(rx.isCalled());
    EXPECT_FALSE(tx.isCalled());
}

TEST_F(OptionsTest, CommandThatHasToBeThereIsNotLeftOut) {
    m_tune.command("tx", "");
    m_tune.requireCommand();
    EXPECT_THAT(complaintAbout({}), StartsWith("radioctl: "));
}

TEST_F(OptionsTest, OptionsInFrontOfTheFirstCommandAreThoseOfTheProgram) {
    bool ofProgram = false;
    bool ofTune = false;
    m_top.json(ofProgram);
    m_tune.json(ofTune);
    EXPECT_EQ(parse({"--json", "tune"}), std::nullopt);
    EXPECT_TRUE(ofProgram);
    EXPECT_FALSE(ofTune);
}

TEST_F(OptionsTest, OptionsOfTheProgramStayThoseOfItsCommandsBehindThem) {
    bool ofProgram = false;
    bool ofTune = false;
    m_top.json(ofProgram);
    m_tune.json(ofTune);
    EXPECT_EQ(parse({"tune", "--json"}), std::nullopt);
    EXPECT_FALSE(ofProgram);
    EXPECT_TRUE(ofTune);
}

// The line as a whole.

TEST_F(OptionsTest, LineWithoutACommandIsRefusedWithThoseThatThereAre) {
    m_top.command("plan", "");
    EXPECT_EQ(parse({}), false);
    EXPECT_THAT(complaint(), HasSubstr("One of tune, check and plan"));
    EXPECT_EQ(printed(), "");
}

TEST_F(OptionsTest, HelpOfEachCommandEndsInItsOwnWay) {
    m_tune.command("tx", "").command("twice", "");
    endHelpWith([](std::string_view command) { return "The end of <" + std::string(command) + ">"; });
    EXPECT_EQ(parse({"--help"}), true);
    EXPECT_THAT(printed(), HasSubstr("The end of <>"));
    EXPECT_THAT(help(), HasSubstr("The end of <tune>"));
    EXPECT_EQ(parse({"tune", "tx", "twice", "--help"}), true);
    EXPECT_THAT(printed(), HasSubstr("The end of <tune tx twice>"));
}

TEST_F(OptionsTest, UnknownCommandHasTheNearestOne) {
    EXPECT_EQ(parse({"tuen", "--channel", "1"}), false);
    EXPECT_THAT(complaint(),
                StartsWith("radioctl: unknown command \"tuen\" (did you mean \"tune\"?), expected one "
                           "of tune, check\n"));
    EXPECT_EQ(parse({"polish"}), false);
    EXPECT_THAT(complaint(),
                StartsWith("radioctl: unknown command \"polish\", expected one of tune, check\n"));
}

TEST_F(OptionsTest, UnknownCommandBelowACommandHasTheNearestOne) {
    m_tune.command("transmit", "");
    m_tune.command("receive", "");
    m_tune.requireCommand();
    EXPECT_THAT(complaintAbout({"recieve"}),
                StartsWith("radioctl: unknown command \"recieve\" (did you mean "
                           "\"receive\"?), expected one of transmit, receive\n"));
    EXPECT_THAT(complaintAbout({}), StartsWith("radioctl: One of transmit and receive is required\n"));
}

TEST_F(OptionsTest, UnknownOptionHasTheNearestOne) {
    int time = 0;
    std::string carrier;
    std::string board;
    m_tune.option("--settle-time", time, "");
    m_tune.option("BOARD", board, "").required();
    m_tune.alternatives("What", "").option("--carrier", carrier, "");
    // Also while something else is missing.
    EXPECT_THAT(complaintAbout({"--settel-time", "3"}),
                StartsWith("radioctl: unknown option \"--settel-time\" (did you mean \"--settle-time\"?)\n"));
    EXPECT_THAT(complaintAbout({"--carier=18GHz"}),
                StartsWith("radioctl: unknown option \"--carier\" (did you mean \"--carrier\"?)\n"));
    EXPECT_THAT(complaintAbout({"--fast"}), StartsWith("radioctl: unknown option \"--fast\"\n"));
}

TEST_F(OptionsTest, HelpIsGivenWhateverStandsBehindIt) {
    EXPECT_EQ(parse({"--help", "tuen"}), true);
    EXPECT_EQ(parse({"tune", "--help", "--fast"}), true);
}

TEST_F(OptionsTest, WordsThatNobodyWantsAreRefused) {
    EXPECT_EQ(parse({"tunes"}), false);
    EXPECT_THAT(complaint(), HasSubstr("tunes"));
    EXPECT_THAT(complaintAbout({"--fast"}), HasSubstr("--fast"));
    EXPECT_THAT(complaintAbout({"radio.toml"}), HasSubstr("radio.toml"));
}

TEST_F(OptionsTest, HelpIsPrintedAndIsNothingWrong) {
    endHelpWith([](std::string_view) { return "The end."; });
    EXPECT_EQ(parse({"--help"}), true);
    EXPECT_THAT(printed(), AllOf(HasSubstr("Tunes radios."), HasSubstr("Sets a carrier."),
                                 HasSubstr("Looks at a board."), HasSubstr("The end.")));
    EXPECT_EQ(complaint(), "");
}

TEST_F(OptionsTest, HelpAboutACommandSaysWhatItTakes) {
    std::string board;
    m_tune.option("--board", board, "The radio.").named("FILE").required();
    EXPECT_THAT(help(),
                AllOf(HasSubstr("Sets a carrier."), HasSubstr("--board FILE"), HasSubstr("The radio.")));
}

TEST_F(OptionsTest, HelpSaysWhatAnOptionIsWhenItIsNotThere) {
    int channel = 4711;
    int seed = 815;
    m_tune.option("--channel", channel, "").showDefault();
    m_tune.option("--seed", seed, "");
    EXPECT_THAT(help(), AllOf(HasSubstr("4711"), Not(HasSubstr("815"))));
}

TEST_F(OptionsTest, VersionIsPrintedAndIsNothingWrong) {
    EXPECT_EQ(parse({"--version"}), true);
    EXPECT_EQ(printed(), "radioctl 1.2.3\n");
    EXPECT_EQ(complaint(), "");
}

TEST_F(OptionsTest, ArgumentBehindAsManyValuesAsAnOptionWantsIsNotItsOwn) {
    std::vector<std::int64_t> range;
    std::string board;
    m_tune.option("--range", range, "").values(2);
    m_tune.option("BOARD", board, "");
    EXPECT_EQ(tune({"--range", "-200", "200", "radio.toml"}), std::nullopt);
    EXPECT_THAT(range, ElementsAre(-200, 200));
    EXPECT_EQ(board, "radio.toml");
}

TEST_F(OptionsTest, ArgumentBehindValuesInOneWordIsNotTheirs) {
    std::vector<std::int32_t> spacings;
    std::string board;
    m_tune.option("--spacing", spacings, "").separatedBy(',');
    m_tune.option("BOARD", board, "");
    EXPECT_EQ(tune({"--spacing", "125,250", "radio.toml"}), std::nullopt);
    EXPECT_THAT(spacings, ElementsAre(125, 250));
    EXPECT_EQ(board, "radio.toml");
}

// What can stand where somebody is typing.

TEST_F(OptionsTest, CommandsAreOfferedWithWhatTheyDo) {
    EXPECT_EQ(offered({}, ""), "tune: Sets a carrier.\ncheck: Looks at a board.\n");
    EXPECT_EQ(offered({}, "t"), "tune: Sets a carrier.\n");
    EXPECT_EQ(offered({"no-such"}, "t"), "tune: Sets a carrier.\n");
}

TEST_F(OptionsTest, OptionsAreOfferedBehindADashOnlyAndOnce) {
    bool force = false;
    std::vector<std::string> carriers;
    m_tune.flag("-f,--force", force, "Whatever\nthe board says");
    m_tune.option("--carrier", carriers, "").repeated();
    EXPECT_EQ(offered({"tune"}, ""), "");
    EXPECT_EQ(offered({"tune"}, "-"), "--help: Print this help message and exit\n"
                                      "--force: Whatever the board says\n--carrier: \n");
    EXPECT_EQ(offered({"tune", "--force", "--carrier", "1"}, "--"),
              "--help: Print this help message and exit\n--carrier: \n");
    EXPECT_EQ(offered({"tune", "--"}, "--"), "");
    EXPECT_EQ(offered({"check"}, "--f"), "");
}

TEST_F(OptionsTest, OptionsOfAlternativesAreOffered) {
    std::string carrier;
    m_tune.alternatives("Carrier", "").option("--tx", carrier, "To transmit");
    EXPECT_EQ(offered({"tune"}, "--t"), "--tx: To transmit\n");
}

TEST_F(OptionsTest, WordsOfAValueAreOfferedBehindItsNameAndBehindAnEqualsSign) {
    std::string level;
    m_tune.option("--trace", level, "").oneOf({"off", "error", "notice"});
    EXPECT_EQ(offered({"tune", "--trace"}, ""), "off: \nerror: \nnotice: \n");
    EXPECT_EQ(offered({"tune"}, "--trace=n"), "--trace=notice: \n");
    EXPECT_EQ(offered({"tune", "--trace=off"}, "o"), "");
}

TEST_F(OptionsTest, FilesAreOfferedInThePlacesOfTheirArguments) {
    std::string board;
    std::string log;
    std::string page;
    std::vector<std::string> band;
    m_tune.option("BOARD", board, "").file({".toml"});
    m_tune.option("LOG", log, "").file({".csv", ".log"});
    m_tune.option("--html", page, "").file();
    m_tune.option("--band", band, "").values(2);
    EXPECT_EQ(offered({"tune"}, ""), "files .toml\n");
    EXPECT_EQ(offered({"tune", "--band", "7", "8"}, ""), "files .toml\n");
    EXPECT_EQ(offered({"tune", "radio.toml"}, ""), "files .csv .log\n");
    EXPECT_EQ(offered({"tune", "--html"}, "x"), "files\n");
    EXPECT_EQ(offered({"tune"}, "--html="), "files\n");
    EXPECT_EQ(offered({"tune", "--band", "7"}, ""), "");
    EXPECT_EQ(offered({"tune", "radio.toml", "day.csv"}, ""), "");
}

TEST_F(OptionsTest, LastArgumentThatMayBeThereAgainIsOfferedAgain) {
    std::vector<std::string> boards;
    m_check.option("BOARD", boards, "").file({".toml"});
    EXPECT_EQ(offered({"check", "a.toml", "b.toml"}, ""), "files .toml\n");
}

} // namespace
} // namespace Radio::CommandLine
