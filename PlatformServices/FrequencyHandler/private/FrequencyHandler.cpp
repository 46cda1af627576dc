#include "FrequencyHandler.h"

#include "FrequencyHandler_Common.h"
#include "FrequencyHandler_MicrowaveBoard.h"
#include "FrequencyHandler_Rau.h"
#include "FrequencyHandler_RfModule.h"
#include "Guard.h"
#include "ITemperatureHandler.h"
#include "InterfaceBroker.h"
#include "LoCancellation.h"
#include "Trace.h"

#include <cstddef>
#include <string>

using namespace RL::FrequencyHandler;

namespace {

constexpr unsigned moduleId = 19000;
/** Made when the library is loaded: a constructor has no other way to fail than an exception. */
const std::string moduleName = "FrequencyHandler";

enum class Board { microwaveBoard, rfModule, rau };

/** The flags of the microwave-board handler, in the order of its constructor. */
struct MicrowaveBoardFlags {
    bool useIfFrequency;
    bool useDspRxFreqOffset;
    bool useCsOffsetArray;
    bool loFrequencyInHz;
};

struct Variant {
    Board board;
    MicrowaveBoardFlags tx;
    MicrowaveBoardFlags rx;
    bool hasLoCancellation;
};

/**
 * What each handler type is made of, by its number. That transmitter and receiver differ in types 2 and 3,
 * and do not in type 5, is the design.
 */
constexpr std::array<Variant, 6> variants{{
    {Board::microwaveBoard, {true, false, false, false}, {true, false, false, false}, true},
    {Board::rfModule, {}, {}, false},
    {Board::microwaveBoard, {false, false, false, false}, {false, true, false, false}, true},
    {Board::microwaveBoard, {false, false, false, true}, {false, false, true, true}, true},
    {Board::rau, {}, {}, false},
    {Board::microwaveBoard, {false, false, false, true}, {false, false, false, true}, true},
}};

std::unique_ptr<Common::FrequencyHandler> makeHandler(Board board, const MicrowaveBoardFlags& flags,
                                                      const char* direction, std::int32_t channel) {
    switch (board) {
    case Board::rfModule:
        return std::make_unique<RfModule::FrequencyHandler>(direction, channel);
    case Board::rau:
        return std::make_unique<Rau::FrequencyHandler>(direction, channel);
    case Board::microwaveBoard:
        break;
    }
    return std::make_unique<MicrowaveBoard::FrequencyHandler>(direction, channel, flags.useIfFrequency,
                                                              flags.useDspRxFreqOffset,
                                                              flags.useCsOffsetArray, flags.loFrequencyInHz);
}

/** A carrier as the trace shows it: the 32-bit number of the target, on any host. */
long shown(unsigned long frequency) {
    return static_cast<std::int32_t>(frequency);
}

} // namespace

OrbiTrace FrequencyHandler::m_trace(Trace::objectName, Trace::initialLevel);

const std::array<unsigned long, 3> FrequencyHandler::m_pPhaseFilter{11, 5, 20};

FrequencyHandler::FrequencyHandler(unsigned long channel, FrequencyHandlerType type)
    : ModuleInterface(moduleId, moduleName, static_cast<unsigned>(channel), 0, m_pPhaseFilter.data(),
                      m_pPhaseFilter.size()),
      m_temperatureObserver{this, staticNotifyTemperature} {
    build(static_cast<std::int32_t>(channel), type);
    const CancellationHeld held; // as for its handlers: registered is what is wholly built
    static_cast<void>(guarded<m_trace>(
        "RegisterModule", [this] { return CModuleManager::GetInstance().RegisterModule(this); }));
}

FrequencyHandler::~FrequencyHandler() {
    const CancellationHeld held;
    static_cast<void>(guarded<m_trace>(
        "UnRegisterModule", [this] { return CModuleManager::GetInstance().UnRegisterModule(this); }));
    m_pTxHandler.reset();
    m_pRxHandler.reset();
    m_pLoCancellation.reset();
}

void FrequencyHandler::build(std::int32_t channel, FrequencyHandlerType type) {
    const auto index = static_cast<std::size_t>(type);
    if (index >= variants.size()) {
        // At the information level, although it reports a wrong argument: deliberate.
        FH_TRACE(m_trace, TraceCode::information, "Unknown FrequencyHandlerType");
        return;
    }
    const Variant& variant = variants[index];
    const EAFResult built = guarded<m_trace>("FrequencyHandler", [&] {
        m_pTxHandler = makeHandler(variant.board, variant.tx, "Tx", channel);
        m_pRxHandler = makeHandler(variant.board, variant.rx, "Rx", channel);
        if (variant.hasLoCancellation) {
            m_pLoCancellation = std::make_unique<LoCancellation>(static_cast<unsigned>(channel));
            static_cast<void>(m_pLoCancellation->initialize());
        }
        return ResultOk;
    });
    if (isFailure(built)) {
        // Rather a module that answers 0x8000 than half a radio.
        m_pTxHandler.reset();
        m_pRxHandler.reset();
    }
}

bool FrequencyHandler::hasHandlers(const char* operation) const {
    if (m_pTxHandler != nullptr) { // there are both or none
        return true;
    }
    FH_TRACE(m_trace, TraceCode::error, "%s called on a module without handlers", operation);
    return false;
}

EAFResult FrequencyHandler::onModuleInit() {
    FH_TRACE(m_trace, TraceCode::information, "onModuleInit");
    if (!hasHandlers("onModuleInit")) {
        return ResultFailed;
    }
    return guarded<m_trace>("onModuleInit", [this] {
        if (isFailure(m_pTxHandler->onModuleInit()) || isFailure(m_pRxHandler->onModuleInit())) {
            return ResultFailed;
        }
        if (m_pLoCancellation != nullptr && isFailure(m_pLoCancellation->onModuleInit())) {
            return ResultFailed;
        }
        // The subscription goes to the service of the process, whatever the lookup finds.
        static_cast<void>(
            InterfaceBroker::getInstance().getInterface<ITemperatureHandler>("ITemperatureHandler"));
        static_cast<void>(ITemperatureHandler::registerObserver(&m_temperatureObserver));
        return ResultOk;
    });
}

EAFResult FrequencyHandler::onPhaseModuleStorageObjectsRetreived() {
    FH_TRACE(m_trace, TraceCode::information, "onPhaseModuleStorageObjectsRetreived");
    if (!hasHandlers("onPhaseModuleStorageObjectsRetreived")) {
        return ResultFailed;
    }
    const bool isFailed = isFailure(m_pTxHandler->getVariablesFromDatabase()) ||
                          isFailure(m_pRxHandler->getVariablesFromDatabase());
    return isFailed ? ResultFailed : ResultOk;
}

EAFResult FrequencyHandler::onPhasePostFrameformatLoad() {
    FH_TRACE(m_trace, TraceCode::information, "onPhasePostFrameformatLoad");
    if (!hasHandlers("onPhasePostFrameformatLoad")) {
        return ResultFailed;
    }
    const bool isFailed = isFailure(m_pTxHandler->getFFVariablesFromDatabase()) ||
                          isFailure(m_pRxHandler->getFFVariablesFromDatabase());
    return isFailed ? ResultFailed : ResultOk;
}

EAFResult FrequencyHandler::setTxFrequency(unsigned long frequency) {
    FH_TRACE(m_trace, TraceCode::information, "setTxFrequency %ld", shown(frequency));
    if (!hasHandlers("setTxFrequency")) {
        return ResultFailed;
    }
    static_cast<void>(m_pTxHandler->setRfFrequency(frequency));
    if (m_pLoCancellation != nullptr) {
        static_cast<void>(
            m_pLoCancellation->setLoCancellation(static_cast<unsigned>(frequency), m_temperature));
    }
    return ResultOk;
}

EAFResult FrequencyHandler::setRxFrequency(unsigned long frequency) {
    FH_TRACE(m_trace, TraceCode::information, "setRxFrequency %ld", shown(frequency));
    if (!hasHandlers("setRxFrequency")) {
        return ResultFailed;
    }
    static_cast<void>(m_pRxHandler->setRfFrequency(frequency));
    return ResultOk;
}

void FrequencyHandler::notifyTemperature(int temperature) {
    m_temperature = temperature;
    if (m_pLoCancellation != nullptr) {
        static_cast<void>(m_pLoCancellation->setLoCancellation(
            static_cast<unsigned>(m_pTxHandler->getFrequency()), temperature));
    }
    FH_TRACE(m_trace, TraceCode::information, "%s called with temp = %d", "notifyTemperature", temperature);
}

void FrequencyHandler::staticNotifyTemperature(void* context, int temperature) {
    if (context != nullptr) {
        static_cast<FrequencyHandler*>(context)->notifyTemperature(temperature);
    }
}
