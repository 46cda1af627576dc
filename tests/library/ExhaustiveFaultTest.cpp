// The life of a radio, from its construction to its end, with each of its calls to the platform going wrong
// in turn, in every way in which such a call can: the library goes on living, and calls, writes, traces and
// answers what the model of it says.

#include "FullBoard.h"
#include "Model.h"
#include "Runner.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

using Standalone::Operation;
using Told::Disturbance;
using Told::Do;
using Told::Leaves;
using Told::Step;
using Told::Story;

namespace {

/** Which radio: the handler type, and whether its board has what boards have instead of something else. */
struct Radio {
    std::int64_t type;
    bool hasAlternatives;
};

void PrintTo(const Radio& radio, std::ostream* stream) {
    *stream << "type " << radio.type << (radio.hasAlternatives ? " with alternatives" : "");
}

/** A call of the undisturbed radio, and the step in which it comes. */
struct Called {
    Operation operation;
    std::string object;
    std::size_t step;
};

Story lifeOf(const Radio& radio) {
    Story story;
    Told::addChannel(story.board, 1, radio.hasAlternatives);
    if (radio.hasAlternatives) {
        // Only what is in the place of something else is left.
        const auto removeFrom = [](auto& list, const std::vector<std::string>& ends) {
            for (const std::string& end : ends) {
                for (auto item = list.begin(); item != list.end();) {
                    const bool goes =
                        item->name.size() >= end.size() &&
                        item->name.compare(item->name.size() - end.size(), end.size(), end) == 0;
                    item = goes ? list.erase(item) : item + 1;
                }
            }
        };
        removeFrom(story.board.drivers, {"mixer.i", "mixer.q", "detector.v", "pll.config"});
        removeFrom(story.board.tables, {"Voltage.Mixer.I", "Voltage.Mixer.Q", "Chargepump.Setting"});
    }
    Told::addShared(story.board);
    story.board.readings = {40, 30, 20, 25, 10, 50};

    const std::string tx = "IFrequencyHandler_Tx_1";
    const std::string rx = "IFrequencyHandler_Rx_1";
    const std::string canceller = "ILoCancellation_1";
    Step calibration{Do::calibrate, canceller};
    calibration.calibration = {0, 100, -100, 0, 0.75, 1, 2, 1, 0, radio.hasAlternatives, 0};
    story.steps = {
        {Do::makeModule, {}, {0, 1, radio.type}},
        {Do::makeCompensation, {}, {0, 1}},
        {Do::initializeCompensation, {}, {0}},
        {Do::phase, {}, {11}},
        {Do::phase, {}, {5}},
        {Do::phase, {}, {20}},
        {Do::observe, tx, {1}},
        {Do::observeFromC, rx, {2}},
        {Do::temperature, {}, {25}},
        {Do::setTx, {}, {0, 17'442'250}},
        {Do::setRx, {}, {0, 17'596'750}},
        {Do::temperature, {}, {-5}},
        calibration,
        {Do::setVariable, "ChannelSpacing", {}, {}, {500}},
        {Do::phase, {}, {20}},
        {Do::setRx, {}, {0, 18'596'750}},
        {Do::txChanged, {}, {0, 18'000'000}},
        {Do::handlerGet, tx},
        {Do::handlerGet, rx},
        {Do::destroyModule, {}, {0}},
    };
    return story;
}

std::vector<Called> callsOf(const Story& story) {
    std::vector<Called> calls;
    Told::Transcript transcript;
    Told::Runner runner(story.board, transcript);
    runner.setListener([&](std::size_t step, const Standalone::Call& call) {
        calls.push_back({call.operation, call.object, step});
    });
    runner.play(story);
    return calls;
}

/** What library and model differ in; empty: in nothing. */
std::string differenceIn(const Story& story) {
    static Told::Transcript played;
    static Told::Transcript told;
    played.clear();
    told.clear();
    Told::Runner(story.board, played).play(story);
    Told::Model(story.board, told).tell(story);
    return firstDifference(played, told);
}

/** What is missing of a record, and how it is there again; without that it cannot come back. */
struct Lack {
    Step missing;
    std::optional<Step> back;
};

/** The ways in which what a lookup finds can lack something. */
std::vector<Lack> lacksOf(const Called& called) {
    std::vector<Lack> lacks;
    const auto add = [&](Do what, std::int64_t bad, std::optional<std::int64_t> good) {
        const std::string& name = called.object;
        lacks.push_back({{what, name, {bad}}, std::nullopt});
        if (good) {
            lacks.push_back({{what, name, {bad}}, Step{what, name, {*good}}});
        }
    };
    switch (called.operation) {
    case Operation::driverLookup:
        add(Do::nullRecord, 0, std::nullopt);
        for (const unsigned word : {Told::context, Told::write, Told::writeBuffer, Told::read}) {
            add(Do::setWords, word, 0);
        }
        break;
    case Operation::variableGet:
        add(Do::nullRecord, 0, std::nullopt);
        add(Do::hideContent, 1, 0);
        break;
    case Operation::variableAddress:
        add(Do::hideContent, 1, 0);
        break;
    case Operation::brokerLookup:
    case Operation::brokerGet:
        if (called.object.rfind("IFrequencyHandler_", 0) == 0) {
            break; // the library's own
        }
        for (const auto presence : {Told::Presence::absent, Told::Presence::null, Told::Presence::foreign,
                                    Told::Presence::nullRecord}) {
            add(Do::setPresence, static_cast<std::int64_t>(presence),
                static_cast<std::int64_t>(Told::Presence::present));
        }
        break;
    default:
        break;
    }
    return lacks;
}

bool usesDriver(const Called& called) {
    return called.operation == Operation::driverWrite || called.operation == Operation::driverWriteBuffer ||
           called.operation == Operation::driverRead;
}

class ExhaustiveFaultTest : public testing::TestWithParam<Radio> {
protected:
    Story life = lifeOf(GetParam());
    std::vector<Called> calls = callsOf(life);

    /** The life in which a call is answered with `code`, once or from then on. */
    Story failing(std::int64_t number, std::int64_t code, bool forGood, Leaves leaves) const {
        Story story = life;
        story.steps.insert(story.steps.begin(),
                           Step{Do::faultAt, {}, {number, code, forGood ? 1 : 0, -12345}, leaves});
        return story;
    }
};

} // namespace

TEST_P(ExhaustiveFaultTest, UndisturbedRadioDoesAsTheModelSays) {
    EXPECT_EQ(differenceIn(life), "");
    EXPECT_GT(calls.size(), 50U); // there is something to go wrong
}

TEST_P(ExhaustiveFaultTest, EachCallMayBeAnsweredWithAFailingCode) {
    for (std::int64_t number = 1; number <= static_cast<std::int64_t>(calls.size()); ++number) {
        for (const std::int64_t code : {0x8000, 0x8123, 0x7FFFFFFF}) {
            for (const bool forGood : {false, true}) {
                for (const Leaves leaves : {Leaves::nothing, Leaves::number, Leaves::result}) {
                    ASSERT_EQ(differenceIn(failing(number, code, forGood, leaves)), "") << "call " << number;
                }
            }
        }
    }
}

TEST_P(ExhaustiveFaultTest, NothingElseChangesWhenNoTraceMessageIsWanted) {
    life.board.threshold = 0;
    for (std::int64_t number = 1; number <= static_cast<std::int64_t>(calls.size()); ++number) {
        ASSERT_EQ(differenceIn(failing(number, 0x8000, false, Leaves::nothing)), "") << "call " << number;
        ASSERT_EQ(differenceIn(failing(number, 0x8000, true, Leaves::nothing)), "") << "call " << number;
    }
}

TEST_P(ExhaustiveFaultTest, EachCallMayBeAnsweredWithAnUnusualSuccess) {
    for (std::int64_t number = 1; number <= static_cast<std::int64_t>(calls.size()); ++number) {
        for (const std::int64_t code : {0x7FFF, -1, 0x800}) {
            ASSERT_EQ(differenceIn(failing(number, code, false, Leaves::nothing)), "") << "call " << number;
            ASSERT_EQ(differenceIn(failing(number, code, true, Leaves::nothing)), "") << "call " << number;
        }
    }
}

TEST_P(ExhaustiveFaultTest, EachRecordMayBeMissingOrIncompleteWhenItIsLookedUp) {
    for (std::size_t i = 0; i < calls.size(); ++i) {
        for (const Lack& lack : lacksOf(calls[i])) {
            life.disturbance = Disturbance{static_cast<std::int64_t>(i) + 1, lack.missing, lack.back};
            ASSERT_EQ(differenceIn(life), "") << "call " << i + 1 << ", " << calls[i].object;
        }
    }
}

TEST_P(ExhaustiveFaultTest, EachDriverMayHaveLostItsWordsWhenItIsUsed) {
    for (const Called& called : calls) {
        for (const unsigned words : {Told::context, Told::write, Told::writeBuffer, Told::read}) {
            if (usesDriver(called)) {
                const auto step = static_cast<std::ptrdiff_t>(called.step);
                Story story = life;
                story.steps.insert(story.steps.begin() + step, {Do::setWords, called.object, {words}});
                ASSERT_EQ(differenceIn(story), "") << called.object << " from step " << step << " on";
                story.steps.insert(story.steps.begin() + step + 2, {Do::setWords, called.object, {0}});
                ASSERT_EQ(differenceIn(story), "") << called.object << " in step " << step;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(AllRadios, ExhaustiveFaultTest,
                         testing::Values(Radio{0, false}, Radio{1, false}, Radio{2, false}, Radio{3, false},
                                         Radio{4, false}, Radio{5, false}, Radio{0, true}, Radio{2, true},
                                         Radio{3, true}, Radio{5, true}));
