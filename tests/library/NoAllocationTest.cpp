// A radio that operates takes no memory: no call does, not even the first, whether all is well or the
// platform refuses everything, and whether or not messages are wanted.

#include "CTxIQImbalanceHandler.h"
#include "CallingObserver.h"
#include "FailingMemory.h"
#include "FrequencyHandler_MicrowaveBoard.h"
#include "IRauHandler.h"
#include "InterfaceBroker.h"
#include "LoCancellation.h"
#include "ModuleTest.h"

#include <array>
#include <optional>
#include <string>
#include <tuple>

namespace {

using Handler = RL::FrequencyHandler::Common::FrequencyHandler;
using Board = RL::FrequencyHandler::MicrowaveBoard::FrequencyHandler;

constexpr auto refused = 0x8123;

/** Has the driver answer every call with a failure; unlike a fault of the platform's, without memory. */
void breakDriver(Standalone::Driver& driver) {
    DriverInterface& record = *driver.record();
    record.write = [](void*, int) { return static_cast<EDriverResult>(refused); };
    record.writeBuffer = [](void*, const void*, unsigned) { return static_cast<EDriverResult>(refused); };
    record.read = [](void*, int*) { return static_cast<EDriverResult>(refused); };
}

/** Gives the table another number of axes, so that nothing can be read from it; done twice it can again. */
void breakOrMend(CalibrationTable& table) {
    table.axis2.resize(table.axis2.empty() ? 1 : 0);
}

class RefusingRau final : public IRauHandler {
public:
    EAFResult setTxRadioFrequency(unsigned long /*frequency*/) override {
        return static_cast<EAFResult>(refused);
    }
    EAFResult setRxRadioFrequency(unsigned long /*frequency*/) override {
        return static_cast<EAFResult>(refused);
    }
};

/** A radio with an IQ compensation, of a handler type, with messages off, filtered or on. */
class NoAllocationTest : public ModuleTest,
                         public testing::WithParamInterface<std::tuple<int, OrbiTraceLevel>> {
protected:
    static int type() { return std::get<0>(GetParam()); }

    NoAllocationTest() { addCompensation(1); }

    void start() {
        boot(type());
        CTxIQImbalanceHandler::onPhaseActivation(&compensation, 11, ECallbackPriority{0});
    }

    /**
     * Calls everything that there is to call of a radio that operates; none of it takes memory. What tells
     * how a write went answers `expected`, unless that is nothing.
     */
    void operate(std::optional<EAFResult> expected);

    unsigned told = 0;
    CallingObserver observer{[this](IFrequencyHandler*) { ++told; }};
    IFrequencyObserver observerInC{&told,
                                   [](void* sum, unsigned long /*channel*/, unsigned long /*frequency*/) {
                                       ++*static_cast<unsigned*>(sum);
                                   }};

private:
    template <typename Operation>
    static void takesNone(const char* name, const Operation& operation) {
        const std::size_t before = FailingMemory::taken();
        operation();
        EXPECT_EQ(FailingMemory::taken(), before) << name;
    }
    /** The same of an operation that answers `expected`. */
    template <typename Operation>
    static void takesNone(const char* name, std::optional<EAFResult> expected, const Operation& operation) {
        std::optional<EAFResult> result;
        takesNone(name, [&] { result = operation(); });
        EXPECT_EQ(result, expected ? expected : result) << name;
    }

    /** What the platform needs for itself, here and in what follows: room in the stream of the trace. */
    void readyThePlatform();
    void operateModule();
    static void operateHandler(Handler& handler, std::optional<EAFResult> expected);
    static void plan(const Board& board);
    static void operateCanceller(LoCancellation& canceller, std::optional<EAFResult> expected);
    void operateCompensation(std::optional<EAFResult> expected);

    CTxIQImbalanceHandler compensation{1};
};

void NoAllocationTest::readyThePlatform() {
    platform.calls().setRecording(false);
    platform.trace().setRecording(false);
    platform.trace().setThreshold(std::get<1>(GetParam()));
    ASSERT_TRUE(platform.calls().isIdle());
    OrbiTrace trace("test", Standalone::TraceLevel::error);
    trace.beginLogMsg(Standalone::TraceLevel::error, __FILE__, __LINE__)
        << std::string(300, 'x') << std::endl;
    trace.endLogMsg();
}

void NoAllocationTest::operate(std::optional<EAFResult> expected) {
    auto& broker = InterfaceBroker::getInstance();
    readyThePlatform();
    operateModule();
    for (const char* const name : {"IFrequencyHandler_Tx_1", "IFrequencyHandler_Rx_1"}) {
        if (auto* const handler = broker.getInterface<Handler>(name)) {
            operateHandler(*handler, expected);
        }
    }
    if (auto* const canceller = broker.getInterface<LoCancellation>("ILoCancellation_1")) {
        operateCanceller(*canceller, expected);
    }
    operateCompensation(expected);
}

void NoAllocationTest::operateModule() {
    takesNone("setTxFrequency", [&] { module->setTxFrequency(18'000'250); });
    takesNone("setRxFrequency", [&] { module->setRxFrequency(18'000'250); });
    takesNone("notifyTemperature", [&] { module->notifyTemperature(41); });
    takesNone("staticNotifyTemperature",
              [&] { ::FrequencyHandler::staticNotifyTemperature(module.get(), -5); });
}

void NoAllocationTest::operateHandler(Handler& handler, std::optional<EAFResult> expected) {
    takesNone("setRfFrequency", [&] { handler.setRfFrequency(18'000'000); });
    takesNone("getFrequency", [&] { EXPECT_EQ(handler.getFrequency(), 18'000'000U); });
    takesNone("writeFrequencyToHW", expected, [&] { return handler.writeFrequencyToHW(7'000'000); });
    if (const auto* const board = dynamic_cast<const Board*>(&handler)) {
        plan(*board);
    }
}

void NoAllocationTest::plan(const Board& board) {
    takesNone("plan", [&] {
        board.calculaterRfLoFrequency(18'000'250);
        board.calculateFrequencyStep(18'000'250);
        board.calculateIfPllFrequency(18'000'250);
        board.calculateRfPllFrequency(18'000'250, false);
        board.calculateRfPllFrequency(18'000'250, true);
        board.getBbFrequency();
    });
}

void NoAllocationTest::operateCanceller(LoCancellation& canceller, std::optional<EAFResult> expected) {
    takesNone("setLoCancellation", expected, [&] { return canceller.setLoCancellation(18'000'250, 25); });
    takesNone("setIQ", expected, [&] { return canceller.setIQ(-1, 1); });
    for (const bool useHighDetector : {false, true}) {
        takesNone("calibrateLoCancellation", expected, [&] {
            int i = 0;
            int q = 0;
            int maxDelta = 0;
            unsigned iterations = 0;
            return canceller.calibrateLoCancellation(0, 4000, 0, 4000, 0.75, 1, 3, 0, &i, &q, &maxDelta,
                                                     &iterations, useHighDetector);
        });
    }
}

void NoAllocationTest::operateCompensation(std::optional<EAFResult> expected) {
    takesNone("notifyTemperature", [&] { CTxIQImbalanceHandler::notifyTemperature(&compensation, 25); });
    takesNone("doImbalanceCompensation", expected, [&] { return compensation.doImbalanceCompensation(); });
    takesNone("onTxFrequencyChanged", expected, [&] { return compensation.onTxFrequencyChanged(1); });
}

INSTANTIATE_TEST_SUITE_P(TypesAndThresholds, NoAllocationTest,
                         testing::Combine(testing::Range(0, 6),
                                          testing::Values(Standalone::TraceLevel::off,
                                                          Standalone::TraceLevel::notice,
                                                          Standalone::TraceLevel::information)),
                         [](const auto& parameter) {
                             return "Type" + std::to_string(std::get<0>(parameter.param)) + "Threshold" +
                                    std::to_string(std::get<1>(parameter.param));
                         });

} // namespace

TEST_P(NoAllocationTest, RadioOnWhichAllIsWellTakesNone) {
    start();
    operate(ResultOk);
}

TEST_P(NoAllocationTest, TellingObserversTakesNone) {
    start();
    auto* const handler = InterfaceBroker::getInstance().getInterface<Handler>("IFrequencyHandler_Tx_1");
    handler->registerObserver(&observer);
    handler->registerObserver(nullptr); // of which a message tells each time
    IFrequencyHandler::registerObserver(static_cast<IFrequencyHandler*>(handler), &observerInC);
    operate(ResultOk);
    EXPECT_EQ(told, 4U); // setTxFrequency and setRfFrequency
}

TEST_P(NoAllocationTest, RadioOnWhichEverythingFailsTakesNone) {
    RefusingRau rau;
    platform.interfaces().put("IRauHandler_1", &rau);
    start();
    for (const auto& [name, driver] : platform.drivers().drivers()) {
        breakDriver(*driver);
    }
    operate(ResultFailed);
    for (const auto& [name, table] : platform.tables().tables()) {
        breakOrMend(*table);
    }
    operate({}); // a compensation without a table is passed over
}

TEST_P(NoAllocationTest, RadioOnWhichOneThingFailsTakesNone) {
    start();
    for (const auto& [name, driver] : platform.drivers().drivers()) {
        SCOPED_TRACE(name);
        breakDriver(*driver);
        operate({});
        driver->setMissingWords(0);
    }
    for (const auto& [name, table] : platform.tables().tables()) {
        SCOPED_TRACE(name);
        breakOrMend(*table);
        operate({});
        breakOrMend(*table);
    }
    operate(ResultOk);
}

TEST_P(NoAllocationTest, RadioWhoseDriversLackOperationsTakesNone) {
    start();
    for (const unsigned words :
         {0U + Standalone::wordWrite + Standalone::wordWriteBuffer, 0U + Standalone::wordRead}) {
        for (const auto& [name, driver] : platform.drivers().drivers()) {
            driver->setMissingWords(words);
        }
        operate({});
    }
}

TEST_P(NoAllocationTest, RadioWithAlternativeDriversTakesNone) {
    for (const char* const name : {"mixer.i", "mixer.q", "detector.v"}) {
        platform.drivers()
            .find(std::string("channel.1.tx.rf.") + name)
            ->setMissingWords(Standalone::wordWrite);
    }
    for (const char* const name :
         {"tx.bb.iq.coarse.dc.i.v.adjust", "tx.bb.iq.coarse.dc.q.v.adjust", "tx.rf.detector.low.v.detect",
          "tx.rf.detector.high.v.detect", "tx.rf.lo.config", "rx.rf.lo.config"}) {
        platform.drivers().add(std::string("channel.1.") + name);
    }
    start();
    operate(ResultOk);
    breakDriver(*platform.drivers().find("channel.1.tx.rf.detector.high.v.detect"));
    operate({});
}

TEST_P(NoAllocationTest, NoChannelSpacingTakesAny) {
    std::array<std::int32_t, 5> offsets{50, 2000, 100, -4000, 7};
    platform.variables().find("channel.1.rx.rf.frequency.cs.offset.array")->record()->content =
        offsets.data();
    platform.variables().find("channel.1.rx.rf.frequency.cs.offset.arraysize")->set({5});
    platform.variables().find("HwCodeDsp")->set({3});
    start();
    // In both lists, in one, taken by half, in none, and at the broken end of the array.
    for (const std::int32_t spacing : {100, 150, 250, 13, 7}) {
        SCOPED_TRACE(spacing);
        platform.variables().find("ChannelSpacing")->set({spacing});
        EXPECT_TRUE(run(20));
        operate({});
    }
}

TEST_P(NoAllocationTest, RadioWithoutAMultiplicationFactorTakesNone) {
    platform.variables().find("channel.1.tx.mixer.multiplicationfactor")->set({0});
    platform.variables().find("channel.1.rx.mixer.multiplicationfactor")->set({0});
    start();
    operate({});
}

TEST_P(NoAllocationTest, RadioThatWasNotStartedTakesNone) {
    build(type());
    operate({});
}

TEST_P(NoAllocationTest, ModuleWithoutHandlersTakesNone) {
    build(9);
    operate({});
}
