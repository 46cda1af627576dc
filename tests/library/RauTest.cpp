#include "FrequencyHandler_Rau.h"
#include "RadioTest.h"

#include <memory>
#include <string>

using Standalone::Operation;
using Standalone::Presence;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/** Handlers of channel 2, whose remote radio unit is there. */
class RauTest : public RadioTest {
protected:
    using Handler = RL::FrequencyHandler::Rau::FrequencyHandler;

    RauTest() { platform.addRau(2); }

    /** The handler of `direction`, initialised. */
    Handler& ready(const std::string& direction) {
        m_handler = std::make_unique<Handler>(direction, 2);
        EXPECT_EQ(m_handler->onModuleInit(), ResultOk);
        forget();
        return *m_handler;
    }
    /** What the initialisation of a handler of `channel` calls. */
    Lines lookups(int channel) {
        Handler handler("Tx", channel);
        forget();
        handler.onModuleInit();
        return calls();
    }

private:
    std::unique_ptr<Handler> m_handler;
};

} // namespace

// Lookup

TEST_F(RauTest, ConstructionLooksNothingUp) {
    const Handler handler("Tx", 2);
    EXPECT_THAT(calls(), ElementsAre("broker-register IFrequencyHandler_Tx_2"));
}

TEST_F(RauTest, ChannelZeroLooksUpTheNameWithoutSuffix) {
    EXPECT_THAT(lookups(0), ElementsAre("broker-lookup IRauHandler"));
}

TEST_F(RauTest, ChannelTwoLooksUpTheNameWithItsNumber) {
    EXPECT_THAT(lookups(2), ElementsAre("broker-lookup IRauHandler_2"));
}

TEST_F(RauTest, NegativeChannelKeepsItsMinusSign) {
    EXPECT_THAT(lookups(-1), ElementsAre("broker-lookup IRauHandler_-1"));
}

class RauNotAvailableTest : public RauTest, public testing::WithParamInterface<Presence> {};

TEST_P(RauNotAvailableTest, InitialisationFailsAndSaysSo) {
    platform.setPresence("IRauHandler_2", GetParam());
    Handler handler("Tx", 2);
    EXPECT_EQ(handler.onModuleInit(), ResultFailed);
    EXPECT_THAT(traces(), ElementsAre("error: onModuleInit(): Error getting interface to IRauHandler_2"));
}

INSTANTIATE_TEST_SUITE_P(AbsentNullForeignNullRecord, RauNotAvailableTest,
                         testing::Values(Presence::absent, Presence::null, Presence::foreign,
                                         Presence::nullRecord));

TEST_F(RauTest, LookupFailureIsWrittenAtLevelOneWhateverTheThreshold) {
    platform.trace().setThreshold(Standalone::TraceLevel::off);
    Handler handler("Tx", 0);
    EXPECT_EQ(handler.onModuleInit(), ResultFailed);
    ASSERT_EQ(platform.trace().messages().size(), 1U);
    EXPECT_EQ(platform.trace().messages().front().level, 1);
    EXPECT_EQ(platform.trace().messages().front().text,
              "onModuleInit(): Error getting interface to IRauHandler");
}

TEST_F(RauTest, LookupFailureIsTheOneMessageThatIsNotEnded) {
    Handler handler("Tx", 0);
    handler.onModuleInit();
    handler.setRfFrequency(1); // another message, which is
    ASSERT_EQ(platform.trace().messages().size(), 2U);
    EXPECT_FALSE(platform.trace().messages().front().ended);
    EXPECT_TRUE(platform.trace().messages().back().ended);
}

TEST_F(RauTest, InitialisationMayBeRepeatedAndFindsWhatIsThereNow) {
    Handler handler("Tx", 5);
    EXPECT_EQ(handler.onModuleInit(), ResultFailed);
    platform.addRau(5);
    EXPECT_EQ(handler.onModuleInit(), ResultOk);
    handler.setRfFrequency(7450000);
    EXPECT_THAT(writes(), ElementsAre("IRauHandler_5=7450000"));
}

TEST_F(RauTest, RepeatedInitialisationForgetsARauThatIsGone) {
    Handler& handler = ready("Tx");
    platform.setPresence("IRauHandler_2", Presence::absent);
    EXPECT_EQ(handler.onModuleInit(), ResultFailed);
    handler.setRfFrequency(7450000);
    EXPECT_THAT(writes(), IsEmpty());
}

// Variables

TEST_F(RauTest, ReadsNoVariables) {
    Handler& handler = ready("Tx");
    EXPECT_EQ(handler.getVariablesFromDatabase(), ResultOk);
    EXPECT_EQ(handler.getFFVariablesFromDatabase(), ResultOk);
    EXPECT_THAT(calls(), IsEmpty());
}

// Write

TEST_F(RauTest, DirectionRxSetsTheReceiveFrequency) {
    EXPECT_EQ(ready("Rx").writeFrequencyToHW(7450000), ResultOk);
    EXPECT_THAT(calls(), ElementsAre("rau-rx IRauHandler_2"));
}

TEST_F(RauTest, DirectionTxSetsTheTransmitFrequency) {
    EXPECT_EQ(ready("Tx").writeFrequencyToHW(7450000), ResultOk);
    EXPECT_THAT(calls(), ElementsAre("rau-tx IRauHandler_2"));
}

TEST_F(RauTest, AnyOtherDirectionSetsTheTransmitFrequency) {
    for (const char* direction : {"rx", "RX", "", "Rx "}) {
        ready(direction).writeFrequencyToHW(7450000);
        EXPECT_THAT(calls(), ElementsAre("rau-tx IRauHandler_2")) << direction;
    }
}

TEST_F(RauTest, FrequencyReachesTheRauUnchanged) {
    Handler& handler = ready("Tx");
    handler.setRfFrequency(7450000);
    handler.setRfFrequency(4294967295UL);
    EXPECT_THAT(writes(), ElementsAre("IRauHandler_2=7450000", "IRauHandler_2=4294967295"));
    EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(RauTest, FrequencyGivenToTheWriteWrapsAt32Bits) {
    ready("Tx").writeFrequencyToHW(static_cast<unsigned long>(4302417296ULL)); // 2^32 + 7450000
    EXPECT_THAT(writes(), ElementsAre("IRauHandler_2=7450000"));
}

TEST_F(RauTest, RauAnswering0x7FFFHasSucceeded) {
    fail(Operation::rauTx, "IRauHandler_2", 0x7FFF);
    EXPECT_EQ(ready("Tx").writeFrequencyToHW(1), ResultOk);
}

TEST_F(RauTest, RauAnswering0xFFFFFFFFHasSucceeded) {
    fail(Operation::rauTx, "IRauHandler_2", -1);
    EXPECT_EQ(ready("Tx").writeFrequencyToHW(1), ResultOk);
}

TEST_F(RauTest, RauAnswering0x8000HasFailedWithoutAMessage) {
    fail(Operation::rauRx, "IRauHandler_2", 0x8000);
    EXPECT_EQ(ready("Rx").writeFrequencyToHW(1), ResultFailed);
    EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(RauTest, FailureYields0x8000WhateverTheCode) {
    fail(Operation::rauTx, "IRauHandler_2", 0x8123);
    EXPECT_EQ(static_cast<int>(ready("Tx").writeFrequencyToHW(1)), 0x8000);
}

TEST_F(RauTest, FailedRauStillLeavesTheNewFrequencyWithTheHandler) {
    fail(Operation::rauTx, "IRauHandler_2", 0x8001);
    Handler& handler = ready("Tx");
    EXPECT_EQ(handler.setRfFrequency(7450000), ResultOk);
    EXPECT_EQ(handler.getFrequency(), 7450000U);
}

TEST_F(RauTest, WriteWithoutRauFailsWithOneErrorMessage) {
    Handler handler("Tx", 2);
    EXPECT_EQ(handler.writeFrequencyToHW(7450000), ResultFailed);
    EXPECT_THAT(traces(),
                ElementsAre("error: writeFrequencyToHW called without IRauHandler for direction Tx"));
    EXPECT_THAT(writes(), IsEmpty());
}

TEST_F(RauTest, DestructionLeavesTheRauPublished) {
    auto handler = std::make_unique<Handler>("Tx", 2);
    handler->onModuleInit();
    forget();
    handler.reset();
    EXPECT_THAT(calls(), ElementsAre("broker-unregister IFrequencyHandler_Tx_2"));
}
