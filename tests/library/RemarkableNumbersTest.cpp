// Numbers at which arithmetic turns, in every place that takes one: the library counts as the model does.

#include "Comparison.h"
#include "FullBoard.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

using Told::Do;
using Told::Step;
using Told::Story;

namespace {

constexpr std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t highest = std::numeric_limits<std::int32_t>::max();

constexpr std::array numbers{0,    1,     -1,      2,         3,          499,     500,
                             3000, -3000, 125'000, 4'294'967, -4'294'968, highest, lowest};

/** Around the signs and ends of 32 bits, ordinary ones, and some that need more bits. */
constexpr std::array<std::int64_t, 12> carriers{0,
                                                1,
                                                499,
                                                24'999,
                                                17'442'250,
                                                17'596'749,
                                                highest,
                                                std::int64_t{highest} + 1,
                                                0xFFFF'FFFF,
                                                0x1'0000'0000,
                                                0x1'010A'2500,
                                                0x7FFF'FFFF'FFFF'FFFF};

Story storyOf(std::int64_t type) {
    Story story;
    Told::addChannel(story.board, 1, false);
    Told::addShared(story.board);
    story.steps.push_back({Do::makeModule, {}, {0, 1, type}});
    for (const std::int64_t phase : {11, 5, 20}) {
        story.steps.push_back({Do::phase, {}, {phase}});
    }
    return story;
}

/** A test with the handler type as parameter. */
class RemarkableNumbersTest : public testing::TestWithParam<int> {
protected:
    void setVariable(const std::string& name, const std::vector<std::int32_t>& values) {
        story.steps.push_back({Do::setVariable, name, {}, {}, values});
        story.steps.push_back({Do::phase, {}, {5}});
        story.steps.push_back({Do::phase, {}, {20}});
    }
    void tuneEverywhere() {
        for (const std::int64_t carrier : carriers) {
            story.steps.push_back({Do::setTx, {}, {0, carrier}});
            story.steps.push_back({Do::setRx, {}, {0, carrier}});
            story.steps.push_back({Do::handlerWrite, "IFrequencyHandler_Rx_1", {carrier}});
            story.steps.push_back({Do::plan, "IFrequencyHandler_Tx_1", {carrier, 0}});
            story.steps.push_back({Do::plan, "IFrequencyHandler_Rx_1", {carrier, 1}});
        }
    }

    Story story = storyOf(GetParam());
};

} // namespace

TEST_P(RemarkableNumbersTest, AnyVariableMayHaveAnyValue) {
    for (const std::string name :
         {"channel.1.tx.mixer.multiplicationfactor", "channel.1.rx.mixer.multiplicationfactor",
          "channel.1.tx.if.frequency", "channel.1.rx.if.frequency", "channel.1.rx.rf.spectruminverted",
          "channel.1.rx.baseband.spectruminverted", "TxIfBb", "RxIfBb"}) {
        for (const std::int32_t number : numbers) {
            story = storyOf(GetParam());
            setVariable(name, {number});
            tuneEverywhere();
            ASSERT_EQ(differenceIn(story), "") << name << " is " << number;
        }
    }
}

TEST_P(RemarkableNumbersTest, AnyOffsetMayStandInTheArray) {
    for (const std::int32_t inverted : {0, 1}) {
        for (const std::int32_t number : numbers) {
            story = storyOf(GetParam());
            setVariable("channel.1.rx.rf.spectruminverted", {inverted});
            setVariable("channel.1.rx.rf.frequency.cs.offset.array", {100, number});
            tuneEverywhere();
            ASSERT_EQ(differenceIn(story), "") << "offset " << number << ", inverted " << inverted;
        }
    }
}

TEST_P(RemarkableNumbersTest, AnyChannelSpacingMayBeAsked) {
    for (std::int32_t spacing = -50; spacing <= 3050; spacing += 25) {
        setVariable("ChannelSpacing", {spacing});
        story.steps.push_back({Do::setRx, {}, {0, 17'596'750}});
    }
    EXPECT_EQ(differenceIn(story), "");
}

INSTANTIATE_TEST_SUITE_P(OfEachType, RemarkableNumbersTest, testing::Range(0, 6));

namespace {

/** A test of the calibration, with the factor by which it narrows its ranges as parameter. */
class RemarkableCalibrationTest : public testing::TestWithParam<double> {
protected:
    /** Two iterations at most, with each of the corners the best in turn. */
    void calibrate(std::int32_t low, std::int32_t high, std::int32_t minDelta) {
        Step step{Do::calibrate, "ILoCancellation_1"};
        step.calibration = {low, high, high, low, GetParam(), minDelta, 2, 5'000'000, 0, false, 0};
        story.steps.push_back(step);
    }

    Story story = storyOf(0);
};

} // namespace

TEST_P(RemarkableCalibrationTest, RangesMayEndAnywhere) {
    story.board.readings = {4, 3, 2, 1, 7, 5, 6, 5, 8, 0, 9};
    for (const std::int32_t low : {lowest, lowest + 1, -100, 0, 1, highest - 1}) {
        for (const std::int32_t high : {lowest + 1, -1, 0, 100, highest - 1, highest}) {
            for (const std::int32_t minDelta : {lowest, 50, 75, highest}) {
                calibrate(low, high, minDelta);
            }
        }
    }
    EXPECT_EQ(differenceIn(story), "");
}

INSTANTIATE_TEST_SUITE_P(WithEachFactor, RemarkableCalibrationTest,
                         testing::Values(0.0, 0.25, 0.5, 0.75, 1.0, 1.5, -0.5, 1e-300, 1e300,
                                         std::numeric_limits<double>::infinity(),
                                         -std::numeric_limits<double>::infinity(),
                                         std::numeric_limits<double>::quiet_NaN()));
