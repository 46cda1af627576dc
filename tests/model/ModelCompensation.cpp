// TX IQ-imbalance compensation.

#include "Model.h"

#include <algorithm>

namespace Told {

namespace {

struct Row {
    const char* driver;
    const char* table;
    const char* shown;
    bool passesRecord;
};

constexpr std::array<Row, 4> rows{{
    {"dc.compensation.i", "Dc.I.Compensation", "pTxDcICompensationDriver", true},
    {"dc.compensation.q", "Dc.Q.Compensation", "pTxDcQCompensationDriver", true},
    {"quadrature.gain.offset.compensation", "Gain.Offset.Compensation", "pTxGainOffsetCompensationDriver",
     false},
    {"quadrature.phase.offset.compensation", "Phase.Offset.Compensation", "pTxPhaseOffsetCompensationDriver",
     false},
}};

unsigned hex(Code code) {
    return static_cast<unsigned>(code);
}

} // namespace

void Model::tellOfCompensation(const Step& step, ModelCompensation& compensation) {
    switch (step.what) {
    case Do::initializeCompensation:
        return m_transcript.note("answer", initCompensation(compensation));
    case Do::testOperations:
        return m_transcript.note("answer", ok);
    default:
        return m_transcript.note("answer", compensate(compensation));
    }
}

Code Model::initCompensation(ModelCompensation& compensation) {
    m_platform.say(2048, "Entering %s", "initialize");
    return hold("initialize", [&] { return registerCompensation(compensation); });
}

Code Model::registerCompensation(ModelCompensation& compensation) {
    const auto id = static_cast<std::uint32_t>(modulo32(Wide{compensation.channel} + 83000));
    const auto isIt = [&](const Registered& entry) { return entry.module == nullptr && entry.id == id; };
    Code code = m_platform.plain(Op::moduleRegisterC, "CTxIqImbalanceHandler", [&] {
        if (std::any_of(m_registered.begin(), m_registered.end(), isIt)) {
            return alreadyThere;
        }
        const auto place = std::find_if(m_registered.begin(), m_registered.end(),
                                        [&](const Registered& entry) { return entry.id > id; });
        m_registered.insert(place, {id, nullptr, {}});
        return ok;
    });
    if (isBad(code)) {
        m_platform.say(0x8005, "Failed to register module with ModuleManager ( EAFResult = %x )", hex(code));
        return 0x8005;
    }
    code = m_platform.plain(Op::callbackRegister, "CTxIQImbalanceHandler_OnPhaseActivation", [&] {
        const auto found = std::find_if(m_registered.begin(), m_registered.end(), isIt);
        if (found == m_registered.end()) {
            return notFound;
        }
        found->callbacks.push_back(&compensation);
        return ok;
    });
    if (isBad(code)) {
        m_platform.say(0x8005, "Failed to register module callback");
        return failed;
    }
    const std::string suffix =
        compensation.channel != 0 ? "_" + std::to_string(asInt(compensation.channel)) : "";
    code = m_platform.publish("ITxIQImbalanceHandler" + suffix, &compensation);
    if (isBad(code)) {
        m_platform.say(failed, "Failed to register IIQImbalanceHandler (EAFResult = 0x%x)", hex(code));
        return failed;
    }
    return ok;
}

Code Model::compensationPhase(ModelCompensation* compensation, std::int64_t phase) {
    m_platform.say(2048, "Entering %s", "onPhaseActivation");
    if (compensation == nullptr) {
        m_platform.say(failed, "CTxIQImbalanceHandler_OnPhaseActivation called with pThis NULL");
        return 0x801C;
    }
    return hold("onPhaseActivation", [&] { return phase == 11 ? bindCompensation(*compensation) : ok; });
}

void Model::giveBackBroker() {
    hold("CInterfaceBroker_DestroyInstance", [&] {
        m_platform.closeBroker();
        return ok;
    });
}

bool Model::openAndGet(const char* name, Code& code) {
    code = m_platform.openBroker();
    if (isBad(code)) {
        return false; // there is nothing to ask and nothing to give back
    }
    bool found = false;
    code = whileOpen([&] { return m_platform.getFromBroker(name, found); });
    found = found && !isBad(code);
    if (!found) {
        giveBackBroker();
    }
    return found;
}

Code Model::bindCompensation(ModelCompensation& compensation) {
    const std::string number = std::to_string(compensation.channel);
    Code code = ok;
    if (!openAndGet("IDriverLayer", code)) {
        m_platform.say(failed, "CTxFrequencyHandler failed to get IDriverLayer (EAFResult = 0x%x)",
                       hex(code));
        return failed;
    }
    giveBackBroker();
    for (std::size_t i = 0; i < rows.size(); ++i) {
        code = m_platform.lookUpDriver("channel." + number + ".dsp.tx." + rows[i].driver,
                                       compensation.drivers[i]);
        if (isBad(code)) {
            m_platform.say(code, "CTxIQImbalanceHandler failed to get driver interface");
            return failed;
        }
    }
    for (std::size_t i = 0; i < rows.size(); ++i) {
        code = m_platform.lookUpTable("Channel." + number + ".Tx.Dsp.Temperature.To." + rows[i].table,
                                      compensation.tables[i]);
        if (isBad(code)) {
            m_platform.say(code, "CTxIQImbalanceHandler failed to get calibration table");
            return failed;
        }
    }
    if (!openAndGet("ITemperatureHandler", code)) {
        m_platform.say(
            failed, "CTxIQImbalanceHandler_Initialize failed to get ITemperatureHandler (EAFResult = 0x%x)",
            hex(code));
        return failed;
    }
    code = whileOpen([&] {
        return m_platform.recordIsWordless() ? failed : subscribe({nullptr, &compensation});
    });
    giveBackBroker();
    if (isBad(code)) {
        m_platform.say(
            failed,
            "CTxIQImbalanceHandler_Initialize failed to register ITemperatureObserver (ETHResult = 0x%x)",
            hex(code));
        return failed;
    }
    return ok;
}

void Model::notifyCompensation(ModelCompensation* compensation, std::int32_t temperature) {
    if (compensation == nullptr) {
        m_platform.say(failed, "notifyTemperature called with pThis NULL");
        return;
    }
    compensation->temperature = temperature;
    m_platform.say(2048, "%s called with temp = %d for channel %d", "notifyTemperature", temperature,
                   asInt(compensation->channel));
    compensate(*compensation);
}

Code Model::compensate(ModelCompensation& compensation) {
    return hold("doImbalanceCompensation", [&] { return writeCompensations(compensation); });
}

Code Model::writeCompensations(ModelCompensation& compensation) {
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (!m_platform.has(compensation.drivers[i], Word::write)) {
            m_platform.say(
                failed, "CTxIQImbalanceHandler_DoImbalanceCompensation called with %s pointer(s) set to NULL",
                rows[i].shown);
            return failed;
        }
    }
    std::int32_t value = 0;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (isBad(m_platform.interpolate(compensation.tables[i], compensation.temperature, value))) {
            continue;
        }
        const Code code = m_platform.writeDriver(compensation.drivers[i], value, rows[i].passesRecord);
        if (isBad(code)) {
            m_platform.say(code, "CTxIQImbalanceHandler_DoImbalanceCompensation failed to write to %s driver",
                           rows[i].shown);
            return failed;
        }
    }
    return ok;
}

} // namespace Told
