#include "CTxIQImbalanceHandler.h"

#include "CInterfaceBroker.h"
#include "Guard.h"
#include "InterfaceBroker.h"
#include "Trace.h"

#include <cstdio>
#include <string>

using namespace RL::FrequencyHandler;

namespace {

OrbiTrace s_trace(Trace::objectName, Trace::initialLevel);

constexpr unsigned firstModuleId = 83000;
constexpr const char* moduleName = "CTxIqImbalanceHandler"; // "Iq", unlike everywhere else
constexpr const char* callbackName = "CTxIQImbalanceHandler_OnPhaseActivation";
constexpr unsigned callbackOrder = 100;
constexpr ECallbackPriority callbackPriority{3};
constexpr unsigned long moduleInitPhase = 11;
constexpr std::array<unsigned long, 1> phases{moduleInitPhase};

constexpr auto moduleRefused = static_cast<EAFResult>(0x8005);
constexpr auto noObject = static_cast<EAFResult>(0x801C);

/** A name of this channel's: `prefix`, the channel, and `rest`. */
class Name {
public:
    Name(const char* prefix, std::uint32_t channel, const char* rest) {
        static_cast<void>(std::snprintf(m_text.data(), m_text.size(), "%s.%lu.%s", prefix,
                                        static_cast<unsigned long>(channel), rest));
    }
    const char* text() const { return m_text.data(); }

private:
    std::array<char, 100> m_text{};
};

/** A handle of the broker. Whoever has it gives it back. */
class BrokerHandle {
public:
    BrokerHandle() : m_code(CInterfaceBroker_GetInstance(&m_broker)), m_isOpen(isSuccess(m_code)) {}
    BrokerHandle(const BrokerHandle&) = delete;
    BrokerHandle& operator=(const BrokerHandle&) = delete;
    ~BrokerHandle() {
        const CancellationHeld held;
        giveBack();
    }

    /** Finds the record of the interface `name`; leaves it on failure. Gives the code of the step that
     * decided. */
    template <typename Record>
    EAFResult find(const char* name, Record*& record) const {
        void* found = nullptr;
        const EAFResult code =
            isSuccess(m_code) ? CInterfaceBroker_GetInterface(m_broker, name, &found) : m_code;
        if (isSuccess(code)) {
            record = static_cast<Record*>(found);
        }
        return code;
    }

    /** Also a handle that is null: what it looks like is the broker's own business. */
    void giveBack() {
        if (m_isOpen) {
            m_isOpen = false;
            static_cast<void>(guarded<s_trace>("CInterfaceBroker_DestroyInstance", [this] {
                return CInterfaceBroker_DestroyInstance(m_broker);
            }));
        }
    }

private:
    void* m_broker = nullptr;
    EAFResult m_code;
    bool m_isOpen;
};

} // namespace

/**
 * The four compensations, in the order in which they are looked up, checked and written. That the DC pair is
 * called with its record and the other pair with the record's context is deliberate.
 */
const std::array<CTxIQImbalanceHandler::Compensation, CTxIQImbalanceHandler::compensationCount>
    CTxIQImbalanceHandler::s_compensations{{
        {"dsp.tx.dc.compensation.i", "Tx.Dsp.Temperature.To.Dc.I.Compensation", "pTxDcICompensationDriver",
         &CTxIQImbalanceHandler::pTxDcICompensationDriver, &CTxIQImbalanceHandler::m_dcITable, true},
        {"dsp.tx.dc.compensation.q", "Tx.Dsp.Temperature.To.Dc.Q.Compensation", "pTxDcQCompensationDriver",
         &CTxIQImbalanceHandler::pTxDcQCompensationDriver, &CTxIQImbalanceHandler::m_dcQTable, true},
        {"dsp.tx.quadrature.gain.offset.compensation", "Tx.Dsp.Temperature.To.Gain.Offset.Compensation",
         "pTxGainOffsetCompensationDriver", &CTxIQImbalanceHandler::pTxGainOffsetCompensationDriver,
         &CTxIQImbalanceHandler::m_gainOffsetTable, false},
        {"dsp.tx.quadrature.phase.offset.compensation", "Tx.Dsp.Temperature.To.Phase.Offset.Compensation",
         "pTxPhaseOffsetCompensationDriver", &CTxIQImbalanceHandler::pTxPhaseOffsetCompensationDriver,
         &CTxIQImbalanceHandler::m_phaseOffsetTable, false},
    }};

CTxIQImbalanceHandler::CTxIQImbalanceHandler(unsigned long channel)
    : m_channel(static_cast<std::uint32_t>(channel)) {}

// Deliberately unregisters nothing: an initialised handler lives as long as the platform may call it.
CTxIQImbalanceHandler::~CTxIQImbalanceHandler() = default;

// Registration

EAFResult CTxIQImbalanceHandler::initialize() {
    FH_TRACE(s_trace, TraceCode::information, "Entering %s", "initialize");
    return guarded<s_trace>("initialize", [this] {
        const EAFResult code = registerModule();
        return isFailure(code) ? code : registerInterface();
    });
}

EAFResult CTxIQImbalanceHandler::registerModule() {
    const unsigned moduleId = m_channel + firstModuleId;

    const EAFResult moduleCode = CModuleManager_RegisterModule(moduleId, moduleName);
    if (isFailure(moduleCode)) {
        FH_TRACE(s_trace, TraceCode::moduleRegistrationError,
                 "Failed to register module with ModuleManager ( EAFResult = %x )",
                 static_cast<unsigned>(moduleCode));
        return moduleRefused;
    }
    m_moduleCallbackRecord = {this, onPhaseActivation};
    const EAFResult callbackCode =
        CModuleManager_RegisterCallback(moduleId, callbackName, callbackOrder, &m_moduleCallbackRecord,
                                        callbackPriority, 0, phases.data(), phases.size());
    if (isFailure(callbackCode)) {
        FH_TRACE(s_trace, TraceCode::moduleRegistrationError, "Failed to register module callback");
        return ResultFailed;
    }
    return ResultOk;
}

EAFResult CTxIQImbalanceHandler::registerInterface() {
    std::string name = "ITxIQImbalanceHandler";
    if (m_channel != 0) {
        name += "_" + std::to_string(static_cast<std::int32_t>(m_channel));
    }
    const EAFResult code = InterfaceBroker::getInstance().registerInterface(name, this);
    if (isFailure(code)) {
        FH_TRACE(s_trace, TraceCode::error, "Failed to register IIQImbalanceHandler (EAFResult = 0x%x)",
                 static_cast<unsigned>(code));
        return ResultFailed;
    }
    return ResultOk;
}

// Set-up

EAFResult CTxIQImbalanceHandler::onPhaseActivation(void* pThis, unsigned long phase,
                                                   ECallbackPriority /*priority*/) {
    FH_TRACE(s_trace, TraceCode::information, "Entering %s", "onPhaseActivation");
    if (pThis == nullptr) {
        FH_TRACE(s_trace, TraceCode::error, "CTxIQImbalanceHandler_OnPhaseActivation called with pThis NULL");
        return noObject;
    }
    if (phase != moduleInitPhase) {
        return ResultOk;
    }
    return guarded<s_trace>("onPhaseActivation",
                            [pThis] { return static_cast<CTxIQImbalanceHandler*>(pThis)->bind(); });
}

EAFResult CTxIQImbalanceHandler::bind() {
    if (isFailure(bindDrivers()) || isFailure(fetchTables())) {
        return ResultFailed;
    }
    return subscribe();
}

EAFResult CTxIQImbalanceHandler::bindDrivers() {
    BrokerHandle broker;
    DriverLayerInterface* driverLayer = nullptr;
    const EAFResult layerCode = broker.find("IDriverLayer", driverLayer);
    broker.giveBack(); // the driver layer's record outlives the handle
    if (driverLayer == nullptr) {
        FH_TRACE(s_trace, TraceCode::error,
                 "CTxFrequencyHandler failed to get IDriverLayer (EAFResult = 0x%x)",
                 static_cast<unsigned>(layerCode));
        return ResultFailed;
    }
    for (const Compensation& compensation : s_compensations) {
        const Name name("channel", m_channel, compensation.driverName);
        const EDriverResult code =
            driverLayer->getDriverInterface != nullptr
                ? driverLayer->getDriverInterface(&(this->*compensation.driver), name.text())
                : static_cast<EDriverResult>(ResultFailed);
        if (isFailure(code)) {
            FH_TRACE(s_trace, code, "CTxIQImbalanceHandler failed to get driver interface");
            return ResultFailed;
        }
    }
    return ResultOk;
}

EAFResult CTxIQImbalanceHandler::fetchTables() {
    for (const Compensation& compensation : s_compensations) {
        const Name name("Channel", m_channel, compensation.tableName);
        const ECHResult code = CCalibrationHandler_GetTable(name.text(), &(this->*compensation.table));
        if (isFailure(code)) {
            FH_TRACE(s_trace, code, "CTxIQImbalanceHandler failed to get calibration table");
            return ResultFailed;
        }
    }
    return ResultOk;
}

EAFResult CTxIQImbalanceHandler::subscribe() {
    m_temperatureObserver = {this, notifyTemperature};

    BrokerHandle broker;
    TemperatureHandlerCStruct* service = nullptr;
    const EAFResult serviceCode = broker.find("ITemperatureHandler", service);
    if (service == nullptr) {
        broker.giveBack();
        FH_TRACE(s_trace, TraceCode::error,
                 "CTxIQImbalanceHandler_Initialize failed to get ITemperatureHandler (EAFResult = 0x%x)",
                 static_cast<unsigned>(serviceCode));
        return ResultFailed;
    }
    const ETHResult code = service->registerObserver != nullptr
                               ? service->registerObserver(&m_temperatureObserver)
                               : static_cast<ETHResult>(ResultFailed);
    broker.giveBack();
    if (isFailure(code)) {
        FH_TRACE(
            s_trace, TraceCode::error,
            "CTxIQImbalanceHandler_Initialize failed to register ITemperatureObserver (ETHResult = 0x%x)",
            static_cast<unsigned>(code));
        return ResultFailed;
    }
    return ResultOk;
}

// Compensation

void CTxIQImbalanceHandler::notifyTemperature(void* pThis, int temperature) {
    if (pThis == nullptr) {
        FH_TRACE(s_trace, TraceCode::error, "notifyTemperature called with pThis NULL");
        return;
    }
    auto& handler = *static_cast<CTxIQImbalanceHandler*>(pThis);
    handler.m_temperature = temperature;
    FH_TRACE(s_trace, TraceCode::information, "%s called with temp = %d for channel %ld", "notifyTemperature",
             temperature, static_cast<long>(static_cast<std::int32_t>(handler.m_channel)));
    static_cast<void>(
        guarded<s_trace>("notifyTemperature", [&handler] { return handler.doImbalanceCompensation(); }));
}

EAFResult CTxIQImbalanceHandler::doImbalanceCompensation() {
    return guarded<s_trace>("doImbalanceCompensation", [this] { return compensate(); });
}

EAFResult CTxIQImbalanceHandler::compensate() {
    for (const Compensation& compensation : s_compensations) {
        const DriverInterface* const driver = this->*compensation.driver;
        if (driver == nullptr || driver->write == nullptr) {
            FH_TRACE(s_trace, TraceCode::error,
                     "CTxIQImbalanceHandler_DoImbalanceCompensation called with %s pointer(s) set to NULL",
                     compensation.shownName);
            return ResultFailed;
        }
    }
    int value = 0; // one for all four: a table that succeeds without a value gives that of the one before
    for (const Compensation& compensation : s_compensations) {
        if (isFailure(
                CCalibrationTable_LinearInterpolate(this->*compensation.table, m_temperature, &value))) {
            continue; // deliberately without a word: the other compensations still help
        }
        DriverInterface* const driver = this->*compensation.driver;
        const EDriverResult code = driver->write(compensation.passesRecord ? driver : driver->context, value);
        if (isFailure(code)) {
            FH_TRACE(s_trace, code,
                     "CTxIQImbalanceHandler_DoImbalanceCompensation failed to write to %s driver",
                     compensation.shownName);
            return ResultFailed;
        }
    }
    return ResultOk;
}

EAFResult CTxIQImbalanceHandler::onTxFrequencyChanged(unsigned long /*txFrequency*/) {
    return guarded<s_trace>("onTxFrequencyChanged", [this] { return doImbalanceCompensation(); });
}

// Test operations

EAFResult CTxIQImbalanceHandler::testSetIQCompensationBar(unsigned int /*bar*/) {
    return ResultOk;
}

EAFResult CTxIQImbalanceHandler::testGetIQCompensationBar(unsigned int* /*bar*/) {
    return ResultOk;
}

EAFResult CTxIQImbalanceHandler::testSetIQMode(EIQMode /*mode*/) {
    return ResultOk;
}

EAFResult CTxIQImbalanceHandler::testGetIQMode(EIQMode* /*mode*/) {
    return ResultOk;
}

EAFResult CTxIQImbalanceHandler::testSetSimulatorMode(ESimulatorMode /*mode*/) {
    return ResultOk;
}

EAFResult CTxIQImbalanceHandler::testGetSimulatorMode(ESimulatorMode* /*mode*/) {
    return ResultOk;
}

EAFResult CTxIQImbalanceHandler::testGetAdaptiveIQCompEnabled(unsigned int* /*enabled*/) {
    return ResultOk;
}
