#include "radio/board/BoardCheck.h"

#include "radio/board/BoardDemand.h"
#include "radio/board/BoardFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace Radio {
namespace {

using ::FrequencyHandler;
using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;

using Lines = std::vector<std::string>;

/**
 * A board that a test puts together. What it adds gets the lines 1, 2, 3 and so on, and findings come as
 * "board.toml:3: error: what is wrong".
 */
class BoardCheckTest : public testing::Test {
protected:
    void channel(int number, FrequencyHandler::FrequencyHandlerType type) {
        board.channels.push_back({number, type, nextPlace()});
    }
    void driver(const std::string& name, unsigned missingWords = 0) {
        board.drivers.push_back({name, missingWords, 0, nextPlace()});
    }
    void variable(const std::string& name, std::int32_t value) {
        board.variables.push_back({name, {value}, false, nextPlace()});
    }
    void array(const std::string& name, const std::vector<std::int32_t>& values) {
        board.variables.push_back({name, values, true, nextPlace()});
    }
    void tableWithOneAxis(const std::string& name) {
        board.tables.push_back({{name, {0}, {}, {0}}, nextPlace()});
    }
    void tableWithTwoAxes(const std::string& name) {
        board.tables.push_back({{name, {0}, {0}, {0}}, nextPlace()});
    }
    void interface(const std::string& name, Standalone::Presence presence) {
        board.interfaces.push_back({name, presence, nextPlace()});
    }

    /** Channel 1 as an RF module on line 1, its drivers on lines 2 and 3. */
    void rfModule() {
        channel(1, FrequencyHandler::RfModule);
        driver("channel.1.tx.rf.frequency");
        driver("channel.1.rx.rf.frequency");
    }

    /** Channel 1 as a microwave board of the plainest kind, with nothing missing. */
    void
    microwaveBoard(FrequencyHandler::FrequencyHandlerType type = FrequencyHandler::MicrowaveBoardDspOffset) {
        channel(1, type);
        for (const std::string direction : {"tx", "rx"}) {
            const std::string prefix = "channel.1." + direction + ".";
            driver(prefix + "rf.lo.frequency");
            driver(prefix + "rf.pll.config");
            variable(prefix + "mixer.multiplicationfactor", 2);
            variable(prefix + "rf.spectruminverted", 0);
            variable(prefix + "baseband.spectruminverted", 1);
        }
        for (const std::string direction : {"Tx", "Rx"}) {
            variable(direction + "IfBb", 0);
            tableWithOneAxis("Channel.1." + direction + ".Rf.Pll.Frequency.To.Chargepump.Setting");
        }
        for (const std::string name : {"mixer.i", "mixer.q", "detector.v"}) {
            driver("channel.1.tx.rf." + name);
        }
        for (const std::string branch : {"I", "Q"}) {
            tableWithTwoAxes("Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer." + branch);
        }
        if (type == FrequencyHandler::MicrowaveBoardDspOffset) {
            driver("channel.1.dsp.rx.freq.offset");
            variable("ChannelSpacing", 250);
        }
    }
    void microwaveBoardWithIf() {
        microwaveBoard(FrequencyHandler::MicrowaveBoardIf);
        for (const std::string direction : {"tx", "rx"}) {
            driver("channel.1." + direction + ".if.frequency");
            variable("channel.1." + direction + ".if.frequency", 140000);
        }
    }
    void
    microwaveBoardWithHz(FrequencyHandler::FrequencyHandlerType type = FrequencyHandler::MicrowaveBoardHz) {
        microwaveBoard(type);
        driver("channel.1.tx.rf.lo.frequency.in.hz");
        driver("channel.1.rx.rf.lo.frequency.in.hz");
    }
    void microwaveBoardWithOffsetArray() {
        microwaveBoardWithHz(FrequencyHandler::MicrowaveBoardHzCsOffset);
        driver("channel.1.dsp.rx.freq.offset");
        variable("ChannelSpacing", 250);
        variable("HwCodeDsp", 3);
        variable("channel.1.rx.rf.frequency.cs.offset.arraysize", 4);
        array("channel.1.rx.rf.frequency.cs.offset.array", {250, 125000, 500, 250000});
    }

    /** Gives the channel that was added last an IQ compensation with nothing missing. */
    void iqCompensation() {
        ChannelDescription& channel = board.channels.back();
        channel.iqCompensation = true;
        const std::string number = std::to_string(channel.number);
        for (const std::string name :
             {"dc.compensation.i", "dc.compensation.q", "quadrature.gain.offset.compensation",
              "quadrature.phase.offset.compensation"}) {
            driver("channel." + number + ".dsp.tx." + name);
        }
        for (const std::string quantity : {"Dc.I", "Dc.Q", "Gain.Offset", "Phase.Offset"}) {
            tableWithOneAxis("Channel." + number + ".Tx.Dsp.Temperature.To." + quantity + ".Compensation");
        }
    }

    void removeDriver(const std::string& name) {
        remove(board.drivers, [&](const DriverDescription& entry) { return entry.name == name; });
    }
    void removeVariable(const std::string& name) {
        remove(board.variables, [&](const VariableDescription& entry) { return entry.name == name; });
    }
    void removeTable(const std::string& name) {
        remove(board.tables, [&](const TableDescription& entry) { return entry.table.name == name; });
    }

    Lines findings() const {
        Lines lines;
        for (const Finding& finding : checkBoard(board)) {
            lines.push_back(toString(finding.place) + ": " + std::string(toString(finding.severity)) + ": " +
                            finding.text);
        }
        return lines;
    }
    /** The findings without their places. */
    Lines texts() const {
        Lines lines;
        for (const Finding& finding : checkBoard(board)) {
            lines.push_back(std::string(toString(finding.severity)) + ": " + finding.text);
        }
        return lines;
    }

    Board board;

private:
    template <typename Entry, typename Predicate>
    static void remove(std::vector<Entry>& entries, Predicate predicate) {
        const auto kept = std::remove_if(entries.begin(), entries.end(), predicate);
        ASSERT_EQ(std::distance(kept, entries.end()), 1);
        entries.erase(kept, entries.end());
    }
    Place nextPlace() { return {"board.toml", ++m_line}; }

    unsigned m_line = 0;
};

TEST_F(BoardCheckTest, HealthyBoardOfEveryTypeGivesNoFinding) {
    const std::vector<std::function<void()>> builders = {
        [&] { rfModule(); },
        [&] { microwaveBoard(); },
        [&] { microwaveBoardWithIf(); },
        [&] { microwaveBoardWithHz(); },
        [&] { microwaveBoardWithOffsetArray(); },
        [&] {
            channel(0, FrequencyHandler::Rau);
            interface("IRauHandler", Standalone::Presence::present);
        },
    };
    for (const auto& build : builders) {
        board = {};
        build();
        EXPECT_THAT(findings(), IsEmpty()) << toString(board.channels[0].type);
    }
}

TEST_F(BoardCheckTest, SuppliedBoardsGiveNoFinding) {
    std::size_t boards = 0;
    for (const auto& entry : std::filesystem::directory_iterator(RADIO_BOARDS)) {
        if (entry.path().extension() == ".toml") {
            ++boards;
            board = loadBoard(entry.path());
            EXPECT_THAT(findings(), IsEmpty()) << entry.path();
        }
    }
    EXPECT_GE(boards, 2U);
}

// What is missing.

TEST_F(BoardCheckTest, MissingRequiredDriverIsAnError) {
    rfModule();
    removeDriver("channel.1.rx.rf.frequency");
    EXPECT_THAT(findings(), ElementsAre("board.toml:1: error: driver \"channel.1.rx.rf.frequency\" is "
                                        "missing; channel 1 (rf-module) cannot start without it"));
}

TEST_F(BoardCheckTest, AbsentDriverLayerIsAnErrorOnceForAllChannels) {
    rfModule();
    channel(7, FrequencyHandler::RfModule);
    driver("channel.7.tx.rf.frequency");
    driver("channel.7.rx.rf.frequency");
    interface("IDriverLayer", Standalone::Presence::absent);
    EXPECT_THAT(findings(), ElementsAre("board.toml:7: error: interface \"IDriverLayer\" is absent; channel "
                                        "1 (rf-module) and 1 more cannot start without it"));
}

TEST_F(BoardCheckTest, AbsentTemperatureHandlerIsNoFinding) {
    rfModule();
    interface("ITemperatureHandler", Standalone::Presence::absent);
    EXPECT_THAT(findings(), IsEmpty());
}

TEST_F(BoardCheckTest, MissingRauIsAnError) {
    channel(2, FrequencyHandler::Rau);
    EXPECT_THAT(findings(), ElementsAre("board.toml:1: error: interface \"IRauHandler_2\" is missing; "
                                        "channel 2 (rau) cannot start without it"));
}

TEST_F(BoardCheckTest, RauThatIsNotPresentIsAnError) {
    channel(2, FrequencyHandler::Rau);
    interface("IRauHandler_2", Standalone::Presence::foreign);
    EXPECT_THAT(findings(), ElementsAre("board.toml:2: error: interface \"IRauHandler_2\" is foreign; "
                                        "channel 2 (rau) cannot start without it"));
}

TEST_F(BoardCheckTest, DriverWithoutANeededWordIsAnError) {
    channel(1, FrequencyHandler::RfModule);
    driver("channel.1.tx.rf.frequency", Standalone::wordWrite | Standalone::wordRead);
    driver("channel.1.rx.rf.frequency", Standalone::wordWriteBuffer | Standalone::wordRead);
    EXPECT_THAT(findings(), ElementsAre("board.toml:2: error: driver \"channel.1.tx.rf.frequency\" is "
                                        "without write; channel 1 (rf-module) cannot start without it"));
}

TEST_F(BoardCheckTest, LoInHzNeedsWriteBufferButNotWrite) {
    microwaveBoardWithHz();
    removeDriver("channel.1.tx.rf.lo.frequency.in.hz");
    removeDriver("channel.1.rx.rf.lo.frequency.in.hz");
    driver("channel.1.tx.rf.lo.frequency.in.hz", Standalone::wordWrite);
    driver("channel.1.rx.rf.lo.frequency.in.hz", Standalone::wordWriteBuffer);
    EXPECT_THAT(texts(), ElementsAre("error: driver \"channel.1.rx.rf.lo.frequency.in.hz\" is without "
                                     "write-buffer; channel 1 (microwave-hz) cannot start without it"));
}

TEST_F(BoardCheckTest, MissingRequiredVariableIsAnError) {
    microwaveBoard();
    removeVariable("TxIfBb");
    EXPECT_THAT(findings(), ElementsAre("board.toml:1: error: variable \"TxIfBb\" is missing; channel 1 "
                                        "(microwave-dsp-offset) cannot start without it"));
}

TEST_F(BoardCheckTest, MissingSidebandIsAWarning) {
    microwaveBoard();
    removeVariable("channel.1.rx.baseband.spectruminverted");
    EXPECT_THAT(
        findings(),
        ElementsAre("board.toml:1: warning: variable \"channel.1.rx.baseband.spectruminverted\" is missing; "
                    "channel 1 (microwave-dsp-offset) can start without it, but will report errors"));
}

TEST_F(BoardCheckTest, MissingCancellationTableIsAWarning) {
    microwaveBoard();
    removeTable("Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.Q");
    EXPECT_THAT(
        findings(),
        ElementsAre(
            "board.toml:1: warning: table \"Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.Q\" "
            "or \"Channel.1.Tx.Bb.Frequency.To.Coarse.Dc.Q.Compensation\" is missing; channel 1 "
            "(microwave-dsp-offset) can start without it, but will report errors"));
}

TEST_F(BoardCheckTest, IfFrequencyIsRequiredOnlyWithAnIfSynthesiser) {
    microwaveBoardWithIf();
    removeDriver("channel.1.tx.if.frequency");
    removeVariable("channel.1.tx.if.frequency");
    EXPECT_THAT(findings(), ElementsAre("board.toml:1: error: driver \"channel.1.tx.if.frequency\" is "
                                        "missing; channel 1 (microwave-if) cannot start without it",
                                        "board.toml:1: error: variable \"channel.1.tx.if.frequency\" is "
                                        "missing; channel 1 (microwave-if) cannot start without it"));
}

TEST_F(BoardCheckTest, DriverThatIsLookedUpWithoutNeedIsNoFinding) {
    microwaveBoardWithHz();
    driver("channel.1.tx.if.frequency", Standalone::wordWrite);
    EXPECT_THAT(findings(), IsEmpty());
}

TEST_F(BoardCheckTest, OnlyReceiversWithDspOffsetAskForItsDriverAndTheSpacing) {
    microwaveBoard();
    removeDriver("channel.1.dsp.rx.freq.offset");
    removeVariable("ChannelSpacing");
    EXPECT_THAT(findings(), ElementsAre("board.toml:1: error: driver \"channel.1.dsp.rx.freq.offset\" is "
                                        "missing; channel 1 (microwave-dsp-offset) cannot start without it",
                                        "board.toml:1: error: variable \"ChannelSpacing\" is missing; "
                                        "channel 1 (microwave-dsp-offset) cannot start without it"));
}

TEST_F(BoardCheckTest, ReceiverWithOffsetArrayAsksForItsThreeVariables) {
    microwaveBoardWithOffsetArray();
    removeVariable("HwCodeDsp");
    removeVariable("channel.1.rx.rf.frequency.cs.offset.arraysize");
    removeVariable("channel.1.rx.rf.frequency.cs.offset.array");
    const std::string rest = " is missing; channel 1 (microwave-hz-cs-offset) cannot start without it";
    EXPECT_THAT(texts(),
                ElementsAre("error: variable \"HwCodeDsp\"" + rest,
                            "error: variable \"channel.1.rx.rf.frequency.cs.offset.arraysize\"" + rest,
                            "error: variable \"channel.1.rx.rf.frequency.cs.offset.array\"" + rest));
}

// Alternatives.

TEST_F(BoardCheckTest, CoarseDcDriversStandInForTheMixerDrivers) {
    microwaveBoard();
    removeDriver("channel.1.tx.rf.mixer.i");
    removeDriver("channel.1.tx.rf.mixer.q");
    driver("channel.1.tx.bb.iq.coarse.dc.i.v.adjust");
    driver("channel.1.tx.bb.iq.coarse.dc.q.v.adjust");
    EXPECT_THAT(findings(), IsEmpty());
}

TEST_F(BoardCheckTest, BothNamesAreGivenWhenNeitherIsThere) {
    microwaveBoard();
    removeDriver("channel.1.tx.rf.mixer.i");
    EXPECT_THAT(findings(), ElementsAre("board.toml:1: error: driver \"channel.1.tx.rf.mixer.i\" or "
                                        "\"channel.1.tx.bb.iq.coarse.dc.i.v.adjust\" is missing; channel 1 "
                                        "(microwave-dsp-offset) cannot start without it"));
}

TEST_F(BoardCheckTest, SecondNameIsNotUsedBesideTheFirst) {
    microwaveBoard();
    driver("channel.1.tx.bb.iq.coarse.dc.i.v.adjust");
    EXPECT_THAT(texts(),
                ElementsAre("warning: driver \"channel.1.tx.bb.iq.coarse.dc.i.v.adjust\" is not used; "
                            "channel 1 (microwave-dsp-offset) takes \"channel.1.tx.rf.mixer.i\" before it"));
}

TEST_F(BoardCheckTest, FirstNameWithoutANeededWordIsPassedOver) {
    microwaveBoard();
    removeDriver("channel.1.tx.rf.mixer.i");
    driver("channel.1.tx.rf.mixer.i", Standalone::wordContext | Standalone::wordWrite);
    driver("channel.1.tx.bb.iq.coarse.dc.i.v.adjust");
    EXPECT_THAT(
        texts(),
        ElementsAre("warning: driver \"channel.1.tx.rf.mixer.i\" is without context and write; channel 1 "
                    "(microwave-dsp-offset) takes \"channel.1.tx.bb.iq.coarse.dc.i.v.adjust\" instead"));
}

TEST_F(BoardCheckTest, LowDetectorNeedsTheHighDetector) {
    microwaveBoard();
    removeDriver("channel.1.tx.rf.detector.v");
    driver("channel.1.tx.rf.detector.low.v.detect");
    EXPECT_THAT(findings(),
                ElementsAre("board.toml:1: error: driver \"channel.1.tx.rf.detector.high.v.detect\" is "
                            "missing; channel 1 (microwave-dsp-offset) cannot start without it"));
    driver("channel.1.tx.rf.detector.high.v.detect");
    EXPECT_THAT(findings(), IsEmpty());
}

TEST_F(BoardCheckTest, HighDetectorIsNotUsedWithThePlainDetector) {
    microwaveBoard();
    driver("channel.1.tx.rf.detector.high.v.detect");
    EXPECT_THAT(
        texts(),
        ElementsAre("warning: driver \"channel.1.tx.rf.detector.high.v.detect\" is not used; channel 1 "
                    "(microwave-dsp-offset) asks for it only without driver \"channel.1.tx.rf.detector.v\""));
}

TEST_F(BoardCheckTest, DetectorThatCannotBeReadIsAWarning) {
    microwaveBoard();
    removeDriver("channel.1.tx.rf.detector.v");
    driver("channel.1.tx.rf.detector.v", Standalone::wordRead);
    EXPECT_THAT(texts(), ElementsAre("warning: driver \"channel.1.tx.rf.detector.v\" is without read; "
                                     "channel 1 (microwave-dsp-offset) can start, but not use it"));
}

TEST_F(BoardCheckTest, LoConfigStandsInForPllConfigAndItsTable) {
    microwaveBoard();
    removeDriver("channel.1.tx.rf.pll.config");
    removeTable("Channel.1.Tx.Rf.Pll.Frequency.To.Chargepump.Setting");
    driver("channel.1.tx.rf.lo.config");
    EXPECT_THAT(findings(), IsEmpty());
}

TEST_F(BoardCheckTest, PllConfigAndItsTableAreNotUsedBesideLoConfig) {
    microwaveBoard();
    driver("channel.1.tx.rf.lo.config");
    EXPECT_THAT(
        texts(),
        ElementsAre(
            "warning: driver \"channel.1.tx.rf.pll.config\" is not used; channel 1 (microwave-dsp-offset) "
            "takes \"channel.1.tx.rf.lo.config\" before it",
            "warning: table \"Channel.1.Tx.Rf.Pll.Frequency.To.Chargepump.Setting\" is not used; channel 1 "
            "(microwave-dsp-offset) asks for it only without driver \"channel.1.tx.rf.lo.config\""));
}

TEST_F(BoardCheckTest, ChargePumpTableOfChannelOneStandsInForOtherChannels) {
    microwaveBoard();
    for (ChannelDescription& described : board.channels) {
        described.number = 2;
    }
    for (DriverDescription& described : board.drivers) {
        described.name.replace(0, 9, "channel.2");
    }
    for (VariableDescription& described : board.variables) {
        if (described.name.compare(0, 9, "channel.1") == 0) {
            described.name.replace(0, 9, "channel.2");
        }
    }
    for (TableDescription& described : board.tables) {
        described.table.name.replace(0, 9, "Channel.2");
    }
    removeTable("Channel.2.Rx.Rf.Pll.Frequency.To.Chargepump.Setting");
    EXPECT_THAT(texts(),
                ElementsAre("warning: table \"Channel.2.Rx.Rf.Pll.Frequency.To.Chargepump.Setting\" or "
                            "\"Channel.1.Rx.Rf.Pll.Frequency.To.Chargepump.Setting.Pdb\" is missing; channel "
                            "2 (microwave-dsp-offset) can start without it, but will report errors"));
    tableWithOneAxis("Channel.1.Rx.Rf.Pll.Frequency.To.Chargepump.Setting.Pdb");
    EXPECT_THAT(findings(), IsEmpty());
}

// What is misspelt or left over.

TEST_F(BoardCheckTest, MisspeltRequiredDriverIsOneErrorOnItsLine) {
    rfModule();
    removeDriver("channel.1.tx.rf.frequency");
    driver("channel.1.tx.rf.frequncy");
    EXPECT_THAT(
        findings(),
        ElementsAre(
            "board.toml:4: error: driver \"channel.1.tx.rf.frequncy\" is asked for by no channel (did you "
            "mean \"channel.1.tx.rf.frequency\"?); channel 1 (rf-module) cannot start without it"));
}

TEST_F(BoardCheckTest, MisspeltTableIsOneWarningOnItsLine) {
    microwaveBoard();
    removeTable("Channel.1.Tx.Rf.Pll.Frequency.To.Chargepump.Setting");
    tableWithOneAxis("Channel.1.Tx.Rf.Pll.Frequency.To.ChargePump.Setting");
    EXPECT_THAT(
        texts(),
        ElementsAre("warning: table \"Channel.1.Tx.Rf.Pll.Frequency.To.ChargePump.Setting\" is asked for by "
                    "no channel (did you mean \"Channel.1.Tx.Rf.Pll.Frequency.To.Chargepump.Setting\"?); "
                    "channel 1 (microwave-dsp-offset) can start without it, but will report errors"));
}

TEST_F(BoardCheckTest, MisspellingsAreNotGuessedAmongTenMillionPairs) {
    for (int number = 1; number <= 4000; ++number) {
        channel(number, FrequencyHandler::RfModule); // each lacks two drivers
    }
    for (int number = 1; number <= 1249; ++number) {
        driver("a" + std::to_string(number));
    }
    driver("channel.1.tx.rf.frequenzy");
    EXPECT_THAT(findings(),
                Contains(HasSubstr("channel.1.tx.rf.frequenzy\" is asked for by no channel (did")));
    driver("b");
    EXPECT_THAT(findings(), Contains(EndsWith("channel.1.tx.rf.frequenzy\" is asked for by no channel")));
}

TEST_F(BoardCheckTest, NameOfAnotherKindIsNoMisspelling) {
    rfModule();
    removeDriver("channel.1.tx.rf.frequency");
    variable("channel.1.tx.rf.frequncy", 1);
    EXPECT_THAT(
        findings(),
        ElementsAre(
            "board.toml:1: error: driver \"channel.1.tx.rf.frequency\" is missing; channel 1 (rf-module) "
            "cannot start without it",
            "board.toml:4: warning: variable \"channel.1.tx.rf.frequncy\" is asked for by no channel"));
}

TEST_F(BoardCheckTest, LeftOverEntryIsAWarning) {
    rfModule();
    driver("fan.speed");
    variable("ChannelSpacing", 250);
    tableWithOneAxis("Channel.1.Tx.Gain");
    interface("IRauHandler_1", Standalone::Presence::present);
    EXPECT_THAT(findings(),
                ElementsAre("board.toml:4: warning: driver \"fan.speed\" is asked for by no channel",
                            "board.toml:5: warning: variable \"ChannelSpacing\" is asked for by no channel",
                            "board.toml:6: warning: table \"Channel.1.Tx.Gain\" is asked for by no channel",
                            "board.toml:7: warning: interface \"IRauHandler_1\" is asked for by no channel"));
}

TEST_F(BoardCheckTest, LeftOverEntryNearAnUnneededNameIsAWarningThatOffersIt) {
    microwaveBoard();
    driver("channel.1.tx.if.freqency");
    EXPECT_THAT(texts(), ElementsAre("warning: driver \"channel.1.tx.if.freqency\" is asked for by no "
                                     "channel (did you mean \"channel.1.tx.if.frequency\"?)"));
}

// What has the wrong shape or value.

TEST_F(BoardCheckTest, ArrayInPlaceOfAnIntegerIsAnError) {
    microwaveBoard();
    removeVariable("ChannelSpacing");
    array("ChannelSpacing", {250});
    EXPECT_THAT(texts(), ElementsAre("error: variable \"ChannelSpacing\" is an array; it must be one integer "
                                     "for channel 1 (microwave-dsp-offset)"));
}

TEST_F(BoardCheckTest, MixerFactorBelowOneIsAnError) {
    microwaveBoard();
    removeVariable("channel.1.tx.mixer.multiplicationfactor");
    removeVariable("channel.1.rx.mixer.multiplicationfactor");
    variable("channel.1.tx.mixer.multiplicationfactor", 0);
    variable("channel.1.rx.mixer.multiplicationfactor", -1);
    EXPECT_THAT(texts(), ElementsAre("error: variable \"channel.1.tx.mixer.multiplicationfactor\" is 0; it "
                                     "must be at least 1 for channel 1 (microwave-dsp-offset)",
                                     "error: variable \"channel.1.rx.mixer.multiplicationfactor\" is -1; it "
                                     "must be at least 1 for channel 1 (microwave-dsp-offset)"));
}

TEST_F(BoardCheckTest, TableWithTwoAxesInPlaceOfOneIsAnError) {
    microwaveBoard();
    removeTable("Channel.1.Tx.Rf.Pll.Frequency.To.Chargepump.Setting");
    tableWithTwoAxes("Channel.1.Tx.Rf.Pll.Frequency.To.Chargepump.Setting");
    EXPECT_THAT(texts(), ElementsAre("error: table \"Channel.1.Tx.Rf.Pll.Frequency.To.Chargepump.Setting\" "
                                     "has two axes; it must have one for channel 1 (microwave-dsp-offset)"));
}

TEST_F(BoardCheckTest, TableWithOneAxisInPlaceOfTwoIsAnError) {
    microwaveBoard();
    removeTable("Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.I");
    tableWithOneAxis("Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.I");
    EXPECT_THAT(texts(),
                ElementsAre("error: table \"Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.I\" "
                            "has one axis; it must have two for channel 1 (microwave-dsp-offset)"));
}

TEST_F(BoardCheckTest, CoarseDcTableMayHaveAnyShape) {
    microwaveBoard();
    removeTable("Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.I");
    removeTable("Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.Q");
    tableWithOneAxis("Channel.1.Tx.Bb.Frequency.To.Coarse.Dc.I.Compensation");
    tableWithTwoAxes("Channel.1.Tx.Bb.Frequency.To.Coarse.Dc.Q.Compensation");
    EXPECT_THAT(findings(), IsEmpty());
}

TEST_F(BoardCheckTest, CancellationTableBesideCoarseDcTableOfTheOtherBranchIsNotUsed) {
    microwaveBoard();
    removeTable("Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.Q");
    tableWithOneAxis("Channel.1.Tx.Bb.Frequency.To.Coarse.Dc.Q.Compensation");
    EXPECT_THAT(
        texts(),
        ElementsAre("warning: table \"Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.I\" is not "
                    "used; with table \"Channel.1.Tx.Bb.Frequency.To.Coarse.Dc.Q.Compensation\" channel 1 "
                    "(microwave-dsp-offset) makes no correction by frequency"));
}

TEST_F(BoardCheckTest, OffsetArrayOfOddLengthIsAnError) {
    microwaveBoardWithOffsetArray();
    removeVariable("channel.1.rx.rf.frequency.cs.offset.array");
    array("channel.1.rx.rf.frequency.cs.offset.array", {250, 125000, 500});
    EXPECT_THAT(texts(), ElementsAre("error: variable \"channel.1.rx.rf.frequency.cs.offset.array\" has 3 "
                                     "values; it must have pairs for channel 1 (microwave-hz-cs-offset)"));
}

TEST_F(BoardCheckTest, OffsetArrayThatIsOneIntegerIsAnError) {
    microwaveBoardWithOffsetArray();
    removeVariable("channel.1.rx.rf.frequency.cs.offset.array");
    variable("channel.1.rx.rf.frequency.cs.offset.array", 250);
    EXPECT_THAT(texts(),
                ElementsAre("error: variable \"channel.1.rx.rf.frequency.cs.offset.array\" is one integer; "
                            "it must be an array of pairs for channel 1 (microwave-hz-cs-offset)"));
}

TEST_F(BoardCheckTest, OffsetArraySizeThatDisagreesWithTheArrayIsAnError) {
    for (const int size : {6, 2, 3, 0, -4}) {
        board = {};
        microwaveBoardWithOffsetArray();
        removeVariable("channel.1.rx.rf.frequency.cs.offset.arraysize");
        variable("channel.1.rx.rf.frequency.cs.offset.arraysize", size);
        EXPECT_THAT(texts(),
                    ElementsAre("error: variable \"channel.1.rx.rf.frequency.cs.offset.arraysize\" is " +
                                std::to_string(size) +
                                ", but \"channel.1.rx.rf.frequency.cs.offset.array\" has 4 values"));
    }
}

TEST_F(BoardCheckTest, FindingsComeInTheOrderOfTheirLines) {
    driver("b");
    driver("a");
    channel(1, FrequencyHandler::Rau);
    EXPECT_THAT(findings(), ElementsAre("board.toml:1: warning: driver \"b\" is asked for by no channel",
                                        "board.toml:2: warning: driver \"a\" is asked for by no channel",
                                        "board.toml:3: error: interface \"IRauHandler_1\" is missing; "
                                        "channel 1 (rau) cannot start without it"));
}

// IQ compensation.

TEST_F(BoardCheckTest, CompensatedChannelWithDriversAndTablesGivesNoFinding) {
    rfModule();
    iqCompensation();
    EXPECT_THAT(findings(), IsEmpty());
}

TEST_F(BoardCheckTest, DriversAndTablesOfCompensationAreAskedForByCompensatedChannelsOnly) {
    rfModule();
    driver("channel.1.dsp.tx.dc.compensation.i");
    EXPECT_THAT(texts(), ElementsAre("warning: driver \"channel.1.dsp.tx.dc.compensation.i\" is asked for by "
                                     "no channel"));
}

TEST_F(BoardCheckTest, CompensationCannotStartWithoutItsFourDriversAndTables) {
    rfModule();
    board.channels.back().iqCompensation = true;
    const std::string rest = " is missing; channel 1 (rf-module) cannot start without it";
    EXPECT_THAT(
        texts(),
        ElementsAre("error: driver \"channel.1.dsp.tx.dc.compensation.i\"" + rest,
                    "error: driver \"channel.1.dsp.tx.dc.compensation.q\"" + rest,
                    "error: driver \"channel.1.dsp.tx.quadrature.gain.offset.compensation\"" + rest,
                    "error: driver \"channel.1.dsp.tx.quadrature.phase.offset.compensation\"" + rest,
                    "error: table \"Channel.1.Tx.Dsp.Temperature.To.Dc.I.Compensation\"" + rest,
                    "error: table \"Channel.1.Tx.Dsp.Temperature.To.Dc.Q.Compensation\"" + rest,
                    "error: table \"Channel.1.Tx.Dsp.Temperature.To.Gain.Offset.Compensation\"" + rest,
                    "error: table \"Channel.1.Tx.Dsp.Temperature.To.Phase.Offset.Compensation\"" + rest));
}

TEST_F(BoardCheckTest, CompensationDriverThatCannotBeWrittenIsAWarning) {
    rfModule();
    iqCompensation();
    removeDriver("channel.1.dsp.tx.dc.compensation.q");
    driver("channel.1.dsp.tx.dc.compensation.q", Standalone::wordWrite);
    EXPECT_THAT(texts(),
                ElementsAre("warning: driver \"channel.1.dsp.tx.dc.compensation.q\" is without write; "
                            "channel 1 (rf-module) can start, but not use it"));
}

TEST_F(BoardCheckTest, OnlyDriversOfGainAndPhaseNeedTheirContext) {
    rfModule();
    iqCompensation();
    for (DriverDescription& described : board.drivers) {
        if (described.name.find(".dsp.tx.") != std::string::npos) {
            described.missingWords = Standalone::wordContext;
        }
    }
    const std::string rest = " is without context; channel 1 (rf-module) can start, but not use it";
    EXPECT_THAT(
        texts(),
        ElementsAre("warning: driver \"channel.1.dsp.tx.quadrature.gain.offset.compensation\"" + rest,
                    "warning: driver \"channel.1.dsp.tx.quadrature.phase.offset.compensation\"" + rest));
}

TEST_F(BoardCheckTest, CompensationTableHasOneAxis) {
    rfModule();
    iqCompensation();
    removeTable("Channel.1.Tx.Dsp.Temperature.To.Dc.Q.Compensation");
    tableWithTwoAxes("Channel.1.Tx.Dsp.Temperature.To.Dc.Q.Compensation");
    EXPECT_THAT(
        texts(),
        ElementsAre("error: table \"Channel.1.Tx.Dsp.Temperature.To.Dc.Q.Compensation\" has two axes; "
                    "it must have one for channel 1 (rf-module)"));
}

TEST_F(BoardCheckTest, OnlyCompensatedChannelsNeedTheTemperatureService) {
    interface("ITemperatureHandler", Standalone::Presence::absent);
    rfModule();
    EXPECT_THAT(findings(), IsEmpty());
    channel(2, FrequencyHandler::RfModule);
    driver("channel.2.tx.rf.frequency");
    driver("channel.2.rx.rf.frequency");
    iqCompensation();
    EXPECT_THAT(findings(), ElementsAre("board.toml:1: error: interface \"ITemperatureHandler\" is absent; "
                                        "channel 2 (rf-module) cannot start without it"));
}

TEST_F(BoardCheckTest, CompensationOfARemoteRadioUnitNeedsTheDriverLayer) {
    channel(1, FrequencyHandler::Rau);
    iqCompensation();
    interface("IRauHandler_1", Standalone::Presence::present);
    interface("IDriverLayer", Standalone::Presence::absent);
    EXPECT_THAT(texts(), ElementsAre("error: interface \"IDriverLayer\" is absent; channel 1 (rau) cannot "
                                     "start without it"));
}

// The demands themselves.

TEST_F(BoardCheckTest, DemandThatSeveralChannelsMakeIsThereOnce) {
    channel(1, FrequencyHandler::RfModule);
    channel(2, FrequencyHandler::RfModule);
    const std::vector<Demand> demands = demandsOf(board);
    ASSERT_EQ(demands.size(), 6U);
    EXPECT_EQ(demands[0].candidates[0].name, "IDriverLayer");
    EXPECT_THAT(demands[0].channels, ElementsAre(&board.channels[0], &board.channels[1]));
}

TEST_F(BoardCheckTest, DemandsComeInTheOrderInWhichTheyAreMade) {
    channel(1, FrequencyHandler::RfModule);
    Lines lines;
    for (const Demand& demand : demandsOf(board)) {
        lines.push_back(std::string(toString(demand.kind)) + " " + demand.candidates[0].name);
    }
    EXPECT_THAT(lines, ElementsAre("interface IDriverLayer", "driver channel.1.tx.rf.frequency",
                                   "driver channel.1.rx.rf.frequency", "interface ITemperatureHandler"));
}

// LO-cancellation tables.

TEST_F(BoardCheckTest, SwappedAxesOfACorrectionAreAnError) {
    microwaveBoard();
    for (TableDescription& table : board.tables) {
        if (table.table.name == "Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.I") {
            table.table = {table.table.name, {-33, 55}, {18'000'000}, {7, 8}};
        }
    }
    EXPECT_THAT(findings(),
                ElementsAre(HasSubstr(": error: channel 1, I: the axes are swapped: the first goes from "
                                      "-33 to 55 and the second from 18000000 to 18000000, expected "
                                      "carriers in kHz and then degrees")));
}

TEST_F(BoardCheckTest, CorrectionsOfAnotherRadioOrChannelAreAWarning) {
    microwaveBoard();
    board.serial = "T-1";
    for (TableDescription& table : board.tables) {
        if (table.table.name.find("Cancellation") != std::string::npos) {
            table.file = "x.csv";
            table.origins = {{"serial", "T-2", {"x.csv", 1}}, {"channel", "2", {"x.csv", 2}}};
        }
    }
    EXPECT_THAT(findings(), ElementsAre("x.csv:1: warning: serial \"T-2\", but it is used for serial \"T-1\"",
                                        "x.csv:2: warning: channel \"2\", but it is used for channel \"1\""));
    board.serial = "";
    EXPECT_THAT(findings(), ElementsAre(HasSubstr("x.csv:2: warning: channel")));
}

TEST_F(BoardCheckTest, SerialIsTheSameAsItIsWrittenForSpreadsheets) {
    microwaveBoard();
    board.serial = "T,=1";
    for (TableDescription& table : board.tables) {
        if (table.table.name.find("Cancellation") != std::string::npos) {
            table.file = "x.csv";
            table.origins = {{"serial", "T,'=1", {"x.csv", 1}}};
        }
    }
    EXPECT_THAT(findings(), ElementsAre());
}

} // namespace
} // namespace Radio
