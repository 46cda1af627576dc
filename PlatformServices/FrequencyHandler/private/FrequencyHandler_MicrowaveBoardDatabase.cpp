// What the microwave-board handler reads from the database: names, conversions, and what a missing variable
// does.

#include "CStorageManager.h"
#include "FrequencyHandler_MicrowaveBoard.h"
#include "Guard.h"
#include "Trace.h"

namespace RL::FrequencyHandler::MicrowaveBoard {

EAFResult LiveContent::find(const std::string& name) {
    try {
        const EAFResult code = CStorageManager_GetVariableContentAddressByName(name.c_str(), &m_address, 0);
        if (isFailure(code)) {
            m_address = nullptr;
        }
        return code;
    } catch (...) {
        m_address = nullptr;
        throw;
    }
}

EAFResult FrequencyHandler::getStorageVariableByName(const std::string& name, int* value) const {
    return guarded<m_trace>("getStorageVariableByName", [&] {
        StorageVariable* variable = nullptr;
        const EAFResult code = CStorageManager_GetVariableByName(name.c_str(), &variable);
        if (isFailure(code) || variable == nullptr || variable->content == nullptr) {
            FH_TRACE(m_trace, TraceCode::error, "Could not get the variable %s from the database",
                     name.c_str());
            return ResultFailed;
        }
        *value = *static_cast<const std::int32_t*>(variable->content);
        return ResultOk;
    });
}

EAFResult FrequencyHandler::getVariablesFromDatabase() {
    return guarded<m_trace>("getVariablesFromDatabase", [this] {
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

    const bool isFound = isSuccess(m_hwCodeDsp.find("HwCodeDsp")) &&
                         isSuccess(m_csOffsetArraySize.find(prefix + "arraysize")) &&
                         isSuccess(m_csOffsetArray.find(prefix + "array"));
    return isFound ? ResultOk : ResultFailed;
}

EAFResult FrequencyHandler::getFFVariablesFromDatabase() {
    return guarded<m_trace>("getFFVariablesFromDatabase", [this] {
        if (isFailure(getStorageVariableByName(m_name + "IfBb", &m_ifBb))) {
            return ResultFailed;
        }
        return (m_useDspRxFreqOffset || m_useCsOffsetArray) && isRx() ? readChannelSpacing() : ResultOk;
    });
}

EAFResult FrequencyHandler::readChannelSpacing() {
    LiveContent channelSpacing;
    const EAFResult code = channelSpacing.find("ChannelSpacing");
    if (isFailure(code)) {
        // "in the database", and the storage manager's code as the level: unlike the message for other
        // variables.
        FH_TRACE(m_trace, code, "Could not get the variable %s in the database", "ChannelSpacing");
        return ResultFailed;
    }
    if (channelSpacing.ints() == nullptr) {
        FH_TRACE(m_trace, TraceCode::error, "The variable %s has no content", "ChannelSpacing");
        return ResultFailed;
    }
    m_channelSpacing = *channelSpacing.ints();
    FH_TRACE(m_trace, TraceCode::information, "%s: New channel spacing = %d", "getFFVariablesFromDatabase",
             m_channelSpacing);
    return ResultOk;
}

} // namespace RL::FrequencyHandler::MicrowaveBoard
