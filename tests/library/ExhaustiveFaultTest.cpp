// The life of a radio, from its construction to its end, with each of its calls to the platform going wrong
// in turn, in every way in which such a call can: the library goes on living, and calls, writes, traces and
// answers what the model of it says.

#include "Comparison.h"
#include "FullBoard.h"
#include "Runner.h"

#include <gtest/gtest.h>

#include <algorithm>
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
using Told::Throws;
using Told::TracePlace;

namespace {

/** What the board of a radio has. */
enum class Equipment {
    usual,
    alternative, ///< only what boards have instead of something else
    mixed,       ///< two detectors with the tables of the mixer, and no charge-pump table of its own
};

/** Which radio: the handler type, or handlers of all kinds without a module, and the board. */
struct Radio {
    std::int64_t type;
    Equipment equipment = Equipment::usual;
    std::int32_t channel = 1;
};
constexpr std::int64_t noModule = -1;

void PrintTo(const Radio& radio, std::ostream* stream) {
    *stream << "type " << radio.type << " on channel " << radio.channel << ", equipment "
            << static_cast<int>(radio.equipment);
}

/** A call of the undisturbed radio, and the step in which it comes. */
struct Called {
    Operation operation;
    std::string object;
    std::size_t step;
};

template <typename Named>
void remove(std::vector<Named>& list, const std::vector<std::string>& ends) {
    const auto goes = [&](const Named& item) {
        return std::any_of(ends.begin(), ends.end(), [&](const std::string& end) {
            const std::string& name = item.name.text();
            return name.size() >= end.size() && name.compare(name.size() - end.size(), end.size(), end) == 0;
        });
    };
    list.erase(std::remove_if(list.begin(), list.end(), goes), list.end());
}

Told::Board boardOf(const Radio& radio) {
    Told::Board board;
    Told::addChannel(board, radio.channel, radio.equipment != Equipment::usual);
    if (radio.equipment == Equipment::alternative) {
        remove(board.drivers, {"mixer.i", "mixer.q", "detector.v", "pll.config"});
        remove(board.tables, {"Voltage.Mixer.I", "Voltage.Mixer.Q", "Chargepump.Setting"});
    } else if (radio.equipment == Equipment::mixed) {
        remove(board.drivers, {"detector.v", "lo.config"});
        remove(board.tables, {"Chargepump.Setting"});
    }
    Told::addShared(board);
    board.readings = {40, 30, 20, 25, 10, 50};
    return board;
}

/** What a module's handlers do without one. */
std::vector<Step> stepsOfHandlers(std::int32_t channel) {
    using Told::HandlerKind;
    const std::string tx = Told::handlerName("Tx", channel);
    const std::string rx = Told::handlerName("Rx", channel);
    std::vector<Step> steps;
    for (const HandlerKind kind : {HandlerKind::microwave, HandlerKind::rfModule, HandlerKind::rau}) {
        const auto number = static_cast<std::int64_t>(kind);
        steps.insert(steps.end(), {
                                      {Do::makeHandler, "Tx", {0, number, channel, Told::useIf}},
                                      {Do::makeHandler, "Rx", {1, number, channel, Told::useHalfSpacing}},
                                      {Do::handlerInit, tx},
                                      {Do::handlerInit, rx},
                                      {Do::handlerVariables, tx},
                                      {Do::handlerVariables, rx},
                                      {Do::handlerFrameFormat, rx},
                                      {Do::handlerInit, rx},
                                      {Do::observeFromC, tx, {1}},
                                      {Do::observe, rx, {2}},
                                      {Do::handlerSet, tx, {17'442'250}},
                                      {Do::handlerSet, rx, {17'596'750}},
                                      {Do::handlerWrite, tx, {18'000'000}},
                                      {Do::plan, tx, {17'500'750, 0}},
                                      {Do::handlerGet, tx},
                                      {Do::destroyHandler, {}, {0}},
                                      {Do::destroyHandler, {}, {1}},
                                  });
    }
    // What they are called counts to its end, in the broker; in messages as far as there is room.
    const std::string same(150, 'x');
    for (std::int64_t slot = 0; slot < 2; ++slot) {
        const std::string direction = same + std::to_string(slot);
        const std::string name = Told::handlerName(direction, channel);
        const auto kind = static_cast<std::int64_t>(HandlerKind::rfModule);
        steps.insert(steps.end(), {
                                      {Do::makeHandler, direction, {slot, kind, channel, 0}},
                                      {Do::handlerInit, name},
                                      {Do::observe, name, {slot}},
                                      {Do::observeFromC, name, {slot}},
                                      {Do::handlerSet, name, {18'000'000}},
                                  });
    }
    return steps;
}

std::vector<Step> stepsOf(const Radio& radio) {
    const std::int32_t channel = radio.channel;
    const std::string tx = Told::handlerName("Tx", channel);
    const std::string rx = Told::handlerName("Rx", channel);
    const std::string canceller = "ILoCancellation_" + std::to_string(channel);
    Step calibration{Do::calibrate, canceller};
    calibration.calibration = {0, 100, -100, 0, 0.75, 1, 2, 1, 0, radio.equipment != Equipment::usual, 0};
    return {
        {Do::makeModule, {}, {0, channel, radio.type}},
        {Do::makeCompensation, {}, {0, channel}},
        {Do::initializeCompensation, {}, {0}},
        {Do::phase, {}, {11}},
        {Do::phase, {}, {5}},
        {Do::phase, {}, {20}},
        {Do::observe, tx, {1}},
        {Do::observeFromC, tx, {2}},
        {Do::observeFromC, rx, {3}},
        {Do::observe, rx, {4}},
        {Do::temperature, {}, {25}},
        {Do::setTx, {}, {0, 17'442'250}},
        {Do::setRx, {}, {0, 17'596'750}},
        {Do::temperature, {}, {-5}},
        calibration,
        {Do::correct, canceller, {17'442'250, 40}},
        {Do::setIq, canceller, {300, -300}},
        {Do::setVariable, "ChannelSpacing", {}, {}, {500}},
        {Do::phase, {}, {20}},
        {Do::phase, {}, {5}},
        {Do::setRx, {}, {0, 18'596'750}},
        {Do::phase, {}, {11}},
        {Do::compensate, {}, {0}},
        {Do::txChanged, {}, {0, 18'000'000}},
        {Do::handlerGet, tx},
        {Do::handlerGet, rx},
        {Do::destroyModule, {}, {0}},
    };
}

Story lifeOf(const Radio& radio) {
    return {boardOf(radio), radio.type == noModule ? stepsOfHandlers(radio.channel) : stepsOf(radio)};
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
                                    Told::Presence::nullRecord, Told::Presence::wordless}) {
            add(Do::setPresence, static_cast<std::int64_t>(presence),
                static_cast<std::int64_t>(Told::Presence::present));
        }
        break;
    default:
        break;
    }
    return lacks;
}

/** Whether the call has a pointer to give back. */
bool looksUp(const Called& called) {
    switch (called.operation) {
    case Operation::brokerLookup:
    case Operation::brokerOpen:
    case Operation::brokerGet:
    case Operation::driverLookup:
    case Operation::variableGet:
    case Operation::variableAddress:
    case Operation::tableLookup:
        return true;
    default:
        return false;
    }
}

bool usesDriver(const Called& called) {
    return called.operation == Operation::driverWrite || called.operation == Operation::driverWriteBuffer ||
           called.operation == Operation::driverRead;
}

class ExhaustiveFaultTest : public testing::TestWithParam<Radio> {
protected:
    Story life = lifeOf(GetParam());
    std::vector<Called> calls = callsOf(life);
    /** Of the calls that go wrong, from 1. All; where each life takes its time, some: other ones for other
     * radios. */
    std::vector<std::int64_t> numbers;

    ExhaustiveFaultTest() {
        const auto radio = static_cast<std::int64_t>(GetParam().equipment) + GetParam().type + 1;
        for (std::int64_t number = 1 + radio % CALLS_STRIDE;
             number <= static_cast<std::int64_t>(calls.size()); number += CALLS_STRIDE) {
            numbers.push_back(number);
        }
    }

    const Called& called(std::int64_t number) const { return calls[static_cast<std::size_t>(number) - 1]; }

    /** The life in which a call throws, once or from then on, after it was carried out or instead of that. */
    Story throwing(std::int64_t number, Throws throws, bool forGood, bool isCarriedOut) const {
        Story story = failing(number, 0x8000, forGood, isCarriedOut ? Leaves::result : Leaves::nothing);
        story.steps.front().throws = throws;
        return story;
    }

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
    for (const std::int64_t number : numbers) {
        for (const std::int64_t code : {0x8000, 0x8123, 0x7FFFFFFF}) {
            ASSERT_EQ(differenceIn(failing(number, code, false, Leaves::nothing)), "") << "call " << number;
        }
        ASSERT_EQ(differenceIn(failing(number, 0x8123, true, Leaves::nothing)), "") << "call " << number;
    }
}

TEST_P(ExhaustiveFaultTest, EachFailingCallMayLeaveSomethingBehind) {
    for (const std::int64_t number : numbers) {
        for (const Leaves leaves : {Leaves::number, Leaves::result}) {
            for (const bool forGood : {false, true}) {
                ASSERT_EQ(differenceIn(failing(number, 0x8123, forGood, leaves)), "") << "call " << number;
            }
        }
    }
}

TEST_P(ExhaustiveFaultTest, EachLookupMaySucceedAndGiveNull) {
    for (const std::int64_t number : numbers) {
        if (looksUp(called(number))) {
            ASSERT_EQ(differenceIn(failing(number, 0, false, Leaves::null)), "") << "call " << number;
            ASSERT_EQ(differenceIn(failing(number, 0, true, Leaves::null)), "") << "call " << number;
        }
    }
}

TEST_P(ExhaustiveFaultTest, EachCallMaySucceedAndStoreNothing) {
    for (const std::int64_t number : numbers) {
        for (const bool forGood : {false, true}) {
            ASSERT_EQ(differenceIn(failing(number, 0, forGood, Leaves::asItWas)), "") << "call " << number;
        }
    }
}

TEST_P(ExhaustiveFaultTest, EachCallMayThrow) {
    for (const std::int64_t number : numbers) {
        for (const Throws throws : {Throws::exception, Throws::number}) {
            for (const bool isCarriedOut : {false, true}) {
                ASSERT_EQ(differenceIn(throwing(number, throws, false, isCarriedOut)), "")
                    << "call " << number;
            }
        }
        ASSERT_EQ(differenceIn(throwing(number, Throws::exception, true, false)), "") << "call " << number;
    }
}

TEST_P(ExhaustiveFaultTest, EachObserverMayThrow) {
    for (std::size_t i = 0; i < life.steps.size(); ++i) {
        if (life.steps[i].what == Do::observe || life.steps[i].what == Do::observeFromC) {
            for (const Throws throws : {Throws::exception, Throws::number}) {
                Story story = life;
                story.steps[i].number[1] = static_cast<std::int64_t>(throws);
                ASSERT_EQ(differenceIn(story), "") << "observer of step " << i;
            }
        }
    }
}

TEST_P(ExhaustiveFaultTest, NothingElseChangesWhenMessagesAreLost) {
    for (const std::int64_t number : numbers) { // all messages of a life, in one way after the other
        const TracePlace place = number % 2 == 0 ? TracePlace::mapping : TracePlace::stream;
        const Throws throws = number / 2 % 2 == 0 ? Throws::exception : Throws::number;
        Story story = failing(number, 0x8000, true, Leaves::nothing);
        story.steps.insert(story.steps.begin(),
                           Step{Do::loseMessages,
                                {},
                                {static_cast<std::int64_t>(place), static_cast<std::int64_t>(throws)}});
        ASSERT_EQ(differenceIn(story), "") << "call " << number;
    }
}

TEST_P(ExhaustiveFaultTest, NothingElseChangesWhenNoTraceMessageIsWanted) {
    life.board.threshold = 0;
    for (const std::int64_t number : numbers) {
        ASSERT_EQ(differenceIn(failing(number, 0x8000, false, Leaves::nothing)), "") << "call " << number;
        ASSERT_EQ(differenceIn(failing(number, 0x8000, true, Leaves::nothing)), "") << "call " << number;
    }
}

TEST_P(ExhaustiveFaultTest, EachCallMayBeAnsweredWithAnUnusualSuccess) {
    for (const std::int64_t number : numbers) {
        for (const std::int64_t code : {0x7FFF, -1, 0x800}) {
            ASSERT_EQ(differenceIn(failing(number, code, false, Leaves::nothing)), "") << "call " << number;
        }
        ASSERT_EQ(differenceIn(failing(number, 0x7FFF, true, Leaves::nothing)), "") << "call " << number;
    }
}

TEST_P(ExhaustiveFaultTest, EachRecordMayBeMissingOrIncompleteWhenItIsLookedUp) {
    for (const std::int64_t number : numbers) {
        for (const Lack& lack : lacksOf(called(number))) {
            life.disturbance = Disturbance{number, lack.missing, lack.back};
            ASSERT_EQ(differenceIn(life), "") << "call " << number << ", " << called(number).object;
        }
    }
}

TEST_P(ExhaustiveFaultTest, EachDriverMayHaveLostItsWordsWhenItIsUsed) {
    for (const std::int64_t number : numbers) {
        for (const unsigned words : {Told::context, Told::write, Told::writeBuffer, Told::read}) {
            if (usesDriver(called(number))) {
                const std::string& driver = called(number).object;
                const auto step = static_cast<std::ptrdiff_t>(called(number).step);
                Story story = life;
                story.steps.insert(story.steps.begin() + step, {Do::setWords, driver, {words}});
                ASSERT_EQ(differenceIn(story), "") << driver << " from step " << step << " on";
                story.steps.insert(story.steps.begin() + step + 2, {Do::setWords, driver, {0}});
                ASSERT_EQ(differenceIn(story), "") << driver << " in step " << step;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(OfEachType, ExhaustiveFaultTest,
                         testing::Values(Radio{0}, Radio{1}, Radio{2}, Radio{3}, Radio{4}, Radio{5},
                                         Radio{0, Equipment::alternative}, Radio{2, Equipment::alternative},
                                         Radio{3, Equipment::alternative}, Radio{5, Equipment::alternative}));

INSTANTIATE_TEST_SUITE_P(OnOtherChannels, ExhaustiveFaultTest,
                         testing::Values(Radio{0, Equipment::mixed, 2}, Radio{2, Equipment::mixed, 2},
                                         Radio{3, Equipment::mixed, 0}, Radio{4, Equipment::usual, 0}));

INSTANTIATE_TEST_SUITE_P(WithoutModule, ExhaustiveFaultTest,
                         testing::Values(Radio{noModule}, Radio{noModule, Equipment::mixed, 2}));
