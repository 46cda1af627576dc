// Parameters are those that the boards' handlers compute with, each set once, and the ends of their ranges.

#include "ParameterSets.h"

#include "radio/files/InputError.h"
#include "standalone/Platform.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <map>
#include <string>
#include <vector>

namespace Carriers {
namespace {

using Users = std::map<std::string, std::string>;

constexpr std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t highest = std::numeric_limits<std::int32_t>::max();

const std::string boards = BOARDS;

/** The values that a parameter has in all sets. */
std::vector<std::int32_t> valuesOf(const ParameterSets& sets, std::int32_t Parameters::*parameter) {
    std::vector<std::int32_t> values;
    for (const ParameterSet& set : sets.all()) {
        values.push_back(set.parameters.*parameter);
    }
    std::sort(values.begin(), values.end());
    values.erase(std::unique(values.begin(), values.end()), values.end());
    return values;
}

std::vector<std::int32_t> values(std::initializer_list<std::int32_t> list) {
    return list;
}

} // namespace

TEST(ParameterSetsTest, SameParametersAreOneSet) {
    ParameterSets sets;
    sets.add({1, -1, 140'000, 2, 0}, "a", "tx");
    sets.add({1, -1, 140'000, 2, 1}, "a", "rx");
    sets.add({1, -1, 140'000, 2, 0}, "b", "tx");
    ASSERT_EQ(sets.all().size(), 2U);
    EXPECT_EQ(sets.all()[0].users, (Users{{"a", "tx"}, {"b", "tx"}}));
    EXPECT_EQ(sets.all()[1].users, (Users{{"a", "rx"}}));
}

TEST(ParameterSetsTest, SetsDifferInAnyParameter) {
    ParameterSets sets;
    for (const Parameters& parameters :
         {Parameters{1, 1, 1, 1, 1}, Parameters{-1, 1, 1, 1, 1}, Parameters{1, -1, 1, 1, 1},
          Parameters{1, 1, 2, 1, 1}, Parameters{1, 1, 1, 2, 1}, Parameters{1, 1, 1, 1, 2}}) {
        sets.add(parameters, "a", "tx");
    }
    EXPECT_EQ(sets.all().size(), 6U);
}

TEST(ParameterSetsTest, BoardsParametersAreReadForEachChannelAndDirection) {
    ParameterSets sets;
    EXPECT_TRUE(addBoard(sets, boards + "/microwave-if-8ghz.toml"));
    ASSERT_EQ(sets.all().size(), 3U);
    EXPECT_EQ(describe(sets.all()[0].parameters),
              "IF sideband -1, RF sideband +1, IF 350000 kHz, factor 2, baseband offset 0 MHz");
    EXPECT_EQ(sets.all()[0].users, (Users{{"microwave-if-8ghz.toml", "channel 1 tx, channel 2 tx"}}));
    EXPECT_EQ(describe(sets.all()[1].parameters),
              "IF sideband -1, RF sideband -1, IF 350000 kHz, factor 2, baseband offset 20 MHz");
    EXPECT_EQ(sets.all()[1].users, (Users{{"microwave-if-8ghz.toml", "channel 1 rx"}}));
    EXPECT_EQ(describe(sets.all()[2].parameters),
              "IF sideband +1, RF sideband -1, IF 350000 kHz, factor 2, baseband offset 20 MHz");
    EXPECT_EQ(sets.all()[2].users, (Users{{"microwave-if-8ghz.toml", "channel 2 rx"}}));
}

TEST(ParameterSetsTest, BoardThatPassesItsCarriersOnHasNone) {
    ParameterSets sets;
    EXPECT_FALSE(addBoard(sets, boards + "/rf-module-7ghz.toml"));
    EXPECT_TRUE(sets.all().empty());
}

TEST(ParameterSetsTest, BoardThatIsNotThereIsRefused) {
    ParameterSets sets;
    EXPECT_THROW(addBoard(sets, boards + "/none.toml"), Radio::InputError);
}

TEST(ParameterSetsTest, StartIsWhatAHandlerHasThatHasReadNothing) {
    ParameterSets sets;
    addStart(sets);
    ASSERT_EQ(sets.all().size(), 1U);
    Standalone::Platform platform;
    const RL::FrequencyHandler::MicrowaveBoard::FrequencyHandler handler("Tx", 1, true, false, false, false);
    EXPECT_NO_THROW(requireThatHandlerAgrees(handler, sets.all()[0].parameters, "a handler"));
}

TEST(ParameterSetsTest, HandlerWithOtherParametersIsTold) {
    Standalone::Platform platform;
    const RL::FrequencyHandler::MicrowaveBoard::FrequencyHandler handler("Tx", 1, true, false, false, false);
    try {
        requireThatHandlerAgrees(handler, {-1, -1, 0, 2, 0}, "a handler");
        FAIL() << "nothing was told";
    } catch (const HandlerDiffers& difference) {
        // The carrier 0 is the same with any factor; 16 843 009 kHz is the next that is asked.
        EXPECT_STREQ(difference.what(),
                     "a handler, whose handler was asked: RF PLL for 16843009 kHz with IF sideband -1, RF "
                     "sideband -1, IF 0 kHz, factor 2, baseband offset 0 MHz: the library says 16843000, the "
                     "model 8421500");
    }
}

TEST(ParameterSetsTest, EachParameterIsAtItsEnds) {
    ParameterSets sets;
    addEnds(sets, {1, -1, 140'000, 2, 20});
    EXPECT_EQ(sets.all().size(), 4U + 5U + 4U + 7U + 16U);
    EXPECT_EQ(valuesOf(sets, &Parameters::ifSideband), values({-1, 1}));
    EXPECT_EQ(valuesOf(sets, &Parameters::rfSideband), values({-1, 1}));
    EXPECT_EQ(valuesOf(sets, &Parameters::ifFrequency), values({lowest, -1, 0, 1, 140'000, highest}));
    EXPECT_EQ(valuesOf(sets, &Parameters::mixerMultiplicationFactor), values({lowest, -1, 1, 2, highest}));
    EXPECT_EQ(valuesOf(sets, &Parameters::ifBb),
              values({lowest, -1, 0, 1, 20, 2'147'483, 2'147'484, highest}));
}

TEST(ParameterSetsTest, OrdinaryIsASetInWhichMostParametersDoSomething) {
    ParameterSets sets;
    sets.add({-1, -1, 0, 1, 0}, "a", "tx");
    sets.add({-1, -1, 140'000, 2, 0}, "a", "rx");
    sets.add({-1, -1, 140'000, 2, 20}, "b", "tx");
    sets.add({1, -1, 140'000, 2, 20}, "b", "rx");
    EXPECT_EQ(describe(ordinaryOf(sets)),
              "IF sideband -1, RF sideband -1, IF 140000 kHz, factor 2, baseband offset 20 MHz");
}

} // namespace Carriers
