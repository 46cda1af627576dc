// What a calibration that fails has written, says, and hands back.

#include "CalibrationTest.h"

namespace {

class LoCancellationCalibrationFailureTest : public CalibrationTest {};

} // namespace

TEST_F(LoCancellationCalibrationFailureTest, DetectorThatCannotBeReadEndsTheSearch) {
    driver(detector).setMissingWords(Standalone::wordRead);
    EXPECT_EQ(calibrate({}), ResultFailed);
    EXPECT_EQ(written(), (Pairs{{0, 0}}));
    EXPECT_EQ(traces(), (Lines{"error: LoCancellation detector driver cannot be read (RadioChannel: 1)"}));
}

TEST_F(LoCancellationCalibrationFailureTest, FailedProbeWriteEndsTheSearchAtAnyProbe) {
    const Pairs corners{{0, 0}, {100, 0}, {0, 100}, {100, 100}};
    for (unsigned k = 0; k < 4; ++k) {
        LoCancellation canceller(1);
        EXPECT_EQ(canceller.onModuleInit(), ResultOk);
        failAfter(k, Operation::driverWrite, driverQ, 0x8011);
        forget();
        EXPECT_EQ(calibrate(canceller, {}), ResultFailed);
        EXPECT_EQ(written(), Pairs(corners.begin(), corners.begin() + k + 1));
        EXPECT_EQ(platform.calls().journalOf(Operation::driverRead).size(), k);
        EXPECT_EQ(
            traces(),
            (Lines{"error: Unable to write to driver Channel.1.tx.rf.mixer.q (EDriverResult = 0x8011)",
                   "error: Failed to set I and Q [for index " + std::to_string(k) + " and RadioChannel 1]"}));
        platform.calls().clearAll();
        platform.calls().setListener({});
    }
}

TEST_F(LoCancellationCalibrationFailureTest, FailureInTheFirstIterationHandsNothingBack) {
    LoCancellation& canceller = bootCanceller();
    fail(Operation::driverWrite, driverI, 0x8011);
    iterations = 4;
    EXPECT_EQ(calibrate(canceller, {}), ResultFailed);
    EXPECT_EQ(Pair(calibratedI, calibratedQ), Pair(-1111, -2222));
    EXPECT_EQ(maxDelta, -3333);
    EXPECT_EQ(iterations, 4U);
}

TEST_F(LoCancellationCalibrationFailureTest, FailureInTheSecondIterationHandsBackWhatTheFirstReached) {
    LoCancellation& canceller = bootCanceller();
    failAfter(6, Operation::driverWrite, driverI, 0x8011);
    Search search;
    search.maxIterations = 3;
    EXPECT_EQ(calibrate(canceller, search), ResultFailed);
    EXPECT_EQ(Pair(calibratedI, calibratedQ), Pair(-1111, -2222));
    EXPECT_EQ(maxDelta, 75);
    EXPECT_EQ(iterations, 1U);
    EXPECT_EQ(complaints().back(), "error: Failed to set I and Q [for index 2 and RadioChannel 1]");
}

TEST_F(LoCancellationCalibrationFailureTest, FailedReadingEndsTheSearchAndLeavesTheProbeSet) {
    LoCancellation& canceller = bootCanceller();
    failAfter(1, Operation::driverRead, detector, 0x8012);
    EXPECT_EQ(calibrate(canceller, {}), ResultFailed);
    EXPECT_EQ(written(), (Pairs{{0, 0}, {100, 0}}));
    EXPECT_EQ(Pair(calibratedI, calibratedQ), Pair(-1111, -2222));
    EXPECT_EQ(iterations, 0U);
    EXPECT_EQ(traces(), (Lines{"error: LoCancellation unable to read from detector driver (EDriverResult = "
                               "0x8012, RadioChannel: 1)"}));
}

TEST_F(LoCancellationCalibrationFailureTest, ReadingCodesBelow8000HexAreSuccess) {
    LoCancellation& canceller = bootCanceller();
    for (const std::int32_t code : {0x7FFF, -1}) {
        fail(Operation::driverRead, detector, code);
        EXPECT_EQ(calibrate(canceller, {}), ResultOk) << code;
    }
}

TEST_F(LoCancellationCalibrationFailureTest, FailedFinalWriteHandsTheResultBackAllTheSame) {
    LoCancellation& canceller = bootCanceller();
    failAfter(4, Operation::driverWrite, driverQ, 0x8011);
    EXPECT_EQ(calibrate(canceller, {}), ResultFailed);
    EXPECT_EQ(written().back(), Pair(62, 62));
    EXPECT_EQ(Pair(calibratedI, calibratedQ), Pair(62, 62));
    EXPECT_EQ(Pair(maxDelta, static_cast<int>(iterations)), Pair(75, 1));
    EXPECT_EQ(traces(),
              (Lines{"error: Unable to write to driver Channel.1.tx.rf.mixer.q (EDriverResult = 0x8011)",
                     "error: Failed to set I and Q [for RadioChannel 1]"}));
}

TEST_F(LoCancellationCalibrationFailureTest, WithoutAPlaceForAResultNothingIsTried) {
    LoCancellation& canceller = bootCanceller();
    const auto attempt = [&](int* i, int* q, int* delta, unsigned* count) {
        return canceller.calibrateLoCancellation(0, 100, 0, 100, 0.75, 0, 1, 0, i, q, delta, count, false);
    };
    EXPECT_EQ(attempt(nullptr, &calibratedQ, &maxDelta, &iterations), ResultFailed);
    EXPECT_EQ(attempt(&calibratedI, nullptr, &maxDelta, &iterations), ResultFailed);
    EXPECT_EQ(attempt(&calibratedI, &calibratedQ, nullptr, &iterations), ResultFailed);
    EXPECT_EQ(attempt(&calibratedI, &calibratedQ, &maxDelta, nullptr), ResultFailed);
    EXPECT_EQ(calls(), Lines{});
    EXPECT_EQ(traces(), Lines(4, "error: calibrateLoCancellation called without a place for its results"));
}

TEST_F(LoCancellationCalibrationFailureTest, WithoutDriversTheSearchRunsOnZeroReadings) {
    EXPECT_EQ(calibrate(makeCanceller(), {}), ResultOk);
    EXPECT_EQ(calls(), Lines{});
    EXPECT_EQ(Pair(calibratedI, calibratedQ), Pair(62, 62));
}
