#ifndef PLATFORM_CONTRACT_CMODULEMANAGER_H
#define PLATFORM_CONTRACT_CMODULEMANAGER_H

#include "CModuleManager_c.h"
#include "ResultCode.h"
#include "Visibility.h"

#include <string>

/**
 * Base of every module object. The module manager calls the operations of the phases that the module's filter
 * names, on a thread of its own choice and never two at a time for one module. Supplied by the platform: its
 * versions of the operations do nothing and answer 0, except for onPhaseActivation.
 */
class RADIO_CLASS ModuleInterface {
public:
    /**
     * `phaseFilter` is an array of `phaseCount` phase identifiers that lives as long as the module;
     * `reserved` is 0.
     */
    ModuleInterface(unsigned moduleId, const std::string& moduleName, unsigned channel, unsigned reserved,
                    const unsigned long* phaseFilter, unsigned long phaseCount);
    ModuleInterface(const ModuleInterface&) = delete;
    ModuleInterface& operator=(const ModuleInterface&) = delete;
    virtual ~ModuleInterface();

    /** A phase is reached. The platform's version calls the operation below that stands for `phase`. */
    virtual EAFResult onPhaseActivation(unsigned long phase, ECallbackPriority priority);
    virtual EAFResult onModuleInit();
    virtual EAFResult onPhaseModuleStorageObjectsRetreived();
    virtual EAFResult onPhasePostFrameformatLoad();
    virtual EAFResult onPhaseEndFrameformatLoad();
    virtual EAFResult onPhaseStart();
    virtual EAFResult onPhaseStop();
    virtual EAFResult onPhaseFrameformatLoad();
    virtual EAFResult onPhasePreFrameformatLoad();
    virtual EAFResult onPhaseSetRadioChannelNearEndFinished();

    unsigned getModuleId() const { return m_moduleId; }
    const std::string& getModuleName() const { return m_moduleName; }
    unsigned getModuleChannel() const { return m_channel; }
    /** True when the module's filter names `phase`. */
    bool wantsPhase(unsigned long phase) const;

private:
    unsigned m_moduleId;
    std::string m_moduleName;
    unsigned m_channel;
    const unsigned long* m_phaseFilter;
    unsigned long m_phaseCount;
};

/** Drives the registered modules through the platform's phases. It owns none of them. Supplied by the
 * platform. */
class RADIO_CLASS CModuleManager {
public:
    CModuleManager(const CModuleManager&) = delete;
    CModuleManager& operator=(const CModuleManager&) = delete;

    /** The module manager of the process, created on first use. */
    static CModuleManager& GetInstance();

    EAFResult RegisterModule(ModuleInterface* module);
    EAFResult UnRegisterModule(ModuleInterface* module);

private:
    CModuleManager() = default;
};

#endif
