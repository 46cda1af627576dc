// The correction for a carrier and a temperature: what is looked up, what is written, what a failure leaves.

#include "MicrowaveRadioTest.h"

namespace {

constexpr const char* complaintAboutI = "error: Unable to fetch value from table "
                                        "Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.I "
                                        "(ECHResult = 0x8024)";
constexpr const char* complaintAboutQ = "error: Unable to fetch value from table "
                                        "Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.Q "
                                        "(ECHResult = 0x8025)";

class LoCancellationCorrectionTest : public MicrowaveRadioTest {
protected:
    using Point = std::array<std::int32_t, 2>;

    /** Where the tables were read, in order. */
    std::vector<Point> points() const {
        std::vector<Point> found;
        for (const Standalone::Call& call : platform.calls().journalOf(Operation::tableBilinear)) {
            found.push_back(call.at);
        }
        return found;
    }
};

} // namespace

// Writing I and Q

TEST_F(LoCancellationCorrectionTest, IIsWrittenBeforeQ) {
    EXPECT_EQ(bootCanceller().setIQ(-5, 6), ResultOk);
    EXPECT_EQ(writes(), (Lines{"channel.1.tx.rf.mixer.i=-5", "channel.1.tx.rf.mixer.q=6"}));
    EXPECT_EQ(traces(), Lines{});
}

TEST_F(LoCancellationCorrectionTest, WholeIntRangeIsWrittenAsItIs) {
    EXPECT_EQ(bootCanceller().setIQ(2'147'483'647, -2'147'483'647 - 1), ResultOk);
    EXPECT_EQ(writes(), (Lines{"channel.1.tx.rf.mixer.i=2147483647", "channel.1.tx.rf.mixer.q=-2147483648"}));
}

TEST_F(LoCancellationCorrectionTest, FailedIWriteLeavesQUntouched) {
    LoCancellation& canceller = bootCanceller();
    fail(Operation::driverWrite, "channel.1.tx.rf.mixer.i", 0x8011);
    EXPECT_EQ(canceller.setIQ(5, 6), ResultFailed);
    EXPECT_EQ(writes(), (Lines{"channel.1.tx.rf.mixer.i=5"}));
    EXPECT_EQ(traces(),
              (Lines{"error: Unable to write to driver Channel.1.tx.rf.mixer.i (EDriverResult = 0x8011)"}));
}

TEST_F(LoCancellationCorrectionTest, FailedQWriteComesAfterIWasWritten) {
    LoCancellation& canceller = bootCanceller();
    fail(Operation::driverWrite, "channel.1.tx.rf.mixer.q", 0x8012);
    EXPECT_EQ(canceller.setIQ(5, 6), ResultFailed);
    EXPECT_EQ(writes(), (Lines{"channel.1.tx.rf.mixer.i=5", "channel.1.tx.rf.mixer.q=6"}));
    EXPECT_EQ(driver("channel.1.tx.rf.mixer.i").value(), 5);
    EXPECT_EQ(traces(),
              (Lines{"error: Unable to write to driver Channel.1.tx.rf.mixer.q (EDriverResult = 0x8012)"}));
}

TEST_F(LoCancellationCorrectionTest, CodesBelow8000HexAreSuccess) {
    LoCancellation& canceller = bootCanceller();
    fail(Operation::driverWrite, "channel.1.tx.rf.mixer.i", 0x7FFF);
    fail(Operation::driverWrite, "channel.1.tx.rf.mixer.q", -1); // 0xFFFFFFFF
    EXPECT_EQ(canceller.setIQ(5, 6), ResultOk);
    EXPECT_EQ(writes().size(), 2U);
}

TEST_F(LoCancellationCorrectionTest, MessagesNameTheMixerAlsoForCoarseDcDrivers) {
    takeAwayDriver("channel.1.tx.rf.mixer.i");
    addDriver("channel.1.tx.bb.iq.coarse.dc.i.v.adjust");
    LoCancellation& canceller = bootCanceller();
    fail(Operation::driverWrite, "channel.1.tx.bb.iq.coarse.dc.i.v.adjust", 0x8013);
    EXPECT_EQ(canceller.setIQ(5, 6), ResultFailed);
    EXPECT_EQ(traces(),
              (Lines{"error: Unable to write to driver Channel.1.tx.rf.mixer.i (EDriverResult = 0x8013)"}));
}

TEST_F(LoCancellationCorrectionTest, WithoutDriversNothingIsWrittenAndNothingFails) {
    EXPECT_EQ(makeCanceller().setIQ(5, 6), ResultOk);
    EXPECT_EQ(calls(), Lines{});
    EXPECT_EQ(traces(), Lines{});
}

TEST_F(LoCancellationCorrectionTest, RecordWithoutItsWriteWordIsSkippedSilently) {
    LoCancellation& canceller = bootCanceller();
    driver("channel.1.tx.rf.mixer.i").setMissingWords(Standalone::wordWrite);
    EXPECT_EQ(canceller.setIQ(5, 6), ResultOk);
    EXPECT_EQ(writes(), (Lines{"channel.1.tx.rf.mixer.q=6"}));
    EXPECT_EQ(traces(), Lines{});
}

// From the tables

TEST_F(LoCancellationCorrectionTest, BothTablesAreReadBeforeBothDriversAreWritten) {
    EXPECT_EQ(bootCanceller().setLoCancellation(18'000'000, 25), ResultOk);
    EXPECT_EQ(calls(),
              (Lines{std::string("table-bilinear ") + tableI, std::string("table-bilinear ") + tableQ,
                     "driver-write channel.1.tx.rf.mixer.i", "driver-write channel.1.tx.rf.mixer.q"}));
    EXPECT_EQ(traces(), Lines{});
}

TEST_F(LoCancellationCorrectionTest, CorrectionIsInterpolatedBetweenTheNodes) {
    EXPECT_EQ(bootCanceller().setLoCancellation(18'000'000, 25), ResultOk);
    EXPECT_EQ(writes(), (Lines{"channel.1.tx.rf.mixer.i=1025", "channel.1.tx.rf.mixer.q=-1025"}));
}

TEST_F(LoCancellationCorrectionTest, TablesAreReadAtCarrierAndTemperatureUnchanged) {
    bootCanceller().setLoCancellation(17'654'321, -33);
    EXPECT_EQ(points(), (std::vector<Point>{{17'654'321, -33}, {17'654'321, -33}}));
}

TEST_F(LoCancellationCorrectionTest, CarrierBeyondTheSignedRangeReachesTheTableAsItsWord) {
    bootCanceller().setLoCancellation(4'294'967'295U, 25);
    EXPECT_EQ(points(), (std::vector<Point>{{-1, 25}, {-1, 25}}));
}

TEST_F(LoCancellationCorrectionTest, FailedITableIsReportedAndIsWrittenAsItLeftIt) {
    LoCancellation& canceller = bootCanceller();
    platform.calls().inject({Operation::tableBilinear, tableI, 0x8024, {}, 77});
    EXPECT_EQ(canceller.setLoCancellation(18'000'000, 25), ResultOk);
    EXPECT_EQ(writes(), (Lines{"channel.1.tx.rf.mixer.i=77", "channel.1.tx.rf.mixer.q=-1025"}));
    EXPECT_EQ(traces(), (Lines{complaintAboutI}));
}

TEST_F(LoCancellationCorrectionTest, FailedQTableIsReportedAndIsWrittenAsItLeftIt) {
    LoCancellation& canceller = bootCanceller();
    platform.calls().inject({Operation::tableBilinear, tableQ, 0x8025, {}, -78});
    EXPECT_EQ(canceller.setLoCancellation(18'000'000, 25), ResultOk);
    EXPECT_EQ(writes(), (Lines{"channel.1.tx.rf.mixer.i=1025", "channel.1.tx.rf.mixer.q=-78"}));
    EXPECT_EQ(traces(), (Lines{complaintAboutQ}));
}

TEST_F(LoCancellationCorrectionTest, TablesThatLeaveNothingHaveZeroWritten) {
    LoCancellation& canceller = bootCanceller();
    canceller.setLoCancellation(18'000'000, 25);
    forget();
    fail(Operation::tableBilinear, tableI, 0x8024);
    fail(Operation::tableBilinear, tableQ, 0x8025);
    EXPECT_EQ(canceller.setLoCancellation(18'000'000, 25), ResultOk);
    EXPECT_EQ(writes(), (Lines{"channel.1.tx.rf.mixer.i=0", "channel.1.tx.rf.mixer.q=0"}));
    EXPECT_EQ(traces(), (Lines{complaintAboutI, complaintAboutQ}));
}

TEST_F(LoCancellationCorrectionTest, FailedWriteFailsTheCorrection) {
    LoCancellation& canceller = bootCanceller();
    fail(Operation::driverWrite, "channel.1.tx.rf.mixer.q", 0x8012);
    EXPECT_EQ(canceller.setLoCancellation(18'000'000, 25), ResultFailed);
    EXPECT_EQ(writes(), (Lines{"channel.1.tx.rf.mixer.i=1025", "channel.1.tx.rf.mixer.q=-1025"}));
}
