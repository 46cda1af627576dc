// Nothing that platform, drivers or observers throw leaves the library: the operation in which it is thrown
// ends with 0x8000 and one error message, and nothing more is done by it. Each test is made with an exception
// that says what it is and with an int, which says nothing.

#include "CTxIQImbalanceHandler.h"
#include "CallingObserver.h"
#include "FrequencyHandler.h"
#include "FrequencyHandler_Rau.h"
#include "FrequencyHandler_RfModule.h"
#include "InterfaceBroker.h"
#include "MicrowaveRadioTest.h"
#include "TxIQImbalanceTest.h"

#include <exception>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

using Standalone::Operation;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/** What is thrown, and what a message says of it. */
struct Thrown {
    std::exception_ptr exception;
    std::string text;
};

const Thrown ofAKnownType{std::make_exception_ptr(std::runtime_error("out of order")), "out of order"};
const Thrown ofAnotherType{std::make_exception_ptr(7), "unknown exception"};

template <typename Test>
class Throwing : public Test, public testing::WithParamInterface<const Thrown*> {
protected:
    /** Has each call of `operation` on `object` (empty: on any) throw before it is carried out. */
    void throwFrom(Operation operation, const std::string& object) {
        Standalone::Fault fault{operation, object, 0x8000};
        fault.thrown = GetParam()->exception;
        Test::platform.calls().inject(std::move(fault));
    }
    using testing::WithParamInterface<const Thrown*>::GetParam;

    /** The error message that says that `operation` failed. */
    static std::string failed(const std::string& operation) {
        return "error: " + operation + " failed: " + GetParam()->text;
    }
    [[noreturn]] static void doThrow() { std::rethrow_exception(GetParam()->exception); }
};

class ThrownExceptionTest : public Throwing<MicrowaveRadioTest> {
protected:
    /** Searches one iteration in the ranges 0 to 10. */
    static EAFResult calibrate(LoCancellation& canceller) {
        int i = 0;
        int q = 0;
        int delta = 0;
        unsigned iterations = 0;
        return canceller.calibrateLoCancellation(0, 10, 0, 10, 0.5, 0, 1, 0, &i, &q, &delta, &iterations,
                                                 false);
    }
    Lines told;
};

class ThrownAtCompensationTest : public Throwing<TxIQImbalanceTest> {
protected:
    Lines opened() const { return callsOf(Operation::brokerOpen); }
    Lines closed() const { return callsOf(Operation::brokerClose); }

private:
    Lines callsOf(Operation operation) const {
        return Lines(platform.calls().journalOf(operation).size(), std::string(toString(operation)));
    }
};

class Noting {
public:
    explicit Noting(std::vector<std::string>& told) : m_told(told) {}
    void operator()(IFrequencyHandler* subject) const {
        m_told.push_back(std::to_string(subject->getFrequency()));
    }

private:
    std::vector<std::string>& m_told;
};

} // namespace

#define EXPECT_FAILS_WITH(operation, ...)                                                                    \
    do {                                                                                                     \
        EXPECT_EQ(operation, ResultFailed);                                                                  \
        EXPECT_THAT(complaints(), ElementsAre(__VA_ARGS__));                                                 \
    } while (false)

// A change of the carrier

TEST_P(ThrownExceptionTest, WriteToHardwareThatThrowsKeepsTheCarrierAndTellsTheObservers) {
    Board& board = boot("Tx", withHz);
    CallingObserver observer{Noting(told)};
    board.registerObserver(&observer);
    throwFrom(Operation::driverWriteBuffer, "");
    EXPECT_EQ(board.setRfFrequency(carrier), ResultOk);
    EXPECT_EQ(board.getFrequency(), carrier);
    EXPECT_THAT(told, ElementsAre("18000250"));
    EXPECT_THAT(complaints(), ElementsAre(failed("writeFrequencyToHW")));
}

TEST_P(ThrownExceptionTest, WriteOfAnyHandlerThatThrowsIsHeldInSetRfFrequency) {
    class Thrower final : public RL::FrequencyHandler::Common::FrequencyHandler {
    public:
        Thrower() : FrequencyHandler("Tx", 7) {}
        EAFResult writeFrequencyToHW(unsigned long /*frequency*/) override { doThrow(); }
    };
    Thrower handler;
    EXPECT_EQ(handler.setRfFrequency(carrier), ResultOk);
    EXPECT_EQ(handler.getFrequency(), carrier);
    EXPECT_THAT(complaints(), ElementsAre(failed("writeFrequencyToHW")));
}

TEST_P(ThrownExceptionTest, DriverThatThrowsEndsTheWriteOfAMicrowaveBoard) {
    Board& board = boot("Tx", withIf);
    throwFrom(Operation::driverWrite, "channel.1.tx.if.frequency");
    EXPECT_FAILS_WITH(board.writeFrequencyToHW(carrier), failed("writeFrequencyToHW"));
    EXPECT_THAT(writes(), ElementsAre("channel.1.tx.if.frequency=140250")); // no RF LO, no charge pump
}

TEST_P(ThrownExceptionTest, ChargePumpTableThatThrowsEndsTheWriteOfAMicrowaveBoard) {
    Board& board = boot("Tx", plainBoard);
    throwFrom(Operation::tableLinear, "");
    EXPECT_FAILS_WITH(board.writeFrequencyToHW(carrier), failed("writeFrequencyToHW"));
    EXPECT_THAT(writes(), ElementsAre("channel.1.tx.rf.lo.frequency=9000000"));
}

TEST_P(ThrownExceptionTest, DspOffsetDriverThatThrowsEndsTheWriteOfAMicrowaveBoard) {
    Board& board = boot("Rx", withHalfSpacing);
    throwFrom(Operation::driverWrite, "channel.1.dsp.rx.freq.offset");
    EXPECT_FAILS_WITH(board.writeFrequencyToHW(carrier), failed("writeFrequencyToHW"));
    EXPECT_THAT(writes(), ElementsAre("channel.1.dsp.rx.freq.offset=50000"));
}

TEST_P(ThrownExceptionTest, DriverThatThrowsFailsTheWriteOfAnRfModule) {
    addDriver("channel.1.tx.rf.frequency");
    RL::FrequencyHandler::RfModule::FrequencyHandler handler("Tx", 1);
    EXPECT_EQ(handler.onModuleInit(), ResultOk);
    throwFrom(Operation::driverWrite, "");
    EXPECT_FAILS_WITH(handler.writeFrequencyToHW(carrier), failed("writeFrequencyToHW"));
}

TEST_P(ThrownExceptionTest, RemoteRadioThatThrowsFailsTheWriteOfBothDirections) {
    platform.addRau(1);
    RL::FrequencyHandler::Rau::FrequencyHandler tx("Tx", 1);
    RL::FrequencyHandler::Rau::FrequencyHandler rx("Rx", 1);
    EXPECT_EQ(tx.onModuleInit(), ResultOk);
    EXPECT_EQ(rx.onModuleInit(), ResultOk);
    throwFrom(Operation::rauTx, "");
    throwFrom(Operation::rauRx, "");
    EXPECT_EQ(tx.writeFrequencyToHW(carrier), ResultFailed);
    EXPECT_FAILS_WITH(rx.writeFrequencyToHW(carrier), failed("writeFrequencyToHW"),
                      failed("writeFrequencyToHW"));
}

TEST_P(ThrownExceptionTest, ObserverThatThrowsDoesNotKeepTheOthersFromBeingTold) {
    Board& board = boot("Tx", plainBoard);
    CallingObserver good{Noting(told)};
    CallingObserver bad([](IFrequencyHandler*) { doThrow(); });
    for (Observer<IFrequencyHandler>* const observer : {&good, &bad, &good}) {
        board.registerObserver(observer);
    }
    EXPECT_EQ(board.setRfFrequency(carrier), ResultOk);
    EXPECT_THAT(told, ElementsAre("18000250", "18000250"));
    EXPECT_THAT(complaints(), ElementsAre(failed("setRfFrequency: observer 1 of direction Tx")));
}

TEST_P(ThrownExceptionTest, MessageAboutAnObserverIsCutLikeAnyOther) {
    const std::string direction(140, 'x');
    RL::FrequencyHandler::RfModule::FrequencyHandler handler(direction, 1);
    CallingObserver bad([](IFrequencyHandler*) { doThrow(); });
    handler.registerObserver(&bad);
    handler.setRfFrequency(carrier);
    // 40 characters before the direction, 9 behind it, and 10 of the 199 are left.
    EXPECT_THAT(complaints(), ElementsAre("error: setRfFrequency: observer 0 of direction " + direction +
                                          " failed: " + GetParam()->text.substr(0, 10)));
}

TEST_P(ThrownExceptionTest, CObserverThatThrowsDoesNotKeepTheOthersFromBeingTold) {
    Board& board = boot("Rx", plainBoard);
    IFrequencyObserver bad{nullptr, [](void* /*context*/, unsigned long /*channel*/,
                                       unsigned long /*frequency*/) { doThrow(); }};
    CallingObserver good{Noting(told)};
    EXPECT_EQ(IFrequencyHandler::registerObserver(&board, &bad), ResultOk);
    board.registerObserver(&good);
    EXPECT_EQ(board.setRfFrequency(carrier), ResultOk);
    EXPECT_THAT(told, ElementsAre("18000250"));
    EXPECT_THAT(complaints(), ElementsAre(failed("onFrequencyChanged")));
}

TEST_P(ThrownExceptionTest, HandlerThatThrowsAtTheRegistrationOfACObserverIsHeld) {
    class Thrower final : public IFrequencyHandler {
    public:
        using IFrequencyHandler::registerObserver;
        EAFResult registerObserver(Observer<IFrequencyHandler>* /*observer*/) override { doThrow(); }
    };
    Thrower handler;
    IFrequencyObserver observer{nullptr, [](void*, unsigned long, unsigned long) {}};
    EXPECT_FAILS_WITH(IFrequencyHandler::registerObserver(&handler, &observer), failed("registerObserver"));
}

// Database variables

TEST_P(ThrownExceptionTest, VariableForWhichTheDatabaseThrowsIsNotRead) {
    const Board& board = make("Tx", plainBoard);
    int value = 17;
    throwFrom(Operation::variableGet, "TxIfBb");
    EXPECT_FAILS_WITH(board.getStorageVariableByName("TxIfBb", &value), failed("getStorageVariableByName"));
    EXPECT_EQ(value, 17);
}

TEST_P(ThrownExceptionTest, SidebandForWhichTheDatabaseThrowsIsLikeOneThatIsMissing) {
    Board& board = make("Tx", plainBoard);
    throwFrom(Operation::variableGet, "channel.1.tx.rf.spectruminverted");
    EXPECT_EQ(board.getVariablesFromDatabase(), ResultOk);
    EXPECT_THAT(complaints(), ElementsAre(failed("getStorageVariableByName")));
}

TEST_P(ThrownExceptionTest, RequiredVariableForWhichTheDatabaseThrowsEndsTheReading) {
    Board& board = make("Tx", withIf);
    throwFrom(Operation::variableGet, "channel.1.tx.if.frequency");
    EXPECT_FAILS_WITH(board.getVariablesFromDatabase(), failed("getStorageVariableByName"));
    EXPECT_EQ(calls().back(), "variable-get channel.1.tx.if.frequency"); // TxIfBb is not asked for
}

TEST_P(ThrownExceptionTest, ContentForWhichTheDatabaseThrowsIsNoLongerKnown) {
    Board& board = boot("Rx", withOffsetArray);
    throwFrom(Operation::variableAddress, "channel.1.rx.rf.frequency.cs.offset.array");
    EXPECT_FAILS_WITH(board.getVariablesFromDatabase(), failed("getVariablesFromDatabase"));
    forget();
    EXPECT_FAILS_WITH(board.writeFrequencyToHW(carrier),
                      "error: channel.1.rx.rf.frequency.cs.offset.array was not found");
}

TEST_P(ThrownExceptionTest, ChannelSpacingForWhichTheDatabaseThrowsStaysAsItWas) {
    Board& board = boot("Rx", withHalfSpacing); // at the spacing 100
    set("ChannelSpacing", {50});
    throwFrom(Operation::variableAddress, "ChannelSpacing");
    EXPECT_FAILS_WITH(board.getFFVariablesFromDatabase(), failed("getFFVariablesFromDatabase"));
    EXPECT_EQ(board.writeFrequencyToHW(carrier), ResultOk);
    EXPECT_EQ(writes().front(), "channel.1.dsp.rx.freq.offset=50000");
}

// Initialisation

TEST_P(ThrownExceptionTest, DriverLayerThatThrowsEndsEveryInitialisation) {
    Board& board = make("Tx", plainBoard);
    RL::FrequencyHandler::RfModule::FrequencyHandler module("Tx", 1);
    LoCancellation& canceller = makeCanceller();
    throwFrom(Operation::driverLookup, "");
    EXPECT_EQ(board.onModuleInit(), ResultFailed);
    EXPECT_EQ(module.onModuleInit(), ResultFailed);
    EXPECT_FAILS_WITH(canceller.onModuleInit(), failed("onModuleInit"), failed("onModuleInit"),
                      failed("onModuleInit"));
}

TEST_P(ThrownExceptionTest, BrokerThatThrowsAtALookupEndsEveryInitialisation) {
    Board& board = make("Tx", plainBoard);
    RL::FrequencyHandler::RfModule::FrequencyHandler module("Tx", 1);
    RL::FrequencyHandler::Rau::FrequencyHandler remote("Tx", 1);
    LoCancellation& canceller = makeCanceller();
    throwFrom(Operation::brokerLookup, "");
    EXPECT_EQ(board.onModuleInit(), ResultFailed);
    EXPECT_EQ(module.onModuleInit(), ResultFailed);
    EXPECT_EQ(remote.onModuleInit(), ResultFailed);
    EXPECT_FAILS_WITH(canceller.onModuleInit(), failed("onModuleInit"), failed("onModuleInit"),
                      failed("onModuleInit"), failed("onModuleInit"));
}

TEST_P(ThrownExceptionTest, DriverLayerWhoseRecordThrowsEndsTheInitialisation) {
    class Thrower final : public IInterface_c {
    public:
        void* getCStruct() override { doThrow(); }
    };
    Thrower layer;
    auto& broker = InterfaceBroker::getInstance();
    broker.unregisterInterface("IDriverLayer", nullptr);
    broker.registerInterface("IDriverLayer", &layer);
    EXPECT_FAILS_WITH(make("Tx", plainBoard).onModuleInit(), failed("onModuleInit"));
    broker.unregisterInterface("IDriverLayer", nullptr);
}

TEST_P(ThrownExceptionTest, MessageAboutAMissingRemoteRadioThatThrowsIsLostAndNothingElse) {
    RL::FrequencyHandler::Rau::FrequencyHandler handler("Tx", 4);
    platform.trace().setSink([](const Standalone::TraceMessage& /*message*/) { doThrow(); });
    EXPECT_EQ(handler.onModuleInit(), ResultFailed);
    platform.trace().setSink({});
    EXPECT_EQ(traces(), (Lines{"error: onModuleInit(): Error getting interface to IRauHandler_4"}));
}

TEST_P(ThrownExceptionTest, CalibrationHandlerThatThrowsEndsTheInitialisation) {
    Board& board = make("Tx", plainBoard);
    LoCancellation& canceller = makeCanceller();
    throwFrom(Operation::tableLookup, "");
    EXPECT_EQ(board.onModuleInit(), ResultFailed);
    EXPECT_FAILS_WITH(canceller.onModuleInit(), failed("onModuleInit"), failed("onModuleInit"));
}

TEST_P(ThrownExceptionTest, StartValueOfTheIfThatThrowsEndsTheInitialisation) {
    Board& board = make("Tx", withIf);
    throwFrom(Operation::driverWrite, "channel.1.tx.if.frequency");
    EXPECT_FAILS_WITH(board.onModuleInit(), failed("onModuleInit"));
}

// LO cancellation

TEST_P(ThrownExceptionTest, DriverThatThrowsEndsSetIq) {
    LoCancellation& canceller = bootCanceller();
    throwFrom(Operation::driverWrite, "channel.1.tx.rf.mixer.i");
    EXPECT_FAILS_WITH(canceller.setIQ(3, 4), failed("setIQ"));
    EXPECT_THAT(writes(), ElementsAre("channel.1.tx.rf.mixer.i=3")); // Q is not written
}

TEST_P(ThrownExceptionTest, FailsAlsoWhenNoMessageIsWanted) {
    LoCancellation& canceller = bootCanceller();
    platform.trace().setThreshold(Standalone::TraceLevel::off);
    throwFrom(Operation::driverWrite, "");
    EXPECT_EQ(canceller.setIQ(3, 4), ResultFailed);
    EXPECT_THAT(traces(), IsEmpty());
}

TEST_P(ThrownExceptionTest, DriverThatThrowsFailsTheCorrection) {
    LoCancellation& canceller = bootCanceller();
    throwFrom(Operation::driverWrite, "channel.1.tx.rf.mixer.q");
    EXPECT_FAILS_WITH(canceller.setLoCancellation(18'000'000, 25), failed("setIQ"));
    EXPECT_THAT(writes(), ElementsAre("channel.1.tx.rf.mixer.i=1025", "channel.1.tx.rf.mixer.q=-1025"));
}

TEST_P(ThrownExceptionTest, CorrectionTableThatThrowsEndsTheCorrectionBeforeAnythingIsWritten) {
    LoCancellation& canceller = bootCanceller();
    throwFrom(Operation::tableBilinear, tableQ);
    EXPECT_FAILS_WITH(canceller.setLoCancellation(18'000'000, 25), failed("setLoCancellation"));
    EXPECT_THAT(writes(), IsEmpty());
}

TEST_P(ThrownExceptionTest, DetectorThatThrowsEndsTheCalibration) {
    LoCancellation& canceller = bootCanceller();
    throwFrom(Operation::driverRead, "");
    EXPECT_FAILS_WITH(calibrate(canceller), failed("calibrateLoCancellation"));
    EXPECT_THAT(writes(), ElementsAre("channel.1.tx.rf.mixer.i=0", "channel.1.tx.rf.mixer.q=0"));
}

TEST_P(ThrownExceptionTest, ProbeWhoseWriteThrowsEndsTheCalibrationAsOneThatFails) {
    LoCancellation& canceller = bootCanceller();
    throwFrom(Operation::driverWrite, "channel.1.tx.rf.mixer.q");
    EXPECT_FAILS_WITH(calibrate(canceller), failed("setIQ"),
                      "error: Failed to set I and Q [for index 0 and RadioChannel 1]");
}

TEST_P(ThrownExceptionTest, BrokerThatThrowsFailsThePublicationOfACanceller) {
    LoCancellation canceller(1);
    throwFrom(Operation::brokerRegister, "ILoCancellation_1");
    EXPECT_FAILS_WITH(canceller.initialize(), failed("registerInterface"));
}

// Beginning and end

TEST_P(ThrownExceptionTest, HandlerThatTheBrokerThrowsOutStillWorks) {
    throwFrom(Operation::brokerRegister, "");
    addDriver("channel.3.tx.rf.frequency");
    RL::FrequencyHandler::RfModule::FrequencyHandler handler("Tx", 3);
    EXPECT_THAT(complaints(), ElementsAre(failed("registerInterface")));
    EXPECT_EQ(handler.onModuleInit(), ResultOk);
    EXPECT_EQ(handler.setRfFrequency(7'442'000), ResultOk);
    EXPECT_THAT(writes(), ElementsAre("channel.3.tx.rf.frequency=7442000"));
}

TEST_P(ThrownExceptionTest, ModuleIsBuiltAndEndedWhateverBrokerAndModuleManagerThrow) {
    for (const Operation operation : {Operation::brokerRegister, Operation::brokerUnregister,
                                      Operation::moduleRegister, Operation::moduleUnregister}) {
        throwFrom(operation, "");
    }
    std::optional<::FrequencyHandler> module(std::in_place, 1UL, ::FrequencyHandler::MicrowaveBoardHz);
    EXPECT_THAT(complaints(), ElementsAre(failed("registerInterface"), failed("registerInterface"),
                                          failed("registerInterface"), failed("RegisterModule")));
    EXPECT_EQ(module->onModuleInit(), ResultOk);
    forget();
    module.reset();
    EXPECT_THAT(complaints(), ElementsAre(failed("UnRegisterModule"), failed("unregisterInterface"),
                                          failed("unregisterInterface"), failed("unregisterInterface")));
}

// Module

TEST_P(ThrownExceptionTest, TemperatureServiceThatThrowsEndsTheInitialisationOfTheModule) {
    ::FrequencyHandler module(1, ::FrequencyHandler::MicrowaveBoardHz);
    throwFrom(Operation::temperatureRegister, "");
    EXPECT_FAILS_WITH(module.onModuleInit(), failed("onModuleInit"));
}

TEST_P(ThrownExceptionTest, HandlerThatThrowsEndsThePhaseOfTheModule) {
    ::FrequencyHandler module(1, ::FrequencyHandler::MicrowaveBoardHz);
    throwFrom(Operation::variableGet, "");
    EXPECT_EQ(module.onPhaseModuleStorageObjectsRetreived(), ResultFailed);
    EXPECT_FAILS_WITH(module.onPhasePostFrameformatLoad(), failed("getStorageVariableByName"),
                      failed("getStorageVariableByName"));
}

TEST_P(ThrownExceptionTest, TransmitCarrierIsSetAndCorrectedAlthoughItsHandlerThrows) {
    ::FrequencyHandler module(1, ::FrequencyHandler::MicrowaveBoardHz);
    EXPECT_EQ(module.onModuleInit(), ResultOk);
    forget();
    throwFrom(Operation::driverWriteBuffer, "");
    EXPECT_EQ(module.setTxFrequency(18'000'000), ResultOk);
    EXPECT_THAT(complaints(), ElementsAre(failed("writeFrequencyToHW")));
    EXPECT_THAT(writes(), ElementsAre("channel.1.tx.rf.lo.frequency.in.hz=18000000000",
                                      "channel.1.tx.rf.mixer.i=1000", "channel.1.tx.rf.mixer.q=-1000"));
}

TEST_P(ThrownExceptionTest, NothingLeavesTheModuleWhateverItsDriversThrow) {
    ::FrequencyHandler module(1, ::FrequencyHandler::MicrowaveBoardIf);
    EXPECT_EQ(module.onModuleInit(), ResultOk);
    forget();
    throwFrom(Operation::driverWrite, "");
    EXPECT_EQ(module.setTxFrequency(18'000'000), ResultOk);
    EXPECT_EQ(module.setRxFrequency(19'000'000), ResultOk);
    module.notifyTemperature(25);
    ::FrequencyHandler::staticNotifyTemperature(&module, 30);
    EXPECT_THAT(complaints(), ElementsAre(failed("writeFrequencyToHW"), failed("setIQ"),
                                          failed("writeFrequencyToHW"), failed("setIQ"), failed("setIQ")));
}

INSTANTIATE_TEST_SUITE_P(OfAKnownType, ThrownExceptionTest, testing::Values(&ofAKnownType));
INSTANTIATE_TEST_SUITE_P(OfAnotherType, ThrownExceptionTest, testing::Values(&ofAnotherType));

TEST_F(RadioTest, WithdrawalThatThrowsIsNotTriedAgain) {
    Standalone::Fault fault{Operation::brokerUnregister, "", 0x8000};
    fault.thrown = std::make_exception_ptr(std::bad_alloc());
    platform.calls().inject(std::move(fault));
    { const RL::FrequencyHandler::RfModule::FrequencyHandler handler("Tx", 3); }
    EXPECT_THAT(calls(), ElementsAre("broker-register IFrequencyHandler_Tx_3",
                                     "broker-unregister IFrequencyHandler_Tx_3"));
    EXPECT_THAT(complaints(), ElementsAre("error: unregisterInterface failed: std::bad_alloc"));
}

// IQ compensation

TEST_P(ThrownAtCompensationTest, EachRegistrationThatThrowsEndsTheInitialisation) {
    for (const Operation operation :
         {Operation::moduleRegisterC, Operation::callbackRegister, Operation::brokerRegister}) {
        forget();
        CTxIQImbalanceHandler unpublished(static_cast<unsigned long>(operation));
        throwFrom(operation, "");
        EXPECT_FAILS_WITH(unpublished.initialize(), failed("initialize"));
        platform.calls().clearAll();
    }
}

TEST_P(ThrownAtCompensationTest, EachLookupThatThrowsEndsTheSetUp) {
    for (const Operation operation : {Operation::brokerOpen, Operation::brokerGet, Operation::driverLookup,
                                      Operation::tableLookup, Operation::temperatureRegister}) {
        forget();
        throwFrom(operation, "");
        EXPECT_FAILS_WITH(activate(11), failed("onPhaseActivation"));
        platform.calls().clearAll();
    }
}

TEST_P(ThrownAtCompensationTest, HandleOfTheBrokerIsGivenBackAlthoughALookupThrows) {
    throwFrom(Operation::brokerGet, "IDriverLayer");
    EXPECT_EQ(activate(11), ResultFailed);
    EXPECT_THAT(opened(), ElementsAre("broker-open"));
    EXPECT_THAT(closed(), ElementsAre("broker-close"));
}

TEST_P(ThrownAtCompensationTest, HandleThatTheBrokerThrowsAtIsNotGivenBackAgain) {
    throwFrom(Operation::brokerClose, "");
    EXPECT_EQ(activate(11), ResultOk);
    EXPECT_THAT(closed(), ElementsAre("broker-close", "broker-close")); // driver layer, temperature service
    EXPECT_THAT(complaints(), ElementsAre(failed("CInterfaceBroker_DestroyInstance"),
                                          failed("CInterfaceBroker_DestroyInstance")));
}

TEST_P(ThrownAtCompensationTest, BrokerThatThrowsAgainAtTheHandleIsToldOfTwice) {
    throwFrom(Operation::brokerGet, "IDriverLayer");
    throwFrom(Operation::brokerClose, "");
    EXPECT_FAILS_WITH(activate(11), failed("CInterfaceBroker_DestroyInstance"), failed("onPhaseActivation"));
}

TEST_P(ThrownAtCompensationTest, DriverThatThrowsEndsTheCompensation) {
    setUp();
    throwFrom(Operation::driverWrite, "channel.1.dsp.tx.dc.compensation.q");
    EXPECT_FAILS_WITH(handler.doImbalanceCompensation(), failed("doImbalanceCompensation"));
    EXPECT_THAT(written(), ElementsAre("dsp.tx.dc.compensation.i=1", "dsp.tx.dc.compensation.q=2"));
}

TEST_P(ThrownAtCompensationTest, TableThatThrowsEndsTheCompensation) {
    setUp();
    throwFrom(Operation::tableLinear, "Channel.1.Tx.Dsp.Temperature.To.Dc.Q.Compensation");
    EXPECT_FAILS_WITH(handler.doImbalanceCompensation(), failed("doImbalanceCompensation"));
    EXPECT_THAT(written(), ElementsAre("dsp.tx.dc.compensation.i=1"));
}

TEST_P(ThrownAtCompensationTest, NothingLeavesTheNotificationsWhateverDriversThrow) {
    setUp();
    throwFrom(Operation::driverWrite, "");
    heat(25);
    EXPECT_FAILS_WITH(handler.onTxFrequencyChanged(18'000'000), failed("doImbalanceCompensation"),
                      failed("doImbalanceCompensation"));
}

TEST_P(ThrownAtCompensationTest, CompensationOfAnotherKindMayThrowToo) {
    class Thrower final : public CTxIQImbalanceHandler {
    public:
        Thrower() : CTxIQImbalanceHandler(1) {}
        EAFResult doImbalanceCompensation() override { doThrow(); }
    };
    Thrower thrower;
    CTxIQImbalanceHandler::notifyTemperature(static_cast<CTxIQImbalanceHandler*>(&thrower), 25);
    EXPECT_FAILS_WITH(thrower.onTxFrequencyChanged(18'000'000), failed("notifyTemperature"),
                      failed("onTxFrequencyChanged"));
}

INSTANTIATE_TEST_SUITE_P(OfAKnownType, ThrownAtCompensationTest, testing::Values(&ofAKnownType));
INSTANTIATE_TEST_SUITE_P(OfAnotherType, ThrownAtCompensationTest, testing::Values(&ofAnotherType));
