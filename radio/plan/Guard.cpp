#include "radio/plan/Guard.h"

#include "radio/board/BoardDemand.h"
#include "radio/board/HardwareRanges.h"
#include "radio/board/PlatformWords.h"
#include "radio/plan/TuneCheck.h"
#include "radio/text/Words.h"

#include <iterator>
#include <string_view>
#include <variant>

namespace Radio::Plan {

std::string Guard::whyNot(const Action& action, Standalone::Platform& platform) {
    return std::visit(
        Visitor{[&](const Tune& tune) { return whyNotTuned(tune, platform); },
                [this](const WriteDriver& write) { return whyNotWrite(m_board, write.name, write.value); },
                [this](const SetTemperature& temperature) { return whyNotTemperature(temperature.degrees); },
                [this](const SetVariable& set) {
                    note(set);
                    return std::string();
                },
                [this](const RunPhase& run) {
                    note(run);
                    return std::string();
                },
                [](const auto& /*other*/) { return std::string(); }},
        action);
}

/** A carrier is judged by the variables as they are, which have to be those that its handler knows. */
std::string Guard::whyNotTuned(const Tune& tune, Standalone::Platform& platform) const {
    if (!m_waiting.empty()) {
        const auto& [variable, phase] = *m_waiting.begin();
        return inQuotes(variable) + " was changed, and the handlers take it over in the next phase " + phase +
               ": what the carrier comes to is not known";
    }
    return whyNotTune(m_board, platform, tune.direction, tune.channel, tune.frequency);
}

std::string Guard::whyNotTemperature(int degrees) const {
    if (m_hasSensor) {
        return "the temperature is that of the sensor, which is told again as soon as it changes";
    }
    return Plan::whyNotTemperature(m_board, degrees);
}

void Guard::note(const SetVariable& command) {
    const std::string_view phase = phaseThatCopies(command.name, m_board);
    if (!phase.empty()) {
        m_waiting[command.name] = phase;
    }
}

void Guard::note(const RunPhase& command) {
    for (auto entry = m_waiting.begin(); entry != m_waiting.end();) {
        entry = phaseFromString(entry->second) == command.phase ? m_waiting.erase(entry) : std::next(entry);
    }
}

} // namespace Radio::Plan
