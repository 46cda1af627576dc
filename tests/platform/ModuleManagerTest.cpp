#include "CModuleManager.h"
#include "CModuleManager_c.h"
#include "PlatformFixture.h"

#include <array>
#include <functional>
#include <memory>
#include <type_traits>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
namespace Codes = Standalone::Codes;

using Log = std::vector<std::string>;

constexpr std::array<unsigned long, 3> startUpPhases{11, 5, 20};
constexpr std::array<unsigned long, 1> onlyPhase5{5};

/** Writes down which of its operations the platform calls. */
class LoggingModule : public ModuleInterface {
public:
    LoggingModule(unsigned id, const std::string& name, Log& log,
                  const unsigned long* filter = startUpPhases.data(), unsigned long filterLength = 3)
        : ModuleInterface(id, name, 7, 0, filter, filterLength),
          m_log(log) {}

    EAFResult onModuleInit() override { return enter("init"); }
    EAFResult onPhaseModuleStorageObjectsRetreived() override { return enter("storage"); }
    EAFResult onPhasePostFrameformatLoad() override { return enter("frameformat"); }

    EAFResult code = ResultOk;
    std::function<void()> onCall = [] {};

private:
    EAFResult enter(const std::string& operation) {
        m_log.push_back(getModuleName() + " " + operation);
        onCall();
        return code;
    }

    Log& m_log;
};

class ModuleManagerTest : public PlatformFixture {
protected:
    EAFResult add(ModuleInterface& module) { return manager.RegisterModule(&module); }
    Log run(unsigned long phase) {
        log.clear();
        report = platform.modules().run(phase);
        return log;
    }

    CModuleManager& manager = CModuleManager::GetInstance();
    Log log;
    Standalone::PhaseReport report{};
};

TEST_F(ModuleManagerTest, IsOneObjectForTheProcess) {
    EXPECT_EQ(&manager, &CModuleManager::GetInstance());
    EXPECT_FALSE(std::is_copy_constructible_v<CModuleManager> || std::is_copy_assignable_v<CModuleManager>);
}

TEST_F(ModuleManagerTest, Phase11IsModuleInitialisation) {
    LoggingModule module(19000, "A", log);
    add(module);
    EXPECT_THAT(run(11), ElementsAre("A init"));
}

TEST_F(ModuleManagerTest, Phase5IsStorageObjectsRetrieved) {
    LoggingModule module(19000, "A", log);
    add(module);
    EXPECT_THAT(run(5), ElementsAre("A storage"));
}

TEST_F(ModuleManagerTest, Phase20IsPostFrameformatLoad) {
    LoggingModule module(19000, "A", log);
    add(module);
    EXPECT_THAT(run(20), ElementsAre("A frameformat"));
}

TEST_F(ModuleManagerTest, PhaseOutsideTheFilterCallsNothing) {
    LoggingModule module(19000, "A", log, onlyPhase5.data(), 1);
    add(module);
    EXPECT_THAT(run(11), IsEmpty());
    EXPECT_THAT(report.steps, IsEmpty());
    EXPECT_THAT(run(5), ElementsAre("A storage"));
}

TEST_F(ModuleManagerTest, ModuleWithoutFilterIsNeverCalled) {
    LoggingModule module(19000, "A", log, nullptr, 0);
    add(module);
    EXPECT_THAT(run(11), IsEmpty());
}

TEST_F(ModuleManagerTest, BaseVersionOfAnUnknownPhaseSucceeds) {
    LoggingModule module(19000, "A", log);
    EXPECT_EQ(module.onPhaseActivation(99, ECallbackPriority{0}), 0);
    EXPECT_THAT(log, IsEmpty());
}

TEST_F(ModuleManagerTest, BaseVersionsOfAllPhasesSucceed) {
    ModuleInterface module(1, "Bare", 0, 0, startUpPhases.data(), 3);
    EXPECT_EQ(module.onModuleInit(), 0);
    EXPECT_EQ(module.onPhaseModuleStorageObjectsRetreived(), 0);
    EXPECT_EQ(module.onPhasePostFrameformatLoad(), 0);
    EXPECT_EQ(module.onPhaseEndFrameformatLoad(), 0);
    EXPECT_EQ(module.onPhaseStart(), 0);
    EXPECT_EQ(module.onPhaseStop(), 0);
    EXPECT_EQ(module.onPhaseFrameformatLoad(), 0);
    EXPECT_EQ(module.onPhasePreFrameformatLoad(), 0);
    EXPECT_EQ(module.onPhaseSetRadioChannelNearEndFinished(), 0);
}

TEST_F(ModuleManagerTest, ModulesAreCalledByAscendingIdentifier) {
    LoggingModule high(300, "high", log);
    LoggingModule low(100, "low", log);
    add(high);
    add(low);
    EXPECT_THAT(run(11), ElementsAre("low init", "high init"));
}

TEST_F(ModuleManagerTest, EqualIdentifiersAreCalledInTheOrderOfRegistration) {
    LoggingModule first(19000, "first", log);
    LoggingModule second(19000, "second", log);
    add(first);
    add(second);
    EXPECT_THAT(run(11), ElementsAre("first init", "second init"));
}

TEST_F(ModuleManagerTest, PhaseStopsAtTheFirstFailingModule) {
    LoggingModule good(1, "good", log);
    LoggingModule bad(2, "bad", log);
    LoggingModule never(3, "never", log);
    bad.code = ResultFailed;
    add(good);
    add(bad);
    add(never);
    EXPECT_THAT(run(11), ElementsAre("good init", "bad init"));
}

TEST_F(ModuleManagerTest, ReportNamesTheFailingModule) {
    LoggingModule bad(19000, "bad", log);
    bad.code = static_cast<EAFResult>(0x8123);
    add(bad);
    run(11);
    EXPECT_FALSE(report.succeeded());
    ASSERT_EQ(report.steps.size(), 1U);
    EXPECT_EQ(report.steps[0].moduleId, 19000U);
    EXPECT_EQ(report.steps[0].moduleName, "bad");
    EXPECT_EQ(report.steps[0].channel, 7U);
    EXPECT_EQ(report.steps[0].code, 0x8123);
}

TEST_F(ModuleManagerTest, Code7FFFOfAModuleIsASuccess) {
    LoggingModule odd(1, "odd", log);
    LoggingModule next(2, "next", log);
    odd.code = static_cast<EAFResult>(0x7FFF);
    add(odd);
    add(next);
    EXPECT_THAT(run(11), ElementsAre("odd init", "next init"));
    EXPECT_TRUE(report.succeeded());
}

TEST_F(ModuleManagerTest, PhaseWithoutModulesSucceeds) {
    run(11);
    EXPECT_TRUE(report.succeeded());
    EXPECT_EQ(report.phase, 11U);
}

TEST_F(ModuleManagerTest, PhaseCanBeRunAgain) {
    LoggingModule module(1, "A", log);
    module.code = ResultFailed;
    add(module);
    run(20);
    module.code = ResultOk;
    EXPECT_THAT(run(20), ElementsAre("A frameformat"));
    EXPECT_TRUE(report.succeeded());
}

TEST_F(ModuleManagerTest, ModuleIsRegisteredOnce) {
    LoggingModule module(1, "A", log);
    add(module);
    EXPECT_EQ(add(module), Codes::alreadyThere);
    EXPECT_THAT(run(11), ElementsAre("A init"));
}

TEST_F(ModuleManagerTest, NullModuleIsRefused) {
    EXPECT_EQ(manager.RegisterModule(nullptr), Codes::badArgument);
    EXPECT_EQ(manager.UnRegisterModule(nullptr), Codes::badArgument);
}

TEST_F(ModuleManagerTest, UnregisteredModuleIsNotCalled) {
    LoggingModule module(1, "A", log);
    add(module);
    EXPECT_EQ(manager.UnRegisterModule(&module), 0);
    EXPECT_THAT(run(11), IsEmpty());
    EXPECT_EQ(platform.modules().moduleCount(), 0U);
}

TEST_F(ModuleManagerTest, UnregisteringAStrangerFails) {
    LoggingModule module(1, "A", log);
    EXPECT_EQ(manager.UnRegisterModule(&module), Codes::notFound);
}

TEST_F(ModuleManagerTest, DestroyedModuleIsNotCalledEvenIfItsUnregistrationFailed) {
    auto module = std::make_unique<LoggingModule>(1, "A", log);
    add(*module);
    fail(Standalone::Operation::moduleUnregister, "A", 0x8000);
    EXPECT_EQ(manager.UnRegisterModule(module.get()), ResultFailed);
    module.reset();
    EXPECT_THAT(run(11), IsEmpty());
}

TEST_F(ModuleManagerTest, ModuleThatLeavesDuringAPhaseIsNotCalled) {
    LoggingModule first(1, "first", log);
    auto second = std::make_unique<LoggingModule>(2, "second", log);
    add(first);
    add(*second);
    first.onCall = [&] { second.reset(); };
    EXPECT_THAT(run(11), ElementsAre("first init"));
}

TEST_F(ModuleManagerTest, ModuleThatJoinsDuringAPhaseWaitsForTheNext) {
    LoggingModule first(1, "first", log);
    LoggingModule second(2, "second", log);
    add(first);
    first.onCall = [&] { add(second); };
    EXPECT_THAT(run(11), ElementsAre("first init"));
    EXPECT_THAT(run(11), ElementsAre("first init", "second init"));
}

/** A module of the C view; its callbacks write `text` to the log. */
struct LoggingCallback {
    LoggingCallback(Log& callbackLog, std::string callbackText)
        : log(callbackLog),
          text(std::move(callbackText)) {}

    static EAFResult call(void* context, unsigned long phase, ECallbackPriority priority) {
        auto* const self = static_cast<LoggingCallback*>(context);
        self->log.push_back(self->text + " " + std::to_string(phase) + " " + std::to_string(priority));
        return self->code;
    }

    Log& log;
    std::string text;
    EAFResult code = ResultOk;
    ModuleCallbackRecord record{this, &LoggingCallback::call};
};

constexpr ECallbackPriority priority3{3};

class CModuleManagerTest : public ModuleManagerTest {
protected:
    static EAFResult addCallback(unsigned moduleId, LoggingCallback& callback, unsigned order = 100) {
        return CModuleManager_RegisterCallback(moduleId, "callback", order, &callback.record, priority3, 0,
                                               startUpPhases.data(), 3);
    }

    LoggingCallback callback{log, "A"};
};

TEST_F(CModuleManagerTest, CallbackGetsItsContextThePhaseAndItsPriority) {
    EXPECT_EQ(CModuleManager_RegisterModule(83000, "A"), 0);
    EXPECT_EQ(addCallback(83000, callback), 0);
    EXPECT_THAT(run(11), ElementsAre("A 11 3"));
}

TEST_F(CModuleManagerTest, PhaseOutsideTheListCallsNothing) {
    CModuleManager_RegisterModule(83000, "A");
    addCallback(83000, callback);
    EXPECT_THAT(run(12), IsEmpty());
    EXPECT_THAT(report.steps, IsEmpty());
}

TEST_F(CModuleManagerTest, ModuleWithoutCallbackHasNoTurn) {
    EXPECT_EQ(CModuleManager_RegisterModule(83000, "A"), 0);
    run(11);
    EXPECT_THAT(report.steps, IsEmpty());
}

TEST_F(CModuleManagerTest, CallbacksOfAModuleAreCalledByTheirOrder) {
    LoggingCallback early{log, "early"};
    LoggingCallback late{log, "late"};
    CModuleManager_RegisterModule(83000, "A");
    addCallback(83000, late, 200);
    addCallback(83000, early, 100);
    EXPECT_THAT(run(5), ElementsAre("early 5 3", "late 5 3"));
}

TEST_F(CModuleManagerTest, FailingCallbackEndsThePhase) {
    LoggingCallback second{log, "second"};
    LoggingCallback otherModule{log, "other"};
    CModuleManager_RegisterModule(83000, "A");
    CModuleManager_RegisterModule(83001, "B");
    addCallback(83000, callback);
    addCallback(83000, second);
    addCallback(83001, otherModule);
    callback.code = static_cast<EAFResult>(0x801C);
    EXPECT_THAT(run(11), ElementsAre("A 11 3"));
    ASSERT_EQ(report.steps.size(), 1U);
    EXPECT_EQ(report.steps[0].code, 0x801C);
}

TEST_F(CModuleManagerTest, BothViewsShareOneOrderByIdentifier) {
    LoggingModule classModule(83001, "class", log);
    LoggingCallback last{log, "C"};
    CModuleManager_RegisterModule(83002, "C");
    addCallback(83002, last);
    add(classModule);
    CModuleManager_RegisterModule(83000, "A");
    addCallback(83000, callback);
    EXPECT_THAT(run(11), ElementsAre("A 11 3", "class init", "C 11 3"));
}

TEST_F(CModuleManagerTest, IdentifierIsRegisteredOnce) {
    CModuleManager_RegisterModule(83000, "A");
    EXPECT_EQ(CModuleManager_RegisterModule(83000, "B"), Codes::alreadyThere);
    addCallback(83000, callback);
    run(11);
    EXPECT_EQ(report.steps.at(0).moduleName, "A");
}

TEST_F(CModuleManagerTest, ModuleWithoutNameIsRefused) {
    EXPECT_EQ(CModuleManager_RegisterModule(83000, nullptr), Codes::badArgument);
}

TEST_F(CModuleManagerTest, CallbackOfAnUnknownModuleIsRefused) {
    EXPECT_EQ(addCallback(83000, callback), Codes::notFound);
}

TEST_F(CModuleManagerTest, ClassModuleTakesNoCallbacks) {
    LoggingModule classModule(19000, "class", log);
    add(classModule);
    EXPECT_EQ(addCallback(19000, callback), Codes::notFound);
}

TEST_F(CModuleManagerTest, IncompleteCallbacksAreRefused) {
    ModuleCallbackRecord withoutFunction{&callback, nullptr};
    ModuleCallbackRecord& whole = callback.record;
    CModuleManager_RegisterModule(83000, "A");
    const auto registerIt = [](const char* name, ModuleCallbackRecord* record, const unsigned long* phases) {
        return CModuleManager_RegisterCallback(83000, name, 100, record, priority3, 0, phases, 1);
    };
    EXPECT_EQ(registerIt(nullptr, &whole, startUpPhases.data()), Codes::badArgument);
    EXPECT_EQ(registerIt("callback", nullptr, startUpPhases.data()), Codes::badArgument);
    EXPECT_EQ(registerIt("callback", &withoutFunction, startUpPhases.data()), Codes::badArgument);
    EXPECT_EQ(registerIt("callback", &whole, nullptr), Codes::badArgument);
}

TEST_F(CModuleManagerTest, CallbackWhoseFunctionWasTakenOutIsNotCalled) {
    CModuleManager_RegisterModule(83000, "A");
    addCallback(83000, callback);
    callback.record.onPhaseActivation = nullptr;
    EXPECT_THAT(run(11), IsEmpty());
}

} // namespace
