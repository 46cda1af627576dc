#include "radio/description/FittedTable.h"

#include "standalone/Interpolation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Radio::Describing {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

} // namespace

TEST(FittedTable, OneAnswerIsOneNode) {
    const FittedTable table = fitTable({{{7442000, 0}, 12}}, false);
    EXPECT_THAT(table.axis1, ElementsAre(7442000));
    EXPECT_THAT(table.axis2, IsEmpty());
    EXPECT_THAT(table.values, ElementsAre(12));
    EXPECT_EQ(table.guessed, 0U);
}

// 12 to 20 over 40: 14, 16 and 18 lie between; 25 does not, and neither does what is behind it.
TEST(FittedTable, NodesBetweenWhichTheAnswersLieAreEnough) {
    const FittedTable table = fitTable({{{0, 0}, 12},
                                        {{10, 0}, 14},
                                        {{20, 0}, 16},
                                        {{30, 0}, 18},
                                        {{40, 0}, 20},
                                        {{50, 0}, 25},
                                        {{60, 0}, 26}},
                                       false);
    EXPECT_THAT(table.axis1, ElementsAre(0, 40, 50, 60));
    EXPECT_THAT(table.values, ElementsAre(12, 20, 25, 26));
}

// Between 10 and 13 over 10: 1.5 steps at 5 are rounded to 2, 12; 11 at 5 has to stay.
TEST(FittedTable, AnswerThatWouldBeRoundedOtherwiseIsANode) {
    EXPECT_THAT(fitTable({{{0, 0}, 10}, {{5, 0}, 12}, {{10, 0}, 13}}, false).axis1, ElementsAre(0, 10));
    EXPECT_THAT(fitTable({{{0, 0}, 10}, {{5, 0}, 11}, {{10, 0}, 13}}, false).axis1, ElementsAre(0, 5, 10));
}

// At 18000000 kHz nobody asked for 20 degrees, which lie half way between 0 and 40; and nobody for 40 degrees
// at 18100000 kHz, beyond the only two, where the last one holds.
TEST(FittedTable, WhatNobodyAskedForLiesBetweenItsNeighbours) {
    const FittedTable table = fitTable(
        {{{18000000, 0}, 100}, {{18000000, 40}, 120}, {{18100000, 0}, 200}, {{18100000, 20}, 230}}, true);
    EXPECT_THAT(table.axis1, ElementsAre(18000000, 18100000));
    EXPECT_THAT(table.axis2, ElementsAre(0, 20, 40));
    EXPECT_THAT(table.values, ElementsAre(100, 110, 120, 200, 230, 230));
    EXPECT_EQ(table.guessed, 2U);
}

// In the middle row only 0 degrees were asked for: 150 lies between 100 and 200. At 40 degrees it could be
// anything.
TEST(FittedTable, RowGoesWhenTheOthersGiveItsAnswers) {
    const FittedTable table = fitTable(
        {{{1000, 0}, 100}, {{1000, 40}, 7}, {{1500, 0}, 150}, {{2000, 0}, 200}, {{2000, 40}, -7}}, true);
    EXPECT_THAT(table.axis1, ElementsAre(1000, 2000));
    EXPECT_THAT(table.values, ElementsAre(100, 7, 200, -7));
    EXPECT_EQ(table.guessed, 0U);
}

// A bent row of 300 carriers at three temperatures, of which each place was asked at but every seventh.
TEST(FittedTable, EachAnswerComesOutAgain) {
    Answers answers;
    for (std::int32_t step = 0; step < 300; ++step) {
        for (std::int32_t degrees = -30; degrees <= 50; degrees += 40) {
            if ((step + degrees) % 7 != 0) {
                answers[{18000000 + step * 250, degrees}] = step * step / 90 - degrees * 2;
            }
        }
    }
    EXPECT_EQ(nodesOf(answers), 900U);
    const FittedTable table = fitTable(answers, true);
    EXPECT_LT(table.axis1.size(), 200U);
    for (const auto& [place, value] : answers) {
        EXPECT_EQ(Standalone::Interpolation::bilinear(table.axis1, table.axis2, table.values, place.first,
                                                      place.second),
                  value)
            << place.first << " kHz, " << place.second << " degrees";
    }
}

} // namespace Radio::Describing
