// How the frequency module is built, from which parts, and how it is taken down.

#include "ILoCancellation.h"
#include "InterfaceBroker.h"
#include "ModuleTest.h"

using Standalone::Operation;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Values;

namespace {

using FrequencyModuleTest = ModuleTest;
using TypeWithCanceller = ModuleTypeTest;
using TypeWithoutCanceller = ModuleTypeTest;
using UnknownType = ModuleTypeTest;

} // namespace

// Construction

TEST_P(TypeWithCanceller, PublishesTransmitterReceiverAndCancellerThenRegistersTheModule) {
    build(GetParam());
    EXPECT_THAT(calls(),
                ElementsAre("broker-register IFrequencyHandler_Tx_1",
                            "broker-register IFrequencyHandler_Rx_1", "broker-register ILoCancellation_1",
                            "module-register FrequencyHandler"));
    EXPECT_THAT(traces(), IsEmpty());
}

TEST_P(TypeWithCanceller, IsTakenDownInTheOrderModuleTransmitterReceiverCanceller) {
    build(GetParam());
    forget();
    module.reset();
    EXPECT_THAT(calls(),
                ElementsAre("module-unregister FrequencyHandler", "broker-unregister IFrequencyHandler_Tx_1",
                            "broker-unregister IFrequencyHandler_Rx_1",
                            "broker-unregister ILoCancellation_1"));
    EXPECT_THAT(traces(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(MicrowaveBoards, TypeWithCanceller, Values(0, 2, 3, 5));

TEST_P(TypeWithoutCanceller, PublishesTransmitterAndReceiverThenRegistersTheModule) {
    build(GetParam());
    EXPECT_THAT(calls(),
                ElementsAre("broker-register IFrequencyHandler_Tx_1",
                            "broker-register IFrequencyHandler_Rx_1", "module-register FrequencyHandler"));
    EXPECT_THAT(traces(), IsEmpty());
}

TEST_P(TypeWithoutCanceller, IsTakenDownInTheOrderModuleTransmitterReceiver) {
    build(GetParam());
    forget();
    module.reset();
    EXPECT_THAT(calls(),
                ElementsAre("module-unregister FrequencyHandler", "broker-unregister IFrequencyHandler_Tx_1",
                            "broker-unregister IFrequencyHandler_Rx_1"));
}

INSTANTIATE_TEST_SUITE_P(RfModuleAndRau, TypeWithoutCanceller, Values(1, 4));

TEST_F(FrequencyModuleTest, IsModule19000OfItsChannelInPhases11And5And20) {
    build(1);
    EXPECT_EQ(module->getModuleId(), 19000U);
    EXPECT_EQ(module->getModuleName(), "FrequencyHandler");
    EXPECT_EQ(module->getModuleChannel(), 1U);
    EXPECT_TRUE(module->wantsPhase(11) && module->wantsPhase(5) && module->wantsPhase(20));
    EXPECT_FALSE(module->wantsPhase(0) || module->wantsPhase(12) || module->wantsPhase(19));
}

TEST_F(FrequencyModuleTest, ChannelZeroPublishesItsHandlersWithoutANumber) {
    build(0, 0);
    EXPECT_THAT(objectsOf(Operation::brokerRegister),
                ElementsAre("IFrequencyHandler_Tx", "IFrequencyHandler_Rx", "ILoCancellation_0"));
}

TEST_F(FrequencyModuleTest, NegativeChannelPublishesItsHandlersWithAMinusSign) {
    build(0, static_cast<unsigned long>(-1));
    EXPECT_THAT(objectsOf(Operation::brokerRegister),
                ElementsAre("IFrequencyHandler_Tx_-1", "IFrequencyHandler_Rx_-1", "ILoCancellation_-1"));
}

TEST_F(FrequencyModuleTest, CancellerIsFoundInTheBroker) {
    build(0);
    EXPECT_NE(InterfaceBroker::getInstance().getInterface<ILoCancellation>("ILoCancellation_1"), nullptr);
}

TEST_F(FrequencyModuleTest, RefusedCancellerIsTracedAndOtherwiseIgnored) {
    fail(Operation::brokerRegister, "ILoCancellation_1", 0x8005);
    build(0);
    EXPECT_THAT(traces(), ElementsAre("error: LoCancellation failed to register ILoCancellation interface "
                                      "[ILoCancellation_1] (EAFResult = 0x8005)"));
    EXPECT_EQ(platform.modules().moduleCount(), 1U);
}

TEST_F(FrequencyModuleTest, RefusedModuleRegistrationIsIgnoredWithoutAMessage) {
    fail(Operation::moduleRegister, "FrequencyHandler", 0x8002);
    build(1);
    EXPECT_THAT(traces(), IsEmpty());
    EXPECT_EQ(module->setTxFrequency(7442000), ResultOk);
}

TEST_F(FrequencyModuleTest, RefusedModuleWithdrawalIsIgnoredWithoutAMessage) {
    build(1);
    fail(Operation::moduleUnregister, "FrequencyHandler", 0x8001);
    module.reset();
    EXPECT_THAT(traces(), IsEmpty());
    EXPECT_EQ(platform.interfaces().entries().count("IFrequencyHandler_Tx_1"), 0U);
}

// An unknown type

TEST_P(UnknownType, IsTracedAsInformationAndBuildsNothingButIsRegistered) {
    build(GetParam());
    EXPECT_THAT(traces(), ElementsAre("information: Unknown FrequencyHandlerType"));
    EXPECT_THAT(calls(), ElementsAre("module-register FrequencyHandler"));
}

TEST_P(UnknownType, FailsEachPhaseWithOneErrorMessage) {
    build(GetParam());
    forget();
    EXPECT_FALSE(run(11) || run(5) || run(20));
    EXPECT_THAT(traces(),
                ElementsAre("information: onModuleInit",
                            "error: onModuleInit called on a module without handlers",
                            "information: onPhaseModuleStorageObjectsRetreived",
                            "error: onPhaseModuleStorageObjectsRetreived called on a module without handlers",
                            "information: onPhasePostFrameformatLoad",
                            "error: onPhasePostFrameformatLoad called on a module without handlers"));
    EXPECT_THAT(calls(), IsEmpty());
}

TEST_P(UnknownType, AnswersAFrequencyWithAFailureAndOneErrorMessageAndWritesNothing) {
    build(GetParam());
    forget();
    EXPECT_EQ(module->setTxFrequency(7442000), ResultFailed);
    EXPECT_EQ(module->setRxFrequency(7442000), ResultFailed);
    EXPECT_THAT(complaints(), ElementsAre("error: setTxFrequency called on a module without handlers",
                                          "error: setRxFrequency called on a module without handlers"));
    EXPECT_THAT(calls(), IsEmpty());
}

TEST_P(UnknownType, TakesATemperatureWithoutHarm) {
    build(GetParam());
    forget();
    module->notifyTemperature(25);
    EXPECT_THAT(traces(), ElementsAre("information: notifyTemperature called with temp = 25"));
    EXPECT_THAT(calls(), IsEmpty());
}

TEST_P(UnknownType, IsTakenDownLikeAnyOther) {
    build(GetParam());
    forget();
    module.reset();
    EXPECT_THAT(calls(), ElementsAre("module-unregister FrequencyHandler"));
}

INSTANTIATE_TEST_SUITE_P(OutsideTheList, UnknownType, Values(-1, 6, 99));
