// The virtual operations stand in the slots with which clients and platforms were compiled.

#include "CModuleManager.h"
#include "CTxIQImbalanceHandler.h"
#include "FrequencyHandler.h"
#include "FrequencyHandler_MicrowaveBoard.h"
#include "FrequencyHandler_Rau.h"
#include "FrequencyHandler_RfModule.h"
#include "IFrequencyHandler.h"
#include "IRauHandler.h"
#include "ITxIQImbalanceHandler.h"
#include "LoCancellation.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>

namespace {

namespace Common = RL::FrequencyHandler::Common;
namespace MicrowaveBoard = RL::FrequencyHandler::MicrowaveBoard;
namespace Rau = RL::FrequencyHandler::Rau;
namespace RfModule = RL::FrequencyHandler::RfModule;

/**
 * The slot of a virtual operation. The first word of a pointer to one is the slot's offset in the table plus
 * 1, which the division drops; where functions may lie at odd addresses, as on ARM, the 1 is in the second
 * word.
 */
template <typename Operation>
std::size_t slotOf(Operation operation) {
    std::array<std::uintptr_t, 2> words{};
    static_assert(sizeof operation == sizeof words);
    std::memcpy(words.data(), &operation, sizeof words);
    return words[0] / sizeof(void*);
}

template <typename Handler>
void expectSlotsOfDirectionHandler() {
    EXPECT_EQ(slotOf(&Handler::getCStruct), 2U);
    EXPECT_EQ(slotOf(&Handler::getFrequency), 4U);
    EXPECT_EQ(slotOf(&Handler::onModuleInit), 5U);
    EXPECT_EQ(slotOf(&Handler::getVariablesFromDatabase), 6U);
    EXPECT_EQ(slotOf(&Handler::getFFVariablesFromDatabase), 7U);
    EXPECT_EQ(slotOf(&Handler::writeFrequencyToHW), 8U);
}

template <typename Handler>
void expectSlotsOfIQImbalanceHandler() {
    EXPECT_EQ(slotOf(&Handler::doImbalanceCompensation), 2U);
    EXPECT_EQ(slotOf(&Handler::onTxFrequencyChanged), 3U);
    EXPECT_EQ(slotOf(&Handler::testSetIQCompensationBar), 4U);
    EXPECT_EQ(slotOf(&Handler::testGetIQCompensationBar), 5U);
    EXPECT_EQ(slotOf(&Handler::testSetIQMode), 6U);
    EXPECT_EQ(slotOf(&Handler::testGetIQMode), 7U);
    EXPECT_EQ(slotOf(&Handler::testSetSimulatorMode), 8U);
    EXPECT_EQ(slotOf(&Handler::testGetSimulatorMode), 9U);
    EXPECT_EQ(slotOf(&Handler::testGetAdaptiveIQCompEnabled), 10U);
}

using RegisterObserver = EAFResult (IFrequencyHandler::*)(Observer<IFrequencyHandler>*);

} // namespace

// Slots 0 and 1 are the two forms of the destructor.

TEST(VtableSlot, InterfaceWithRecord) {
    EXPECT_EQ(slotOf(&IInterface_c::getCStruct), 2U);
}

TEST(VtableSlot, FrequencyHandlerInterface) {
    EXPECT_EQ(slotOf(&IFrequencyHandler::getCStruct), 2U);
    EXPECT_EQ(slotOf(static_cast<RegisterObserver>(&IFrequencyHandler::registerObserver)), 3U);
    EXPECT_EQ(slotOf(&IFrequencyHandler::getFrequency), 4U);
}

TEST(VtableSlot, ObserverOfFrequencyHandlers) {
    EXPECT_EQ(slotOf(&Observer<IFrequencyHandler>::onChange), 2U);
}

TEST(VtableSlot, DirectionHandlers) {
    expectSlotsOfDirectionHandler<Common::FrequencyHandler>();
    expectSlotsOfDirectionHandler<MicrowaveBoard::FrequencyHandler>();
    expectSlotsOfDirectionHandler<RfModule::FrequencyHandler>();
    expectSlotsOfDirectionHandler<Rau::FrequencyHandler>();
}

TEST(VtableSlot, Module) {
    EXPECT_EQ(slotOf(&ModuleInterface::onPhaseActivation), 2U);
    EXPECT_EQ(slotOf(&ModuleInterface::onModuleInit), 3U);
    EXPECT_EQ(slotOf(&ModuleInterface::onPhaseModuleStorageObjectsRetreived), 4U);
    EXPECT_EQ(slotOf(&ModuleInterface::onPhasePostFrameformatLoad), 5U);
    EXPECT_EQ(slotOf(&ModuleInterface::onPhaseEndFrameformatLoad), 6U);
    EXPECT_EQ(slotOf(&ModuleInterface::onPhaseStart), 7U);
    EXPECT_EQ(slotOf(&ModuleInterface::onPhaseStop), 8U);
    EXPECT_EQ(slotOf(&ModuleInterface::onPhaseFrameformatLoad), 9U);
    EXPECT_EQ(slotOf(&ModuleInterface::onPhasePreFrameformatLoad), 10U);
    EXPECT_EQ(slotOf(&ModuleInterface::onPhaseSetRadioChannelNearEndFinished), 11U);
}

TEST(VtableSlot, FrequencyModule) {
    EXPECT_EQ(slotOf(&::FrequencyHandler::onModuleInit), 3U);
    EXPECT_EQ(slotOf(&::FrequencyHandler::onPhaseModuleStorageObjectsRetreived), 4U);
    EXPECT_EQ(slotOf(&::FrequencyHandler::onPhasePostFrameformatLoad), 5U);
    EXPECT_EQ(slotOf(&::FrequencyHandler::setTxFrequency), 12U);
    EXPECT_EQ(slotOf(&::FrequencyHandler::setRxFrequency), 13U);
}

TEST(VtableSlot, Canceller) {
    EXPECT_EQ(slotOf(&ILoCancellation::onModuleInit), 2U);
    EXPECT_EQ(slotOf(&ILoCancellation::setLoCancellation), 3U);
    EXPECT_EQ(slotOf(&ILoCancellation::calibrateLoCancellation), 4U);
    EXPECT_EQ(slotOf(&LoCancellation::onModuleInit), 2U);
    EXPECT_EQ(slotOf(&LoCancellation::setLoCancellation), 3U);
    EXPECT_EQ(slotOf(&LoCancellation::calibrateLoCancellation), 4U);
}

TEST(VtableSlot, IQImbalanceHandler) {
    expectSlotsOfIQImbalanceHandler<ITxIQImbalanceHandler>();
    expectSlotsOfIQImbalanceHandler<CTxIQImbalanceHandler>();
}

// Derived virtually, the interface would stand behind a table of its own and a pointer to it more.
TEST(VtableSlot, IQImbalanceInterfaceIsNothingMoreThanItsBase) {
    EXPECT_EQ(sizeof(ITxIQImbalanceHandler), sizeof(IInterface));
}

TEST(VtableSlot, RauTransmitStandsImmediatelyBeforeReceive) {
    EXPECT_EQ(slotOf(&IRauHandler::setTxRadioFrequency), 2U);
    EXPECT_EQ(slotOf(&IRauHandler::setRxRadioFrequency), 3U);
}
