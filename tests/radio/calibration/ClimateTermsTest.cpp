#include "radio/calibration/ClimateTerms.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Radio::Calibration {
namespace {

using testing::ElementsAre;

const std::vector<std::int32_t> wanted = {-33, -10, 12, 33, 55};

TEST(ClimateRoute, GoesToTheNearerEndFirstAndTakesWhatLiesOnTheWay) {
    EXPECT_THAT(routeThrough(wanted, 25), ElementsAre(33, 55, 12, -10, -33));
    EXPECT_THAT(routeThrough(wanted, 0), ElementsAre(-10, -33, 12, 33, 55));
    EXPECT_THAT(routeThrough(wanted, 12), ElementsAre(12, 33, 55, -10, -33));
    EXPECT_THAT(routeThrough(wanted, 10), ElementsAre(-10, -33, 12, 33, 55));
}

TEST(ClimateRoute, FromBeyondAnEndGoesStraightThrough) {
    EXPECT_THAT(routeThrough(wanted, 70), ElementsAre(55, 33, 12, -10, -33));
    EXPECT_THAT(routeThrough(wanted, -40), ElementsAre(-33, -10, 12, 33, 55));
}

TEST(ClimateRoute, OfNobodyKnowsWhereIsAscending) {
    EXPECT_EQ(routeThrough(wanted, std::nullopt), wanted);
    EXPECT_THAT(routeThrough({20}, 60), ElementsAre(20));
}

TEST(ClimateTermsFor, BoardAndCommandLineSayHowNearAndHowLong) {
    Board board;
    CalibrationDescription wishes;
    wishes.channel = 1;
    EXPECT_EQ(climateTermsFor(board, wishes, false).tolerance, 2);
    EXPECT_EQ(climateTermsFor(board, wishes, false).dwell.count(), 0);
    CalibrationDescription described;
    described.channel = 1;
    described.chamber = "chamber";
    board.calibrations = {described};
    EXPECT_EQ(climateTermsFor(board, wishes, false).dwell.count(), 60);
    board.calibrations[0].tolerance = 1;
    board.calibrations[0].dwell = 300;
    EXPECT_EQ(climateTermsFor(board, wishes, false).tolerance, 1);
    EXPECT_EQ(climateTermsFor(board, wishes, false).dwell.count(), 300);
    wishes.dwell = 5;
    EXPECT_EQ(climateTermsFor(board, wishes, true).dwell.count(), 5);
    EXPECT_TRUE(climateTermsFor(board, wishes, true).isAttended);
}

} // namespace
} // namespace Radio::Calibration
