// The calibration on the hardware: what is written, waited for and read, when it ends, and what it hands
// back. What a failure leaves is told in LoCancellationCalibrationFailureTest.

#include "CalibrationTest.h"

#include <unistd.h>

#include <cmath>

using testing::ElementsAre;

namespace {

/** The waits asked for, in microseconds, each with the number of calls that the platform had seen by then. */
std::vector<std::pair<useconds_t, std::size_t>> waits;

constexpr const char* lowDetector = "channel.1.tx.rf.detector.low.v.detect";
constexpr const char* highDetector = "channel.1.tx.rf.detector.high.v.detect";

class LoCancellationCalibrationTest : public CalibrationTest {
protected:
    LoCancellationCalibrationTest() { waits.clear(); }
};

} // namespace

/** Stands in for the one of the C library in the whole test program: nobody waits, and the waits can be told.
 */
extern "C" int usleep(useconds_t microseconds) {
    if (const Standalone::Platform* const platform = Standalone::Platform::current()) {
        waits.emplace_back(microseconds, platform->calls().journal().size());
    }
    return 0;
}

// One iteration

TEST_F(LoCancellationCalibrationTest, EachProbeIsWrittenThenRead) {
    EXPECT_EQ(calibrate({}), ResultOk);
    const Lines probe{"driver-write channel.1.tx.rf.mixer.i", "driver-write channel.1.tx.rf.mixer.q",
                      "driver-read channel.1.tx.rf.detector.v"};
    Lines expected;
    for (int i = 0; i < 4; ++i) {
        expected.insert(expected.end(), probe.begin(), probe.end());
    }
    expected.insert(expected.end(), probe.begin(), probe.end() - 1);
    EXPECT_EQ(calls(), expected);
}

TEST_F(LoCancellationCalibrationTest, CornersAreProbedWithIRunningFaster) {
    EXPECT_EQ(calibrate({-10, 20, 30, 40}), ResultOk);
    EXPECT_THAT(written(), ElementsAre(Pair(-10, 30), Pair(20, 30), Pair(-10, 40), Pair(20, 40),
                                       testing::_)); // and then the result
}

TEST_F(LoCancellationCalibrationTest, SettleTimeIsWaitedBetweenEachWriteAndItsReading) {
    Search search;
    search.settleTimeMs = 5;
    EXPECT_EQ(calibrate(search), ResultOk);
    EXPECT_THAT(waits, ElementsAre(std::pair(5000U, 2U), std::pair(5000U, 5U), std::pair(5000U, 8U),
                                   std::pair(5000U, 11U)));
}

TEST_F(LoCancellationCalibrationTest, SettleTimeInMicrosecondsWrapsAround) {
    Search search;
    search.settleTimeMs = 4'294'968; // 704 microseconds more than 32 bits hold
    EXPECT_EQ(calibrate(search), ResultOk);
    EXPECT_EQ(waits.front().first, 704U);
}

TEST_F(LoCancellationCalibrationTest, ReadingsDecideWhichSideIsKept) {
    leak(detector, [](int i, int q) { return q - i; }); // least at high I and low Q
    EXPECT_EQ(calibrate({}), ResultOk);
    EXPECT_EQ(Pair(calibratedI, calibratedQ), Pair(62, 37)); // 25..100 and 0..75
}

TEST_F(LoCancellationCalibrationTest, EqualReadingsKeepTheUpperCorner) {
    leak(detector, [](int, int) { return 9; });
    EXPECT_EQ(calibrate({}), ResultOk);
    EXPECT_EQ(Pair(calibratedI, calibratedQ), Pair(62, 62));
}

TEST_F(LoCancellationCalibrationTest, DetectorThatStoresNothingLeavesTheReadingAsItWas) {
    LoCancellation& canceller = bootCanceller();
    driver(detector).record()->read = [](void*, int*) { return EDriverResult{0}; };
    EXPECT_EQ(calibrate(canceller, {}), ResultOk);
    EXPECT_EQ(Pair(calibratedI, calibratedQ), Pair(62, 62)); // as for readings of 0
}

TEST_F(LoCancellationCalibrationTest, SearchRunsAlsoWithCoarseDcTables) {
    for (const std::string branch : {"I", "Q"}) {
        takeAwayTable("Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer." + branch);
        platform.tables().add(
            {"Channel.1.Tx.Bb.Frequency.To.Coarse.Dc." + branch + ".Compensation", {0}, {0}, {7}});
    }
    leak(detector, towardTheLowerCorner);
    EXPECT_EQ(calibrate({}), ResultOk);
    EXPECT_EQ(written(), (Pairs{{0, 0}, {100, 0}, {0, 100}, {100, 100}, {37, 37}}));
}

// More iterations

TEST_F(LoCancellationCalibrationTest, TwoIterationsTowardTheLowerCorner) {
    leak(detector, towardTheLowerCorner);
    Search search;
    search.maxIterations = 2;
    EXPECT_EQ(calibrate(search), ResultOk);
    EXPECT_EQ(written(), (Pairs{{0, 0},
                                {100, 0},
                                {0, 100},
                                {100, 100}, // corners of 0..100
                                {18, 18},
                                {56, 18},
                                {18, 56},
                                {56, 56},    // inside 0..75
                                {28, 28}})); // middle of 0..56
    EXPECT_EQ(Pair(calibratedI, calibratedQ), Pair(28, 28));
    EXPECT_EQ(maxDelta, 56);
    EXPECT_EQ(iterations, 2U);
}

TEST_F(LoCancellationCalibrationTest, SuccessIsToldInOneNotice) {
    leak(detector, towardTheLowerCorner);
    Search search;
    search.maxIterations = 2;
    EXPECT_EQ(calibrate(search), ResultOk);
    EXPECT_EQ(traces(), (Lines{"notice: Calibrated LO cancellation, TxRF LO (I) = 28, TxRf LO (Q) = 28, "
                               "maxDelta = 56"}));
}

TEST_F(LoCancellationCalibrationTest, LeakageInsideTheRangeIsFound) {
    leak(detector, [](int i, int q) { return std::abs(i - 301) + std::abs(q + 77); });
    EXPECT_EQ(calibrate({-1000, 1000, -1000, 1000, 0.75, 4, 100}), ResultOk);
    EXPECT_NEAR(calibratedI, 301, 4);
    EXPECT_NEAR(calibratedQ, -77, 4);
    EXPECT_LE(maxDelta, 4);
}

// When it ends

TEST_F(LoCancellationCalibrationTest, AtLeastOneIterationIsRun) {
    for (const unsigned maxIterations : {0U, 1U}) {
        iterations = 0;
        Search search;
        search.maxIterations = maxIterations;
        LoCancellation canceller(1);
        EXPECT_EQ(canceller.onModuleInit(), ResultOk);
        forget();
        EXPECT_EQ(calibrate(canceller, search), ResultOk);
        EXPECT_EQ(iterations, 1U);
        EXPECT_EQ(written().size(), 5U);
    }
}

TEST_F(LoCancellationCalibrationTest, IterationsGoOnFromWhatTheCallerPutThere) {
    iterations = 3;
    Search search;
    search.maxIterations = 5;
    EXPECT_EQ(calibrate(search), ResultOk);
    EXPECT_EQ(iterations, 5U);
    EXPECT_EQ(written().size(), 9U); // two iterations and the result
}

TEST_F(LoCancellationCalibrationTest, IterationsAboveTheLimitEndAfterOne) {
    iterations = 7;
    Search search;
    search.maxIterations = 5;
    EXPECT_EQ(calibrate(search), ResultOk);
    EXPECT_EQ(iterations, 8U);
}

TEST_F(LoCancellationCalibrationTest, IterationsCompareUnsigned) {
    iterations = 4'294'967'295U; // counted up, it is 0
    Search search;
    search.maxIterations = 2;
    EXPECT_EQ(calibrate(search), ResultOk);
    EXPECT_EQ(iterations, 2U);
    EXPECT_EQ(written().size(), 13U);
}

TEST_F(LoCancellationCalibrationTest, LimitBeyondTheSignedRangeIsALimitLikeAnyOther) {
    Search search;
    search.maxIterations = 4'294'967'295U;
    search.minDelta = 50;
    EXPECT_EQ(calibrate(search), ResultOk);
    EXPECT_EQ(iterations, 3U); // 75, 57 (43.75 was cut to 43) and 43
}

TEST_F(LoCancellationCalibrationTest, WidthThatEqualsTheLeastOneIsNarrowEnough) {
    leak(detector, towardTheLowerCorner);
    Search search;
    search.maxIterations = 100;
    search.minDelta = 75;
    EXPECT_EQ(calibrate(search), ResultOk);
    EXPECT_EQ(iterations, 1U);
}

TEST_F(LoCancellationCalibrationTest, WidthAboveTheLeastOneIsNarrowedAgain) {
    leak(detector, towardTheLowerCorner);
    Search search;
    search.maxIterations = 100;
    search.minDelta = 74;
    EXPECT_EQ(calibrate(search), ResultOk);
    EXPECT_EQ(iterations, 2U);
    EXPECT_EQ(maxDelta, 56);
}

TEST_F(LoCancellationCalibrationTest, NegativeLeastWidthIsNeverReachedByAnUprightRange) {
    Search search;
    search.maxIterations = 30;
    search.minDelta = -1;
    EXPECT_EQ(calibrate(search), ResultOk);
    EXPECT_EQ(iterations, 30U);
}

TEST_F(LoCancellationCalibrationTest, InvertedRangesAreNarrowEnoughAfterOneIteration) {
    leak(detector, towardTheLowerCorner); // probe 3, at the high bounds
    EXPECT_EQ(calibrate({100, 0, 100, 0, 0.75, 0, 10}), ResultOk);
    EXPECT_EQ(iterations, 1U);
    EXPECT_EQ(maxDelta, -75); // 75..0
    EXPECT_EQ(Pair(calibratedI, calibratedQ), Pair(37, 37));
}

TEST_F(LoCancellationCalibrationTest, MiddleIsCutTowardZero) {
    EXPECT_EQ(calibrate({3, 4, -3, -2, 1.0}), ResultOk); // a factor of 1 keeps the ranges
    EXPECT_EQ(Pair(calibratedI, calibratedQ), Pair(3, -2));
    EXPECT_EQ(written().back(), Pair(3, -2));
}

TEST_F(LoCancellationCalibrationTest, FactorThatIsNotANumberEndsAtTheLimit) {
    EXPECT_EQ(calibrate({10, 100, 10, 100, std::nan(""), 0, 3}), ResultOk);
    EXPECT_EQ(iterations, 3U);
    EXPECT_EQ(maxDelta, 100); // the lower bounds became 0
    EXPECT_EQ(Pair(calibratedI, calibratedQ), Pair(50, 50));
}

TEST_F(LoCancellationCalibrationTest, HugeFactorSaturates) {
    leak(detector, towardTheLowerCorner);
    EXPECT_EQ(calibrate({0, 20, 0, 20, 1e300}), ResultOk);
    EXPECT_EQ(maxDelta, 2'147'483'647);
    EXPECT_EQ(Pair(calibratedI, calibratedQ), Pair(1'073'741'823, 1'073'741'823));
}

// Detectors

TEST_F(LoCancellationCalibrationTest, HighDetectorIsReadWhenAskedFor) {
    takeAwayDriver(detector);
    addDriver(lowDetector);
    addDriver(highDetector);
    leak(highDetector, towardTheLowerCorner);
    Search search;
    search.useHighDetector = true;
    EXPECT_EQ(calibrate(search), ResultOk);
    EXPECT_EQ(calls()[2], "driver-read channel.1.tx.rf.detector.high.v.detect");
    EXPECT_EQ(Pair(calibratedI, calibratedQ), Pair(37, 37));
}

TEST_F(LoCancellationCalibrationTest, LowDetectorIsReadOtherwise) {
    takeAwayDriver(detector);
    addDriver(lowDetector);
    addDriver(highDetector);
    leak(lowDetector, towardTheLowerCorner);
    EXPECT_EQ(calibrate({}), ResultOk);
    EXPECT_EQ(calls()[2], "driver-read channel.1.tx.rf.detector.low.v.detect");
    EXPECT_EQ(Pair(calibratedI, calibratedQ), Pair(37, 37));
}

TEST_F(LoCancellationCalibrationTest, WithoutAHighDetectorTheSearchEndsInTheUpperCorner) {
    leak(detector, towardTheLowerCorner);
    EXPECT_EQ(calibrate({0, 1000, -1000, 0, 0.5, 1, 100, 0, true}), ResultOk);
    EXPECT_TRUE(platform.calls().journalOf(Operation::driverRead).empty());
    // I: 500, 750, 875, 937, 968, 984, 992, 996, 998, 999 to 1000. Q: -500, -250, -125, -62 ... -1, 0 to 0.
    EXPECT_EQ(traces(), (Lines{"notice: Calibrated LO cancellation, TxRF LO (I) = 999, TxRf LO (Q) = 0, "
                               "maxDelta = 1"}));
    EXPECT_EQ(iterations, 10U);
}
