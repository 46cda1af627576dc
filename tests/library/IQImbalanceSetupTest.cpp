// Phase 11: how the IQ-imbalance handler finds its drivers and tables and subscribes to the temperature.

#include "FlatCalls.h"
#include "TxIQImbalanceTest.h"

#include <algorithm>

namespace {

/** What phase 11 does on a radio on which nothing fails, in order. */
const std::vector<std::string> wholeSetUp{
    "0x800: Entering onPhaseActivation",
    "broker-open",
    "broker-get IDriverLayer",
    "broker-close",
    "driver-lookup channel.1.dsp.tx.dc.compensation.i",
    "driver-lookup channel.1.dsp.tx.dc.compensation.q",
    "driver-lookup channel.1.dsp.tx.quadrature.gain.offset.compensation",
    "driver-lookup channel.1.dsp.tx.quadrature.phase.offset.compensation",
    "table-lookup Channel.1.Tx.Dsp.Temperature.To.Dc.I.Compensation",
    "table-lookup Channel.1.Tx.Dsp.Temperature.To.Dc.Q.Compensation",
    "table-lookup Channel.1.Tx.Dsp.Temperature.To.Gain.Offset.Compensation",
    "table-lookup Channel.1.Tx.Dsp.Temperature.To.Phase.Offset.Compensation",
    "broker-open",
    "broker-get ITemperatureHandler",
    "temperature-register ITemperatureHandler",
    "broker-close"};

class IQImbalanceSetupTest : public TxIQImbalanceTest {
protected:
    /** No handle of the broker is left open, whatever the test did. */
    void TearDown() override { EXPECT_EQ(platform.interfaces().openHandles(), 0U); }

    /** Runs phase 11, which ends with 0x8000; gives what happened. */
    Lines setUpInVain() {
        forget();
        story.clear();
        EXPECT_EQ(activate(11), ResultFailed);
        return story;
    }
    /** The set-up up to and including its step `last`, and then `ending`. */
    static Lines endAfter(const std::string& last, const Lines& ending) {
        const auto end = std::find(wholeSetUp.begin(), wholeSetUp.end(), last);
        EXPECT_NE(end, wholeSetUp.end()) << last;
        Lines lines(wholeSetUp.begin(), end + 1);
        lines.insert(lines.end(), ending.begin(), ending.end());
        return lines;
    }
    /** The tables that a compensation asks, in order; "" for one that was not found. */
    Lines tablesAsked() {
        handler.doImbalanceCompensation();
        Lines tables;
        for (const Standalone::Call& call : platform.calls().journalOf(Operation::tableLinear)) {
            tables.push_back(call.object);
        }
        return tables;
    }
};

} // namespace

// Success

TEST_F(IQImbalanceSetupTest, FindsDriversThenTablesThenSubscribes) {
    EXPECT_EQ(activate(11), ResultOk);
    EXPECT_EQ(story, wholeSetUp);
    EXPECT_EQ(platform.temperature().observerCount(), 1U);
}

TEST_F(IQImbalanceSetupTest, Channel2LooksUpNamesOfItsOwn) {
    equip(2);
    CTxIQImbalanceHandler other(2);
    EXPECT_EQ(CTxIQImbalanceHandler::onPhaseActivation(&other, 11, ECallbackPriority{}), ResultOk);
    EXPECT_EQ(story[4], "driver-lookup channel.2.dsp.tx.dc.compensation.i");
    EXPECT_EQ(story[8], "table-lookup Channel.2.Tx.Dsp.Temperature.To.Dc.I.Compensation");
}

TEST_F(IQImbalanceSetupTest, HighestChannelIsUnsignedInTheNames) {
    equip(4'294'967'295U);
    CTxIQImbalanceHandler other(4'294'967'295U);
    EXPECT_EQ(CTxIQImbalanceHandler::onPhaseActivation(&other, 11, ECallbackPriority{}), ResultOk);
    EXPECT_EQ(story[7], "driver-lookup channel.4294967295.dsp.tx.quadrature.phase.offset.compensation");
    EXPECT_EQ(story[11], "table-lookup Channel.4294967295.Tx.Dsp.Temperature.To.Phase.Offset.Compensation");
}

TEST_F(IQImbalanceSetupTest, PriorityIsNotUsed) {
    EXPECT_EQ(CTxIQImbalanceHandler::onPhaseActivation(&handler, 11, ECallbackPriority{-7}), ResultOk);
    EXPECT_EQ(story, wholeSetUp);
}

TEST_F(IQImbalanceSetupTest, NothingIsWrittenInPhase11) {
    platform.temperature().set(25);
    EXPECT_EQ(activate(11), ResultOk);
    EXPECT_EQ(writes(), Lines{});
}

TEST_F(IQImbalanceSetupTest, TemperatureServiceIsHeardFromThenOn) {
    setUp();
    platform.temperature().set(25);
    EXPECT_EQ(written(), all("251", "252", "253", "254"));
}

TEST_F(IQImbalanceSetupTest, CodesBelow8000AreSuccesses) {
    for (const std::int32_t code : {0x7FFF, -1}) {
        for (const Operation operation :
             {Operation::brokerOpen, Operation::brokerGet, Operation::driverLookup, Operation::tableLookup,
              Operation::temperatureRegister}) {
            fail(operation, "", code);
        }
        story.clear();
        EXPECT_EQ(activate(11), ResultOk);
        EXPECT_EQ(story, wholeSetUp);
    }
}

// Other phases, no object

TEST_F(IQImbalanceSetupTest, OtherPhasesLookNothingUp) {
    for (const unsigned long phase : {5UL, 20UL, 0UL, 10UL, 12UL}) {
        story.clear();
        EXPECT_EQ(activate(phase), ResultOk);
        EXPECT_EQ(story, (Lines{"0x800: Entering onPhaseActivation"}));
    }
}

TEST_F(IQImbalanceSetupTest, WithoutAnObjectTheCodeIs801C) {
    for (const unsigned long phase : {11UL, 5UL}) {
        story.clear();
        EXPECT_EQ(CTxIQImbalanceHandler::onPhaseActivation(nullptr, phase, ECallbackPriority{}),
                  static_cast<EAFResult>(0x801C));
        EXPECT_EQ(story, (Lines{"0x800: Entering onPhaseActivation",
                                "0x8000: CTxIQImbalanceHandler_OnPhaseActivation called with pThis NULL"}));
    }
}

TEST_F(IQImbalanceSetupTest, WithoutAnObjectTheCodeIs801CAlsoWhenNoMessageIsWanted) {
    platform.trace().setThreshold(Standalone::TraceLevel::off);
    EXPECT_EQ(CTxIQImbalanceHandler::onPhaseActivation(nullptr, 11, ECallbackPriority{}),
              static_cast<EAFResult>(0x801C));
    EXPECT_EQ(traces(), Lines{});
}

// The broker

TEST_F(IQImbalanceSetupTest, BrokerThatGivesNoHandleGetsNoneBack) {
    fail(Operation::brokerOpen, "", 0x8055);
    EXPECT_EQ(setUpInVain(),
              (Lines{"0x800: Entering onPhaseActivation", "broker-open",
                     "0x8000: CTxFrequencyHandler failed to get IDriverLayer (EAFResult = 0x8055)"}));
}

TEST_F(IQImbalanceSetupTest, BrokerThatGivesNoSecondHandleGetsNoneBack) {
    failAfter("table-lookup", Operation::brokerOpen, "", 0x8056);
    const Lines happened = setUpInVain();
    ASSERT_EQ(happened.size(), 14U);
    EXPECT_EQ(happened[12], "broker-open");
    EXPECT_EQ(happened[13], "0x8000: CTxIQImbalanceHandler_Initialize failed to get ITemperatureHandler "
                            "(EAFResult = 0x8056)");
}

TEST_F(IQImbalanceSetupTest, HandleIsGivenBackBeforeAMissingDriverLayerIsReported) {
    for (const Presence presence : {Presence::absent, Presence::null, Presence::nullRecord}) {
        platform.setPresence("IDriverLayer", presence);
        EXPECT_EQ(setUpInVain(),
                  endAfter("broker-close",
                           {"0x8000: CTxFrequencyHandler failed to get IDriverLayer (EAFResult = 0x8001)"}));
    }
}

TEST_F(IQImbalanceSetupTest, CodeOfTheBrokerIsShownForTheDriverLayer) {
    fail(Operation::brokerGet, "IDriverLayer", 0x8057);
    EXPECT_EQ(setUpInVain().back(),
              "0x8000: CTxFrequencyHandler failed to get IDriverLayer (EAFResult = 0x8057)");
}

TEST_F(IQImbalanceSetupTest, DriverLayerThatCameWithAFailingCodeIsMissing) {
    platform.calls().inject({Operation::brokerGet, "IDriverLayer", 0x8058, std::nullopt, std::nullopt, true});
    EXPECT_EQ(setUpInVain(),
              endAfter("broker-close",
                       {"0x8000: CTxFrequencyHandler failed to get IDriverLayer (EAFResult = 0x8058)"}));
}

TEST_F(IQImbalanceSetupTest, NullDriverLayerWithASuccessCodeIsMissingToo) {
    platform.setPresence("IDriverLayer", Presence::nullRecord);
    fail(Operation::brokerGet, "IDriverLayer", 0x12);
    EXPECT_EQ(setUpInVain(),
              endAfter("broker-close",
                       {"0x8000: CTxFrequencyHandler failed to get IDriverLayer (EAFResult = 0x12)"}));
}

TEST_F(IQImbalanceSetupTest, HandleThatIsNullIsGivenBackToo) {
    FlatCalls::giveNullHandles();
    EXPECT_EQ(setUpInVain(),
              endAfter("broker-close",
                       {"0x8000: CTxFrequencyHandler failed to get IDriverLayer (EAFResult = 0x8003)"}));
    FlatCalls::reset();
    void* handle = nullptr;
    EXPECT_EQ(platform.interfaces().open(&handle), ResultOk);
    EXPECT_EQ(platform.interfaces().close(handle), ResultOk);
    EXPECT_EQ(platform.interfaces().close(handle), ResultOk); // the one that the handler could not know
}

// Drivers

TEST_F(IQImbalanceSetupTest, FailedDriverLookupEndsTheSetUpAtItsCode) {
    for (const std::string& name : driverNames) {
        platform.calls().clearAll();
        fail(Operation::driverLookup, "channel.1." + name, 0x8123);
        EXPECT_EQ(setUpInVain(), endAfter("driver-lookup channel.1." + name,
                                          {"0x8123: CTxIQImbalanceHandler failed to get driver interface"}));
    }
    EXPECT_EQ(platform.temperature().observerCount(), 0U);
}

TEST_F(IQImbalanceSetupTest, DriversBeforeAFailedLookupStayFound) {
    fail(Operation::driverLookup, "channel.1.dsp.tx.quadrature.gain.offset.compensation", 0x8123);
    setUpInVain();
    EXPECT_EQ(compensate(ResultFailed),
              (Lines{"0x8000: CTxIQImbalanceHandler_DoImbalanceCompensation called with "
                     "pTxGainOffsetCompensationDriver pointer(s) set to NULL"}));
}

TEST_F(IQImbalanceSetupTest, NullDriverWithASuccessCodePasses) {
    for (const std::string& name : driverNames) {
        platform.drivers().giveNullRecord("channel.1." + name);
    }
    EXPECT_EQ(activate(11), ResultOk);
    EXPECT_EQ(story, wholeSetUp);
}

TEST_F(IQImbalanceSetupTest, DriverWithoutAnyWordPasses) {
    for (const std::string& name : driverNames) {
        driver(name).setMissingWords(Standalone::wordContext | Standalone::wordWrite |
                                     Standalone::wordWriteBuffer | Standalone::wordRead);
    }
    EXPECT_EQ(activate(11), ResultOk);
}

// Tables

TEST_F(IQImbalanceSetupTest, FailedTableLookupEndsTheSetUpAtItsCode) {
    for (const std::string& name : tableNames) {
        platform.calls().clearAll();
        fail(Operation::tableLookup, "Channel.1." + name, 0x8124);
        EXPECT_EQ(setUpInVain(), endAfter("table-lookup Channel.1." + name,
                                          {"0x8124: CTxIQImbalanceHandler failed to get calibration table"}));
    }
    EXPECT_EQ(platform.temperature().observerCount(), 0U);
}

TEST_F(IQImbalanceSetupTest, TablesBeforeAFailedLookupStayFoundAndTheOthersAreNull) {
    fail(Operation::tableLookup, "Channel.1.Tx.Dsp.Temperature.To.Dc.Q.Compensation", 0x8124);
    setUpInVain();
    EXPECT_EQ(platform.temperature().observerCount(), 0U);
    EXPECT_EQ(tablesAsked(), (Lines{"Channel.1.Tx.Dsp.Temperature.To.Dc.I.Compensation", "", "", ""}));
    EXPECT_EQ(written(), (Lines{"dsp.tx.dc.compensation.i=1"}));
}

// Temperature service

TEST_F(IQImbalanceSetupTest, HandleIsGivenBackBeforeAMissingTemperatureServiceIsReported) {
    Lines expected = endAfter("broker-get ITemperatureHandler",
                              {"broker-close", "0x8000: CTxIQImbalanceHandler_Initialize failed to get "
                                               "ITemperatureHandler (EAFResult = 0x8001)"});
    for (const Presence presence : {Presence::absent, Presence::null, Presence::nullRecord}) {
        platform.setPresence("ITemperatureHandler", presence);
        EXPECT_EQ(setUpInVain(), expected);
    }
    EXPECT_EQ(platform.temperature().observerCount(), 0U);
}

TEST_F(IQImbalanceSetupTest, NullTemperatureServiceWithASuccessCodeIsMissingToo) {
    platform.setPresence("ITemperatureHandler", Presence::nullRecord);
    fail(Operation::brokerGet, "ITemperatureHandler", 0x13);
    EXPECT_EQ(setUpInVain().back(), "0x8000: CTxIQImbalanceHandler_Initialize failed to get "
                                    "ITemperatureHandler (EAFResult = 0x13)");
}

TEST_F(IQImbalanceSetupTest, HandleIsGivenBackBeforeARefusedSubscriptionIsReported) {
    fail(Operation::temperatureRegister, "ITemperatureHandler", 0x8058);
    EXPECT_EQ(setUpInVain(),
              endAfter("temperature-register ITemperatureHandler",
                       {"broker-close", "0x8000: CTxIQImbalanceHandler_Initialize failed to "
                                        "register ITemperatureObserver (ETHResult = 0x8058)"}));
}

TEST_F(IQImbalanceSetupTest, DriversAndTablesStayFoundWithoutATemperatureService) {
    platform.setPresence("ITemperatureHandler", Presence::absent);
    setUpInVain();
    compensate(ResultOk);
    EXPECT_EQ(written(), all("1", "2", "3", "4"));
}

TEST_F(IQImbalanceSetupTest, DriversAndTablesStayFoundAfterARefusedSubscription) {
    fail(Operation::temperatureRegister, "ITemperatureHandler", 0x8058);
    setUpInVain();
    compensate(ResultOk);
    EXPECT_EQ(written(), all("1", "2", "3", "4"));
}

TEST_F(IQImbalanceSetupTest, Code8000IsAFailureInEveryStep) {
    for (const Operation operation : {Operation::brokerOpen, Operation::brokerGet, Operation::driverLookup,
                                      Operation::tableLookup, Operation::temperatureRegister}) {
        platform.calls().clearAll();
        fail(operation, "", 0x8000);
        EXPECT_EQ(activate(11), ResultFailed) << Standalone::toString(operation);
    }
}

// Records with a hole

TEST_F(IQImbalanceSetupTest, DriverLayerWithoutItsLookupIsAFailedLookup) {
    class Hollow final : public IInterface_c {
    public:
        Hollow() { m_pCStruct = &m_record; }

    private:
        DriverLayerInterface m_record{};
    } hollow;
    platform.interfaces().put("IDriverLayer", &hollow);
    EXPECT_EQ(setUpInVain(),
              endAfter("broker-close", {"0x8000: CTxIQImbalanceHandler failed to get driver interface"}));
}

TEST_F(IQImbalanceSetupTest, TemperatureServiceWithoutItsRegistrationIsARefusedSubscription) {
    class Hollow final : public IInterface_c {
    public:
        Hollow() { m_pCStruct = &m_record; }

    private:
        TemperatureHandlerCStruct m_record{};
    } hollow;
    platform.interfaces().put("ITemperatureHandler", &hollow);
    EXPECT_EQ(setUpInVain(),
              endAfter("broker-get ITemperatureHandler",
                       {"broker-close", "0x8000: CTxIQImbalanceHandler_Initialize failed to "
                                        "register ITemperatureObserver (ETHResult = 0x8000)"}));
}
