// Members stand in the order in which they were always laid out, each right behind the one before it.
//
// Compiled with -fno-access-control: what is private is looked at, not opened.

#include "CTxIQImbalanceHandler.h"
#include "FrequencyHandler.h"
#include "FrequencyHandler_Common.h"
#include "FrequencyHandler_MicrowaveBoard.h"
#include "FrequencyHandler_Rau.h"
#include "FrequencyHandler_RfModule.h"
#include "FrequencyObserverCWrapper.h"
#include "LoCancellation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

namespace {

namespace Common = RL::FrequencyHandler::Common;
namespace MicrowaveBoard = RL::FrequencyHandler::MicrowaveBoard;
namespace Rau = RL::FrequencyHandler::Rau;
namespace RfModule = RL::FrequencyHandler::RfModule;

struct Member {
    std::string name;
    std::size_t offset;
    std::size_t size;
    std::size_t alignment;
};
using Members = std::vector<Member>;

/** The members that do not begin where the one before them ends. */
std::vector<std::string> misplaced(const Members& members) {
    std::vector<std::string> names;
    for (std::size_t i = 1; i < members.size(); ++i) {
        const std::size_t end = members[i - 1].offset + members[i - 1].size;
        const std::size_t alignment = members[i].alignment;
        if (members[i].offset != (end + alignment - 1) / alignment * alignment) {
            names.push_back(members[i].name);
        }
    }
    return names;
}

template <typename Class, typename Type>
Member describe(const char* name, std::size_t offset, Type Class::* /*member*/) {
    return {name, offset, sizeof(Type), alignof(Type)}; // NOLINT(bugprone-sizeof-expression)
}

} // namespace

// NOLINTNEXTLINE(cppcoreguidelines-macro-usage): the name of a member is no value.
#define MEMBER(type, member) describe(#member, offsetof(type, member), &type::member)

TEST(MemberOrder, InterfaceHoldsItsRecordBehindTheObservers) {
    EXPECT_THAT(misplaced({MEMBER(IFrequencyHandler, m_pCStruct), MEMBER(IFrequencyHandler, m_observers),
                           MEMBER(IFrequencyHandler, m_cStruct)}),
                testing::IsEmpty());
}

TEST(MemberOrder, CommonHandler) {
    using Handler = Common::FrequencyHandler;
    EXPECT_THAT(
        misplaced({MEMBER(Handler, m_cStruct), MEMBER(Handler, m_name), MEMBER(Handler, m_frequency)}),
        testing::IsEmpty());
}

TEST(MemberOrder, MicrowaveBoard) {
    using Handler = MicrowaveBoard::FrequencyHandler;
    EXPECT_THAT(misplaced({MEMBER(Handler, m_frequency),
                           MEMBER(Handler, m_ifSideband),
                           MEMBER(Handler, m_rfSideband),
                           MEMBER(Handler, m_ifFrequency),
                           MEMBER(Handler, m_mixerMultiplicationFactor),
                           MEMBER(Handler, m_ifBb),
                           MEMBER(Handler, m_csOffsetArraySize),
                           MEMBER(Handler, m_csOffsetArray),
                           MEMBER(Handler, m_hwCodeDsp),
                           MEMBER(Handler, m_rfLoDriver),
                           MEMBER(Handler, m_rfLoInHzDriver),
                           MEMBER(Handler, m_ifDriver),
                           MEMBER(Handler, m_pllConfigurationDriver),
                           MEMBER(Handler, m_dspOffsetDriver),
                           MEMBER(Handler, m_chargePumpTable),
                           MEMBER(Handler, m_useIfFrequency),
                           MEMBER(Handler, m_chargePumpTableValid),
                           MEMBER(Handler, m_useDspRxFreqOffset),
                           MEMBER(Handler, m_useCsOffsetArray),
                           MEMBER(Handler, m_loFrequencyInHz),
                           MEMBER(Handler, m_channelSpacing)}),
                testing::IsEmpty());
}

TEST(MemberOrder, RfModule) {
    using Handler = RfModule::FrequencyHandler;
    EXPECT_THAT(misplaced({MEMBER(Handler, m_frequency), MEMBER(Handler, rfFrequencyDriver),
                           MEMBER(Handler, m_direction)}),
                testing::IsEmpty());
}

TEST(MemberOrder, Rau) {
    using Handler = Rau::FrequencyHandler;
    EXPECT_THAT(misplaced({MEMBER(Handler, m_frequency), MEMBER(Handler, m_direction),
                           MEMBER(Handler, m_channel), MEMBER(Handler, m_pRauHandler)}),
                testing::IsEmpty());
}

TEST(MemberOrder, Module) {
    using Module = ::FrequencyHandler;
    EXPECT_THAT(misplaced({MEMBER(Module, m_pTxHandler), MEMBER(Module, m_pRxHandler),
                           MEMBER(Module, m_pLoCancellation), MEMBER(Module, m_temperature),
                           MEMBER(Module, m_temperatureObserver)}),
                testing::IsEmpty());
}

TEST(MemberOrder, Canceller) {
    EXPECT_THAT(
        misplaced({MEMBER(LoCancellation, m_mixerIDriver), MEMBER(LoCancellation, m_mixerQDriver),
                   MEMBER(LoCancellation, m_detectorDriver), MEMBER(LoCancellation, m_highDetectorDriver),
                   MEMBER(LoCancellation, m_tableI), MEMBER(LoCancellation, m_tableQ),
                   MEMBER(LoCancellation, m_useLoCancellationTables), MEMBER(LoCancellation, m_channel)}),
        testing::IsEmpty());
}

TEST(MemberOrder, IQImbalanceHandler) {
    using Handler = CTxIQImbalanceHandler;
    EXPECT_THAT(
        misplaced({MEMBER(Handler, m_channel), MEMBER(Handler, m_temperatureObserver),
                   MEMBER(Handler, m_temperature), MEMBER(Handler, m_dcITable), MEMBER(Handler, m_dcQTable),
                   MEMBER(Handler, m_gainOffsetTable), MEMBER(Handler, m_phaseOffsetTable),
                   MEMBER(Handler, pTxDcICompensationDriver), MEMBER(Handler, pTxDcQCompensationDriver),
                   MEMBER(Handler, pTxGainOffsetCompensationDriver),
                   MEMBER(Handler, pTxPhaseOffsetCompensationDriver),
                   MEMBER(Handler, m_moduleCallbackRecord)}),
        testing::IsEmpty());
    EXPECT_EQ(offsetof(Handler, m_channel), sizeof(IInterface)); // right behind the interface
}

TEST(MemberOrder, WrapperOfCObservers) {
    using Wrapper = FrequencyObserverCWrapper;
    EXPECT_THAT(misplaced({MEMBER(Wrapper, m_channel), MEMBER(Wrapper, m_context),
                           MEMBER(Wrapper, m_onFrequencyChanged)}),
                testing::IsEmpty());
    EXPECT_EQ(offsetof(Wrapper, m_channel), sizeof(void*)); // behind the pointer to the table
}
