#include "radio/thermal/Replay.h"
#include "tests/radio/support/PlanBoards.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace Radio::Thermal {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/** A microwave board whose DC, gain and phase words are 0 at 0 degrees and 10, 20, 30 and 40 at 10 degrees.
 */
class ThermalReplayTest : public testing::Test {
protected:
    ThermalReplayTest() {
        board.channels.front().iqCompensation = true;
        add("dsp.tx.dc.compensation.i", "Dc.I", 10);
        add("dsp.tx.dc.compensation.q", "Dc.Q", 20);
        add("dsp.tx.quadrature.gain.offset.compensation", "Gain.Offset", 30);
        add("dsp.tx.quadrature.phase.offset.compensation", "Phase.Offset", 40);
    }

    ReplayTotals play(const ThermalLog& log, const Carriers& carriers = {}) const {
        BootedRadio booted(board);
        EXPECT_TRUE(booted.isUp());
        ReplayResult result =
            replay(booted, board, log, carriers, {}, [](std::uint64_t /*done*/) { return true; });
        EXPECT_TRUE(result.isComplete);
        return std::move(result.totals);
    }
    static std::vector<std::string> lines(const ChannelTotals& channel) {
        std::vector<std::string> result;
        for (const DriverTotals& driver : channel.drivers) {
            result.push_back(std::string(toString(driver.correction)) + ": " + std::to_string(driver.writes) +
                             " writes, " + std::to_string(driver.unchanged) + " unchanged, last " +
                             std::to_string(*driver.value));
        }
        return result;
    }

    Board board = PlanBoards::microwave(::FrequencyHandler::MicrowaveBoardHz);

private:
    void add(const std::string& driver, const std::string& table, std::int32_t value) {
        PlanBoards::addDrivers(board, {driver});
        board.tables.push_back(
            {{"Channel.1.Tx.Dsp.Temperature.To." + table + ".Compensation", {0, 10}, {}, {0, value}}, {}});
    }
};

TEST_F(ThermalReplayTest, CorrectionsOfTheMixerCountAsWritesOfTheirOwn) {
    EXPECT_THAT(lines(play({{0, 0}, {1, 10}}).channels.at(0)),
                ElementsAre("dc_i: 2 writes, 0 unchanged, last 10", "dc_q: 2 writes, 0 unchanged, last 20",
                            "gain: 2 writes, 0 unchanged, last 30", "phase: 2 writes, 0 unchanged, last 40",
                            "lo_i: 2 writes, 1 unchanged, last 7", "lo_q: 2 writes, 1 unchanged, last -7"));
}

TEST_F(ThermalReplayTest, SameTemperatureIsNotToldAgain) {
    const ReplayTotals totals = play({{0, 5}, {1, 5}, {2, 5}});
    EXPECT_EQ(totals.samples, 3U);
    EXPECT_EQ(totals.notifications, 1U);
    EXPECT_EQ(totals.channels.at(0).writes(), 6U);
}

TEST_F(ThermalReplayTest, FirstWriteIsNoStep) {
    EXPECT_FALSE(play({{0, 10}}).channels.at(0).drivers.at(0).largestStep.has_value());
}

TEST_F(ThermalReplayTest, LargestStepIsTheFirstOfItsSize) {
    const ReplayTotals totals = play({{0, 0}, {10, 3}, {20, 10}, {30, 3}});
    const LargestStep step = *totals.channels.at(0).drivers.at(0).largestStep;
    EXPECT_EQ(step.size, 7);
    EXPECT_EQ(step.seconds, 20);
    EXPECT_EQ(step.degrees, 10);
}

TEST_F(ThermalReplayTest, ChannelWithoutCompensationIsNotWatched) {
    board.channels.front().iqCompensation = false;
    EXPECT_THAT(play({{0, 0}}).channels, IsEmpty());
}

TEST_F(ThermalReplayTest, ChannelIsTunedToItsCarrier) {
    EXPECT_EQ(play({{0, 0}}, {{1, 18'000'000}}).channels.at(0).carrier, 18'000'000U);
    EXPECT_FALSE(play({{0, 0}}).channels.at(0).carrier.has_value());
}

TEST_F(ThermalReplayTest, NoFiguresWithoutADescribedTransmitter) {
    EXPECT_FALSE(play({{0, 0}}).channels.at(0).worst.has_value());
}

TEST_F(ThermalReplayTest, StoppedReplayIsNotComplete) {
    BootedRadio booted(board);
    const ReplayResult result =
        replay(booted, board, {{0, 0}, {1, 10}}, {}, {}, [](std::uint64_t /*done*/) { return false; });
    EXPECT_FALSE(result.isComplete);
    EXPECT_EQ(result.totals.samples, 0U);
}

TEST_F(ThermalReplayTest, ChannelWithoutACarrierIsTunedToItsRasters) {
    board.rasters = {{"raster", {1}, {{true, 18'000'000, 10, 5}}, {}, {}}};
    EXPECT_EQ(play({{0, 0}}).channels.at(0).carrier, 18'000'000U);
    EXPECT_EQ(play({{0, 0}}, {{1, 17'000'000}}).channels.at(0).carrier, 17'000'000U);
}

TEST_F(ThermalReplayTest, BoardOnWhichNothingFollowsTheTemperatureIsRefused) {
    EXPECT_THAT(compensatedChannels(board), ElementsAre(1));
    board.channels.front().iqCompensation = false;
    EXPECT_THROW(compensatedChannels(board), InputError);
}

TEST_F(ThermalReplayTest, FirstTransmitCarrierOfTheFirstRasterIsTheChannelsOwn) {
    board.rasters = {{"receive only", {1}, {{false, 1, 1, 1}}, {}, {}},
                     {"first", {1}, {{false, 2, 1, 1}, {true, 18'000'000, 10, 5}}, {}, {}},
                     {"second", {1, 2}, {{true, 17'000'000, 10, 5}}, {}, {}}};
    EXPECT_THAT(rasterCarriers(board), ElementsAre(std::pair(1, 18'000'000U), std::pair(2, 17'000'000U)));
}

} // namespace
} // namespace Radio::Thermal
