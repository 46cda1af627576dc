#include "radio/fit/Surface.h"

#include <gtest/gtest.h>

#include <vector>

namespace Radio::Fit {
namespace {

/** 1000 to 3000 kHz, so that x = (carrier - 2000) / 1000; -50 to 50 degrees, so that y = temperature / 50. */
class SurfaceTest : public testing::Test {
protected:
    SurfaceTest() {
        order.lowCarrier = 1000;
        order.highCarrier = 3000;
        order.lowTemperature = -50;
        order.highTemperature = 50;
    }

    /** I = 100 + 20 x + 10 (2 x^2 - 1), Q = -50 + 30 y, found to a hundredth. */
    static Sample sampleAt(std::uint32_t carrier, std::int32_t temperature) {
        const double x = (carrier - 2000.0) / 1000.0;
        const double y = temperature / 50.0;
        return {{carrier, temperature}, {90.0 + 20.0 * x + 20.0 * x * x, -50.0 + 30.0 * y}, 0.01};
    }
    static std::vector<Sample> samples() {
        std::vector<Sample> all;
        for (const std::int32_t temperature : {-50, 0, 50}) {
            for (const std::uint32_t carrier : {1000U, 1500U, 2000U, 2500U, 3000U}) {
                all.push_back(sampleAt(carrier, temperature));
            }
        }
        return all;
    }

    Order order;
};

TEST_F(SurfaceTest, WithoutSamplesItKnowsTheRangeAlone) {
    const Surface surface(order, 1000.0);
    const Forecast forecast = surface.at({2000, 0});
    EXPECT_DOUBLE_EQ(forecast.bottom.i, 0.0);
    EXPECT_GT(forecast.deviation, 1000.0);
}

TEST_F(SurfaceTest, OneSampleIsForetoldEverywhereAndLessSureFartherOff) {
    Surface surface(order, 1000.0);
    surface.fit({sampleAt(2000, 0)}, false);
    EXPECT_NEAR(surface.bottomAt({2000, 0}).i, 90.0, 0.01);
    EXPECT_NEAR(surface.at({2000, 0}).deviation, 0.01, 0.005);
    EXPECT_GT(surface.at({3000, 50}).deviation, 100.0);
}

TEST_F(SurfaceTest, PolynomialIsFoundBetweenItsSamples) {
    Surface surface(order, 1000.0);
    surface.fit(samples(), true);
    // x = 0.25, y = 0.5: 90 + 5 + 1.25, -50 + 15.
    EXPECT_NEAR(surface.bottomAt({2250, 25}).i, 96.25, 0.1);
    EXPECT_NEAR(surface.bottomAt({2250, 25}).q, -35.0, 0.1);
    EXPECT_LT(surface.at({2250, 25}).deviation, 1.0);
}

TEST_F(SurfaceTest, DecayIsChosenByWhatForetellsSamples) {
    Surface surface(order, 1000.0);
    surface.fit(samples(), true);
    EXPECT_LT(surface.decay().temperature, 0.3);
    EXPECT_GE(surface.excess(), 1.0);
}

TEST_F(SurfaceTest, SampleThatDoesNotBelongMakesAllLessSure) {
    std::vector<Sample> with = samples();
    Surface surface(order, 1000.0);
    surface.fit(with, true);
    const double before = surface.at({2250, 25}).deviation;
    with[7].bottom.i += 40.0;
    surface.fit(with, true);
    EXPECT_GT(surface.at({2250, 25}).deviation, 10.0 * before);
}

TEST_F(SurfaceTest, OneTemperatureIsASurfaceAsWell) {
    order.lowTemperature = order.highTemperature = 25;
    Surface surface(order, 1000.0);
    surface.fit({{{1000, 25}, {10.0, 20.0}, 0.01}, {{3000, 25}, {10.0, 20.0}, 0.01}}, false);
    EXPECT_NEAR(surface.bottomAt({1000, 25}).q, 20.0, 0.01);
}

} // namespace
} // namespace Radio::Fit
