// Which variables the microwave-board handler reads, when, and what a missing one does.

#include "MicrowaveRadioTest.h"

namespace {

class MicrowaveBoardDatabaseTest : public MicrowaveRadioTest {
protected:
    /** What the sidebands and the baseband offset are, as a write tells them. */
    Lines parameters(Board& board) {
        forget();
        board.writeFrequencyToHW(18'000'000);
        Lines lines;
        for (const std::string& line : traces()) {
            if (line.find("Sideband ") != std::string::npos || line.find("IfBb ") != std::string::npos) {
                lines.push_back(line);
            }
        }
        return lines;
    }

    /** The value that the DSP offset driver receives for a new carrier. */
    std::int64_t dspOffset(Board& board) {
        EXPECT_EQ(board.writeFrequencyToHW(18'000'000), ResultOk);
        return driver("channel.1.dsp.rx.freq.offset").value();
    }

    /** A receiver with the offset array, bound to its drivers, before it has read any variable. */
    Board& boundReceiver() {
        Board& board = make("Rx", withOffsetArray);
        EXPECT_EQ(board.onModuleInit(), ResultOk);
        forget();
        return board;
    }

    /** A receiver that has not looked for its drivers. */
    Board& bareReceiver() { return make("Rx", withIf); }
};

} // namespace

// The order of the readings

TEST_F(MicrowaveBoardDatabaseTest, BoardWithIfReadsFiveVariablesByValue) {
    EXPECT_EQ(make("Tx", withIf).getVariablesFromDatabase(), ResultOk);
    EXPECT_EQ(calls(), (Lines{"variable-get channel.1.tx.mixer.multiplicationfactor",
                              "variable-get channel.1.tx.rf.spectruminverted",
                              "variable-get channel.1.tx.baseband.spectruminverted",
                              "variable-get channel.1.tx.if.frequency", "variable-get TxIfBb"}));
    EXPECT_EQ(traces(), Lines{});
}

TEST_F(MicrowaveBoardDatabaseTest, BoardWithoutIfDoesNotReadTheIf) {
    EXPECT_EQ(make("Rx", withHalfSpacing).getVariablesFromDatabase(), ResultOk);
    EXPECT_EQ(calls(), (Lines{"variable-get channel.1.rx.mixer.multiplicationfactor",
                              "variable-get channel.1.rx.rf.spectruminverted",
                              "variable-get channel.1.rx.baseband.spectruminverted", "variable-get RxIfBb"}));
}

TEST_F(MicrowaveBoardDatabaseTest, ReceiverWithOffsetArrayAsksForThreeContentAddressesLast) {
    EXPECT_EQ(make("Rx", withOffsetArray).getVariablesFromDatabase(), ResultOk);
    EXPECT_EQ(calls(), (Lines{"variable-get channel.1.rx.mixer.multiplicationfactor",
                              "variable-get channel.1.rx.rf.spectruminverted",
                              "variable-get channel.1.rx.baseband.spectruminverted", "variable-get RxIfBb",
                              "variable-address HwCodeDsp",
                              "variable-address channel.1.rx.rf.frequency.cs.offset.arraysize",
                              "variable-address channel.1.rx.rf.frequency.cs.offset.array"}));
}

TEST_F(MicrowaveBoardDatabaseTest, TransmitterReadsNoneOfTheOffsetArray) {
    EXPECT_EQ(make("Tx", withEverything).getVariablesFromDatabase(), ResultOk);
    EXPECT_EQ(calls(), (Lines{"variable-get channel.1.tx.mixer.multiplicationfactor",
                              "variable-get channel.1.tx.rf.spectruminverted",
                              "variable-get channel.1.tx.baseband.spectruminverted",
                              "variable-get channel.1.tx.if.frequency", "variable-get TxIfBb"}));
}

TEST_F(MicrowaveBoardDatabaseTest, OnlyTheDirectionRxItselfHasAnOffsetArray) {
    platform.variables().add("RXIfBb", {0});
    EXPECT_EQ(make("RX", withOffsetArray).getVariablesFromDatabase(), ResultOk);
    EXPECT_EQ(calls().back(), "variable-get RXIfBb");
}

TEST_F(MicrowaveBoardDatabaseTest, NamesCarryTheChannelAndTheDirectionInLowerCase) {
    platform.variables().add("channel.12.tx.mixer.multiplicationfactor", {4});
    EXPECT_EQ(make("Tx", plainBoard, 12).getVariablesFromDatabase(), ResultOk);
    EXPECT_EQ(calls(),
              (Lines{"variable-get channel.12.tx.mixer.multiplicationfactor",
                     "variable-get channel.12.tx.rf.spectruminverted",
                     "variable-get channel.12.tx.baseband.spectruminverted", "variable-get TxIfBb"}));
}

// Conversions

TEST_F(MicrowaveBoardDatabaseTest, SpectrumNotInvertedMeansSidebandMinusOne) {
    Board& board = bareReceiver();
    set("channel.1.rx.baseband.spectruminverted", {0});
    EXPECT_EQ(board.getVariablesFromDatabase(), ResultOk);
    EXPECT_EQ(parameters(board), (Lines{"information: channel.1.Rx.ifSideband -1",
                                        "information: channel.1.Rx.rfSideband -1", "information: RxIfBb 0"}));
}

TEST_F(MicrowaveBoardDatabaseTest, AnyValueButZeroMeansSidebandPlusOne) {
    Board& board = bareReceiver();
    set("channel.1.rx.rf.spectruminverted", {-7});
    set("channel.1.rx.baseband.spectruminverted", {2});
    EXPECT_EQ(board.getVariablesFromDatabase(), ResultOk);
    EXPECT_EQ(parameters(board), (Lines{"information: channel.1.Rx.ifSideband 1",
                                        "information: channel.1.Rx.rfSideband 1", "information: RxIfBb 0"}));
}

TEST_F(MicrowaveBoardDatabaseTest, BothSidebandsAreMinusOneBeforeTheDatabaseIsRead) {
    EXPECT_EQ(parameters(bareReceiver()),
              (Lines{"information: channel.1.Rx.ifSideband -1", "information: channel.1.Rx.rfSideband -1",
                     "information: RxIfBb 0"}));
}

// Missing variables

TEST_F(MicrowaveBoardDatabaseTest, MissingFactorEndsTheReadingAtOnce) {
    takeAwayVariable("channel.1.tx.mixer.multiplicationfactor");
    EXPECT_EQ(make("Tx", withIf).getVariablesFromDatabase(), ResultFailed);
    EXPECT_EQ(calls(), (Lines{"variable-get channel.1.tx.mixer.multiplicationfactor"}));
    EXPECT_EQ(traces(), (Lines{"error: Could not get the variable channel.1.tx.mixer.multiplicationfactor "
                               "from the database"}));
}

TEST_F(MicrowaveBoardDatabaseTest, MissingBasebandInversionTakesTheSignOfTheRfInversion) {
    takeAwayVariable("channel.1.rx.baseband.spectruminverted");
    set("channel.1.rx.rf.spectruminverted", {1});
    Board& board = bareReceiver();
    EXPECT_EQ(board.getVariablesFromDatabase(), ResultOk);
    EXPECT_EQ(traces(), (Lines{"error: Could not get the variable channel.1.rx.baseband.spectruminverted "
                               "from the database"}));
    EXPECT_EQ(parameters(board), (Lines{"information: channel.1.Rx.ifSideband 1",
                                        "information: channel.1.Rx.rfSideband 1", "information: RxIfBb 0"}));
}

TEST_F(MicrowaveBoardDatabaseTest, MissingRfInversionMeansSidebandMinusOne) {
    takeAwayVariable("channel.1.rx.rf.spectruminverted");
    set("channel.1.rx.rf.spectruminverted", {1});
    Board& board = bareReceiver();
    EXPECT_EQ(board.getVariablesFromDatabase(), ResultOk);
    EXPECT_EQ(parameters(board), (Lines{"information: channel.1.Rx.ifSideband 1",
                                        "information: channel.1.Rx.rfSideband -1", "information: RxIfBb 0"}));
}

TEST_F(MicrowaveBoardDatabaseTest, RfInversionThatHasGoneMeansSidebandMinusOneAgain) {
    set("channel.1.rx.rf.spectruminverted", {1});
    Board& board = boot("Rx", withIf);
    takeAwayVariable("channel.1.rx.rf.spectruminverted");
    EXPECT_EQ(board.getVariablesFromDatabase(), ResultOk);
    EXPECT_EQ(parameters(board), (Lines{"information: channel.1.Rx.ifSideband 1",
                                        "information: channel.1.Rx.rfSideband -1", "information: RxIfBb 0"}));
}

TEST_F(MicrowaveBoardDatabaseTest, BothInversionsMissingMeansBothSidebandsMinusOne) {
    takeAwayVariable("channel.1.rx.rf.spectruminverted");
    takeAwayVariable("channel.1.rx.baseband.spectruminverted");
    Board& board = bareReceiver();
    EXPECT_EQ(board.getVariablesFromDatabase(), ResultOk);
    EXPECT_EQ(traces().size(), 2U);
    EXPECT_EQ(parameters(board), (Lines{"information: channel.1.Rx.ifSideband -1",
                                        "information: channel.1.Rx.rfSideband -1", "information: RxIfBb 0"}));
}

TEST_F(MicrowaveBoardDatabaseTest, MissingIfFailsBeforeTheBasebandOffsetIsRead) {
    takeAwayVariable("channel.1.tx.if.frequency");
    EXPECT_EQ(make("Tx", withIf).getVariablesFromDatabase(), ResultFailed);
    EXPECT_EQ(calls().back(), "variable-get channel.1.tx.if.frequency");
    EXPECT_EQ(traces(),
              (Lines{"error: Could not get the variable channel.1.tx.if.frequency from the database"}));
}

TEST_F(MicrowaveBoardDatabaseTest, MissingIfIsNothingToABoardWithoutIf) {
    takeAwayVariable("channel.1.tx.if.frequency");
    EXPECT_EQ(make("Tx", plainBoard).getVariablesFromDatabase(), ResultOk);
    EXPECT_EQ(traces(), Lines{});
}

TEST_F(MicrowaveBoardDatabaseTest, MissingBasebandOffsetFailsBeforeTheOffsetArrayIsRead) {
    takeAwayVariable("RxIfBb");
    EXPECT_EQ(make("Rx", withOffsetArray).getVariablesFromDatabase(), ResultFailed);
    EXPECT_EQ(calls().back(), "variable-get RxIfBb");
    EXPECT_EQ(traces(), (Lines{"error: Could not get the variable RxIfBb from the database"}));
}

TEST_F(MicrowaveBoardDatabaseTest, VariableThatCameWithAFailingCodeIsMissing) {
    platform.calls().inject({Operation::variableGet, "RxIfBb", 0x8001, std::nullopt, std::nullopt, true});
    EXPECT_EQ(make("Rx", withOffsetArray).getVariablesFromDatabase(), ResultFailed);
    EXPECT_EQ(traces(), (Lines{"error: Could not get the variable RxIfBb from the database"}));
}

TEST_F(MicrowaveBoardDatabaseTest, MissingHwCodeDspFailsWithoutAMessage) {
    takeAwayVariable("HwCodeDsp");
    EXPECT_EQ(make("Rx", withOffsetArray).getVariablesFromDatabase(), ResultFailed);
    EXPECT_EQ(calls().back(), "variable-address HwCodeDsp");
    EXPECT_EQ(traces(), Lines{});
}

TEST_F(MicrowaveBoardDatabaseTest, MissingArraySizeFailsWithoutAMessage) {
    takeAwayVariable("channel.1.rx.rf.frequency.cs.offset.arraysize");
    EXPECT_EQ(make("Rx", withOffsetArray).getVariablesFromDatabase(), ResultFailed);
    EXPECT_EQ(calls().back(), "variable-address channel.1.rx.rf.frequency.cs.offset.arraysize");
    EXPECT_EQ(traces(), Lines{});
}

TEST_F(MicrowaveBoardDatabaseTest, MissingArrayFailsWithoutAMessage) {
    takeAwayVariable("channel.1.rx.rf.frequency.cs.offset.array");
    EXPECT_EQ(make("Rx", withOffsetArray).getVariablesFromDatabase(), ResultFailed);
    EXPECT_EQ(calls().back(), "variable-address channel.1.rx.rf.frequency.cs.offset.array");
    EXPECT_EQ(traces(), Lines{});
}

TEST_F(MicrowaveBoardDatabaseTest, HwCodeDspThatHasGoneIsForgotten) {
    Board& board = boundReceiver();
    set("HwCodeDsp", {3});
    set("ChannelSpacing", {250});
    EXPECT_EQ(board.getVariablesFromDatabase(), ResultOk);
    EXPECT_EQ(board.getFFVariablesFromDatabase(), ResultOk);
    EXPECT_EQ(dspOffset(board), 125'000);
    takeAwayVariable("HwCodeDsp");
    EXPECT_EQ(board.getVariablesFromDatabase(), ResultFailed);
    EXPECT_EQ(dspOffset(board), 0); // the array is still known, half the spacing is not used any more
}

TEST_F(MicrowaveBoardDatabaseTest, ArraySizeThatHasGoneIsForgotten) {
    Board& board = boundReceiver();
    EXPECT_EQ(board.getVariablesFromDatabase(), ResultOk);
    takeAwayVariable("channel.1.rx.rf.frequency.cs.offset.arraysize");
    EXPECT_EQ(board.getVariablesFromDatabase(), ResultFailed);
    EXPECT_EQ(board.writeFrequencyToHW(18'000'000), ResultFailed);
    EXPECT_EQ(writes(), Lines{});
}

TEST_F(MicrowaveBoardDatabaseTest, ArrayThatHasGoneIsForgotten) {
    Board& board = boundReceiver();
    EXPECT_EQ(board.getVariablesFromDatabase(), ResultOk);
    takeAwayVariable("channel.1.rx.rf.frequency.cs.offset.array");
    EXPECT_EQ(board.getVariablesFromDatabase(), ResultFailed);
    EXPECT_EQ(board.writeFrequencyToHW(18'000'000), ResultFailed);
    EXPECT_EQ(writes(), Lines{});
}

TEST_F(MicrowaveBoardDatabaseTest, ValuesReadBeforeAFailureStay) {
    takeAwayVariable("channel.1.rx.if.frequency");
    Board& board = bareReceiver();
    EXPECT_EQ(board.getVariablesFromDatabase(), ResultFailed);
    EXPECT_EQ(board.calculateRfPllFrequency(4000, true), 2'000'000U);
}

TEST_F(MicrowaveBoardDatabaseTest, FailedReadingKeepsTheOldValue) {
    set("RxIfBb", {5});
    Board& board = boot("Rx", withIf);
    set("RxIfBb", {9});
    takeAwayVariable("RxIfBb");
    EXPECT_EQ(board.getVariablesFromDatabase(), ResultFailed);
    EXPECT_EQ(board.getBbFrequency(), 5000U);
}

// One variable by value

TEST_F(MicrowaveBoardDatabaseTest, VariableIsCopiedIntoThePlaceGiven) {
    int value = 1;
    EXPECT_EQ(make("Rx", withIf).getStorageVariableByName("channel.1.rx.if.frequency", &value), ResultOk);
    EXPECT_EQ(value, 140'000);
}

TEST_F(MicrowaveBoardDatabaseTest, UnknownVariableLeavesThePlaceUntouched) {
    int value = 77;
    EXPECT_EQ(make("Rx", withIf).getStorageVariableByName("no.such.variable", &value), ResultFailed);
    EXPECT_EQ(value, 77);
    EXPECT_EQ(traces(), (Lines{"error: Could not get the variable no.such.variable from the database"}));
}

TEST_F(MicrowaveBoardDatabaseTest, VariableWithoutContentIsMissing) {
    platform.variables().find("RxIfBb")->setContentMissing(true);
    int value = 77;
    EXPECT_EQ(make("Rx", withIf).getStorageVariableByName("RxIfBb", &value), ResultFailed);
    EXPECT_EQ(value, 77);
    EXPECT_EQ(traces(), (Lines{"error: Could not get the variable RxIfBb from the database"}));
}

TEST_F(MicrowaveBoardDatabaseTest, VariableWithoutRecordIsMissing) {
    platform.variables().giveNullRecord("RxIfBb");
    int value = 77;
    EXPECT_EQ(make("Rx", withIf).getStorageVariableByName("RxIfBb", &value), ResultFailed);
    EXPECT_EQ(value, 77);
    EXPECT_EQ(traces(), (Lines{"error: Could not get the variable RxIfBb from the database"}));
}

TEST_F(MicrowaveBoardDatabaseTest, CodesBelow8000HexAreSuccess) {
    const Board& board = make("Rx", withIf);
    int value = 0;
    for (const std::int32_t code : {1, 0x7FFF, -1}) {
        fail(Operation::variableGet, "RxIfBb", code);
        EXPECT_EQ(board.getStorageVariableByName("RxIfBb", &value), ResultOk) << code;
    }
    fail(Operation::variableGet, "RxIfBb", 0x8000);
    EXPECT_EQ(board.getStorageVariableByName("RxIfBb", &value), ResultFailed);
}

// What depends on the frame format

TEST_F(MicrowaveBoardDatabaseTest, FrameFormatBringsANewBasebandOffset) {
    Board& board = boot("Tx", withIf);
    set("TxIfBb", {12});
    EXPECT_EQ(board.getFFVariablesFromDatabase(), ResultOk);
    EXPECT_EQ(board.getBbFrequency(), 12'000U);
    EXPECT_EQ(calls(), (Lines{"variable-get TxIfBb"}));
}

TEST_F(MicrowaveBoardDatabaseTest, ReceiverWithHalfSpacingReadsTheChannelSpacing) {
    EXPECT_EQ(make("Rx", withHalfSpacing).getFFVariablesFromDatabase(), ResultOk);
    EXPECT_EQ(calls(), (Lines{"variable-get RxIfBb", "variable-address ChannelSpacing"}));
    EXPECT_EQ(traces(), (Lines{"information: getFFVariablesFromDatabase: New channel spacing = 100"}));
}

TEST_F(MicrowaveBoardDatabaseTest, ReceiverWithOffsetArrayReadsTheChannelSpacing) {
    EXPECT_EQ(make("Rx", withOffsetArray).getFFVariablesFromDatabase(), ResultOk);
    EXPECT_EQ(calls(), (Lines{"variable-get RxIfBb", "variable-address ChannelSpacing"}));
}

TEST_F(MicrowaveBoardDatabaseTest, ReceiverWithNeitherDoesNotReadTheChannelSpacing) {
    EXPECT_EQ(make("Rx", withHz).getFFVariablesFromDatabase(), ResultOk);
    EXPECT_EQ(calls(), (Lines{"variable-get RxIfBb"}));
}

TEST_F(MicrowaveBoardDatabaseTest, TransmitterNeverReadsTheChannelSpacing) {
    EXPECT_EQ(make("Tx", withEverything).getFFVariablesFromDatabase(), ResultOk);
    EXPECT_EQ(calls(), (Lines{"variable-get TxIfBb"}));
}

TEST_F(MicrowaveBoardDatabaseTest, OnlyTheDirectionRxItselfReadsTheChannelSpacing) {
    platform.variables().add("RXIfBb", {0});
    EXPECT_EQ(make("RX", withEverything).getFFVariablesFromDatabase(), ResultOk);
    EXPECT_EQ(calls(), (Lines{"variable-get RXIfBb"}));
}

TEST_F(MicrowaveBoardDatabaseTest, MissingBasebandOffsetFailsBeforeTheChannelSpacingIsRead) {
    takeAwayVariable("RxIfBb");
    EXPECT_EQ(make("Rx", withHalfSpacing).getFFVariablesFromDatabase(), ResultFailed);
    EXPECT_EQ(calls(), (Lines{"variable-get RxIfBb"}));
    EXPECT_EQ(traces(), (Lines{"error: Could not get the variable RxIfBb from the database"}));
}

TEST_F(MicrowaveBoardDatabaseTest, MissingChannelSpacingIsMissingInTheDatabase) {
    takeAwayVariable("ChannelSpacing");
    EXPECT_EQ(make("Rx", withHalfSpacing).getFFVariablesFromDatabase(), ResultFailed);
    EXPECT_EQ(traces(), (Lines{"error: Could not get the variable ChannelSpacing in the database"}));
}

TEST_F(MicrowaveBoardDatabaseTest, MissingChannelSpacingKeepsTheOldOne) {
    Board& board = boot("Rx", withHalfSpacing);
    set("ChannelSpacing", {50});
    takeAwayVariable("ChannelSpacing");
    EXPECT_EQ(board.getFFVariablesFromDatabase(), ResultFailed);
    EXPECT_EQ(dspOffset(board), 50'000);
}

TEST_F(MicrowaveBoardDatabaseTest, ChannelSpacingWithoutContentIsAnError) {
    platform.variables().find("ChannelSpacing")->setContentMissing(true);
    EXPECT_EQ(make("Rx", withHalfSpacing).getFFVariablesFromDatabase(), ResultFailed);
    EXPECT_EQ(traces(), (Lines{"error: The variable ChannelSpacing has no content"}));
}

// When a change in the database is seen

TEST_F(MicrowaveBoardDatabaseTest, PlanParametersAreSeenAtTheNextReading) {
    Board& board = boot("Rx", withIf);
    set("channel.1.rx.mixer.multiplicationfactor", {4});
    EXPECT_EQ(board.calculateRfPllFrequency(4000, true), 2'000'000U);
    EXPECT_EQ(board.getVariablesFromDatabase(), ResultOk);
    EXPECT_EQ(board.calculateRfPllFrequency(4000, true), 1'000'000U);
}

TEST_F(MicrowaveBoardDatabaseTest, ChannelSpacingIsSeenAtTheNextFrameFormat) {
    Board& board = boot("Rx", withHalfSpacing);
    set("ChannelSpacing", {50});
    EXPECT_EQ(dspOffset(board), 50'000);
    EXPECT_EQ(board.getVariablesFromDatabase(), ResultOk);
    EXPECT_EQ(dspOffset(board), 50'000);
    EXPECT_EQ(board.getFFVariablesFromDatabase(), ResultOk);
    EXPECT_EQ(dspOffset(board), 25'000);
}

TEST_F(MicrowaveBoardDatabaseTest, OffsetArrayIsSeenAtOnce) {
    Board& board = boot("Rx", withOffsetArray);
    set("channel.1.rx.rf.frequency.cs.offset.array", {100, -7000});
    EXPECT_EQ(dspOffset(board), 7000);
}

TEST_F(MicrowaveBoardDatabaseTest, ArraySizeIsSeenAtOnce) {
    Board& board = boot("Rx", withOffsetArray);
    set("channel.1.rx.rf.frequency.cs.offset.arraysize", {2});
    EXPECT_EQ(dspOffset(board), 0); // the entry for 100 is the second one
}

TEST_F(MicrowaveBoardDatabaseTest, HwCodeDspIsSeenAtOnce) {
    set("ChannelSpacing", {250});
    Board& board = boot("Rx", withOffsetArray);
    EXPECT_EQ(dspOffset(board), 0);
    set("HwCodeDsp", {3});
    EXPECT_EQ(dspOffset(board), 125'000);
}

// Content addresses: the offset of spacing 100 is -4000, and 4000 is what the DSP is told

TEST_F(MicrowaveBoardDatabaseTest, AddressesThatARepeatedLookupDoesNotStoreStayAsTheyWere) {
    Board& board = boot("Rx", withOffsetArray);
    Standalone::Fault fault{Operation::variableAddress, "", 0x7FFF};
    fault.isLeftUndone = true;
    platform.calls().inject(fault);
    EXPECT_EQ(board.getVariablesFromDatabase(), ResultOk);
    forget();
    EXPECT_EQ(board.writeFrequencyToHW(carrier), ResultOk);
    EXPECT_EQ(writes().front(), "channel.1.dsp.rx.freq.offset=4000");
}

TEST_F(MicrowaveBoardDatabaseTest, AddressThatAFirstLookupDoesNotStoreIsNull) {
    Standalone::Fault fault{Operation::variableAddress, "channel.1.rx.rf.frequency.cs.offset.array",
                            ResultOk};
    fault.isLeftUndone = true;
    platform.calls().inject(fault);
    EXPECT_EQ(boot("Rx", withOffsetArray).writeFrequencyToHW(carrier), ResultFailed);
    EXPECT_EQ(complaints(), (Lines{"error: channel.1.rx.rf.frequency.cs.offset.array was not found"}));
}

TEST_F(MicrowaveBoardDatabaseTest, AddressOfALookupThatFailsIsNull) {
    for (const char* const name :
         {"channel.1.rx.rf.frequency.cs.offset.arraysize", "channel.1.rx.rf.frequency.cs.offset.array"}) {
        Board& board = boot("Rx", withOffsetArray);
        Standalone::Fault fault{Operation::variableAddress, name, 0x8000};
        fault.isCarriedOut = true; // an address is left all the same
        platform.calls().inject(fault);
        EXPECT_EQ(board.getVariablesFromDatabase(), ResultFailed) << name;
        forget();
        EXPECT_EQ(board.writeFrequencyToHW(carrier), ResultFailed) << name;
        EXPECT_EQ(complaints(), (Lines{"error: channel.1.rx.rf.frequency.cs.offset.array was not found"}));
        platform.calls().clearAll();
    }
}

TEST_F(MicrowaveBoardDatabaseTest, HwCodeDspOfALookupThatFailsIsNull) {
    set("ChannelSpacing", {125}); // which is not in the array
    set("HwCodeDsp", {3});
    Board& board = boot("Rx", withOffsetArray);
    Standalone::Fault fault{Operation::variableAddress, "HwCodeDsp", 0x8000};
    fault.isCarriedOut = true;
    platform.calls().inject(fault);
    EXPECT_EQ(board.getVariablesFromDatabase(), ResultFailed);
    forget();
    EXPECT_EQ(board.writeFrequencyToHW(carrier), ResultOk);
    EXPECT_EQ(writes().front(),
              "channel.1.dsp.rx.freq.offset=0"); // the default, for want of half the spacing
}

TEST_F(MicrowaveBoardDatabaseTest, ChannelSpacingThatALookupDoesNotStoreHasNoContent) {
    Board& board = boot("Rx", withOffsetArray);
    Standalone::Fault fault{Operation::variableAddress, "ChannelSpacing", ResultOk};
    fault.isLeftUndone = true;
    platform.calls().inject(fault);
    EXPECT_EQ(board.getFFVariablesFromDatabase(), ResultFailed);
    EXPECT_EQ(complaints(), (Lines{"error: The variable ChannelSpacing has no content"}));
}
