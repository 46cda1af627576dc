#ifndef PLATFORM_STANDALONE_MODULESEQUENCER_H
#define PLATFORM_STANDALONE_MODULESEQUENCER_H

#include "CModuleManager.h"
#include "Visibility.h"
#include "standalone/Calls.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace Standalone {

/** The phases to which the stand-alone platform gives a meaning, in the order of a start-up. */
enum Phase : unsigned long {
    phaseModuleInit = 11,             ///< onModuleInit
    phaseStorageObjectsRetrieved = 5, ///< onPhaseModuleStorageObjectsRetreived
    phasePostFrameformatLoad = 20,    ///< onPhasePostFrameformatLoad
};

/** One module's turn in a phase; the code of a module with several callbacks is that of the last one called.
 */
struct PhaseStep {
    unsigned moduleId;
    std::string moduleName;
    unsigned channel;
    std::int32_t code;
};

/** How a phase went: the modules that had their turn, in order. Only the last can have failed. */
struct RADIO_API PhaseReport {
    unsigned long phase;
    std::vector<PhaseStep> steps;

    /** True when no module failed. */
    bool succeeded() const;
};

/**
 * The module manager's state: the registered modules and their phase callbacks. Behind it stand
 * CModuleManager and the CModuleManager functions.
 */
class RADIO_API ModuleSequencer {
public:
    explicit ModuleSequencer(Calls& calls) : m_calls(calls) {}
    ModuleSequencer(const ModuleSequencer&) = delete;
    ModuleSequencer& operator=(const ModuleSequencer&) = delete;

    /** Many modules may have the same identifier, but one object is registered once. */
    std::int32_t add(ModuleInterface* module);
    std::int32_t remove(ModuleInterface* module);
    /**
     * For a module that is being destroyed: it is not called any more, whatever became of its `remove`. True
     * when it was still registered.
     */
    bool forget(const ModuleInterface* module);

    /** Makes a module of the C view known; its identifier is unique among those. */
    std::int32_t add(unsigned moduleId, const char* moduleName);
    std::int32_t addCallback(unsigned moduleId, const char* callbackName, unsigned order,
                             ModuleCallbackRecord* callback, ECallbackPriority priority,
                             const unsigned long* phases, unsigned long phaseCount);

    /**
     * Calls every module whose filter names `phase`, by ascending module identifier and, among equals, in the
     * order of registration; stops at the first that fails. A phase may be run as often as wanted. Modules
     * that register meanwhile wait for the next run; modules that leave meanwhile are not called any more.
     */
    PhaseReport run(unsigned long phase);

    /** How many modules are registered, in either view. */
    std::size_t moduleCount() const { return m_modules.size(); }

private:
    struct Callback {
        unsigned order;
        ModuleCallbackRecord* record;
        ECallbackPriority priority;
        const unsigned long* phases;
        unsigned long phaseCount;
    };
    /** A module of the class view has `module`, one of the C view has `callbacks`. */
    struct Module {
        std::string name;
        unsigned channel;
        ModuleInterface* module;
        std::vector<Callback> callbacks;
    };
    /** By identifier, and among equals in the order of registration. */
    using Modules = std::multimap<unsigned, Module>;
    /** One module in a phase, as it was known when the phase began. */
    struct Turn {
        /** What is reported of it, but for its code. */
        PhaseStep step;
        ModuleInterface* module;
        std::vector<Callback> callbacks;
    };

    /** A turn for every module, in order. */
    std::vector<Turn> turns() const;
    /** The module's answer; nothing when it does not want the phase or has left. */
    std::optional<std::int32_t> call(const Turn& turn, unsigned long phase) const;

    Calls& m_calls;
    /** In the order in which a phase calls them. */
    Modules m_modules;
    // Where they stand there, those of the class view by their object, those of the C view by their
    // identifier.
    std::map<const ModuleInterface*, Modules::iterator> m_classModules;
    std::map<unsigned, Modules::iterator> m_cModules;
};

} // namespace Standalone

#endif
