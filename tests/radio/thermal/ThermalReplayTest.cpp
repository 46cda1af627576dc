#include "radio/text/Words.h"
#include "radio/thermal/Replay.h"
#include "tests/radio/support/PlanBoards.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace Radio::Thermal {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/** Keeps a line for each moment, with what the channel wrote up to now behind it. */
class MomentRecorder final : public ReplayListener {
public:
    void told(const ChannelTotals& channel, const Moment& moment) override {
        std::string line = "channel " + std::to_string(channel.channel) + ", " +
                           std::to_string(moment.seconds) + " s, " + std::to_string(moment.degrees) +
                           " degrees:";
        for (const Write& write : moment.writes) {
            line += " " + std::string(toString(write.correction)) + "=" + std::to_string(write.value) +
                    (write.step ? " (" + std::to_string(*write.step) + ")" : "");
        }
        lines.push_back(line + "; " + std::to_string(channel.writes()) + " writes");
        words.push_back({moment.words.dcI, moment.words.dcQ, moment.words.gain, moment.words.phase});
        if (moment.figures) {
            figures.push_back("image " + levelText(moment.figures->without.image) + ", " +
                              levelText(moment.figures->with.image) + "; leakage " +
                              levelText(moment.figures->without.carrierLeakage) + ", " +
                              levelText(moment.figures->with.carrierLeakage));
        }
    }

    std::vector<std::string> lines;
    std::vector<std::vector<std::int32_t>> words;
    /** Without compensation and with it. */
    std::vector<std::string> figures;
};

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
    /** Plays the log to the listeners. */
    void tell(const ThermalLog& log, const std::vector<ReplayListener*>& listeners) const {
        BootedRadio booted(board);
        ASSERT_TRUE(booted.isUp());
        replay(booted, board, log, {}, listeners, [](std::uint64_t /*done*/) { return true; });
    }
    /** An RF module as channel 2 beside the other, of which the same four words follow the temperature. */
    void addChannel2() {
        board.channels.push_back({2, ::FrequencyHandler::RfModule, {}, true});
        const std::vector<DriverDescription> drivers = board.drivers;
        for (const DriverDescription& driver : drivers) {
            if (driver.name.find(".dsp.tx.") != std::string::npos) {
                board.drivers.push_back({inChannel2(driver.name), 0, 0, {}});
            }
        }
        board.drivers.push_back({"channel.2.tx.rf.frequency", 0, 0, {}});
        board.drivers.push_back({"channel.2.rx.rf.frequency", 0, 0, {}});
        const std::vector<TableDescription> tables = board.tables;
        for (TableDescription entry : tables) {
            entry.table.name = inChannel2(entry.table.name);
            board.tables.push_back(entry);
        }
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
    /** A name of channel 1, "channel.1." and what follows, as channel 2 has it. */
    static std::string inChannel2(std::string name) {
        return name.replace(std::string("channel.").size(), 1, "2");
    }

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

TEST_F(ThermalReplayTest, ListenerIsToldEachMomentWithItsWritesInOrder) {
    // The module, which corrects the mixer, subscribes to the temperature before the compensation does.
    // Halfway between 0 and 10 degrees the words are half of 10, 20, 30 and 40.
    MomentRecorder recorder;
    tell({{0, 0}, {60, 10}, {120, 5}}, {&recorder});
    EXPECT_THAT(
        recorder.lines,
        ElementsAre("channel 1, 0 s, 0 degrees: lo_i=7 lo_q=-7 dc_i=0 dc_q=0 gain=0 phase=0; 6 writes",
                    "channel 1, 60 s, 10 degrees: lo_i=7 (0) lo_q=-7 (0) dc_i=10 (10) dc_q=20 (20) "
                    "gain=30 (30) phase=40 (40); 12 writes",
                    "channel 1, 120 s, 5 degrees: lo_i=7 (0) lo_q=-7 (0) dc_i=5 (-5) dc_q=10 (-10) "
                    "gain=15 (-15) phase=20 (-20); 18 writes"));
    EXPECT_THAT(recorder.words, ElementsAre(ElementsAre(0, 0, 0, 0), ElementsAre(10, 20, 30, 40),
                                            ElementsAre(5, 10, 15, 20)));
    EXPECT_THAT(recorder.figures, IsEmpty());
}

TEST_F(ThermalReplayTest, ListenerIsNotToldASampleOfTheSameTemperature) {
    MomentRecorder recorder;
    tell({{0, 0}, {60, 0}, {120, 0}}, {&recorder});
    EXPECT_THAT(recorder.lines, ElementsAre("channel 1, 0 s, 0 degrees: lo_i=7 lo_q=-7 dc_i=0 dc_q=0 gain=0 "
                                            "phase=0; 6 writes"));
}

TEST_F(ThermalReplayTest, ListenerIsToldTheChannelsInTheirOrder) {
    // An RF module corrects no mixer.
    addChannel2();
    MomentRecorder recorder;
    tell({{0, 0}, {60, 10}}, {&recorder});
    EXPECT_THAT(
        recorder.lines,
        ElementsAre("channel 1, 0 s, 0 degrees: lo_i=7 lo_q=-7 dc_i=0 dc_q=0 gain=0 phase=0; 6 writes",
                    "channel 2, 0 s, 0 degrees: dc_i=0 dc_q=0 gain=0 phase=0; 4 writes",
                    "channel 1, 60 s, 10 degrees: lo_i=7 (0) lo_q=-7 (0) dc_i=10 (10) dc_q=20 (20) "
                    "gain=30 (30) phase=40 (40); 12 writes",
                    "channel 2, 60 s, 10 degrees: dc_i=10 (10) dc_q=20 (20) gain=30 (30) phase=40 (40); "
                    "8 writes"));
}

TEST_F(ThermalReplayTest, EachListenerIsTold) {
    MomentRecorder first;
    MomentRecorder second;
    tell({{0, 0}, {60, 10}}, {&first, &second});
    EXPECT_EQ(first.lines.size(), 2U);
    EXPECT_EQ(second.lines, first.lines);
}

TEST_F(ThermalReplayTest, ListenerIsToldTheFiguresOfADescribedTransmitter) {
    // Without: tan 10 degrees = 0.17633 is the image of 20 degrees, and 0.5 the length of (-0.3, -0.4).
    // At 10 degrees: G = 1 + 30 * 0.01 leaves 0.3 / 2.3 and no phase error, and Q -0.4 + 20 * 0.03 = 0.2.
    TransmitterDescription transmitter;
    transmitter.channel = 1;
    transmitter.phaseImbalance.at25 = -20.0;
    transmitter.dcOffsetI.at25 = -0.3;
    transmitter.dcOffsetQ.at25 = -0.4;
    transmitter.gainStep = 0.01;
    transmitter.phaseStep = 0.5;
    transmitter.dcStep = 0.03;
    board.transmitters = {transmitter};
    MomentRecorder recorder;
    tell({{0, 0}, {60, 10}}, {&recorder});
    EXPECT_THAT(recorder.figures, ElementsAre("image -15.07 dBc, -15.07 dBc; leakage -6.02 dBc, -6.02 dBc",
                                              "image -15.07 dBc, -17.69 dBc; leakage -6.02 dBc, -13.98 dBc"));
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
