// How the IQ-imbalance handler makes itself known to the platform, and what its test operations do: nothing.

#include "FlatCalls.h"
#include "InterfaceBroker.h"
#include "NumericLevels.h"
#include "TxIQImbalanceTest.h"

#include <memory>
#include <optional>

namespace {

/** What initialize() does on a platform that refuses nothing; the callback is not told of its channel. */
const std::vector<std::string> registrations{
    "0x800: Entering initialize", "module-register-c CTxIqImbalanceHandler",
    "callback-register CTxIQImbalanceHandler_OnPhaseActivation", "broker-register ITxIQImbalanceHandler_1"};

class IQImbalanceLifecycleTest : public TxIQImbalanceTest {
protected:
    /** What initialize() of the handler of `channel` registers: module and interface. */
    void expectNames(unsigned long channel, unsigned moduleId, const std::string& interfaceName) {
        CTxIQImbalanceHandler other(channel);
        EXPECT_EQ(other.initialize(), ResultOk);
        EXPECT_EQ(FlatCalls::modules().back().id, moduleId);
        EXPECT_EQ(FlatCalls::callbacks().back().moduleId, moduleId);
        EXPECT_EQ(InterfaceBroker::getInstance().getInterface<ITxIQImbalanceHandler>(interfaceName), &other);
        EXPECT_EQ(platform.interfaces().entries().count(interfaceName), 1U);
    }
    /** The story of an initialize() that ends after `steps` of the registrations, and with `message`. */
    static Lines endAfter(std::ptrdiff_t steps, const std::string& message) {
        Lines lines(registrations.begin(), registrations.begin() + steps);
        lines.push_back(message);
        return lines;
    }
    bool isPublished() { return platform.interfaces().entries().count("ITxIQImbalanceHandler_1") != 0; }
};

} // namespace

// Registration

TEST_F(IQImbalanceLifecycleTest, ConstructionMakesNoCallAndTellsNothing) {
    const CTxIQImbalanceHandler other(2);
    EXPECT_EQ(story, Lines{});
}

TEST_F(IQImbalanceLifecycleTest, RegistersModuleThenCallbackThenInterface) {
    EXPECT_EQ(handler.initialize(), ResultOk);
    EXPECT_EQ(story, registrations);
}

TEST_F(IQImbalanceLifecycleTest, ModuleNameIsSpelledWithALowerCaseQ) {
    handler.initialize();
    ASSERT_EQ(FlatCalls::modules().size(), 1U);
    EXPECT_EQ(FlatCalls::modules()[0].name, "CTxIqImbalanceHandler");
}

TEST_F(IQImbalanceLifecycleTest, CallbackIsRegisteredForPhase11WithOrder100AndPriority3) {
    handler.initialize();
    ASSERT_EQ(FlatCalls::callbacks().size(), 1U);
    const FlatCalls::Callback& callback = FlatCalls::callbacks()[0];
    EXPECT_EQ(callback.moduleId, 83001U);
    EXPECT_EQ(callback.name, "CTxIQImbalanceHandler_OnPhaseActivation");
    EXPECT_EQ(callback.order, 100U);
    EXPECT_EQ(callback.priority, 3);
    EXPECT_EQ(callback.reserved, 0U);
    EXPECT_EQ(callback.phases, (std::vector<unsigned long>{11}));
}

TEST_F(IQImbalanceLifecycleTest, CallbackRecordHoldsTheObjectAndItsPhaseCallback) {
    handler.initialize();
    ASSERT_EQ(FlatCalls::callbacks().size(), 1U);
    const ModuleCallbackRecord& record = *FlatCalls::callbacks()[0].record;
    EXPECT_EQ(record.context, &handler);
    EXPECT_EQ(record.onPhaseActivation, &CTxIQImbalanceHandler::onPhaseActivation);
}

TEST_F(IQImbalanceLifecycleTest, CallbackRecordIsPartOfTheObject) {
    handler.initialize();
    // Addresses are compared, of whatever type.
    const auto* const object = reinterpret_cast<const char*>(&handler);
    const auto* const record = reinterpret_cast<const char*>(FlatCalls::callbacks().at(0).record);
    EXPECT_GT(record, object);
    EXPECT_LE(record + sizeof(ModuleCallbackRecord), object + sizeof handler);
}

TEST_F(IQImbalanceLifecycleTest, ChannelZeroIsNotPartOfTheName) {
    expectNames(0, 83000, "ITxIQImbalanceHandler");
}

TEST_F(IQImbalanceLifecycleTest, OtherChannelsAreAddedToModuleAndName) {
    expectNames(1, 83001, "ITxIQImbalanceHandler_1");
    expectNames(2, 83002, "ITxIQImbalanceHandler_2");
}

TEST_F(IQImbalanceLifecycleTest, HighestChannelIsSignedInTheNameAndWrapsInTheModule) {
    expectNames(4'294'967'295U, 82999, "ITxIQImbalanceHandler_-1");
}

TEST_F(IQImbalanceLifecycleTest, ModuleManagerReachesTheSetUpInPhase11Only) {
    handler.initialize();
    EXPECT_TRUE(platform.modules().run(5).steps.empty());
    EXPECT_TRUE(platform.modules().run(20).steps.empty());
    const Standalone::PhaseReport report = platform.modules().run(11);
    ASSERT_EQ(report.steps.size(), 1U);
    EXPECT_EQ(report.steps[0].moduleId, 83001U);
    EXPECT_EQ(report.steps[0].code, ResultOk);
    EXPECT_EQ(platform.temperature().observerCount(), 1U);
}

// Refusals

TEST_F(IQImbalanceLifecycleTest, RefusedModuleGives8005AndRegistersNothingElse) {
    fail(Operation::moduleRegisterC, "CTxIqImbalanceHandler", 0x8042);
    EXPECT_EQ(handler.initialize(), static_cast<EAFResult>(0x8005));
    EXPECT_EQ(story, endAfter(2, "0x8005: Failed to register module with ModuleManager "
                                 "( EAFResult = 8042 )"));
    EXPECT_FALSE(isPublished());
}

TEST_F(IQImbalanceLifecycleTest, RefusedCallbackGives8000AndLeavesTheModule) {
    fail(Operation::callbackRegister, "CTxIQImbalanceHandler_OnPhaseActivation", 0x8043);
    EXPECT_EQ(handler.initialize(), ResultFailed);
    EXPECT_EQ(story, endAfter(3, "0x8005: Failed to register module callback"));
    EXPECT_EQ(platform.modules().moduleCount(), 1U);
    EXPECT_FALSE(isPublished());
}

TEST_F(IQImbalanceLifecycleTest, RefusedInterfaceGives8000AndLeavesModuleAndCallback) {
    fail(Operation::brokerRegister, "ITxIQImbalanceHandler_1", 0x8044);
    EXPECT_EQ(handler.initialize(), ResultFailed);
    EXPECT_EQ(story, endAfter(4, "0x8000: Failed to register IIQImbalanceHandler (EAFResult = 0x8044)"));
    EXPECT_EQ(platform.modules().run(11).steps.size(), 1U);
}

TEST_F(IQImbalanceLifecycleTest, SecondHandlerOfAChannelIsRefusedAsAModule) {
    handler.initialize();
    story.clear();
    CTxIQImbalanceHandler second(1);
    EXPECT_EQ(second.initialize(), static_cast<EAFResult>(0x8005));
    EXPECT_EQ(story, endAfter(2, "0x8005: Failed to register module with ModuleManager "
                                 "( EAFResult = 8002 )"));
}

TEST_F(IQImbalanceLifecycleTest, CodesBelow8000AreNoRefusal) {
    for (const std::int32_t code : {0x7FFF, -1}) {
        fail(Operation::moduleRegisterC, "", code);
        fail(Operation::callbackRegister, "", code);
        fail(Operation::brokerRegister, "", code);
        EXPECT_EQ(CTxIQImbalanceHandler(7).initialize(), ResultOk);
    }
}

TEST_F(IQImbalanceLifecycleTest, Code8000IsARefusal) {
    fail(Operation::brokerRegister, "", 0x8000);
    EXPECT_EQ(CTxIQImbalanceHandler(7).initialize(), ResultFailed);
    fail(Operation::callbackRegister, "", 0x8000);
    EXPECT_EQ(CTxIQImbalanceHandler(8).initialize(), ResultFailed);
    fail(Operation::moduleRegisterC, "", 0x8000);
    EXPECT_EQ(CTxIQImbalanceHandler(9).initialize(), static_cast<EAFResult>(0x8005));
}

TEST_F(IQImbalanceLifecycleTest, ResultsAreTheSameWhenNoMessageIsWanted) {
    platform.trace().setThreshold(Standalone::TraceLevel::off);
    fail(Operation::moduleRegisterC, "", 0x8042);
    EXPECT_EQ(handler.initialize(), static_cast<EAFResult>(0x8005));
    EXPECT_EQ(traces(), Lines{});
}

// Destruction

TEST_F(IQImbalanceLifecycleTest, DestructionUnregistersNothing) {
    auto other = std::make_unique<CTxIQImbalanceHandler>(2);
    equip(2);
    other->initialize();
    platform.modules().run(11);
    story.clear();
    other.reset();
    EXPECT_EQ(story, Lines{});
    EXPECT_EQ(platform.modules().moduleCount(), 1U);
    EXPECT_EQ(platform.interfaces().entries().count("ITxIQImbalanceHandler_2"), 1U);
    EXPECT_EQ(platform.temperature().observerCount(), 1U);
}

TEST_F(IQImbalanceLifecycleTest, DeletionThroughTheInterfaceMakesNoCall) {
    std::unique_ptr<ITxIQImbalanceHandler> published = std::make_unique<CTxIQImbalanceHandler>(2);
    published.reset();
    EXPECT_EQ(story, Lines{});
}

// Test operations

TEST_F(IQImbalanceLifecycleTest, SettersOfTheTestOperationsChangeNothing) {
    setUp();
    EXPECT_EQ(handler.testSetIQCompensationBar(5), ResultOk);
    EXPECT_EQ(handler.testSetIQMode(EIQMode{1}), ResultOk);
    EXPECT_EQ(handler.testSetSimulatorMode(ESimulatorMode{2}), ResultOk);
    EXPECT_EQ(story, Lines{});
    EXPECT_EQ(handler.doImbalanceCompensation(), ResultOk);
    EXPECT_EQ(written(), all("1", "2", "3", "4"));
}

TEST_F(IQImbalanceLifecycleTest, GettersOfTheTestOperationsLeaveTheValueAsItWas) {
    unsigned number = 77;
    EIQMode mode{78};
    ESimulatorMode simulatorMode{79};
    EXPECT_EQ(handler.testGetIQCompensationBar(&number), ResultOk);
    EXPECT_EQ(handler.testGetAdaptiveIQCompEnabled(&number), ResultOk);
    EXPECT_EQ(handler.testGetIQMode(&mode), ResultOk);
    EXPECT_EQ(handler.testGetSimulatorMode(&simulatorMode), ResultOk);
    EXPECT_EQ(number, 77U);
    EXPECT_EQ(mode, 78);
    EXPECT_EQ(simulatorMode, 79);
    EXPECT_EQ(story, Lines{});
}

TEST_F(IQImbalanceLifecycleTest, GettersOfTheTestOperationsTakeNull) {
    EXPECT_EQ(handler.testGetIQCompensationBar(nullptr), ResultOk);
    EXPECT_EQ(handler.testGetAdaptiveIQCompEnabled(nullptr), ResultOk);
    EXPECT_EQ(handler.testGetIQMode(nullptr), ResultOk);
    EXPECT_EQ(handler.testGetSimulatorMode(nullptr), ResultOk);
}

TEST_F(IQImbalanceLifecycleTest, SettersAreNotSeenByTheGetters) {
    unsigned bar = 77;
    EIQMode mode{78};
    handler.testSetIQCompensationBar(5);
    handler.testSetIQMode(EIQMode{1});
    handler.testGetIQCompensationBar(&bar);
    handler.testGetIQMode(&mode);
    EXPECT_EQ(bar, 77U);
    EXPECT_EQ(mode, 78);
}

// The trace object

TEST(IQImbalanceTrace, ObjectHasItsNameAndStartsWithThreshold3) {
    Standalone::Platform platform;
    CTxIQImbalanceHandler handler(1);
    NumericLevels::mapAllTo(OrbiTraceLevel{3});
    handler.doImbalanceCompensation();
    NumericLevels::mapAllTo(OrbiTraceLevel{4});
    handler.doImbalanceCompensation();
    NumericLevels::mapAllTo(std::nullopt);
    ASSERT_EQ(platform.trace().messages().size(), 1U);
    EXPECT_EQ(platform.trace().messages()[0].source, "QVX.FH");
}

TEST(IQImbalanceTrace, MessagesNameTheirSourceFileAndAreEnded) {
    Standalone::Platform platform;
    CTxIQImbalanceHandler(1).doImbalanceCompensation();
    ASSERT_EQ(platform.trace().messages().size(), 1U);
    EXPECT_EQ(platform.trace().messages()[0].file,
              "PlatformServices/FrequencyHandler/private/qm7373/CTxIQImbalanceHandler.cpp");
    EXPECT_TRUE(platform.trace().messages()[0].ended);
}
