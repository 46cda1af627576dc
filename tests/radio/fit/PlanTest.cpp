#include "radio/fit/Plan.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Radio::Fit {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

Order between(std::int32_t low, std::int32_t high, std::int32_t start) {
    Order order;
    order.lowTemperature = low;
    order.highTemperature = high;
    order.startTemperature = start;
    return order;
}

TEST(PlanTest, TemperaturesBeginAtTheNearerEnd) {
    // 11 + 44 cos of 0, 45, 90, 135, 180 degrees: 55, 42.1, 11, -20.1, -33.
    EXPECT_THAT(fitTemperatures(between(-33, 55, 25)), ElementsAre(55, 42, 11, -20, -33));
    EXPECT_THAT(fitTemperatures(between(-33, 55, 0)), ElementsAre(-33, -20, 11, 42, 55));
}

TEST(PlanTest, NarrowRangeHasFewTemperatures) {
    EXPECT_THAT(fitTemperatures(between(20, 30, 20)), ElementsAre(20, 25, 30));
    EXPECT_THAT(fitTemperatures(between(24, 25, 20)), ElementsAre(24, 25));
    EXPECT_THAT(fitTemperatures(between(25, 25, 20)), ElementsAre(25));
}

TEST(PlanTest, TableIsTriedOnTheWayBackBetweenFittedTemperatures) {
    // The middle of -33 and -20 and that of 42 and 55, rounded down.
    EXPECT_THAT(triedTemperatures({55, 42, 11, -20, -33}, 2), ElementsAre(-27, 48));
    EXPECT_THAT(triedTemperatures({55, 42, 11, -20, -33}, 9), ElementsAre(-27, -5, 26, 48));
    EXPECT_THAT(triedTemperatures({25}, 2), IsEmpty());
    EXPECT_THAT(triedTemperatures({24, 25}, 2), IsEmpty());
}

TEST(PlanTest, CarriersLieAtEqualDistances) {
    Order order;
    order.lowCarrier = 1000;
    order.highCarrier = 2000;
    EXPECT_THAT(evenCarriers(order, 5), ElementsAre(1000, 1250, 1500, 1750, 2000));
    order.highCarrier = 1000;
    EXPECT_THAT(evenCarriers(order, 5), ElementsAre(1000));
}

} // namespace
} // namespace Radio::Fit
