// The module manager, in both views, and the base of every module: doors to the platform's ModuleSequencer.

#include "CModuleManager.h"
#include "CModuleManager_c.h"
#include "standalone/Codes.h"
#include "standalone/Platform.h"

#include <algorithm>
#include <new>
#include <string>

using Standalone::Platform;
namespace Codes = Standalone::Codes;

// The contract gives the name by reference. NOLINTNEXTLINE(modernize-pass-by-value)
ModuleInterface::ModuleInterface(unsigned moduleId, const std::string& moduleName, unsigned channel,
                                 unsigned /*reserved*/, const unsigned long* phaseFilter,
                                 unsigned long phaseCount)
    : m_moduleId(moduleId),
      m_channel(channel),
      m_phaseFilter(phaseFilter),
      m_phaseCount(phaseCount) {
    try {
        m_moduleName = moduleName;
    } catch (const std::bad_alloc&) { // NOLINT(bugprone-empty-catch): a module without a name works
    }
}

ModuleInterface::~ModuleInterface() {
    if (Platform* const platform = Platform::current()) {
        platform->modules().forget(this);
    }
}

bool ModuleInterface::wantsPhase(unsigned long phase) const {
    return m_phaseFilter != nullptr &&
           std::find(m_phaseFilter, m_phaseFilter + m_phaseCount, phase) != m_phaseFilter + m_phaseCount;
}

EAFResult ModuleInterface::onPhaseActivation(unsigned long phase, ECallbackPriority /*priority*/) {
    switch (phase) {
    case Standalone::phaseModuleInit:
        return onModuleInit();
    case Standalone::phaseStorageObjectsRetrieved:
        return onPhaseModuleStorageObjectsRetreived();
    case Standalone::phasePostFrameformatLoad:
        return onPhasePostFrameformatLoad();
    default:
        return ResultOk;
    }
}

EAFResult ModuleInterface::onModuleInit() {
    return ResultOk;
}
EAFResult ModuleInterface::onPhaseModuleStorageObjectsRetreived() {
    return ResultOk;
}
EAFResult ModuleInterface::onPhasePostFrameformatLoad() {
    return ResultOk;
}
EAFResult ModuleInterface::onPhaseEndFrameformatLoad() {
    return ResultOk;
}
EAFResult ModuleInterface::onPhaseStart() {
    return ResultOk;
}
EAFResult ModuleInterface::onPhaseStop() {
    return ResultOk;
}
EAFResult ModuleInterface::onPhaseFrameformatLoad() {
    return ResultOk;
}
EAFResult ModuleInterface::onPhasePreFrameformatLoad() {
    return ResultOk;
}
EAFResult ModuleInterface::onPhaseSetRadioChannelNearEndFinished() {
    return ResultOk;
}

CModuleManager& CModuleManager::GetInstance() {
    static CModuleManager manager;
    return manager;
}

EAFResult CModuleManager::RegisterModule(ModuleInterface* module) {
    Platform* const platform = Platform::current();
    return static_cast<EAFResult>(platform != nullptr ? platform->modules().add(module) : Codes::noPlatform);
}

EAFResult CModuleManager::UnRegisterModule(ModuleInterface* module) {
    Platform* const platform = Platform::current();
    return static_cast<EAFResult>(platform != nullptr ? platform->modules().remove(module)
                                                      : Codes::noPlatform);
}

EAFResult CModuleManager_RegisterModule(unsigned moduleId, const char* moduleName) {
    Platform* const platform = Platform::current();
    return static_cast<EAFResult>(platform != nullptr ? platform->modules().add(moduleId, moduleName)
                                                      : Codes::noPlatform);
}

EAFResult CModuleManager_RegisterCallback(unsigned moduleId, const char* callbackName, unsigned order,
                                          ModuleCallbackRecord* callback, ECallbackPriority priority,
                                          unsigned /*reserved*/, const unsigned long* phases,
                                          unsigned long phaseCount) {
    Platform* const platform = Platform::current();
    return static_cast<EAFResult>(
        platform != nullptr ? platform->modules().addCallback(moduleId, callbackName, order, callback,
                                                              priority, phases, phaseCount)
                            : Codes::noPlatform);
}
