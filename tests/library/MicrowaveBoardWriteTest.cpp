// What one frequency change writes to the drivers of a microwave board, in which order, and what a failure
// leaves. How the receive side follows the channel spacing is told in MicrowaveBoardSpacingTest.

#include "FrequencyHandler.h"
#include "MicrowaveRadioTest.h"

namespace {

class MicrowaveBoardWriteTest : public MicrowaveRadioTest {
protected:
    using Module = ::FrequencyHandler;

    /** What a module of `type` writes for a new transmit carrier. */
    Lines writesOfTransmitter(Module::FrequencyHandlerType type, unsigned long frequency) {
        Module module(1, type);
        boot();
        EXPECT_EQ(module.setTxFrequency(frequency), ResultOk);
        return writes();
    }
    /** What a module of `type` writes for a new receive carrier. */
    Lines writesOfReceiver(Module::FrequencyHandlerType type, unsigned long frequency) {
        Module module(1, type);
        boot();
        EXPECT_EQ(module.setRxFrequency(frequency), ResultOk);
        return writes();
    }
    using MicrowaveRadioTest::boot;

private:
    void boot() {
        for (const unsigned long phase : {11UL, 5UL, 20UL}) {
            EXPECT_TRUE(platform.modules().run(phase).succeeded());
        }
        forget();
    }
};

constexpr const char* receiveChargePumpTable = "Channel.1.Rx.Rf.Pll.Frequency.To.Chargepump.Setting";

} // namespace

// Every type and direction

TEST_F(MicrowaveBoardWriteTest, TypeZeroTransmitterWritesIfLoAndChargePump) {
    EXPECT_EQ(writesOfTransmitter(FrequencyHandler::MicrowaveBoardIf, carrier),
              (Lines{"channel.1.tx.if.frequency=140250", "channel.1.tx.rf.lo.frequency=8930000",
                     "channel.1.tx.rf.pll.config=1000250", "channel.1.tx.rf.mixer.i=1000",
                     "channel.1.tx.rf.mixer.q=-1000"}));
}

TEST_F(MicrowaveBoardWriteTest, TypeZeroReceiverWritesIfLoAndChargePump) {
    EXPECT_EQ(writesOfReceiver(FrequencyHandler::MicrowaveBoardIf, carrier),
              (Lines{"channel.1.rx.if.frequency=140250", "channel.1.rx.rf.lo.frequency=8930000",
                     "channel.1.rx.rf.pll.config=1000250"}));
}

TEST_F(MicrowaveBoardWriteTest, TypeTwoTransmitterWritesLoAndChargePump) {
    EXPECT_EQ(writesOfTransmitter(FrequencyHandler::MicrowaveBoardDspOffset, carrier),
              (Lines{"channel.1.tx.rf.lo.frequency=9000000", "channel.1.tx.rf.pll.config=1000250",
                     "channel.1.tx.rf.mixer.i=1000", "channel.1.tx.rf.mixer.q=-1000"}));
}

TEST_F(MicrowaveBoardWriteTest, TypeTwoReceiverWritesDspOffsetLoAndChargePump) {
    EXPECT_EQ(writesOfReceiver(FrequencyHandler::MicrowaveBoardDspOffset, carrier),
              (Lines{"channel.1.dsp.rx.freq.offset=50000", "channel.1.rx.rf.lo.frequency=8975000",
                     "channel.1.rx.rf.pll.config=1000250"}));
}

TEST_F(MicrowaveBoardWriteTest, TypeThreeTransmitterWritesLoInHzAndChargePump) {
    EXPECT_EQ(writesOfTransmitter(FrequencyHandler::MicrowaveBoardHzCsOffset, carrier),
              (Lines{"channel.1.tx.rf.lo.frequency.in.hz=9000125000", "channel.1.tx.rf.pll.config=1000250",
                     "channel.1.tx.rf.mixer.i=1000", "channel.1.tx.rf.mixer.q=-1000"}));
}

TEST_F(MicrowaveBoardWriteTest, TypeThreeReceiverWritesDspOffsetLoInHzAndChargePump) {
    EXPECT_EQ(writesOfReceiver(FrequencyHandler::MicrowaveBoardHzCsOffset, carrier),
              (Lines{"channel.1.dsp.rx.freq.offset=4000", "channel.1.rx.rf.lo.frequency.in.hz=8998125000",
                     "channel.1.rx.rf.pll.config=996250"}));
}

TEST_F(MicrowaveBoardWriteTest, TypeFiveTransmitterWritesLoInHzAndChargePump) {
    EXPECT_EQ(writesOfTransmitter(FrequencyHandler::MicrowaveBoardHz, carrier),
              (Lines{"channel.1.tx.rf.lo.frequency.in.hz=9000125000", "channel.1.tx.rf.pll.config=1000250",
                     "channel.1.tx.rf.mixer.i=1000", "channel.1.tx.rf.mixer.q=-1000"}));
}

TEST_F(MicrowaveBoardWriteTest, TypeFiveReceiverWritesLoInHzAndChargePump) {
    EXPECT_EQ(writesOfReceiver(FrequencyHandler::MicrowaveBoardHz, carrier),
              (Lines{"channel.1.rx.rf.lo.frequency.in.hz=9000125000", "channel.1.rx.rf.pll.config=1000250"}));
}

// All flags together

TEST_F(MicrowaveBoardWriteTest, TransmitterWithAllFlagsLeavesTheDspAloneAndTheCarrierAsItIs) {
    EXPECT_EQ(boot("Tx", withEverything).writeFrequencyToHW(carrier), ResultOk);
    EXPECT_EQ(writes(),
              (Lines{"channel.1.tx.if.frequency=140250", "channel.1.tx.rf.lo.frequency.in.hz=9000125000",
                     "channel.1.tx.rf.pll.config=1000250"}));
}

TEST_F(MicrowaveBoardWriteTest, ReceiverWithAllFlagsWritesTheDspTwice) {
    EXPECT_EQ(boot("Rx", withEverything).writeFrequencyToHW(carrier), ResultOk);
    EXPECT_EQ(writes(),
              (Lines{"channel.1.dsp.rx.freq.offset=4000", "channel.1.dsp.rx.freq.offset=50000",
                     "channel.1.rx.if.frequency=140250", "channel.1.rx.rf.lo.frequency.in.hz=8973125000",
                     "channel.1.rx.rf.pll.config=996250"}));
}

TEST_F(MicrowaveBoardWriteTest, OnlyTheDirectionRxItselfWritesTheDsp) {
    platform.variables().add("RXIfBb", {0});
    fail(Operation::tableLookup, "", 0x8001); // tables have names of another case
    EXPECT_EQ(boot("RX", withEverything).writeFrequencyToHW(carrier), ResultOk);
    EXPECT_EQ(writes(),
              (Lines{"channel.1.rx.if.frequency=140250", "channel.1.rx.rf.lo.frequency.in.hz=9000125000",
                     "channel.1.rx.rf.pll.config=0"}));
}

TEST_F(MicrowaveBoardWriteTest, InformationOfOneWriteComesInThisOrder) {
    set("RxIfBb", {56});
    boot("Rx", withEverything).writeFrequencyToHW(carrier);
    EXPECT_EQ(
        traces(),
        (Lines{"information: writeFrequencyToHW: Array(CS)=100, Array(Foffset)=-4000",
               "information: writeFrequencyToHW: channelSpacingOffsetkHz=-4000, m_rfSideband=-1",
               "information: writeFrequencyToHW: ChannelSpacing used: = 100",
               "information: channel.1.dsp.rx.freq.offset = 50000", "information: channel.1.Rx.if.pll 196250",
               "information: channel.1.Rx.rf.pll 8973125000", "information: channel.1.Rx.ifSideband 1",
               "information: channel.1.Rx.rfSideband -1", "information: RxIfBb 56"}));
}

TEST_F(MicrowaveBoardWriteTest, RetuningBackWritesTheSameValuesAgain) {
    Board& board = boot("Rx", withEverything);
    board.writeFrequencyToHW(carrier);
    const Lines first = writes();
    board.writeFrequencyToHW(17'500'000);
    forget();
    board.writeFrequencyToHW(carrier);
    EXPECT_EQ(writes(), first);
}

// The LO

TEST_F(MicrowaveBoardWriteTest, LoInHzIsEightBytesLeastSignificantFirst) {
    set("channel.1.rx.mixer.multiplicationfactor", {1});
    boot("Rx", withHz).writeFrequencyToHW(4'294'967'295UL); // 4294967295000 Hz are 0x3E7FFFFFC18
    const std::vector<Standalone::Call> buffers = platform.calls().journalOf(Operation::driverWriteBuffer);
    ASSERT_EQ(buffers.size(), 1U);
    EXPECT_EQ(buffers[0].bytes, (std::vector<std::uint8_t>{0x18, 0xFC, 0xFF, 0xFF, 0xE7, 0x03, 0x00, 0x00}));
}

TEST_F(MicrowaveBoardWriteTest, LoInKiloHertzIsALow32BitWord) {
    set("channel.1.rx.mixer.multiplicationfactor", {1});
    boot("Rx", plainBoard).writeFrequencyToHW(2'147'483'648UL); // 2147484000 kHz, beyond a signed int
    EXPECT_EQ(writes().front(), "channel.1.rx.rf.lo.frequency=-2147483296");
}

TEST_F(MicrowaveBoardWriteTest, NegativeFactorWritesAnLoOfZero) {
    set("channel.1.rx.mixer.multiplicationfactor", {-2});
    EXPECT_EQ(boot("Rx", withHz).writeFrequencyToHW(carrier), ResultOk);
    EXPECT_EQ(writes(),
              (Lines{"channel.1.rx.rf.lo.frequency.in.hz=0", "channel.1.rx.rf.pll.config=1000250"}));
}

TEST_F(MicrowaveBoardWriteTest, FactorZeroFailsBeforeASynthesiserIsTouched) {
    set("channel.1.rx.mixer.multiplicationfactor", {0});
    EXPECT_EQ(boot("Rx", withIf).writeFrequencyToHW(carrier), ResultFailed);
    EXPECT_EQ(writes(), Lines{});
    EXPECT_EQ(complaints(),
              (Lines{"error: channel.1.Rx.rf.pll needs a mixer multiplication factor other than 0"}));
}

TEST_F(MicrowaveBoardWriteTest, FactorZeroFailsAfterTheDspWasWritten) {
    set("channel.1.rx.mixer.multiplicationfactor", {0});
    EXPECT_EQ(boot("Rx", withEverything).writeFrequencyToHW(carrier), ResultFailed);
    EXPECT_EQ(writes(), (Lines{"channel.1.dsp.rx.freq.offset=4000", "channel.1.dsp.rx.freq.offset=50000"}));
    EXPECT_EQ(complaints(),
              (Lines{"error: channel.1.Rx.rf.pll needs a mixer multiplication factor other than 0"}));
}

TEST_F(MicrowaveBoardWriteTest, CarrierZeroIsWrittenLikeAnyOther) {
    EXPECT_EQ(boot("Rx", withIf).writeFrequencyToHW(0), ResultOk);
    EXPECT_EQ(writes(), (Lines{"channel.1.rx.if.frequency=140000", "channel.1.rx.rf.lo.frequency=70000",
                               "channel.1.rx.rf.pll.config=0"}));
}

TEST_F(MicrowaveBoardWriteTest, HighestCarrierIsWrittenLikeAnyOther) {
    EXPECT_EQ(boot("Rx", withIf).writeFrequencyToHW(4'294'967'295UL), ResultOk);
    EXPECT_EQ(writes(), (Lines{"channel.1.rx.if.frequency=140001", "channel.1.rx.rf.lo.frequency=70000",
                               "channel.1.rx.rf.pll.config=0"}));
}

// The charge pump

TEST_F(MicrowaveBoardWriteTest, FailedLookupWritesTheChargePumpValueThatItLeft) {
    Board& board = boot("Rx", plainBoard);
    platform.calls().inject({Operation::tableLinear, receiveChargePumpTable, 0x8021, {}, 77});
    EXPECT_EQ(board.writeFrequencyToHW(carrier), ResultOk);
    EXPECT_EQ(writes().back(), "channel.1.rx.rf.pll.config=77");
    EXPECT_EQ(complaints(),
              (Lines{"error: Unable to fetch value from table "
                     "Channel.1.Rx.Rf.Pll.Frequency.To.Chargepump.Setting (ECHResult = 0x8021)"}));
}

TEST_F(MicrowaveBoardWriteTest, FailedLookupThatLeftNothingWritesZero) {
    Board& board = boot("Rx", plainBoard);
    board.writeFrequencyToHW(carrier);
    forget();
    fail(Operation::tableLinear, receiveChargePumpTable, 0x8021);
    EXPECT_EQ(board.writeFrequencyToHW(carrier), ResultOk);
    EXPECT_EQ(writes().back(), "channel.1.rx.rf.pll.config=0"); // not the value of the write before
}

TEST_F(MicrowaveBoardWriteTest, MissingTableIsReportedAtEveryWrite) {
    takeAwayTable(receiveChargePumpTable);
    Board& board = boot("Rx", plainBoard);
    EXPECT_EQ(board.writeFrequencyToHW(carrier), ResultOk);
    EXPECT_EQ(board.writeFrequencyToHW(carrier), ResultOk);
    const std::string line = "error: Unable to fetch value from table "
                             "Channel.1.Rx.Rf.Pll.Frequency.To.Chargepump.Setting (ECHResult = 0x8003)";
    EXPECT_EQ(complaints(), (Lines{line, line}));
}

TEST_F(MicrowaveBoardWriteTest, BoardWithLoConfigurationHasNoChargePumpToWrite) {
    addDriver("channel.1.rx.rf.lo.config");
    EXPECT_EQ(boot("Rx", plainBoard).writeFrequencyToHW(carrier), ResultOk);
    EXPECT_EQ(calls(), (Lines{"driver-write channel.1.rx.rf.lo.frequency"}));
}

// Drivers that are not there

TEST_F(MicrowaveBoardWriteTest, WithoutDriversOnlyTheTableIsRead) {
    platform.setPresence("IDriverLayer", Standalone::Presence::absent);
    EXPECT_EQ(boot("Rx", withIf).writeFrequencyToHW(carrier), ResultOk);
    EXPECT_EQ(calls(), (Lines{std::string("table-linear ") + receiveChargePumpTable}));
    EXPECT_EQ(complaints(), Lines{});
}

TEST_F(MicrowaveBoardWriteTest, RecordsWithoutTheirWriteWordAreSkippedSilently) {
    Board& board = boot("Rx", withIf);
    for (const char* const name : {"if.frequency", "rf.lo.frequency", "rf.pll.config"}) {
        driver(std::string("channel.1.rx.") + name).setMissingWords(Standalone::wordWrite);
    }
    EXPECT_EQ(board.writeFrequencyToHW(carrier), ResultOk);
    EXPECT_EQ(writes(), Lines{});
    EXPECT_EQ(complaints(), Lines{});
}

TEST_F(MicrowaveBoardWriteTest, RecordWithoutItsBufferWordIsNotWrittenInKiloHertzInstead) {
    Board& board = boot("Rx", withHz);
    driver("channel.1.rx.rf.lo.frequency.in.hz").setMissingWords(Standalone::wordWriteBuffer);
    EXPECT_EQ(board.writeFrequencyToHW(carrier), ResultOk);
    EXPECT_EQ(writes(), (Lines{"channel.1.rx.rf.pll.config=1000250"}));
}

// Failed writes

TEST_F(MicrowaveBoardWriteTest, FailedIfWriteEndsTheWriting) {
    Board& board = boot("Rx", withIf);
    fail(Operation::driverWrite, "channel.1.rx.if.frequency", 0x8011);
    EXPECT_EQ(board.writeFrequencyToHW(carrier), ResultFailed);
    EXPECT_EQ(writes(), (Lines{"channel.1.rx.if.frequency=140250"}));
    EXPECT_EQ(
        complaints(),
        (Lines{"error: Write to driver failed for channel.1.Rx.if.frequency (EDriverResult = 0x8011)"}));
}

TEST_F(MicrowaveBoardWriteTest, FailedLoWriteEndsTheWriting) {
    Board& board = boot("Rx", withIf);
    fail(Operation::driverWrite, "channel.1.rx.rf.lo.frequency", 0x8012);
    EXPECT_EQ(board.writeFrequencyToHW(carrier), ResultFailed);
    EXPECT_EQ(writes(), (Lines{"channel.1.rx.if.frequency=140250", "channel.1.rx.rf.lo.frequency=8930000"}));
    EXPECT_EQ(
        complaints(),
        (Lines{"error: Write to driver failed for channel.1.Rx.rf.lo.frequency (EDriverResult = 0x8012)"}));
}

TEST_F(MicrowaveBoardWriteTest, FailedLoWriteInHzEndsTheWriting) {
    Board& board = boot("Tx", withHz);
    fail(Operation::driverWriteBuffer, "channel.1.tx.rf.lo.frequency.in.hz", 0x8013);
    EXPECT_EQ(board.writeFrequencyToHW(carrier), ResultFailed);
    EXPECT_EQ(writes(), (Lines{"channel.1.tx.rf.lo.frequency.in.hz=9000125000"}));
    EXPECT_EQ(complaints(), (Lines{"error: Write to driver failed for channel.1.Tx.rf.lo.frequency.in.hz "
                                   "(EDriverResult = 0x8013)"}));
}

TEST_F(MicrowaveBoardWriteTest, FailedChargePumpWriteFailsAfterTheRestWasWritten) {
    Board& board = boot("Rx", plainBoard);
    fail(Operation::driverWrite, "channel.1.rx.rf.pll.config", 0x8014);
    EXPECT_EQ(board.writeFrequencyToHW(carrier), ResultFailed);
    EXPECT_EQ(writes(),
              (Lines{"channel.1.rx.rf.lo.frequency=9000000", "channel.1.rx.rf.pll.config=1000250"}));
    EXPECT_EQ(
        complaints(),
        (Lines{"error: Unable to write to driver channel.1.Rx.rf.pll.config (EDriverResult = 0x8014)"}));
}

TEST_F(MicrowaveBoardWriteTest, FailureWinsWhetherOrNotItIsTraced) {
    Board& board = boot("Rx", withIf);
    platform.trace().setThreshold(Standalone::TraceLevel::off);
    fail(Operation::driverWrite, "channel.1.rx.if.frequency", 0x8011);
    EXPECT_EQ(board.writeFrequencyToHW(carrier), ResultFailed);
    EXPECT_EQ(traces(), Lines{});
}

TEST_F(MicrowaveBoardWriteTest, CodesBelow8000HexLetTheWritingGoOn) {
    Board& board = boot("Rx", withIf);
    fail(Operation::driverWrite, "channel.1.rx.if.frequency", 0x7FFF);
    fail(Operation::driverWrite, "channel.1.rx.rf.lo.frequency", -1); // 0xFFFFFFFF
    EXPECT_EQ(board.writeFrequencyToHW(carrier), ResultOk);
    EXPECT_EQ(writes().size(), 3U);
    EXPECT_EQ(complaints(), Lines{});
}

TEST_F(MicrowaveBoardWriteTest, Exactly8000HexIsAFailure) {
    Board& board = boot("Rx", withIf);
    fail(Operation::driverWrite, "channel.1.rx.if.frequency", 0x8000);
    EXPECT_EQ(board.writeFrequencyToHW(carrier), ResultFailed);
}

TEST_F(MicrowaveBoardWriteTest, FailedWriteStillStoresTheCarrier) {
    Board& board = boot("Rx", withIf);
    fail(Operation::driverWrite, "channel.1.rx.if.frequency", 0x8011);
    EXPECT_EQ(board.setRfFrequency(carrier), ResultOk);
    EXPECT_EQ(board.getFrequency(), carrier);
}
