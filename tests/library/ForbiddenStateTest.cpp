// States into which nobody may bring the library, and calls that nobody may make: it does as the model says,
// which is to do nothing more and to say why, whether or not that is wanted.

#include "Comparison.h"
#include "FullBoard.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

using Told::Do;
using Told::Step;
using Told::Story;

namespace {

/** A test on the board of channel 2, with the threshold of the trace as parameter. */
class ForbiddenStateTest : public testing::TestWithParam<int> {
protected:
    ForbiddenStateTest() {
        Told::addChannel(story.board, 2, false);
        Told::addShared(story.board);
        story.board.threshold = GetParam();
    }

    /** Makes a module and, where it has handlers, starts it up. */
    void start(std::int64_t type) {
        add({Do::makeModule, {}, {0, 2, type}});
        for (const std::int64_t phase : {11, 5, 20}) {
            add({Do::phase, {}, {phase}});
        }
    }
    void add(const Step& step) { story.steps.push_back(step); }
    void tune() {
        add({Do::setTx, {}, {0, 17'442'000}});
        add({Do::setRx, {}, {0, 17'596'000}});
    }
    void take(std::vector<Told::Table>& tables, const std::string& name) {
        tables.erase(std::find_if(tables.begin(), tables.end(),
                                  [&](const Told::Table& table) { return table.name.text() == name; }));
    }

    void TearDown() override { EXPECT_EQ(differenceIn(story), ""); }

    Story story;
    const std::string canceller = "ILoCancellation_2";
    const std::string rx = "IFrequencyHandler_Rx_2";
};

} // namespace

TEST_P(ForbiddenStateTest, ModuleOfAnUnknownTypeIsDriven) {
    start(6);
    tune();
    add({Do::moduleStorage, {}, {0}});
    add({Do::moduleFrameFormat, {}, {0}});
    add({Do::moduleTemperature, {}, {0, 25}});
}

TEST_P(ForbiddenStateTest, ObserverIsNull) {
    start(1);
    add({Do::observeNull, rx});
    add({Do::observe, rx, {1}});
    for (const std::int64_t what : {0, 1, 2}) {
        add({Do::observeBadlyFromC, rx, {what}});
    }
    tune();
}

TEST_P(ForbiddenStateTest, CalibrationHasNoPlaceForItsResults) {
    start(0);
    for (const unsigned places : {1U, 2U, 4U, 8U}) {
        Step step{Do::calibrate, canceller};
        step.calibration = {0, 100, 0, 100, 0.75, 1, 1, 0, 0, false, places};
        add(step);
    }
}

TEST_P(ForbiddenStateTest, DetectorCannotBeRead) {
    start(0);
    add({Do::setWords, "channel.2.tx.rf.detector.v", {Told::read}});
    Step step{Do::calibrate, canceller};
    step.calibration = {0, 100, 0, 100, 0.75, 1, 1, 0, 0, false, 0};
    add(step);
}

TEST_P(ForbiddenStateTest, CompensationIsCalledWithoutAnObject) {
    add({Do::compensationPhase, {}, {-1, 11}});
    add({Do::compensationTemperature, {}, {-1, 25}});
    add({Do::contextTemperature, {}, {-1, 25}});
}

TEST_P(ForbiddenStateTest, OffsetArrayEndsInsideAPair) {
    start(3);
    add({Do::setVariable, "channel.2.rx.rf.frequency.cs.offset.arraysize", {}, {}, {3}});
    tune();
}

TEST_P(ForbiddenStateTest, OffsetArrayIsMissing) {
    add({Do::hideContent, "channel.2.rx.rf.frequency.cs.offset.array", {1}});
    start(3);
    tune();
    add({Do::setVariable, "channel.2.rx.rf.frequency.cs.offset.arraysize", {}, {}, {0}});
    tune();
}

TEST_P(ForbiddenStateTest, ChannelSpacingHasNoContent) {
    add({Do::hideContent, "ChannelSpacing", {1}});
    start(2);
    tune();
}

TEST_P(ForbiddenStateTest, MultiplicationFactorIsZero) {
    add({Do::setVariable, "channel.2.tx.mixer.multiplicationfactor", {}, {}, {0}});
    start(5);
    tune();
    add({Do::plan, "IFrequencyHandler_Tx_2", {17'442'000, 1}});
}

TEST_P(ForbiddenStateTest, RemoteRadioIsMissing) {
    add({Do::setPresence, "IRauHandler_2", {static_cast<std::int64_t>(Told::Presence::absent)}});
    start(4);
    tune();
}

TEST_P(ForbiddenStateTest, ChargePumpTableOfTheChannelIsMissing) {
    take(story.board.tables, "Channel.2.Tx.Rf.Pll.Frequency.To.Chargepump.Setting");
    start(2);
    tune();
}

INSTANTIATE_TEST_SUITE_P(AllWantedAndNothingWanted, ForbiddenStateTest, testing::Values(4, 0));
