#include "CModuleManager.h"
#include "CModuleManager_c.h"
#include "conformance/Rule.h"
#include "conformance/Together.h"

#include <array>

namespace Conformance {

namespace {

constexpr const char* construction = "FrequencyHandler: its construction";
constexpr const char* startUp = "FrequencyHandler: onModuleInit, onPhaseModuleStorageObjectsRetreived, "
                                "onPhasePostFrameformatLoad";
constexpr const char* destruction = "FrequencyHandler: its destruction";
constexpr const char* compensation = "CTxIQImbalanceHandler::initialize";

constexpr std::array<unsigned long, 3> startUpPhases{11, 5, 20};

/** Writes down which of its operations are called. */
class LoggingModule : public ModuleInterface {
public:
    explicit LoggingModule(unsigned id = 4711)
        : ModuleInterface(id, "Module of conformance", 7, 0, startUpPhases.data(), startUpPhases.size()) {}

    EAFResult onModuleInit() override { return note("init "); }
    EAFResult onPhaseModuleStorageObjectsRetreived() override { return note("storage "); }
    EAFResult onPhasePostFrameformatLoad() override { return note("frameformat "); }

    std::string called;

private:
    EAFResult note(const char* operation) {
        called += operation;
        return ResultOk;
    }
};

/** One whose operations are those of the platform. */
class PlainModule : public ModuleInterface {
public:
    PlainModule() : ModuleInterface(4712, std::string(100, 'm'), 7, 0, startUpPhases.data(), 3) {}
};

void runPhases(Adapter& adapter, const std::vector<unsigned long>& phases) {
    for (const unsigned long phase : phases) {
        need(adapter.runPhase(phase), "run a phase");
    }
}

void add(ModuleInterface& module) {
    hold(isSuccess(CModuleManager::GetInstance().RegisterModule(&module)), "RegisterModule fails");
}

void isOne(Adapter& /*adapter*/) {
    hold(isOneForAll([] { return static_cast<const void*>(&CModuleManager::GetInstance()); }),
         "eight threads that were first at the same time got different module managers");
}

void baseKeepsWhatItIsGiven(Adapter& /*adapter*/) {
    const PlainModule module;
    holdSame("getModuleId()", module.getModuleId(), 4712U);
    holdSame("getModuleName()", module.getModuleName(), std::string(100, 'm'));
    holdSame("getModuleChannel()", module.getModuleChannel(), 7U);
    hold(module.wantsPhase(11) && module.wantsPhase(5) && module.wantsPhase(20),
         "wantsPhase() does not say so of a phase in the filter");
    hold(!module.wantsPhase(12), "wantsPhase() says so of phase 12, which is not in the filter");
}

void baseDoesNothing(Adapter& /*adapter*/) {
    PlainModule module;
    const std::array<EAFResult, 9> answers{module.onModuleInit(),
                                           module.onPhaseModuleStorageObjectsRetreived(),
                                           module.onPhasePostFrameformatLoad(),
                                           module.onPhaseEndFrameformatLoad(),
                                           module.onPhaseStart(),
                                           module.onPhaseStop(),
                                           module.onPhaseFrameformatLoad(),
                                           module.onPhasePreFrameformatLoad(),
                                           module.onPhaseSetRadioChannelNearEndFinished()};
    for (const EAFResult answer : answers) {
        holdSame("an operation of the base answers", static_cast<std::int32_t>(answer), 0);
    }
}

void activationCallsTheOperation(Adapter& /*adapter*/) {
    LoggingModule module;
    for (const unsigned long phase : startUpPhases) {
        hold(isSuccess(module.onPhaseActivation(phase, ECallbackPriority{0})), "onPhaseActivation fails");
    }
    holdSame("phases 11, 5, 20 called", module.called, std::string("init storage frameformat "));
}

void activationGivesTheAnswer(Adapter& /*adapter*/) {
    class FailingModule : public ModuleInterface {
    public:
        FailingModule() : ModuleInterface(4715, "Module", 7, 0, startUpPhases.data(), 3) {}
        EAFResult onModuleInit() override { return ResultFailed; }
    } module;
    hold(isFailure(module.onPhaseActivation(11, ECallbackPriority{0})),
         "onPhaseActivation succeeds, and the operation of the phase failed");
    hold(isSuccess(module.onPhaseActivation(5, ECallbackPriority{0})),
         "onPhaseActivation fails, and the operation of the phase did not");
}

void phasesReachModules(Adapter& adapter) {
    LoggingModule module;
    add(module);
    runPhases(adapter, {11, 5, 20});
    holdSame("phases 11, 5, 20 called", module.called, std::string("init storage frameformat "));
    hold(isSuccess(CModuleManager::GetInstance().UnRegisterModule(&module)), "UnRegisterModule fails");
}

void otherPhasesDoNot(Adapter& adapter) {
    LoggingModule module;
    add(module);
    runPhases(adapter, {12, 6});
    holdSame("phases 12 and 6 called", module.called, std::string());
    CModuleManager::GetInstance().UnRegisterModule(&module);
}

void goneModulesAreLeftAlone(Adapter& adapter) {
    LoggingModule stays(4713);
    add(stays);
    {
        LoggingModule goes(4711);
        add(goes);
        hold(isSuccess(CModuleManager::GetInstance().UnRegisterModule(&goes)), "UnRegisterModule fails");
        runPhases(adapter, {11});
        holdSame("a module that was unregistered was called", goes.called, std::string());
    }
    runPhases(adapter, {5});
    holdSame("the module that stayed was called", stays.called, std::string("init storage "));
    CModuleManager::GetInstance().UnRegisterModule(&stays);
}

void modulesAreNotOwned(Adapter& /*adapter*/) {
    class MortalModule : public ModuleInterface {
    public:
        explicit MortalModule(bool& isGone)
            : ModuleInterface(4716, "Module", 7, 0, startUpPhases.data(), 3),
              m_isGone(isGone) {}
        MortalModule(const MortalModule&) = delete;
        MortalModule& operator=(const MortalModule&) = delete;
        ~MortalModule() override { m_isGone = true; }

    private:
        bool& m_isGone;
    };
    bool isGone = false;
    auto* const module =
        new MortalModule(isGone); // NOLINT(cppcoreguidelines-owning-memory): whoever takes it
    add(*module);
    CModuleManager::GetInstance().UnRegisterModule(module);
    hold(!isGone, "a module that was unregistered is destroyed");
    delete module; // NOLINT(cppcoreguidelines-owning-memory)
}

void strangersMayLeave(Adapter& adapter) {
    LoggingModule stays(4713);
    LoggingModule stranger(4711);
    add(stays);
    static_cast<void>(CModuleManager::GetInstance().UnRegisterModule(&stranger));
    runPhases(adapter, {11});
    holdSame("a registered module, after another was unregistered that was not registered, was called",
             stays.called, std::string("init "));
    CModuleManager::GetInstance().UnRegisterModule(&stays);
}

/** What a callback in C was called with. */
struct Callback {
    static EAFResult note(void* context, unsigned long phase, ECallbackPriority priority) {
        static_cast<Callback*>(context)->called +=
            std::to_string(phase) + "/" + std::to_string(static_cast<int>(priority)) + " ";
        return ResultOk;
    }

    std::string called;
    ModuleCallbackRecord record{this, &Callback::note};
};

constexpr std::array<unsigned long, 1> initialisation{11};

void addCallback(unsigned id, unsigned order, Callback& callback) {
    hold(isSuccess(CModuleManager_RegisterCallback(id, "Callback of conformance", order, &callback.record,
                                                   ECallbackPriority{3}, 0, initialisation.data(), 1)),
         "CModuleManager_RegisterCallback fails");
}

void callbacksAreCalled(Adapter& adapter) {
    Callback callback;
    hold(isSuccess(CModuleManager_RegisterModule(4714, "Module of conformance")),
         "CModuleManager_RegisterModule fails");
    addCallback(4714, 1, callback);
    runPhases(adapter, {5, 11});
    holdSame("phases 5 and 11 called (phase/priority)", callback.called, std::string("11/3 "));
}

void callbackRecordIsKeptByAddress(Adapter& adapter) {
    Callback callback;
    Callback late;
    hold(isSuccess(CModuleManager_RegisterModule(4714, "Module of conformance")),
         "CModuleManager_RegisterModule fails");
    addCallback(4714, 1, callback);
    callback.record.context = &late;
    runPhases(adapter, {11});
    hold(callback.called.empty() && late.called == "11/3 ",
         "a context that was put into the record after its registration is not the one that is called");
}

void phasesAreKeptByAddress(Adapter& adapter) {
    Callback callback;
    std::array<unsigned long, 1> phases{12};
    hold(isSuccess(CModuleManager_RegisterModule(4714, "Module of conformance")),
         "CModuleManager_RegisterModule fails");
    hold(isSuccess(CModuleManager_RegisterCallback(4714, "Callback of conformance", 1, &callback.record,
                                                   ECallbackPriority{3}, 0, phases.data(), 1)),
         "CModuleManager_RegisterCallback fails");
    phases.front() = 11;
    runPhases(adapter, {12, 11});
    holdSame("phases 12 and 11 called, of which the list has 11 since its registration (phase/priority)",
             callback.called, std::string("11/3 "));
}

void callbacksHaveTheirOrder(Adapter& adapter) {
    struct Ordered {
        static EAFResult note(void* context, unsigned long /*phase*/, ECallbackPriority /*priority*/) {
            auto* const self = static_cast<Ordered*>(context);
            *self->order += self->name;
            return ResultOk;
        }
        std::string* order = nullptr;
        char name = 0;
        ModuleCallbackRecord record{this, &Ordered::note};
    };
    std::string order;
    Ordered second{&order, '2'};
    Ordered first{&order, '1'};
    hold(isSuccess(CModuleManager_RegisterModule(4714, "Module of conformance")),
         "CModuleManager_RegisterModule fails");
    for (Ordered* const one : {&second, &first}) {
        hold(isSuccess(CModuleManager_RegisterCallback(4714, "Callback of conformance",
                                                       one == &first ? 1U : 2U, &one->record,
                                                       ECallbackPriority{0}, 0, initialisation.data(), 1)),
             "CModuleManager_RegisterCallback fails");
    }
    runPhases(adapter, {11});
    holdSame("callbacks with the orders 2 and 1 were called", order, std::string("12"));
}

void identifierIsRegisteredOnce(Adapter& /*adapter*/) {
    hold(isSuccess(CModuleManager_RegisterModule(4714, "Module of conformance")),
         "CModuleManager_RegisterModule fails");
    hold(isFailure(CModuleManager_RegisterModule(4714, "Another of conformance")),
         "an identifier that is taken can be registered again");
}

} // namespace

Rules moduleRules() {
    return {
        {"modules.manager-is-one",
         "The module manager is one object for the process, also when several threads are first.",
         construction, isOne},
        {"modules.base-keeps-what-it-is-given", "ModuleInterface keeps number, name, channel and phases.",
         construction, baseKeepsWhatItIsGiven},
        {"modules.base-does-nothing", "The operations of ModuleInterface itself do nothing and answer 0.",
         "FrequencyHandler: phases that it does not override", baseDoesNothing},
        {"modules.activation-calls-the-operation",
         "ModuleInterface::onPhaseActivation calls the operation that stands for the phase.", startUp,
         activationCallsTheOperation},
        {"modules.activation-gives-the-answer",
         "ModuleInterface::onPhaseActivation answers what that operation does.", startUp,
         activationGivesTheAnswer},
        {"modules.phases-reach-modules", "A registered module is called in each phase that its filter names.",
         startUp, phasesReachModules},
        {"modules.other-phases-do-not", "It is not called in others.", startUp, otherPhasesDoNot},
        {"modules.gone-modules-are-left-alone",
         "A module that was unregistered is not called, and the others are.", destruction,
         goneModulesAreLeftAlone},
        {"modules.are-not-owned", "A module is its owner's, and is not destroyed.", destruction,
         modulesAreNotOwned},
        {"modules.strangers-may-leave",
         "A module that is not registered can be unregistered, and others stay.",
         "FrequencyHandler: destruction of one that could not be registered", strangersMayLeave},
        {"c-modules.callbacks-are-called",
         "A callback is called in its phases, with its context and its priority.", compensation,
         callbacksAreCalled},
        {"c-modules.record-is-kept-by-address", "Its record is kept by address, and not copied.",
         compensation, callbackRecordIsKeptByAddress},
        {"c-modules.phases-are-kept-by-address", "Its list of phases is kept by address, and not copied.",
         compensation, phasesAreKeptByAddress},
        {"c-modules.callbacks-have-their-order", "Callbacks of one module are called in their order.",
         "components with several callbacks", callbacksHaveTheirOrder},
        {"c-modules.identifier-is-registered-once", "An identifier can be registered once.", compensation,
         identifierIsRegisteredOnce},
    };
}

} // namespace Conformance
