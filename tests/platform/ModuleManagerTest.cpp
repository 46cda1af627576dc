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

TEST_F(ModuleManagerTest, ModuleThatUnregistersALaterOneDuringAPhaseSkipsOnlyThatOne) {
    LoggingModule first(19000, "first", log);
    LoggingModule second(19000, "second", log);
    LoggingModule third(19000, "third", log);
    add(first);
    add(second);
    add(third);
    first.onCall = [&] { EXPECT_EQ(manager.UnRegisterModule(&second), 0); };
    EXPECT_THAT(run(11), ElementsAre("first init", "third init"));
    EXPECT_EQ(report.steps.size(), 2U);
}

TEST_F(ModuleManagerTest, ModuleThatUnregistersAnEarlierOneDuringAPhaseDisturbsNobody) {
    LoggingModule first(19000, "first", log);
    LoggingModule second(19000, "second", log);
    LoggingModule third(19000, "third", log);
    add(first);
    add(second);
    add(third);
    second.onCall = [&] { EXPECT_EQ(manager.UnRegisterModule(&first), 0); };
    EXPECT_THAT(run(11), ElementsAre("first init", "second init", "third init"));
    second.onCall = [] {};
    EXPECT_THAT(run(11), ElementsAre("second init", "third init"));
}

TEST_F(ModuleManagerTest, ModuleThatGoesInItsOwnTurnIsReported) {
    auto leaving = std::make_unique<LoggingModule>(1, "leaving", log);
    LoggingModule next(2, "next", log);
    add(*leaving);
    add(next);
    leaving->onCall = [&] { EXPECT_EQ(manager.UnRegisterModule(leaving.get()), 0); };
    EXPECT_THAT(run(11), ElementsAre("leaving init", "next init"));
    ASSERT_EQ(report.steps.size(), 2U);
    EXPECT_EQ(report.steps[0].moduleId, 1U);
    EXPECT_EQ(report.steps[0].moduleName, "leaving");
    leaving.reset();
    EXPECT_THAT(run(11), ElementsAre("next init"));
}

TEST_F(ModuleManagerTest, ModuleThatLeavesAndReturnsDuringAPhaseHasTheTurnThatItHad) {
    LoggingModule first(19000, "first", log);
    LoggingModule second(19000, "second", log);
    LoggingModule third(19000, "third", log);
    add(first);
    add(second);
    add(third);
    first.onCall = [&] {
        EXPECT_EQ(manager.UnRegisterModule(&second), 0);
        EXPECT_EQ(add(second), 0);
    };
    EXPECT_THAT(run(11), ElementsAre("first init", "second init", "third init"));
    first.onCall = [] {};
    EXPECT_THAT(run(11), ElementsAre("first init", "third init", "second init"));
}

TEST_F(ModuleManagerTest, ModuleThatReturnsGoesBehindItsEquals) {
    LoggingModule first(19000, "first", log);
    LoggingModule second(19000, "second", log);
    LoggingModule higher(19001, "higher", log);
    add(first);
    add(second);
    add(higher);
    EXPECT_EQ(manager.UnRegisterModule(&first), 0);
    EXPECT_EQ(add(first), 0);
    EXPECT_THAT(run(11), ElementsAre("second init", "first init", "higher init"));
}

TEST_F(ModuleManagerTest, ModuleLeavesOnce) {
    LoggingModule module(1, "A", log);
    add(module);
    EXPECT_EQ(manager.UnRegisterModule(&module), 0);
    EXPECT_EQ(manager.UnRegisterModule(&module), Codes::notFound);
}

TEST_F(ModuleManagerTest, ModulesLeaveInAnyOrder) {
    LoggingModule a(2, "a", log);
    LoggingModule b(1, "b", log);
    LoggingModule c(2, "c", log);
    LoggingModule d(3, "d", log);
    LoggingModule e(2, "e", log);
    for (LoggingModule* const module : {&a, &b, &c, &d, &e}) {
        EXPECT_EQ(add(*module), 0);
    }
    EXPECT_THAT(run(11), ElementsAre("b init", "a init", "c init", "e init", "d init"));
    manager.UnRegisterModule(&c);
    EXPECT_THAT(run(11), ElementsAre("b init", "a init", "e init", "d init"));
    manager.UnRegisterModule(&d);
    EXPECT_THAT(run(11), ElementsAre("b init", "a init", "e init"));
    manager.UnRegisterModule(&b);
    EXPECT_THAT(run(11), ElementsAre("a init", "e init"));
    manager.UnRegisterModule(&a);
    EXPECT_THAT(run(11), ElementsAre("e init"));
    EXPECT_EQ(platform.modules().moduleCount(), 1U);
}

TEST_F(ModuleManagerTest, ThousandModulesOfOneIdentifierKeepTheOrderOfRegistration) {
    std::vector<std::unique_ptr<LoggingModule>> modules;
    Log all;
    Log withoutEveryThird;
    for (int number = 0; number < 1000; ++number) {
        const std::string name = std::to_string(number);
        modules.push_back(std::make_unique<LoggingModule>(19000, name, log));
        EXPECT_EQ(add(*modules.back()), 0);
        all.push_back(name + " init");
        if (number % 3 != 0) {
            withoutEveryThird.push_back(name + " init");
        }
    }
    EXPECT_EQ(run(11), all);
    for (std::size_t number = 0; number < 1000; number += 3) {
        modules[number].reset();
    }
    EXPECT_EQ(run(11), withoutEveryThird);
    EXPECT_EQ(platform.modules().moduleCount(), 666U);
}

TEST_F(ModuleManagerTest, SmallestIdentifierIsFirstAndLargestIsLast) {
    LoggingModule largest(0xFFFFFFFF, "largest", log);
    LoggingModule middle(0x80000000, "middle", log);
    LoggingModule smallest(0, "smallest", log);
    add(largest);
    add(middle);
    add(smallest);
    EXPECT_THAT(run(11), ElementsAre("smallest init", "middle init", "largest init"));
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

TEST_F(CModuleManagerTest, SameIdentifierMayBeTakenOnceInEachView) {
    LoggingModule classModule(83000, "class", log);
    EXPECT_EQ(CModuleManager_RegisterModule(83000, "C"), 0);
    EXPECT_EQ(add(classModule), 0);
    EXPECT_EQ(CModuleManager_RegisterModule(83000, "another"), Codes::alreadyThere);
    EXPECT_EQ(addCallback(83000, callback), 0);
    EXPECT_THAT(run(11), ElementsAre("A 11 3", "class init"));
    EXPECT_EQ(platform.modules().moduleCount(), 2U);
}

TEST_F(CModuleManagerTest, EqualsOfBothViewsAreCalledInTheOrderOfRegistration) {
    LoggingModule first(83000, "first", log);
    LoggingModule last(83000, "last", log);
    add(first);
    CModuleManager_RegisterModule(83000, "C");
    addCallback(83000, callback);
    add(last);
    EXPECT_THAT(run(11), ElementsAre("first init", "A 11 3", "last init"));
}

TEST_F(CModuleManagerTest, ClassModuleThatLeavesTakesNobodyOfTheSameIdentifierAlong) {
    LoggingModule classModule(83000, "class", log);
    CModuleManager_RegisterModule(83000, "C");
    addCallback(83000, callback);
    add(classModule);
    EXPECT_EQ(manager.UnRegisterModule(&classModule), 0);
    EXPECT_THAT(run(11), ElementsAre("A 11 3"));
    EXPECT_EQ(CModuleManager_RegisterModule(83000, "another"), Codes::alreadyThere);
}

TEST_F(CModuleManagerTest, CallbacksOfOneOrderAreCalledInTheOrderOfRegistration) {
    LoggingCallback second{log, "B"};
    LoggingCallback early{log, "early"};
    CModuleManager_RegisterModule(83000, "C");
    addCallback(83000, callback);
    addCallback(83000, second);
    addCallback(83000, early, 99);
    EXPECT_THAT(run(11), ElementsAre("early 11 3", "A 11 3", "B 11 3"));
}

TEST_F(CModuleManagerTest, CallbackThatJoinsDuringAPhaseWaitsForTheNext) {
    LoggingModule first(1, "first", log);
    LoggingCallback late{log, "late"};
    add(first);
    CModuleManager_RegisterModule(83000, "C");
    addCallback(83000, callback);
    first.onCall = [&] { EXPECT_EQ(addCallback(83000, late), 0); };
    EXPECT_THAT(run(11), ElementsAre("first init", "A 11 3"));
    first.onCall = [] {};
    EXPECT_THAT(run(11), ElementsAre("first init", "A 11 3", "late 11 3"));
}

TEST_F(CModuleManagerTest, ModuleThatJoinsDuringAPhaseWaitsForTheNext) {
    LoggingModule first(1, "first", log);
    add(first);
    first.onCall = [&] {
        CModuleManager_RegisterModule(83000, "C");
        addCallback(83000, callback);
    };
    EXPECT_THAT(run(11), ElementsAre("first init"));
    first.onCall = [] {};
    EXPECT_THAT(run(11), ElementsAre("first init", "A 11 3"));
}

TEST_F(CModuleManagerTest, ThousandModulesAreCalledByAscendingIdentifierHoweverTheyCame) {
    std::vector<std::unique_ptr<LoggingCallback>> callbacks;
    Log ascending;
    for (unsigned number = 0; number < 1000; ++number) {
        const unsigned id =
            83000 + number * 7 % 1000; // each of 1000 identifiers once: 7 and 1000 share no factor
        callbacks.push_back(std::make_unique<LoggingCallback>(log, std::to_string(id)));
        EXPECT_EQ(CModuleManager_RegisterModule(id, "C"), 0);
        EXPECT_EQ(addCallback(id, *callbacks.back()), 0);
        ascending.push_back(std::to_string(83000 + number) + " 11 3");
    }
    EXPECT_EQ(run(11), ascending);
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
