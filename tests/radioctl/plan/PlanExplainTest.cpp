#include "radio/board/PlatformWords.h"
#include "radioctl/plan/ExplanationReport.h"
#include "tests/radio/support/PlanBoards.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <string>
#include <vector>

namespace Radio::Plan {
namespace {

using ::FrequencyHandler;
using Standalone::Operation;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/** Boots a board, tunes one carrier and keeps how it is explained. */
class PlanExplainTest : public testing::Test {
protected:
    using Lines = std::vector<std::string>;
    using Doctoring = std::function<void(Standalone::Platform&)>;

    /** `doctor` may change the platform between the start-up and the tuning. */
    void explain(const Board& board, Direction direction, std::uint32_t carrier,
                 const Doctoring& doctor = {}) {
        BootedRadio booted(board);
        ASSERT_TRUE(booted.isUp());
        if (doctor) {
            doctor(booted.radio().platform());
        }
        const Explanation explanation =
            Plan::explain(booted, board, board.channels.front(), direction, carrier);
        std::ostringstream text;
        writeText(text, board, explanation);
        m_text = text.str();
        std::ostringstream json;
        writeJson(json, board, explanation);
        m_json = json.str();
        m_explanation = explanation;
    }
    void explain(FrequencyHandler::FrequencyHandlerType type, Direction direction, std::uint32_t carrier) {
        explain(PlanBoards::microwave(type), direction, carrier);
    }

    Lines steps() const { return told(m_explanation->steps); }
    Lines production() const { return told(m_explanation->production); }
    Lines writes() const {
        Lines lines;
        for (const ExplainedWrite& write : m_explanation->writes) {
            lines.push_back(write.driver + " <- " + std::to_string(write.value));
        }
        return lines;
    }

    std::string m_text;
    std::string m_json;
    std::optional<Explanation> m_explanation;

private:
    static Lines told(const std::vector<ExplainedStep>& steps) {
        Lines lines;
        for (const ExplainedStep& step : steps) {
            lines.push_back(step.name + " = " + step.formula + " = " + std::to_string(step.value) + " " +
                            step.unit);
        }
        return lines;
    }
};

TEST_F(PlanExplainTest, WorkedExample) {
    explain(FrequencyHandler::MicrowaveBoardIf, Direction::rx, 18'000'250);
    EXPECT_EQ(m_text, R"(Test radio (board.toml)
  rx 1, microwave-if: 18000250 kHz

Parameters
  channel.1.rx.mixer.multiplicationfactor       2
      the mixer's LO is so many times the RF PLL
  channel.1.rx.rf.spectruminverted              0
      RF sideband -1: the LO lies below the carrier
  channel.1.rx.baseband.spectruminverted        1  IF sideband +1
  channel.1.rx.if.frequency                140000  intermediate frequency, kHz
  RxIfBb                                        0
      baseband offset inside the IF, MHz

Steps
  LO           |18000250 - 140000|                                17860250  kHz
  step         (17860250 + 500) / 1000                               17860  MHz
  residue      17860250 - 17860000                                     250  kHz
  IF PLL       |140000 + 0 + 250|                                   140250  kHz
  RF PLL       17860 x 1000 / 2                                    8930000  kHz
  cell         at 17000000 kHz, weight 999750/2000000                    0
  cell         at 19000000 kHz, weight 1000250/2000000                 200
  charge pump  at 18000250 kHz: (0 x 999750 +
               200 x 1000250)/2000000                                  100
      Channel.1.Rx.Rf.Pll.Frequency.To.Chargepump.Setting

Words written, in this order
  1  channel.1.rx.if.frequency <- 140250
  2  channel.1.rx.rf.lo.frequency <- 8930000
  3  channel.1.rx.rf.pll.config <- 100

What the words produce
  LO       RF PLL 8930000 kHz x 2   17860000000  Hz
  IF       IF PLL 140250 kHz          140250000  Hz
  carrier  17860000000 + 140250000  18000250000  Hz

These words produce 18000250000 Hz, exactly the carrier.
The library wrote what the steps say.
)");
    EXPECT_TRUE(m_explanation->isGood());
}

TEST_F(PlanExplainTest, TransmitterHasItsMixerCorrectedToo) {
    explain(FrequencyHandler::MicrowaveBoardIf, Direction::tx, 18'000'250);
    EXPECT_THAT(writes(),
                ElementsAre("channel.1.tx.if.frequency <- 140250", "channel.1.tx.rf.lo.frequency <- 8930000",
                            "channel.1.tx.rf.pll.config <- 100", "channel.1.tx.rf.mixer.i <- 7",
                            "channel.1.tx.rf.mixer.q <- -7"));
}

TEST_F(PlanExplainTest, TransmitterSaysForWhichTemperatureItsMixerIsCorrected) {
    explain(FrequencyHandler::MicrowaveBoardIf, Direction::tx, 18'000'250);
    EXPECT_THAT(m_text, HasSubstr("  5  channel.1.tx.rf.mixer.q <- -7\n\n"
                                  "The mixer's corrections are for 0 degrees: no temperature was told.\n"));
    EXPECT_THAT(m_json, HasSubstr(R"("passed_on":false,"assumed_degrees":0})"));
    explain(FrequencyHandler::MicrowaveBoardIf, Direction::rx, 18'000'250);
    EXPECT_THAT(m_text, Not(HasSubstr("degrees")));
}

TEST_F(PlanExplainTest, BasebandOffsetIsPutInAndTakenOutAgain) {
    Board board = PlanBoards::microwave(FrequencyHandler::MicrowaveBoardIf);
    PlanBoards::set(board, "RxIfBb", {30});
    PlanBoards::set(board, "channel.1.rx.baseband.spectruminverted", {0});
    explain(board, Direction::rx, 18'000'250);
    EXPECT_THAT(steps(), testing::Contains("IF PLL = |140000 - 30000 + 250| = 110250 kHz"));
    EXPECT_THAT(production(), testing::Contains("IF = IF PLL 110250 kHz + 30 MHz = 140250000 Hz"));
    EXPECT_EQ(m_explanation->error(), 0);
}

TEST_F(PlanExplainTest, MissingBasebandSidebandIsThatOfTheRf) {
    Board board = PlanBoards::microwave(FrequencyHandler::MicrowaveBoardIf);
    PlanBoards::set(board, "channel.1.rx.rf.spectruminverted", {1});
    PlanBoards::remove(board, "channel.1.rx.baseband.spectruminverted");
    explain(board, Direction::rx, 18'000'250);
    EXPECT_THAT(m_text, HasSubstr("channel.1.rx.baseband.spectruminverted   missing  IF sideband +1\n"));
    EXPECT_THAT(writes(),
                ElementsAre("channel.1.rx.if.frequency <- 139750", "channel.1.rx.rf.lo.frequency <- 9070000",
                            "channel.1.rx.rf.pll.config <- 100"));
    EXPECT_EQ(m_explanation->error(), 0);
}

TEST_F(PlanExplainTest, ResidueIsLostWithoutAnIfSynthesiser) {
    explain(FrequencyHandler::MicrowaveBoardDspOffset, Direction::tx, 18'000'250);
    EXPECT_THAT(m_text, HasSubstr("lost: there is no IF synthesiser to take it up\n"));
    EXPECT_THAT(m_text, HasSubstr("These words produce 18000000000 Hz, off by -250000 Hz.\n"));
    EXPECT_TRUE(m_explanation->isGood());
}

TEST_F(PlanExplainTest, DspShiftsBackByHalfTheSpacing) {
    explain(FrequencyHandler::MicrowaveBoardDspOffset, Direction::rx, 18'000'000);
    EXPECT_THAT(steps(),
                ElementsAre("DSP half spacing = spacing 100 = 50000 kHz",
                            "carrier for the LO = 18000000 - 50000 = 17950000 kHz",
                            "LO = |17950000| = 17950000 kHz", "step = (17950000 + 500) / 1000 = 17950 MHz",
                            "residue = 17950000 - 17950000 = 0 kHz",
                            "RF PLL = 17950 x 1000 / 2 = 8975000 kHz",
                            "cell = at 17000000 kHz, weight 1000000/2000000 = 0 ",
                            "cell = at 19000000 kHz, weight 1000000/2000000 = 200 ",
                            "charge pump = at 18000000 kHz: (0 x 1000000 + 200 x 1000000)/2000000 "
                            "= 100 "));
    EXPECT_THAT(writes(),
                ElementsAre("channel.1.dsp.rx.freq.offset <- 50000",
                            "channel.1.rx.rf.lo.frequency <- 8975000", "channel.1.rx.rf.pll.config <- 100"));
    EXPECT_THAT(production(), ElementsAre("LO = RF PLL 8975000 kHz x 2 = 17950000000 Hz",
                                          "DSP shift = 50000 kHz = 50000000 Hz",
                                          "carrier = 17950000000 + 50000000 = 18000000000 Hz"));
}

TEST_F(PlanExplainTest, UnhandledChannelSpacingWritesNothing) {
    Board board = PlanBoards::microwave(FrequencyHandler::MicrowaveBoardDspOffset);
    PlanBoards::set(board, "ChannelSpacing", {500});
    explain(board, Direction::rx, 18'000'000);
    EXPECT_THAT(m_text,
                HasSubstr("not one of 50, 100, 150, 200, 250, 300, 350, 400, 450 and 600: nothing is\n"
                          "      written\n\nWords written, in this order\n  none\n\n"
                          "The library reports: Unhandled channelspacetype 500\n"
                          "No carrier comes of these words.\n"
                          "The library wrote what the steps say.\n"));
    EXPECT_FALSE(m_explanation->isGood());
}

TEST_F(PlanExplainTest, OffsetOfAnArrayEntry) {
    explain(FrequencyHandler::MicrowaveBoardHzCsOffset, Direction::rx, 18'000'250);
    EXPECT_THAT(m_text, HasSubstr("  channel-spacing offset  spacing 100 "));
    EXPECT_THAT(m_text, HasSubstr("array entry (100, -4000), with the sign of the RF sideband\n"));
    EXPECT_THAT(writes(), ElementsAre("channel.1.dsp.rx.freq.offset <- 4000",
                                      "channel.1.rx.rf.lo.frequency.in.hz <- 8998125000",
                                      "channel.1.rx.rf.pll.config <- 100"));
    EXPECT_EQ(m_explanation->error(), 0);
    EXPECT_THAT(m_explanation->disagreements, IsEmpty());
}

TEST_F(PlanExplainTest, HalfTheSpacingThatStandsInForAnEntry) {
    Board board = PlanBoards::microwave(FrequencyHandler::MicrowaveBoardHzCsOffset);
    PlanBoards::set(board, "ChannelSpacing", {250});
    PlanBoards::set(board, "HwCodeDsp", {3});
    explain(board, Direction::rx, 18'000'250);
    EXPECT_THAT(m_text, HasSubstr("no array entry for 250; HwCodeDsp 3 has half the spacing stand in\n"));
    EXPECT_THAT(writes(), ElementsAre("channel.1.dsp.rx.freq.offset <- 125000",
                                      "channel.1.rx.rf.lo.frequency.in.hz <- 8937625000",
                                      "channel.1.rx.rf.pll.config <- 88"));
    EXPECT_EQ(m_explanation->error(), 0);
}

TEST_F(PlanExplainTest, DefaultOffsetMovesTheLoButNotTheDsp) {
    Board board = PlanBoards::microwave(FrequencyHandler::MicrowaveBoardHzCsOffset);
    PlanBoards::set(board, "ChannelSpacing", {28000});
    explain(board, Direction::rx, 18'000'250);
    EXPECT_THAT(m_text, HasSubstr("no array entry for 28000, and half the spacing does not stand in: the\n"
                                  "      default\n"));
    EXPECT_THAT(m_text, HasSubstr("off by +3000000 Hz: the array has no entry\n"
                                  "    for channel spacing 28000, and by default the LO moves by +3 MHz.\n"));
    EXPECT_THAT(m_json, HasSubstr(R"("why_off":"the array has no entry for channel spacing 28000, and by )"
                                  R"(default the LO moves by +3 MHz"})"));
    EXPECT_THAT(m_text, HasSubstr("3000 is the one offset for which the DSP is told 0\n"));
    EXPECT_THAT(writes(), ElementsAre("channel.1.dsp.rx.freq.offset <- 0",
                                      "channel.1.rx.rf.lo.frequency.in.hz <- 9001625000",
                                      "channel.1.rx.rf.pll.config <- 100"));
    EXPECT_EQ(m_explanation->error(), 3'000'000);
}

TEST_F(PlanExplainTest, LoInHzIsTheCarrier) {
    explain(FrequencyHandler::MicrowaveBoardHz, Direction::rx, 18'000'251);
    EXPECT_THAT(writes(), ElementsAre("channel.1.rx.rf.lo.frequency.in.hz <- 9000125500",
                                      "channel.1.rx.rf.pll.config <- 100"));
    EXPECT_EQ(m_explanation->error(), 0);
}

TEST_F(PlanExplainTest, WhatTheFactorDoesNotDivideIsMissingInTheCarrier) {
    Board board = PlanBoards::microwave(FrequencyHandler::MicrowaveBoardHz);
    PlanBoards::set(board, "channel.1.rx.mixer.multiplicationfactor", {3});
    explain(board, Direction::rx, 18'000'001);
    EXPECT_THAT(writes(), testing::Contains("channel.1.rx.rf.lo.frequency.in.hz <- 6000000333"));
    EXPECT_THAT(m_text, HasSubstr("the remainder 1 Hz of the LO is cut off\n"));
    EXPECT_EQ(m_explanation->error(), -1);
}

TEST_F(PlanExplainTest, FoldedLoHasTheWordsOfAnotherCarrier) {
    explain(FrequencyHandler::MicrowaveBoardIf, Direction::rx, 100'000);
    EXPECT_THAT(m_text, HasSubstr("  LO           |100000 - 140000| "));
    EXPECT_THAT(m_text, HasSubstr("folded: the same words belong to the carrier 180000 kHz\n"));
    EXPECT_EQ(m_explanation->produced, 180'000'000);
}

TEST_F(PlanExplainTest, SumsWrapAroundAt32Bits) {
    Board board = PlanBoards::microwave(FrequencyHandler::MicrowaveBoardIf);
    PlanBoards::set(board, "channel.1.rx.rf.spectruminverted", {1});
    explain(board, Direction::rx, 4'294'967'295);
    EXPECT_THAT(m_text, HasSubstr("wraps around at 32 bits\n"));
    EXPECT_THAT(m_explanation->disagreements, IsEmpty());
}

TEST_F(PlanExplainTest, ChargePumpOutsideItsTableIsClamped) {
    explain(FrequencyHandler::MicrowaveBoardIf, Direction::rx, 19'500'000);
    EXPECT_THAT(m_text, HasSubstr("  cell         at 19000000 kHz, weight 1/1 "));
    EXPECT_THAT(m_text, HasSubstr(".Chargepump.Setting: outside its axis,\n"
                                  "      clamped to the end\n"));
    EXPECT_THAT(writes(), testing::Contains("channel.1.rx.rf.pll.config <- 200"));
}

TEST_F(PlanExplainTest, ChargePumpWithoutATableIs0) {
    Board board = PlanBoards::microwave(FrequencyHandler::MicrowaveBoardIf);
    PlanBoards::remove(board, "Channel.1.Rx.Rf.Pll.Frequency.To.Chargepump.Setting");
    explain(board, Direction::rx, 18'000'000);
    EXPECT_THAT(m_text, HasSubstr("no table with one axis: 0 is written\n"));
    EXPECT_THAT(m_explanation->disagreements, IsEmpty());
}

TEST_F(PlanExplainTest, ChannelWithoutATableTakesTheOneThatStandsIn) {
    Board board = PlanBoards::microwave(FrequencyHandler::MicrowaveBoardIf);
    PlanBoards::remove(board, "Channel.1.Rx.Rf.Pll.Frequency.To.Chargepump.Setting");
    board.tables.push_back({{"Channel.1.Rx.Rf.Pll.Frequency.To.Chargepump.Setting.Pdb", {0}, {}, {55}}, {}});
    explain(board, Direction::rx, 18'000'000);
    EXPECT_THAT(m_text, HasSubstr("  Channel.1.Rx.Rf.Pll.Frequency.To.Chargepump.Setting.Pdb: outside"));
    EXPECT_THAT(writes(), testing::Contains("channel.1.rx.rf.pll.config <- 55"));
}

TEST_F(PlanExplainTest, BoardWithAnLoConfigurationHasNoChargePump) {
    Board board = PlanBoards::microwave(FrequencyHandler::MicrowaveBoardIf);
    PlanBoards::addDrivers(board, {"rx.rf.lo.config"});
    explain(board, Direction::rx, 18'000'250);
    EXPECT_THAT(m_text, Not(HasSubstr("charge pump")));
    EXPECT_THAT(writes(), ElementsAre("channel.1.rx.if.frequency <- 140250",
                                      "channel.1.rx.rf.lo.frequency <- 8930000"));
    EXPECT_TRUE(m_explanation->isGood());
}

TEST_F(PlanExplainTest, FailedWriteIsShownAndEndsTheWords) {
    explain(
        PlanBoards::microwave(FrequencyHandler::MicrowaveBoardIf), Direction::rx, 18'000'250,
        [](Standalone::Platform& platform) {
            platform.calls().inject({Operation::driverWrite, "channel.1.rx.rf.lo.frequency", 0x8001, {}, {}});
        });
    EXPECT_THAT(m_text, HasSubstr("  1  channel.1.rx.if.frequency <- 140250\n"
                                  "  -  channel.1.rx.rf.lo.frequency <- 8930000  FAILED 0x8001\n\n"
                                  "The library reports: Write to driver failed for "
                                  "channel.1.Rx.rf.lo.frequency\n    (EDriverResult = 0x8001)\n"
                                  "No carrier comes of these words.\n"
                                  "DIFFERENT channel.1.rx.rf.lo.frequency: the steps give 8930000, the "
                                  "library\n    wrote nothing\n"));
    EXPECT_FALSE(m_explanation->isGood());
}

TEST_F(PlanExplainTest, WordThatIsNotWhatTheStepsSayIsNamed) {
    explain(PlanBoards::microwave(FrequencyHandler::MicrowaveBoardIf), Direction::rx, 18'000'250,
            [](Standalone::Platform& platform) {
                platform.calls().inject({Operation::tableLinear, "", 0x8003, {}, 42});
            });
    EXPECT_THAT(m_explanation->disagreements,
                ElementsAre("channel.1.rx.rf.pll.config: the steps give 100, the library wrote 42"));
    EXPECT_FALSE(m_explanation->isGood());
}

TEST_F(PlanExplainTest, RfModulePassesTheCarrierOn) {
    explain(PlanBoards::rfModule(), Direction::tx, 7'442'500);
    EXPECT_EQ(m_text, "Test radio (board.toml)\n"
                      "  tx 1, rf-module: 7442500 kHz\n\n"
                      "The carrier is passed on unchanged; its plan is made elsewhere.\n\n"
                      "Words written, in this order\n"
                      "  1  channel.1.tx.rf.frequency <- 7442500\n\n"
                      "These words produce 7442500000 Hz, exactly the carrier.\n"
                      "The library wrote what the steps say.\n");
}

TEST_F(PlanExplainTest, RemoteRadioUnitIsPassedTheCarrier) {
    explain(PlanBoards::rau(), Direction::rx, 17'728'750);
    EXPECT_THAT(m_text, HasSubstr("The carrier is passed on unchanged; its plan is made elsewhere.\n"));
    EXPECT_THAT(writes(), ElementsAre("IRauHandler_1.rx <- 17728750"));
    EXPECT_EQ(m_explanation->error(), 0);
}

TEST_F(PlanExplainTest, JsonHasOneEventForEachLine) {
    explain(FrequencyHandler::MicrowaveBoardHz, Direction::rx, 18'000'000);
    EXPECT_EQ(
        m_json,
        R"({"schema":1,"event":"carrier","file":"board.toml","channel":1,"type":"microwave-hz","direction":"rx",)"
        R"("khz":18000000,"passed_on":false,"assumed_degrees":null}
{"schema":1,"event":"parameter","variable":"channel.1.rx.mixer.multiplicationfactor","values":[2],)"
        R"("meaning":"the mixer's LO is so many times the RF PLL"}
{"schema":1,"event":"parameter","variable":"channel.1.rx.rf.spectruminverted","values":[0],)"
        R"("meaning":"RF sideband -1: the LO lies below the carrier"}
{"schema":1,"event":"parameter","variable":"channel.1.rx.baseband.spectruminverted","values":[1],)"
        R"("meaning":"IF sideband +1"}
{"schema":1,"event":"parameter","variable":"RxIfBb","values":[0],)"
        R"("meaning":"baseband offset, MHz: not used without an IF synthesiser"}
{"schema":1,"event":"step","name":"RF PLL","formula":"18000000 x 1000 / 2","value":9000000000,"unit":"Hz"}
{"schema":1,"event":"step","name":"cell","formula":"at 17000000 kHz, weight 1000000/2000000","value":0,"unit":""}
{"schema":1,"event":"step","name":"cell","formula":"at 19000000 kHz, weight 1000000/2000000","value":200,"unit":""}
{"schema":1,"event":"step","name":"charge pump","formula":"at 18000000 kHz: (0 x 1000000 + 200 x 1000000)/2000000",)"
        R"("value":100,"unit":"","note":"Channel.1.Rx.Rf.Pll.Frequency.To.Chargepump.Setting"}
{"schema":1,"event":"word","driver":"channel.1.rx.rf.lo.frequency.in.hz","value":9000000000,"code":0,"ok":true}
{"schema":1,"event":"word","driver":"channel.1.rx.rf.pll.config","value":100,"code":0,"ok":true}
{"schema":1,"event":"production","name":"LO","formula":"RF PLL 9000000000 Hz x 2","value":18000000000,"unit":"Hz"}
{"schema":1,"event":"production","name":"carrier","formula":"18000000000","value":18000000000,"unit":"Hz"}
{"schema":1,"event":"explained","produced_hz":18000000000,"error_hz":0,"complaints":[],"disagreements":[],"ok":true}
)");
}

} // namespace
} // namespace Radio::Plan
