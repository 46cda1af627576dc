// What a story does to the platform.

#include "ModelPlatform.h"

namespace Told {

void ModelPlatform::setDisturbance(const std::optional<Disturbance>& disturbance) {
    m_disturbance = disturbance;
    disturb();
}

void ModelPlatform::disturb() {
    if (m_disturbance && m_calls + 1 == m_disturbance->call) {
        change(m_disturbance->before);
    } else if (m_disturbance && m_calls == m_disturbance->call && m_disturbance->after) {
        change(*m_disturbance->after);
    }
}

void ModelPlatform::setPresence(const std::string& name, Presence presence) {
    if (presence == Presence::absent) {
        m_published.erase(name);
    } else {
        m_published[name] = {presence, nullptr};
    }
}

void ModelPlatform::change(const Step& step) {
    const Handle driver = driverAt(step.name);
    const Handle variable = variableAt(step.name);
    const auto& number = step.number;
    const auto output = static_cast<std::int32_t>(number[3]);
    switch (step.what) {
    case Do::setVariable:
        if (variable != nowhere) {
            std::vector<std::int32_t>& values = m_board.variables[static_cast<std::size_t>(variable)].values;
            for (std::size_t i = 0; i < step.values.size() && step.values.size() <= values.size(); ++i) {
                values[i] = step.values[i];
            }
        }
        break;
    case Do::hideContent:
        if (variable != nowhere) {
            m_board.variables[static_cast<std::size_t>(variable)].noContent = number[0] != 0;
        }
        break;
    case Do::setWords:
        if (driver != nowhere) {
            m_board.drivers[static_cast<std::size_t>(driver)].missingWords = static_cast<unsigned>(number[0]);
        }
        break;
    case Do::nullRecord:
        if (driver != nowhere) {
            m_board.drivers[static_cast<std::size_t>(driver)].nullRecord = true;
        }
        if (variable != nowhere) {
            m_board.variables[static_cast<std::size_t>(variable)].nullRecord = true;
        }
        break;
    case Do::setPresence:
        setPresence(step.name, static_cast<Presence>(number[0]));
        break;
    case Do::setThreshold:
        m_board.threshold = static_cast<std::int32_t>(number[0]);
        break;
    case Do::loseMessages:
        m_lostAt.reset();
        if (static_cast<Throws>(number[1]) != Throws::nothing) {
            m_lostAt = static_cast<TracePlace>(number[0]);
        }
        break;
    case Do::fault:
        if (number[2] != 0) {
            m_faults.push_back({static_cast<Op>(number[0]), step.name, static_cast<Code>(number[1]),
                                number[2], output, step.leaves, step.throws});
        }
        break;
    case Do::faultAt:
        m_faultAt = {number[0],
                     {std::nullopt,
                      {},
                      static_cast<Code>(number[1]),
                      number[2] != 0 ? -1 : 1,
                      output,
                      step.leaves,
                      step.throws}};
        break;
    default:
        clearFaults();
        break;
    }
}

void ModelPlatform::clearFaults() {
    m_faults.clear();
    m_faultAt.reset();
}

} // namespace Told
