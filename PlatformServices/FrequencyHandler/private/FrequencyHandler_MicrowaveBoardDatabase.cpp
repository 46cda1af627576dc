// What the microwave-board handler reads from the database: names, conversions, and what a missing variable
// does.

#include "CStorageManager.h"
#include "FrequencyHandler_MicrowaveBoard.h"
#include "Trace.h"

namespace RL::FrequencyHandler::MicrowaveBoard {

namespace {

/** Finds the live content of an int variable; null when the lookup failed. */
EAFResult getContentAddress(const std::string& name, const std::int32_t*& content) {
    void* address = nullptr;
    const EAFResult code = CStorageManager_GetVariableContentAddressByName(name.c_str(), &address, 0);
    content = isSuccess(code) ? static_cast<const std::int32_t*>(address) : nullptr;
    return code;
}

} // namespace

EAFResult FrequencyHandler::getStorageVariableByName(const std::string& name, int* value) const {
    StorageVariable* variable = nullptr;
    const EAFResult code = CStorageManager_GetVariableByName(name.c_str(), &variable);
    if (isFailure(code) || variable == nullptr || variable->content == nullptr) {
        FH_TRACE(m_trace, TraceCode::error, "Could not get the variable %s from the database", name.c_str());
        return ResultFailed;
    }
    *value = *static_cast<const std::int32_t*>(variable->content);
    return ResultOk;
}

EAFResult FrequencyHandler::getVariablesFromDatabase() {
    return guarded(m_trace, "getVariablesFromDatabase", [this] {
        const std::string prefix = driverPrefix();

        if (isFailure(getStorageVariableByName(prefix + "mixer.multiplicationfactor",
                                               &m_mixerMultiplicationFactor))) {
            return ResultFailed;
        }
        // One temporary for both, deliberately: when the second variable is missing, the first decides both
        // signs.
        int isInverted = 0;
        static_cast<void>(getStorageVariableByName(prefix + "rf.spectruminverted", &isInverted));
        m_rfSideband = isInverted != 0 ? 1 : -1;
        static_cast<void>(getStorageVariableByName(prefix + "baseband.spectruminverted", &isInverted));
        m_ifSideband = isInverted != 0 ? 1 : -1;

        if (m_useIfFrequency &&
            isFailure(getStorageVariableByName(prefix + "if.frequency", &m_ifFrequency))) {
            return ResultFailed;
        }
        if (isFailure(getStorageVariableByName(m_name + "IfBb", &m_ifBb))) {
            return ResultFailed;
        }
        return m_useCsOffsetArray && isRx() ? readOffsetArrayAddresses() : ResultOk;
    });
}

EAFResult FrequencyHandler::readOffsetArrayAddresses() {
    const std::string prefix = "channel." + std::to_string(channelNumber()) + ".rx.rf.frequency.cs.offset.";

    if (isFailure(getContentAddress("HwCodeDsp", m_hwCodeDsp)) ||
        isFailure(getContentAddress(prefix + "arraysize", m_csOffsetArraySize)) ||
        isFailure(getContentAddress(prefix + "array", m_csOffsetArray))) {
        return ResultFailed;
    }
    return ResultOk;
}

EAFResult FrequencyHandler::getFFVariablesFromDatabase() {
    return guarded(m_trace, "getFFVariablesFromDatabase", [this] {
        if (isFailure(getStorageVariableByName(m_name + "IfBb", &m_ifBb))) {
            return ResultFailed;
        }
        return (m_useDspRxFreqOffset || m_useCsOffsetArray) && isRx() ? readChannelSpacing() : ResultOk;
    });
}

EAFResult FrequencyHandler::readChannelSpacing() {
    const std::int32_t* channelSpacing = nullptr;
    const EAFResult code = getContentAddress("ChannelSpacing", channelSpacing);
    if (isFailure(code)) {
        // "in the database", and the storage manager's code as the level: unlike the message for other
        // variables.
        FH_TRACE(m_trace, code, "Could not get the variable %s in the database", "ChannelSpacing");
        return ResultFailed;
    }
    if (channelSpacing == nullptr) {
        FH_TRACE(m_trace, TraceCode::error, "The variable %s has no content", "ChannelSpacing");
        return ResultFailed;
    }
    m_channelSpacing = *channelSpacing;
    FH_TRACE(m_trace, TraceCode::information, "%s: New channel spacing = %d", "getFFVariablesFromDatabase",
             m_channelSpacing);
    return ResultOk;
}

} // namespace RL::FrequencyHandler::MicrowaveBoard
