#include "radioctl/thermal/Plot.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace Radio::Thermal {
namespace {

using testing::ElementsAre;

std::vector<std::pair<std::int64_t, double>> pairs(const std::vector<Point>& points) {
    std::vector<std::pair<std::int64_t, double>> result;
    for (const Point& point : points) {
        result.emplace_back(point.seconds, point.value);
    }
    return result;
}

TEST(ThermalSeries, LastValueHoldsToTheEnd) {
    Series series(0, 100);
    series.add(0, 5);
    series.add(50, 6);
    EXPECT_THAT(pairs(series.points()),
                ElementsAre(std::pair(0, 5.0), std::pair(50, 6.0), std::pair(100, 6.0)));
}

TEST(ThermalSeries, LowestAndHighestOfAPartAreKept) {
    Series series(0, 99'999); // a hundred seconds to each part
    for (const auto& [second, value] :
         {std::pair(0, 5.0), {10, 4.0}, {20, 9.0}, {30, 1.0}, {40, 2.0}, {50, 3.0}, {100, 7.0}}) {
        series.add(second, value);
    }
    EXPECT_THAT(pairs(series.points()),
                ElementsAre(std::pair(0, 5.0), std::pair(20, 9.0), std::pair(30, 1.0), std::pair(50, 3.0),
                            std::pair(100, 7.0), std::pair(99'999, 7.0)));
}

TEST(ThermalSeries, MomentMayBeAllThereIs) {
    Series series(7, 7);
    series.add(7, 20);
    EXPECT_THAT(pairs(series.points()), ElementsAre(std::pair(7, 20.0)));
}

} // namespace
} // namespace Radio::Thermal
