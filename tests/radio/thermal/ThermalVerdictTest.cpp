#include "radio/thermal/ThermalVerdict.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Radio::Thermal {
namespace {

using testing::ElementsAre;

/** Two channels: 1 at 18 GHz is cleaner than 2, which is not tuned. */
class ThermalVerdict : public testing::Test {
protected:
    ThermalVerdict() {
        ChannelTotals first;
        first.channel = 1;
        first.carrier = 18000000;
        first.worst = WorstFigures{{-30, 0, 20}, {-80, 60, 25}, {-30, 0, 20}, {-78, 120, 30}};
        ChannelTotals second;
        second.channel = 2;
        second.worst = WorstFigures{{-30, 0, 20}, {-70.5, 60, -5}, {-30, 0, 20}, {-79, 120, 30}};
        result.totals.channels = {first, second};
        result.isComplete = true;
        limits.image = -70.0;
    }
    std::vector<std::string> lines() const { return linesOf(verdictOn(result, limits)); }

    ReplayResult result;
    Limits limits;
};

TEST_F(ThermalVerdict, WorstChannelCounts) {
    limits.carrierLeakage = -75.0;
    EXPECT_THAT(lines(), ElementsAre("PASS: image -70.50 dBc (limit -70), carrier leakage -78.00 dBc (limit "
                                     "-75)"));
    limits.image = -75.0;
    limits.carrierLeakage = -78.5;
    EXPECT_THAT(lines(), ElementsAre("FAIL: image -70.50 dBc of channel 2 at -5 degrees, limit -75",
                                     "FAIL: carrier leakage -78.00 dBc of channel 1 at 18000000 kHz, 30 "
                                     "degrees, limit -78.5"));
}

TEST_F(ThermalVerdict, ChannelWithoutATransmitterPassesNoLimit) {
    result.totals.channels[0].worst.reset();
    EXPECT_THAT(lines(), ElementsAre("FAIL: image unknown of channel 1 at 18000000 kHz, limit -70: the board "
                                     "does not describe its transmitter"));
}

TEST_F(ThermalVerdict, WhatIsMissedIsToldBeforeWhatIsNotKnown) {
    result.totals.channels[0].worst.reset();
    limits.image = -75.0;
    EXPECT_THAT(lines(), ElementsAre("FAIL: image -70.50 dBc of channel 2 at -5 degrees, limit -75"));
}

TEST_F(ThermalVerdict, NoneWithoutLimits) {
    limits.image.reset();
    limits.leakage = -60.0;
    EXPECT_THAT(lines(),
                ElementsAre("NO VERDICT: the board states no image and no carrier leakage in its [limits]"));
}

TEST_F(ThermalVerdict, NoneOnAPartOfALog) {
    result.isComplete = false;
    EXPECT_THAT(lines(), ElementsAre("NO VERDICT: not all of the log was replayed"));
}

} // namespace
} // namespace Radio::Thermal
