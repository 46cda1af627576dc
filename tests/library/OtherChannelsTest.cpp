// Channels other than the first: every name and every message carries their number.

#include "MicrowaveRadioTest.h"

namespace {

/** A receiver with all flags on channel 2. */
class BoardOfChannelTwoTest : public MicrowaveRadioTest {
protected:
    BoardOfChannelTwoTest() {
        for (const char* const name : {"rx.rf.lo.frequency", "rx.rf.lo.frequency.in.hz", "rx.if.frequency",
                                       "rx.rf.pll.config", "dsp.rx.freq.offset"}) {
            addDriver(std::string("channel.2.") + name);
        }
        const std::string prefix = "channel.2.rx.";
        platform.variables().add(prefix + "mixer.multiplicationfactor", {2});
        platform.variables().add(prefix + "rf.spectruminverted", {0});
        platform.variables().add(prefix + "baseband.spectruminverted", {1});
        platform.variables().add(prefix + "if.frequency", {140'000});
        platform.variables().add(prefix + "rf.frequency.cs.offset.arraysize", {2});
        platform.variables().add(prefix + "rf.frequency.cs.offset.array", {100, -4000});
        platform.tables().add({"Channel.2.Rx.Rf.Pll.Frequency.To.Chargepump.Setting", {0}, {}, {5}});
    }

    /** The board, having gone through all phases. */
    Board& boot() {
        Board& board = make("Rx", withEverything, 2);
        EXPECT_EQ(board.onModuleInit(), ResultOk);
        EXPECT_EQ(board.getVariablesFromDatabase(), ResultOk);
        EXPECT_EQ(board.getFFVariablesFromDatabase(), ResultOk);
        forget();
        return board;
    }
    /** The complaints of a write whose `operation` on the driver `name` fails. */
    Lines complaintsOfWrite(Operation operation, const std::string& name) {
        Board& board = boot();
        fail(operation, name, 0x8011);
        EXPECT_EQ(board.writeFrequencyToHW(carrier), ResultFailed);
        platform.calls().clearAll();
        return complaints();
    }

    static constexpr unsigned long carrier = 18'000'250;
};

/** A canceller on channel 3 that has only what stands in for something else. */
class CancellerOfChannelThreeTest : public MicrowaveRadioTest {
protected:
    CancellerOfChannelThreeTest() {
        for (const char* const name : {"bb.iq.coarse.dc.i.v.adjust", "bb.iq.coarse.dc.q.v.adjust",
                                       "rf.detector.low.v.detect", "rf.detector.high.v.detect"}) {
            addDriver(std::string("channel.3.tx.") + name);
        }
    }
    void addCoarseDcTables() {
        for (const std::string branch : {"I", "Q"}) {
            platform.tables().add(
                {"Channel.3.Tx.Bb.Frequency.To.Coarse.Dc." + branch + ".Compensation", {0}, {0}, {7}});
        }
    }

    /** A canceller that found all that. */
    LoCancellation& boot() {
        LoCancellation& canceller = makeCanceller(3);
        EXPECT_EQ(canceller.onModuleInit(), ResultOk);
        forget();
        return canceller;
    }
    /** What a calibration tells. */
    Lines tracesOfCalibration(LoCancellation& canceller) {
        int i = 0;
        int q = 0;
        int delta = 0;
        unsigned iterations = 0;
        canceller.calibrateLoCancellation(0, 100, 0, 100, 0.75, 0, 1, 0, &i, &q, &delta, &iterations, false);
        return traces();
    }
};

constexpr const char* adjustI = "channel.3.tx.bb.iq.coarse.dc.i.v.adjust";
constexpr const char* adjustQ = "channel.3.tx.bb.iq.coarse.dc.q.v.adjust";

} // namespace

// Microwave board

TEST_F(BoardOfChannelTwoTest, LooksForItsOwnHardware) {
    EXPECT_EQ(make("Rx", withEverything, 2).onModuleInit(), ResultOk);
    EXPECT_EQ(calls(),
              (Lines{"broker-lookup IDriverLayer", "driver-lookup channel.2.rx.rf.lo.frequency",
                     "driver-lookup channel.2.rx.rf.lo.frequency.in.hz",
                     "driver-lookup channel.2.rx.if.frequency", "driver-lookup channel.2.rx.rf.lo.config",
                     "driver-lookup channel.2.rx.rf.pll.config", "driver-lookup channel.2.dsp.rx.freq.offset",
                     "table-lookup Channel.2.Rx.Rf.Pll.Frequency.To.Chargepump.Setting",
                     "driver-write channel.2.rx.if.frequency"}));
    EXPECT_EQ(traces(), (Lines{"information: channel.2.Rx.if.pll 0"}));
}

TEST_F(BoardOfChannelTwoTest, ReadsItsOwnVariables) {
    EXPECT_EQ(make("Rx", withEverything, 2).getVariablesFromDatabase(), ResultOk);
    EXPECT_EQ(calls(), (Lines{"variable-get channel.2.rx.mixer.multiplicationfactor",
                              "variable-get channel.2.rx.rf.spectruminverted",
                              "variable-get channel.2.rx.baseband.spectruminverted",
                              "variable-get channel.2.rx.if.frequency", "variable-get RxIfBb",
                              "variable-address HwCodeDsp",
                              "variable-address channel.2.rx.rf.frequency.cs.offset.arraysize",
                              "variable-address channel.2.rx.rf.frequency.cs.offset.array"}));
}

TEST_F(BoardOfChannelTwoTest, WritesItsOwnDrivers) {
    EXPECT_EQ(boot().writeFrequencyToHW(carrier), ResultOk);
    EXPECT_EQ(writes(),
              (Lines{"channel.2.dsp.rx.freq.offset=4000", "channel.2.dsp.rx.freq.offset=50000",
                     "channel.2.rx.if.frequency=140250", "channel.2.rx.rf.lo.frequency.in.hz=8973125000",
                     "channel.2.rx.rf.pll.config=5"}));
}

TEST_F(BoardOfChannelTwoTest, TracesItsNumber) {
    boot().writeFrequencyToHW(carrier);
    EXPECT_EQ(
        traces(),
        (Lines{"information: writeFrequencyToHW: Array(CS)=100, Array(Foffset)=-4000",
               "information: writeFrequencyToHW: channelSpacingOffsetkHz=-4000, m_rfSideband=-1",
               "information: writeFrequencyToHW: ChannelSpacing used: = 100",
               "information: channel.2.dsp.rx.freq.offset = 50000", "information: channel.2.Rx.if.pll 140250",
               "information: channel.2.Rx.rf.pll 8973125000", "information: channel.2.Rx.ifSideband 1",
               "information: channel.2.Rx.rfSideband -1", "information: RxIfBb 0"}));
}

TEST_F(BoardOfChannelTwoTest, FailedWritesTellItsNumber) {
    EXPECT_EQ(complaintsOfWrite(Operation::driverWrite, "channel.2.dsp.rx.freq.offset"),
              (Lines{"error: Write to driver failed for channel.2.dsp.rx.freq.offset "
                     "(EDriverResult = 0x8011)"}));
    EXPECT_EQ(
        complaintsOfWrite(Operation::driverWrite, "channel.2.rx.if.frequency"),
        (Lines{"error: Write to driver failed for channel.2.Rx.if.frequency (EDriverResult = 0x8011)"}));
    EXPECT_EQ(complaintsOfWrite(Operation::driverWriteBuffer, "channel.2.rx.rf.lo.frequency.in.hz"),
              (Lines{"error: Write to driver failed for channel.2.Rx.rf.lo.frequency.in.hz "
                     "(EDriverResult = 0x8011)"}));
    EXPECT_EQ(
        complaintsOfWrite(Operation::driverWrite, "channel.2.rx.rf.pll.config"),
        (Lines{"error: Unable to write to driver channel.2.Rx.rf.pll.config (EDriverResult = 0x8011)"}));
}

TEST_F(BoardOfChannelTwoTest, FailedHalfSpacingWriteTellsItsNumber) {
    set("channel.2.rx.rf.frequency.cs.offset.arraysize", {0});
    Board& board = boot();
    platform.calls().setListener([this](const Standalone::Call& call) {
        if (call.operation == Operation::driverWrite) {
            fail(Operation::driverWrite, "channel.2.dsp.rx.freq.offset", 0x8012);
        }
    });
    EXPECT_EQ(board.writeFrequencyToHW(carrier), ResultFailed);
    EXPECT_EQ(complaints(), (Lines{"error: Write to driver failed for channel.2.dsp.rx.freq.offset "
                                   "(EDriverResult = 0x8012)"}));
}

TEST_F(BoardOfChannelTwoTest, ArrayThatEndsInsideAPairTellsItsNumber) {
    set("channel.2.rx.rf.frequency.cs.offset.arraysize", {1});
    EXPECT_EQ(boot().writeFrequencyToHW(carrier), ResultFailed);
    EXPECT_EQ(complaints(), (Lines{"error: channel.2.rx.rf.frequency.cs.offset.array ends inside a pair"}));
}

TEST_F(BoardOfChannelTwoTest, FailedChargePumpLookupTellsItsNumber) {
    fail(Operation::tableLinear, "Channel.2.Rx.Rf.Pll.Frequency.To.Chargepump.Setting", 0x8013);
    EXPECT_EQ(boot().writeFrequencyToHW(carrier), ResultOk);
    EXPECT_EQ(complaints(),
              (Lines{"error: Unable to fetch value from table "
                     "Channel.2.Rx.Rf.Pll.Frequency.To.Chargepump.Setting (ECHResult = 0x8013)"}));
}

// Canceller

TEST_F(CancellerOfChannelThreeTest, LooksForItsOwnHardware) {
    addCoarseDcTables();
    EXPECT_EQ(makeCanceller(3).onModuleInit(), ResultOk);
    EXPECT_EQ(calls(), (Lines{"broker-lookup IDriverLayer", "driver-lookup channel.3.tx.rf.mixer.i",
                              "driver-lookup channel.3.tx.bb.iq.coarse.dc.i.v.adjust",
                              "driver-lookup channel.3.tx.rf.mixer.q",
                              "driver-lookup channel.3.tx.bb.iq.coarse.dc.q.v.adjust",
                              "driver-lookup channel.3.tx.rf.detector.v",
                              "driver-lookup channel.3.tx.rf.detector.low.v.detect",
                              "driver-lookup channel.3.tx.rf.detector.high.v.detect",
                              "table-lookup Channel.3.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.I",
                              "table-lookup Channel.3.Tx.Bb.Frequency.To.Coarse.Dc.I.Compensation",
                              "table-lookup Channel.3.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.Q",
                              "table-lookup Channel.3.Tx.Bb.Frequency.To.Coarse.Dc.Q.Compensation"}));
    EXPECT_EQ(traces(), Lines{});
}

TEST_F(CancellerOfChannelThreeTest, MissingTablesTellItsNumber) {
    EXPECT_EQ(makeCanceller(3).onModuleInit(), ResultOk);
    EXPECT_EQ(
        traces(),
        (Lines{"error: Unable to fetch table Channel.3.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.I "
               "(ECHResult = 0x8001)",
               "error: Unable to fetch table Channel.3.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.Q "
               "(ECHResult = 0x8001)"}));
}

TEST_F(CancellerOfChannelThreeTest, MissingDriversTellItsNumber) {
    takeAwayDriver(adjustQ);
    EXPECT_EQ(makeCanceller(3).onModuleInit(), ResultFailed);
    EXPECT_EQ(traces(),
              (Lines{"error: LoCancellation failed to get driver interface [channel.3.tx.rf.mixer.q] "
                     "or interface [channel.3.tx.bb.iq.coarse.dc.q.v.adjust] (EDriverResult = 0x8001)"}));
}

TEST_F(CancellerOfChannelThreeTest, FailedCorrectionLookupsTellItsNumber) {
    LoCancellation& canceller = boot();
    EXPECT_EQ(canceller.setLoCancellation(18'000'000, 25), ResultOk); // without tables
    EXPECT_EQ(traces(), (Lines{"error: Unable to fetch value from table "
                               "Channel.3.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.I "
                               "(ECHResult = 0x8003)",
                               "error: Unable to fetch value from table "
                               "Channel.3.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.Q "
                               "(ECHResult = 0x8003)"}));
}

TEST_F(CancellerOfChannelThreeTest, FailedWritesTellItsNumber) {
    LoCancellation& canceller = boot();
    fail(Operation::driverWrite, adjustQ, 0x8012);
    EXPECT_EQ(canceller.setIQ(5, 6), ResultFailed);
    fail(Operation::driverWrite, adjustI, 0x8011);
    EXPECT_EQ(canceller.setIQ(5, 6), ResultFailed);
    EXPECT_EQ(traces(),
              (Lines{"error: Unable to write to driver Channel.3.tx.rf.mixer.q (EDriverResult = 0x8012)",
                     "error: Unable to write to driver Channel.3.tx.rf.mixer.i (EDriverResult = 0x8011)"}));
}

TEST_F(CancellerOfChannelThreeTest, ProbeThatCouldNotBeSetTellsItsNumber) {
    LoCancellation& canceller = boot();
    fail(Operation::driverWrite, adjustI, 0x8011);
    EXPECT_EQ(tracesOfCalibration(canceller),
              (Lines{"error: Unable to write to driver Channel.3.tx.rf.mixer.i (EDriverResult = 0x8011)",
                     "error: Failed to set I and Q [for index 0 and RadioChannel 3]"}));
}

TEST_F(CancellerOfChannelThreeTest, ResultThatCouldNotBeSetTellsItsNumber) {
    LoCancellation& canceller = boot();
    platform.calls().setListener([this, reads = 0](const Standalone::Call& call) mutable {
        if (call.operation == Operation::driverRead && ++reads == 4) {
            fail(Operation::driverWrite, adjustI, 0x8011);
        }
    });
    EXPECT_EQ(tracesOfCalibration(canceller),
              (Lines{"error: Unable to write to driver Channel.3.tx.rf.mixer.i (EDriverResult = 0x8011)",
                     "error: Failed to set I and Q [for RadioChannel 3]"}));
}

TEST_F(CancellerOfChannelThreeTest, FailedReadingsTellItsNumber) {
    LoCancellation& canceller = boot();
    driver("channel.3.tx.rf.detector.low.v.detect").setMissingWords(Standalone::wordRead);
    EXPECT_EQ(tracesOfCalibration(canceller),
              (Lines{"error: LoCancellation detector driver cannot be read (RadioChannel: 3)"}));
    driver("channel.3.tx.rf.detector.low.v.detect").setMissingWords(0);
    fail(Operation::driverRead, "channel.3.tx.rf.detector.low.v.detect", 0x8014);
    EXPECT_EQ(tracesOfCalibration(canceller).back(),
              "error: LoCancellation unable to read from detector driver (EDriverResult = 0x8014, "
              "RadioChannel: 3)");
}
