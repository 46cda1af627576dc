#include "radioctl/calibrate/page/HeatMap.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace Radio::Calibration {
namespace {

using testing::ElementsAre;

/** A map of so many cells, all of them at -60 dBc. */
HeatMap evenMap(std::size_t columns, std::size_t rows) {
    std::vector<double> x(columns);
    std::generate(x.begin(), x.end(), [at = 0.0]() mutable { return at++; });
    std::vector<double> y(rows);
    std::generate(y.begin(), y.end(), [at = 0.0]() mutable { return at++; });
    return {axisAround(x), axisAround(y), std::vector<std::optional<double>>(columns * rows, -60.0)};
}

TEST(CalibrationHeatMap, CellsReachHalfwayToTheNextNode) {
    EXPECT_THAT(axisAround({10.0, 20.0, 40.0}).edges, ElementsAre(5.0, 15.0, 30.0, 50.0));
}

TEST(CalibrationHeatMap, ASingleNodeHasACell) {
    EXPECT_THAT(axisAround({18.7}).edges, ElementsAre(18.2, 19.2));
}

TEST(CalibrationHeatMap, WhatAPictureCanShowStaysAsItIs) {
    const HeatMap map = thinned(evenMap(90, 36));
    EXPECT_EQ(map.x.nodes.size(), 90u);
    EXPECT_EQ(map.y.nodes.size(), 36u);
}

/** 200 columns become 67 of three each, the last of two; 37 rows become 19 of two, the last of one. */
TEST(CalibrationHeatMap, NeighboursBecomeOneWhenThereAreTooMany) {
    const HeatMap map = thinned(evenMap(200, 37));
    EXPECT_EQ(map.x.nodes.size(), 67u);
    EXPECT_EQ(map.y.nodes.size(), 19u);
    EXPECT_EQ(map.levels.size(), 67u * 19u);
    EXPECT_EQ(map.x.nodes[1], 4.0);
    EXPECT_EQ(map.x.edges[1], 2.5);
    EXPECT_EQ(map.x.edges.back(), 199.5);
    EXPECT_EQ(map.y.edges.back(), 36.5);
}

TEST(CalibrationHeatMap, TheHighestOfNeighboursIsShown) {
    HeatMap map = evenMap(200, 37);
    map.levels[200 * 3 + 5] = -20.0;
    map.levels[200 * 2 + 4] = std::nullopt;
    EXPECT_EQ(thinned(map).levels[67 * 1 + 1], -20.0);
}

TEST(CalibrationHeatMap, TheScaleGoesFromOneRoundNumberToAnother) {
    const ColourScale scale = scaleFor({-71.3, -23.9});
    EXPECT_EQ(scale.low, -80.0);
    EXPECT_EQ(scale.high, -20.0);
}

TEST(CalibrationHeatMap, TheScaleHasAWidth) {
    const ColourScale scale = scaleFor({-70.0});
    EXPECT_EQ(scale.low, -70.0);
    EXPECT_EQ(scale.high, -60.0);
}

TEST(CalibrationHeatMap, TheScaleEndsWhereNobodyTellsLevelsApart) {
    const ColourScale scale = scaleFor({-120.0, -120.0});
    EXPECT_EQ(scale.low, -100.0);
    EXPECT_EQ(scale.high, -90.0);
}

} // namespace
} // namespace Radio::Calibration
