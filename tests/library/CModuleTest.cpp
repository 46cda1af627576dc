// The frequency module under C names: what became of a frequency change is told, and by whom it was refused.

#include "CallingObserver.h"
#include "FrequencyHandler_c.h"
#include "IFrequencyHandler.h"
#include "InterfaceBroker.h"
#include "ModuleTest.h"

#include <ostream>
#include <stdexcept>

using Standalone::Operation;
using testing::IsEmpty;

namespace {

constexpr std::int32_t driversCode = 0x8017;

class CModuleTest : public ModuleTest {
protected:
    ~CModuleTest() override { FrequencyHandler_Destroy(cModule); }

    /** Makes a module by its C name, and brings it up. */
    void bootC(std::int32_t type) {
        ASSERT_EQ(FrequencyHandler_Create(1, type, &cModule), ResultOk);
        for (const unsigned long phase : {11UL, 5UL, 20UL}) {
            EXPECT_TRUE(run(phase)) << "phase " << phase;
        }
        forget();
    }
    void refuse(Operation operation, const std::string& object) {
        platform.calls().inject({operation, object, driversCode, std::nullopt, std::nullopt});
    }
    FrequencyHandlerTuning tune(std::int32_t direction, std::uint32_t frequency) {
        EXPECT_EQ(FrequencyHandler_Tune(cModule, direction, frequency), ResultOk);
        return tuning(direction);
    }
    FrequencyHandlerTuning tuning(std::int32_t direction) {
        FrequencyHandlerTuning told{1, EAFResult{2}, 3, 4};
        EXPECT_EQ(FrequencyHandler_GetTuning(cModule, direction, &told), ResultOk);
        return told;
    }
    static void expect(const FrequencyHandlerTuning& told, std::uint32_t frequency, EAFResult result,
                       std::int32_t code, std::int32_t written) {
        EXPECT_EQ(told.frequency, frequency);
        EXPECT_EQ(told.result, result);
        EXPECT_EQ(told.code, code);
        EXPECT_EQ(told.written, written);
    }

    FrequencyHandlerModule* cModule = nullptr;
};

TEST_F(CModuleTest, VersionIsThatOfTheHeaders) {
    EXPECT_EQ(FrequencyHandler_GetVersion(), 0x000200U); // 0.2.0
    EXPECT_EQ(FrequencyHandler_GetVersion(), static_cast<std::uint32_t>(FREQUENCYHANDLER_VERSION));
}

TEST_F(CModuleTest, TypesHaveTheNumbersOfTheClass) {
    EXPECT_EQ(+FrequencyHandlerMicrowaveBoardIf, ::FrequencyHandler::MicrowaveBoardIf);
    EXPECT_EQ(+FrequencyHandlerRfModule, ::FrequencyHandler::RfModule);
    EXPECT_EQ(+FrequencyHandlerMicrowaveBoardDspOffset, ::FrequencyHandler::MicrowaveBoardDspOffset);
    EXPECT_EQ(+FrequencyHandlerMicrowaveBoardHzCsOffset, ::FrequencyHandler::MicrowaveBoardHzCsOffset);
    EXPECT_EQ(+FrequencyHandlerRau, ::FrequencyHandler::Rau);
    EXPECT_EQ(+FrequencyHandlerMicrowaveBoardHz, ::FrequencyHandler::MicrowaveBoardHz);
}

TEST_F(CModuleTest, ModuleIsPublishedAndWithdrawn) {
    auto& broker = InterfaceBroker::getInstance();
    ASSERT_EQ(FrequencyHandler_Create(1, FrequencyHandlerRfModule, &cModule), ResultOk);
    EXPECT_NE(broker.findInterface("IFrequencyHandler_Tx_1"), nullptr);
    EXPECT_EQ(platform.modules().moduleCount(), 1U);
    FrequencyHandler_Destroy(cModule);
    cModule = nullptr;
    EXPECT_EQ(broker.findInterface("IFrequencyHandler_Tx_1"), nullptr);
    EXPECT_EQ(platform.modules().moduleCount(), 0U);
}

TEST_F(CModuleTest, UnknownTypeGivesNoModule) {
    cModule = reinterpret_cast<FrequencyHandlerModule*>(this);
    EXPECT_EQ(FrequencyHandler_Create(1, 6, &cModule), ResultFailed);
    EXPECT_EQ(cModule, nullptr);
    EXPECT_EQ(platform.modules().moduleCount(), 0U);
}

TEST_F(CModuleTest, HandlerThatCannotBePublishedServesItsModuleAllTheSame) {
    Standalone::Fault fault{Operation::brokerRegister, "", driversCode};
    fault.thrown = std::make_exception_ptr(std::runtime_error("no broker"));
    platform.calls().inject(fault);
    bootC(FrequencyHandlerRfModule);
    EXPECT_EQ(InterfaceBroker::getInstance().findInterface("IFrequencyHandler_Tx_1"), nullptr);
    expect(tune(FrequencyHandlerTx, 7442000), 7442000, ResultOk, 0, 1);
}

TEST_F(CModuleTest, ModuleThatCannotBeRegisteredIsThereAndHearsOfNoPhase) {
    Standalone::Fault fault{Operation::moduleRegister, "", driversCode};
    fault.thrown = std::make_exception_ptr(std::runtime_error("no manager"));
    platform.calls().inject(fault);
    ASSERT_EQ(FrequencyHandler_Create(1, FrequencyHandlerRfModule, &cModule), ResultOk);
    EXPECT_EQ(platform.modules().moduleCount(), 0U);
    EXPECT_TRUE(run(11));
    expect(tune(FrequencyHandlerTx, 7442000), 7442000, ResultOk, 0, 0);
}

TEST_F(CModuleTest, NullArgumentsAreRefused) {
    FrequencyHandlerTuning told{};
    EXPECT_EQ(FrequencyHandler_Create(1, FrequencyHandlerRfModule, nullptr), ResultFailed);
    EXPECT_EQ(FrequencyHandler_Tune(nullptr, FrequencyHandlerTx, 7442000), ResultFailed);
    EXPECT_EQ(FrequencyHandler_GetTuning(nullptr, FrequencyHandlerTx, &told), ResultFailed);
    bootC(FrequencyHandlerRfModule);
    EXPECT_EQ(FrequencyHandler_GetTuning(cModule, FrequencyHandlerTx, nullptr), ResultFailed);
    FrequencyHandler_Destroy(nullptr);
}

TEST_F(CModuleTest, DirectionThatIsNoneIsRefusedAndTouchesNothing) {
    bootC(FrequencyHandlerRfModule);
    FrequencyHandlerTuning told{1, EAFResult{2}, 3, 4};
    for (const std::int32_t direction : {-1, 2}) {
        EXPECT_EQ(FrequencyHandler_Tune(cModule, direction, 7442000), ResultFailed);
        EXPECT_EQ(FrequencyHandler_GetTuning(cModule, direction, &told), ResultFailed);
    }
    EXPECT_THAT(writes(), IsEmpty());
    expect(told, 1, EAFResult{2}, 3, 4);
}

TEST_F(CModuleTest, BeforeTheFirstCarrierThereIsNone) {
    bootC(FrequencyHandlerRfModule);
    expect(tuning(FrequencyHandlerTx), 0, ResultOk, 0, 0);
    expect(tuning(FrequencyHandlerRx), 0, ResultOk, 0, 0);
}

TEST_F(CModuleTest, CarrierThatIsTakenIsTold) {
    bootC(FrequencyHandlerRfModule);
    expect(tune(FrequencyHandlerTx, 7442000), 7442000, ResultOk, 0, 1);
    expect(tune(FrequencyHandlerRx, 7603000), 7603000, ResultOk, 0, 1);
    EXPECT_EQ(platform.drivers().find("channel.1.tx.rf.frequency")->value(), 7442000);
    EXPECT_EQ(platform.drivers().find("channel.1.rx.rf.frequency")->value(), 7603000);
}

TEST_F(CModuleTest, DriversCodeIsToldAndTheCarrierIsKept) {
    bootC(FrequencyHandlerRfModule);
    refuse(Operation::driverWrite, "channel.1.tx.rf.frequency");
    expect(tune(FrequencyHandlerTx, 7442000), 7442000, ResultFailed, driversCode, 0);
    EXPECT_EQ(frequencyOf("Tx"), 7442000U);
    expect(tuning(FrequencyHandlerRx), 0, ResultOk, 0, 0); // the other direction was not asked for
}

TEST_F(CModuleTest, NextCarrierBeginsAnew) {
    bootC(FrequencyHandlerRfModule);
    refuse(Operation::driverWrite, "channel.1.tx.rf.frequency");
    tune(FrequencyHandlerTx, 7442000);
    platform.calls().clearAll();
    expect(tune(FrequencyHandlerTx, 7443000), 7443000, ResultOk, 0, 1);
}

struct Refusing {
    std::int32_t type;
    Operation operation;
    const char* object;
    std::int32_t written = 0;
};
// Said here, since of a value without words all bytes are printed, with those between its members.
void PrintTo(const Refusing& refusing, std::ostream* stream) {
    *stream << "type " << refusing.type << ", " << refusing.object;
}
class CModuleRefusalTest : public CModuleTest, public testing::WithParamInterface<Refusing> {};

TEST_P(CModuleRefusalTest, CodeOfWhoeverRefusesIsTold) {
    bootC(GetParam().type);
    refuse(GetParam().operation, GetParam().object);
    expect(tune(FrequencyHandlerTx, 7442000), 7442000, ResultFailed, driversCode, GetParam().written);
}

INSTANTIATE_TEST_SUITE_P(
    OfEachBoard, CModuleRefusalTest,
    testing::Values(
        Refusing{FrequencyHandlerMicrowaveBoardIf, Operation::driverWrite, "channel.1.tx.if.frequency"},
        Refusing{FrequencyHandlerMicrowaveBoardIf, Operation::driverWrite, "channel.1.tx.rf.lo.frequency"},
        // The charge pump comes after the carrier.
        Refusing{FrequencyHandlerMicrowaveBoardIf, Operation::driverWrite, "channel.1.tx.rf.pll.config", 1},
        Refusing{FrequencyHandlerMicrowaveBoardHz, Operation::driverWriteBuffer,
                 "channel.1.tx.rf.lo.frequency.in.hz"},
        Refusing{FrequencyHandlerRau, Operation::rauTx, "IRauHandler_1"}));

TEST_F(CModuleTest, RefusedReceiveOffsetOfTheDspIsTold) {
    bootC(FrequencyHandlerMicrowaveBoardDspOffset);
    refuse(Operation::driverWrite, "channel.1.dsp.rx.freq.offset");
    expect(tune(FrequencyHandlerRx, 7603000), 7603000, ResultFailed, driversCode, 0);
}

TEST_F(CModuleTest, WhatFailsBeforeADriverIsAskedIs0x8000) {
    platform.variables().add("channel.1.tx.mixer.multiplicationfactor", {0}).set({0});
    bootC(FrequencyHandlerMicrowaveBoardIf);
    expect(tune(FrequencyHandlerTx, 7442000), 7442000, ResultFailed, 0x8000, 0);
}

TEST_F(CModuleTest, OffsetArrayThatEndsInsideAPairIs0x8000) {
    platform.variables().find("channel.1.rx.rf.frequency.cs.offset.arraysize")->set({1});
    platform.variables().find("channel.1.rx.rf.frequency.cs.offset.array")->set({100});
    bootC(FrequencyHandlerMicrowaveBoardHzCsOffset);
    expect(tune(FrequencyHandlerRx, 7603000), 7603000, ResultFailed, 0x8000, 0);
}

TEST_F(CModuleTest, ChannelSpacingWithoutHalfIs0x8000) {
    platform.variables().find("ChannelSpacing")->set({77});
    bootC(FrequencyHandlerMicrowaveBoardDspOffset);
    expect(tune(FrequencyHandlerRx, 7603000), 7603000, ResultFailed, 0x8000, 0);
}

TEST_F(CModuleTest, RemoteUnitThatIsNotThereIs0x8000) {
    ASSERT_EQ(FrequencyHandler_Create(1, FrequencyHandlerRau, &cModule), ResultOk); // before phase 11
    expect(tune(FrequencyHandlerTx, 7442000), 7442000, ResultFailed, 0x8000, 0);
}

TEST_F(CModuleTest, DriverThatThrowsIs0x8000) {
    for (const std::int32_t type : {FrequencyHandlerRfModule, FrequencyHandlerMicrowaveBoardIf}) {
        bootC(type);
        Standalone::Fault fault{Operation::driverWrite, "", driversCode};
        fault.thrown = std::make_exception_ptr(std::runtime_error("loose"));
        platform.calls().inject(fault);
        expect(tune(FrequencyHandlerTx, 7442000), 7442000, ResultFailed, 0x8000, 0);
        platform.calls().clearAll();
        FrequencyHandler_Destroy(cModule);
    }
    cModule = nullptr;
}

class CModuleTypeTest : public CModuleTest, public testing::WithParamInterface<std::int32_t> {};

TEST_P(CModuleTypeTest, WhatIsTunedBeforePhase11WritesNothingAndSaysSo) {
    ASSERT_EQ(FrequencyHandler_Create(1, GetParam(), &cModule), ResultOk);
    for (const std::int32_t direction : {FrequencyHandlerTx, FrequencyHandlerRx}) {
        // Type 3 misses the offset array of its receiver, and type 4 the remote unit: these say so.
        const bool isSaid =
            GetParam() == FrequencyHandlerRau ||
            (GetParam() == FrequencyHandlerMicrowaveBoardHzCsOffset && direction == FrequencyHandlerRx);
        expect(tune(direction, 7442000), 7442000, isSaid ? ResultFailed : ResultOk, isSaid ? 0x8000 : 0, 0);
    }
    EXPECT_THAT(writes(), IsEmpty());
}

TEST_P(CModuleTypeTest, CarrierThatReachesTheHardwareIsWritten) {
    bootC(GetParam());
    expect(tune(FrequencyHandlerTx, 7442000), 7442000, ResultOk, 0, 1);
    expect(tune(FrequencyHandlerRx, 7603000), 7603000, ResultOk, 0, 1);
}

INSTANTIATE_TEST_SUITE_P(OfEachType, CModuleTypeTest, testing::Range(0, 6));

TEST_F(CModuleTest, BoardWhoseLoIsGoneHasNothingOfTheCarrierWhateverElseItHas) {
    for (const std::int32_t type : {FrequencyHandlerMicrowaveBoardIf, FrequencyHandlerMicrowaveBoardHz}) {
        const bool isInHz = type == FrequencyHandlerMicrowaveBoardHz;
        bootC(type);
        auto* const lo = platform.drivers().find(isInHz ? "channel.1.tx.rf.lo.frequency.in.hz"
                                                        : "channel.1.tx.rf.lo.frequency");
        const DriverInterface whole = *lo->record();
        lo->record()->write = nullptr;
        lo->record()->writeBuffer = nullptr;
        expect(tune(FrequencyHandlerTx, 7442000), 7442000, ResultOk, 0, 0);
        expect(tune(FrequencyHandlerRx, 7603000), 7603000, ResultOk, 0, 1);
        // A charge pump that is refused as well does not make it written.
        refuse(Operation::driverWrite, "channel.1.tx.rf.pll.config");
        expect(tune(FrequencyHandlerTx, 7442000), 7442000, ResultFailed, driversCode, 0);
        platform.calls().clearAll();
        *lo->record() = whole;
        FrequencyHandler_Destroy(cModule);
        cModule = nullptr;
    }
}

TEST_F(CModuleTest, RefusedLeakageCorrectionIsNotTheCarriers) {
    bootC(FrequencyHandlerMicrowaveBoardIf);
    refuse(Operation::driverWrite, "channel.1.tx.rf.mixer.i");
    expect(tune(FrequencyHandlerTx, 7442000), 7442000, ResultOk, 0, 1);
}

TEST_F(CModuleTest, WhatAnObserverTunesOfAnotherDirectionDoesNotCount) {
    bootC(FrequencyHandlerRfModule);
    CallingObserver follower([this](IFrequencyHandler* /*subject*/) {
        EXPECT_EQ(FrequencyHandler_Tune(cModule, FrequencyHandlerRx, 7603000), ResultOk);
    });
    InterfaceBroker::getInstance()
        .getInterface<IFrequencyHandler>("IFrequencyHandler_Tx_1")
        ->registerObserver(&follower);
    refuse(Operation::driverWrite, "channel.1.rx.rf.frequency");
    expect(tune(FrequencyHandlerTx, 7442000), 7442000, ResultOk, 0, 1);
    expect(tuning(FrequencyHandlerRx), 7603000, ResultFailed, driversCode, 0);
}

TEST_F(CModuleTest, WhatAnObserverTunesOfTheSameDirectionIsTheLastChange) {
    bootC(FrequencyHandlerRfModule);
    CallingObserver again([this](IFrequencyHandler* subject) {
        if (subject->getFrequency() == 7442000) {
            platform.calls().clearAll(); // the first is refused, the second is not
            expect(tune(FrequencyHandlerTx, 7470000), 7470000, ResultOk, 0, 1);
        }
    });
    InterfaceBroker::getInstance()
        .getInterface<IFrequencyHandler>("IFrequencyHandler_Tx_1")
        ->registerObserver(&again);
    refuse(Operation::driverWrite, "channel.1.tx.rf.frequency");
    expect(tune(FrequencyHandlerTx, 7442000), 7470000, ResultOk, 0, 1);
    EXPECT_EQ(platform.drivers().find("channel.1.tx.rf.frequency")->value(), 7470000);
}

TEST_F(CModuleTest, RefusalOfWhatAnObserverTunesOfTheSameDirectionIsTold) {
    bootC(FrequencyHandlerRfModule);
    CallingObserver again([this](IFrequencyHandler* subject) {
        if (subject->getFrequency() == 7442000) {
            refuse(Operation::driverWrite, "channel.1.tx.rf.frequency");
            tune(FrequencyHandlerTx, 7470000);
        }
    });
    InterfaceBroker::getInstance()
        .getInterface<IFrequencyHandler>("IFrequencyHandler_Tx_1")
        ->registerObserver(&again);
    expect(tune(FrequencyHandlerTx, 7442000), 7470000, ResultFailed, driversCode, 0);
}

TEST_F(CModuleTest, WhatAnObserverTunesOfAnotherModuleDoesNotCount) {
    bootC(FrequencyHandlerRfModule);
    build(FrequencyHandlerRfModule, 2); // one that nobody asks for its tunings, and whose driver is missing
    CallingObserver follower(
        [this](IFrequencyHandler* /*subject*/) { EXPECT_EQ(module->setTxFrequency(7484000), ResultOk); });
    InterfaceBroker::getInstance()
        .getInterface<IFrequencyHandler>("IFrequencyHandler_Tx_1")
        ->registerObserver(&follower);
    expect(tune(FrequencyHandlerTx, 7442000), 7442000, ResultOk, 0, 1);
    build(FrequencyHandlerRau, 2); // and one that says 0x8000, for want of its unit
    expect(tune(FrequencyHandlerTx, 7443000), 7443000, ResultOk, 0, 1);
}

} // namespace
