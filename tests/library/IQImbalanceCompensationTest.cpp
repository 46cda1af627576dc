// What the IQ-imbalance handler writes, when, and with which first argument.

#include "TxIQImbalanceTest.h"

#include <array>

namespace {

class IQImbalanceCompensationTest : public TxIQImbalanceTest {
protected:
    /** The points at which the tables were asked. */
    std::vector<int> temperaturesAsked() const {
        std::vector<int> temperatures;
        for (const Standalone::Call& call : platform.calls().journalOf(Operation::tableLinear)) {
            temperatures.push_back(call.at[0]);
        }
        return temperatures;
    }
    /** Has a table succeed without giving a value from now on. */
    void silence(const std::string& tableName) {
        platform.tables().add({"Channel.1." + tableName, {0}, {0}, {0}}); // two axes: it gives none
        fail(Operation::tableLinear, "Channel.1." + tableName, ResultOk);
    }
    static Lines without(std::size_t index, Lines lines) {
        lines.erase(lines.begin() + static_cast<std::ptrdiff_t>(index));
        return lines;
    }

    // The drivers as messages call them, in the order of the compensations.
    const Lines shownNames{"pTxDcICompensationDriver", "pTxDcQCompensationDriver",
                           "pTxGainOffsetCompensationDriver", "pTxPhaseOffsetCompensationDriver"};
};

/** A handler that compensates in its own way. */
class OwnCompensation : public CTxIQImbalanceHandler {
public:
    OwnCompensation() : CTxIQImbalanceHandler(1) {}
    EAFResult doImbalanceCompensation() override {
        ++compensations;
        return static_cast<EAFResult>(0x1234);
    }
    int compensations = 0;
};

/** A driver layer whose records have contexts of their own, and which keeps what each write was given. */
class OwnDriverLayer final : public IInterface_c {
public:
    struct Write {
        void* firstArgument;
        int value;
    };

    OwnDriverLayer() {
        s_next = 0;
        s_writes.clear();
        for (std::size_t i = 0; i < records.size(); ++i) {
            records.at(i) = {&contexts.at(i), &write, nullptr, nullptr};
        }
        m_pCStruct = &m_layer;
    }

    /** Gives its records out in this order, whatever the name. */
    static inline std::array<DriverInterface, 4> records{};
    static inline std::array<int, 4> contexts{};
    static const std::vector<Write>& writes() { return s_writes; }

private:
    static EDriverResult find(DriverInterface** out, const char* /*name*/) {
        *out = &records.at(s_next++);
        return {};
    }
    static EDriverResult write(void* context, int value) {
        s_writes.push_back({context, value});
        return {};
    }

    static inline std::size_t s_next = 0;
    static inline std::vector<Write> s_writes{};
    DriverLayerInterface m_layer{nullptr, &find};
};

} // namespace

// What is written

TEST_F(IQImbalanceCompensationTest, EveryTableIsAskedAndItsDriverWrittenInTurn) {
    setUp();
    EXPECT_EQ(compensate(ResultOk),
              (Lines{"table-linear Channel.1.Tx.Dsp.Temperature.To.Dc.I.Compensation",
                     "driver-write channel.1.dsp.tx.dc.compensation.i",
                     "table-linear Channel.1.Tx.Dsp.Temperature.To.Dc.Q.Compensation",
                     "driver-write channel.1.dsp.tx.dc.compensation.q",
                     "table-linear Channel.1.Tx.Dsp.Temperature.To.Gain.Offset.Compensation",
                     "driver-write channel.1.dsp.tx.quadrature.gain.offset.compensation",
                     "table-linear Channel.1.Tx.Dsp.Temperature.To.Phase.Offset.Compensation",
                     "driver-write channel.1.dsp.tx.quadrature.phase.offset.compensation"}));
}

TEST_F(IQImbalanceCompensationTest, TemperatureIsZeroBeforeTheFirstNotification) {
    setUp();
    EXPECT_EQ(handler.doImbalanceCompensation(), ResultOk);
    EXPECT_EQ(temperaturesAsked(), (std::vector<int>{0, 0, 0, 0}));
    EXPECT_EQ(written(), all("1", "2", "3", "4"));
}

TEST_F(IQImbalanceCompensationTest, NegativeTemperatureIsPassedAsItIs) {
    setUp();
    heat(-5);
    EXPECT_EQ(temperaturesAsked(), (std::vector<int>{-5, -5, -5, -5}));
    EXPECT_EQ(written(), all("-49", "-48", "-47", "-46"));
}

TEST_F(IQImbalanceCompensationTest, ExtremeTemperaturesArePassedAsTheyAre) {
    setUp();
    heat(2'147'483'647);
    heat(-2'147'483'647 - 1);
    EXPECT_EQ(temperaturesAsked()[3], 2'147'483'647);
    EXPECT_EQ(temperaturesAsked()[4], -2'147'483'647 - 1);
}

TEST_F(IQImbalanceCompensationTest, TemperatureLastNotifiedIsKept) {
    setUp();
    heat(40);
    heat(25);
    compensate(ResultOk);
    EXPECT_EQ(written(), all("251", "252", "253", "254"));
}

TEST_F(IQImbalanceCompensationTest, TemperatureNotifiedBeforePhase11IsKept) {
    heat(25);
    setUp();
    compensate(ResultOk);
    EXPECT_EQ(written(), all("251", "252", "253", "254"));
}

TEST_F(IQImbalanceCompensationTest, NotificationTellsTemperatureAndChannelBeforeItCompensates) {
    setUp();
    heat(-5);
    ASSERT_EQ(story.size(), 9U);
    EXPECT_EQ(story[0], "0x800: notifyTemperature called with temp = -5 for channel 1");
    EXPECT_EQ(story[1], "table-linear Channel.1.Tx.Dsp.Temperature.To.Dc.I.Compensation");
}

TEST_F(IQImbalanceCompensationTest, HighestChannelIsSignedInTheNotification) {
    CTxIQImbalanceHandler other(4'294'967'295U);
    CTxIQImbalanceHandler::notifyTemperature(&other, 25);
    EXPECT_EQ(story[0], "0x800: notifyTemperature called with temp = 25 for channel -1");
}

TEST_F(IQImbalanceCompensationTest, NotificationWithoutAnObjectIsReported) {
    CTxIQImbalanceHandler::notifyTemperature(nullptr, 25);
    EXPECT_EQ(story, (Lines{"0x8000: notifyTemperature called with pThis NULL"}));
}

TEST_F(IQImbalanceCompensationTest, EveryCarrierGivesTheSameWrites) {
    setUp();
    heat(25);
    for (const unsigned long frequency : {0UL, 7'442'000UL, 4'294'967'295UL}) {
        forget();
        EXPECT_EQ(handler.onTxFrequencyChanged(frequency), ResultOk);
        EXPECT_EQ(written(), all("251", "252", "253", "254"));
    }
}

// Through the virtual call

TEST_F(IQImbalanceCompensationTest, CarrierChangeAnswersWhatTheOverridingCompensationAnswers) {
    OwnCompensation own;
    EXPECT_EQ(own.onTxFrequencyChanged(18'000'000), static_cast<EAFResult>(0x1234));
    EXPECT_EQ(own.compensations, 1);
}

TEST_F(IQImbalanceCompensationTest, NotificationReachesTheOverridingCompensation) {
    OwnCompensation own;
    CTxIQImbalanceHandler::notifyTemperature(static_cast<CTxIQImbalanceHandler*>(&own), 25);
    EXPECT_EQ(own.compensations, 1);
    EXPECT_EQ(writes(), Lines{});
}

// The first argument of the writes

TEST_F(IQImbalanceCompensationTest, DcWritesPassTheRecordAndTheOthersItsContext) {
    OwnDriverLayer layer;
    platform.interfaces().put("IDriverLayer", &layer);
    setUp();
    EXPECT_EQ(handler.doImbalanceCompensation(), ResultOk);
    ASSERT_EQ(OwnDriverLayer::writes().size(), 4U);
    const std::vector<OwnDriverLayer::Write>& writes = OwnDriverLayer::writes();
    EXPECT_EQ(writes[0].firstArgument, &OwnDriverLayer::records[0]);
    EXPECT_EQ(writes[1].firstArgument, &OwnDriverLayer::records[1]);
    EXPECT_EQ(writes[2].firstArgument, &OwnDriverLayer::contexts[2]);
    EXPECT_EQ(writes[3].firstArgument, &OwnDriverLayer::contexts[3]);
}

TEST_F(IQImbalanceCompensationTest, ValuesReachTheDriverThatIsTheirs) {
    OwnDriverLayer layer;
    platform.interfaces().put("IDriverLayer", &layer);
    setUp();
    EXPECT_EQ(handler.doImbalanceCompensation(), ResultOk);
    ASSERT_EQ(OwnDriverLayer::writes().size(), 4U);
    EXPECT_EQ(OwnDriverLayer::writes()[0].value, 1);
    EXPECT_EQ(OwnDriverLayer::writes()[1].value, 2);
    EXPECT_EQ(OwnDriverLayer::writes()[2].value, 3);
    EXPECT_EQ(OwnDriverLayer::writes()[3].value, 4);
}

TEST_F(IQImbalanceCompensationTest, ContextMayBeNull) {
    OwnDriverLayer layer;
    OwnDriverLayer::records[1].context = nullptr;
    OwnDriverLayer::records[2].context = nullptr;
    platform.interfaces().put("IDriverLayer", &layer);
    setUp();
    EXPECT_EQ(handler.doImbalanceCompensation(), ResultOk);
    ASSERT_EQ(OwnDriverLayer::writes().size(), 4U);
    EXPECT_EQ(OwnDriverLayer::writes()[1].firstArgument, &OwnDriverLayer::records[1]);
    EXPECT_EQ(OwnDriverLayer::writes()[2].firstArgument, nullptr);
}

// Missing drivers

TEST_F(IQImbalanceCompensationTest, BeforePhase11TheFirstDriverIsMissing) {
    EXPECT_EQ(compensate(ResultFailed),
              (Lines{"0x8000: CTxIQImbalanceHandler_DoImbalanceCompensation called with "
                     "pTxDcICompensationDriver pointer(s) set to NULL"}));
    EXPECT_EQ(handler.onTxFrequencyChanged(18'000'000), ResultFailed);
}

TEST_F(IQImbalanceCompensationTest, NullDriverIsReportedByItsNameAndNothingIsWritten) {
    for (std::size_t i = driverNames.size(); i-- > 0;) { // each is the first that is missing
        platform.drivers().giveNullRecord("channel.1." + driverNames[i]);
        setUp();
        EXPECT_EQ(compensate(ResultFailed),
                  (Lines{"0x8000: CTxIQImbalanceHandler_DoImbalanceCompensation called with " +
                         shownNames[i] + " pointer(s) set to NULL"}));
    }
}

TEST_F(IQImbalanceCompensationTest, DriverThatCannotBeWrittenIsReportedByItsNameAndNothingIsWritten) {
    setUp();
    for (std::size_t i = driverNames.size(); i-- > 0;) {
        driver(driverNames[i]).setMissingWords(Standalone::wordWrite);
        EXPECT_EQ(compensate(ResultFailed),
                  (Lines{"0x8000: CTxIQImbalanceHandler_DoImbalanceCompensation called with " +
                         shownNames[i] + " pointer(s) set to NULL"}));
    }
}

TEST_F(IQImbalanceCompensationTest, NotificationStoresTheTemperatureAlsoWithoutDrivers) {
    heat(25);
    EXPECT_EQ(story, (Lines{"0x800: notifyTemperature called with temp = 25 for channel 1",
                            "0x8000: CTxIQImbalanceHandler_DoImbalanceCompensation called with "
                            "pTxDcICompensationDriver pointer(s) set to NULL"}));
    setUp();
    EXPECT_EQ(handler.doImbalanceCompensation(), ResultOk);
    EXPECT_EQ(temperaturesAsked(), (std::vector<int>{25, 25, 25, 25}));
}

// Failed interpolations

TEST_F(IQImbalanceCompensationTest, FailedInterpolationIsPassedOverWithoutAWord) {
    setUp();
    for (std::size_t i = 0; i < tableNames.size(); ++i) {
        platform.calls().clearAll();
        fail(Operation::tableLinear, "Channel.1." + tableNames[i], 0x8125);
        compensate(ResultOk);
        EXPECT_EQ(written(), without(i, all("1", "2", "3", "4")));
        EXPECT_EQ(traces(), Lines{});
    }
}

TEST_F(IQImbalanceCompensationTest, ResultIsZeroAlsoWhenNothingCouldBeInterpolated) {
    setUp();
    fail(Operation::tableLinear, "", 0x8000);
    compensate(ResultOk);
    EXPECT_EQ(temperaturesAsked().size(), 4U);
    EXPECT_EQ(written(), Lines{});
    EXPECT_EQ(traces(), Lines{});
}

TEST_F(IQImbalanceCompensationTest, InterpolationWithACodeBelow8000IsWritten) {
    setUp();
    for (const std::int32_t code : {0x7FFF, -1}) {
        fail(Operation::tableLinear, "", code);
        compensate(ResultOk);
        EXPECT_EQ(written(), all("1", "2", "3", "4"));
    }
}

TEST_F(IQImbalanceCompensationTest, InterpolationThatGivesNoValueLeavesTheOneBefore) {
    setUp();
    silence("Tx.Dsp.Temperature.To.Dc.Q.Compensation");
    silence("Tx.Dsp.Temperature.To.Phase.Offset.Compensation");
    compensate(ResultOk);
    EXPECT_EQ(written(), all("1", "1", "3", "3"));
}

TEST_F(IQImbalanceCompensationTest, FirstInterpolationThatGivesNoValueWritesZero) {
    setUp();
    heat(25);
    silence("Tx.Dsp.Temperature.To.Dc.I.Compensation");
    compensate(ResultOk);
    EXPECT_EQ(written(), all("0", "252", "253", "254"));
}

// Failed writes

TEST_F(IQImbalanceCompensationTest, FailedWriteIsReportedAtItsCodeAndEndsTheCompensation) {
    setUp();
    const Lines everything = all("1", "2", "3", "4");
    for (std::size_t i = 0; i < driverNames.size(); ++i) {
        platform.calls().clearAll();
        fail(Operation::driverWrite, "channel.1." + driverNames[i], 0x8126);
        const std::string last = compensate(ResultFailed).back();
        EXPECT_EQ(last, "0x8126: CTxIQImbalanceHandler_DoImbalanceCompensation failed to write to " +
                            shownNames[i] + " driver");
        EXPECT_EQ(written(),
                  Lines(everything.begin(), everything.begin() + static_cast<std::ptrdiff_t>(i) + 1));
        EXPECT_EQ(traces().size(), 1U);
    }
}

TEST_F(IQImbalanceCompensationTest, FailedGainWriteLeavesThePhaseAsItWas) {
    setUp();
    fail(Operation::driverWrite, "channel.1.dsp.tx.quadrature.gain.offset.compensation", 0x8000);
    compensate(ResultFailed);
    EXPECT_TRUE(driver("dsp.tx.dc.compensation.i").wasWritten());
    EXPECT_TRUE(driver("dsp.tx.dc.compensation.q").wasWritten());
    EXPECT_FALSE(driver("dsp.tx.quadrature.gain.offset.compensation").wasWritten());
    EXPECT_FALSE(driver("dsp.tx.quadrature.phase.offset.compensation").wasWritten());
}

TEST_F(IQImbalanceCompensationTest, WriteWithACodeBelow8000IsASuccess) {
    setUp();
    for (const std::int32_t code : {0x7FFF, -1}) {
        fail(Operation::driverWrite, "", code);
        compensate(ResultOk);
        EXPECT_EQ(written(), all("1", "2", "3", "4"));
        EXPECT_EQ(traces(), Lines{});
    }
}

TEST_F(IQImbalanceCompensationTest, NotificationIgnoresAFailedWrite) {
    setUp();
    fail(Operation::driverWrite, "channel.1.dsp.tx.dc.compensation.i", 0x8126);
    heat(25);
    platform.calls().clearAll();
    compensate(ResultOk);
    EXPECT_EQ(written(), all("251", "252", "253", "254"));
}

TEST_F(IQImbalanceCompensationTest, ResultsAreTheSameWhenNoMessageIsWanted) {
    platform.trace().setThreshold(Standalone::TraceLevel::off);
    EXPECT_EQ(handler.doImbalanceCompensation(), ResultFailed);
    setUp();
    fail(Operation::driverWrite, "channel.1.dsp.tx.dc.compensation.i", 0x8126);
    EXPECT_EQ(handler.doImbalanceCompensation(), ResultFailed);
    EXPECT_EQ(traces(), Lines{});
}
