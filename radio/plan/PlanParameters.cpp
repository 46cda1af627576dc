#include "radio/plan/PlanParameters.h"

#include "radio/board/PlatformWords.h"

#include <algorithm>

namespace Radio::Plan {

namespace {

using ::FrequencyHandler;

/** "Tx" or "Rx". */
std::string capital(Direction direction) {
    return direction == Direction::tx ? "Tx" : "Rx";
}

/** Reads variables and notes them. */
class Reader {
public:
    Reader(Standalone::VariableStore& database, std::vector<ReadVariable>& notes)
        : m_database(database),
          m_notes(notes) {}

    /** The values of a variable; empty when there is none. */
    const std::vector<std::int32_t>& values(const std::string& name, std::string meaning) {
        const Standalone::Variable* const variable = m_database.find(name);
        m_notes.push_back({name, {}, std::move(meaning)});
        if (variable != nullptr) {
            m_notes.back().values = variable->values();
        }
        return m_notes.back().values;
    }
    /** The first value of a variable; `fallback` when there is none. */
    std::int32_t value(const std::string& name, std::int32_t fallback, std::string meaning) {
        const std::vector<std::int32_t>& found = values(name, std::move(meaning));
        return found.empty() ? fallback : found.front();
    }
    /** Changes what the last variable means, now that its value is known. */
    void explain(std::string meaning) { m_notes.back().meaning = std::move(meaning); }

private:
    Standalone::VariableStore& m_database;
    std::vector<ReadVariable>& m_notes;
};

void readSidebands(Reader& reader, const std::string& prefix, Parameters& parameters) {
    const std::int32_t rfInverted = reader.value(prefix + "rf.spectruminverted", 0, "");
    parameters.rfSideband = rfInverted != 0 ? 1 : -1;
    reader.explain(rfInverted != 0 ? "RF sideband +1: the LO lies above the carrier"
                                   : "RF sideband -1: the LO lies below the carrier");
    // One that is missing has the sign of the RF sideband.
    const std::int32_t ifInverted = reader.value(prefix + "baseband.spectruminverted", rfInverted, "");
    parameters.ifSideband = ifInverted != 0 ? 1 : -1;
    reader.explain("IF sideband " + signedText(parameters.ifSideband));
}

void readOffsetArray(Reader& reader, const std::string& prefix, Parameters& parameters) {
    parameters.hwCodeDsp =
        reader.value("HwCodeDsp", 0,
                     "DSP hardware; with 3, half the spacing stands in for a missing entry (125, 250, 500)");
    const std::int32_t size =
        reader.value(prefix + "rf.frequency.cs.offset.arraysize", 0, "integers in the array");
    parameters.offsetArray =
        reader.values(prefix + "rf.frequency.cs.offset.array", "channel spacing, offset in kHz, ...");
    const auto counted = static_cast<std::size_t>(std::max(size, 0));
    parameters.offsetArray.resize(std::min(parameters.offsetArray.size(), counted));
}

} // namespace

std::optional<Build> buildOf(FrequencyHandler::FrequencyHandlerType type, Direction direction) {
    const bool receives = direction == Direction::rx;
    Build build;
    switch (type) {
    case FrequencyHandler::MicrowaveBoardIf:
        build.hasIfSynthesiser = true;
        return build;
    case FrequencyHandler::MicrowaveBoardDspOffset:
        build.shiftsByHalfSpacing = receives;
        return build;
    case FrequencyHandler::MicrowaveBoardHzCsOffset:
        build.hasOffsetArray = receives;
        build.hasLoInHz = true;
        return build;
    case FrequencyHandler::MicrowaveBoardHz:
        build.hasLoInHz = true;
        return build;
    case FrequencyHandler::RfModule:
    case FrequencyHandler::Rau:
        break;
    }
    return std::nullopt;
}

Parameters readParameters(Standalone::VariableStore& database, int channel, Direction direction,
                          const Build& build) {
    const std::string prefix = driverPrefix(channel, direction);
    Parameters parameters;
    parameters.build = build;
    Reader reader(database, parameters.variables);

    parameters.factor =
        reader.value(prefix + "mixer.multiplicationfactor", 1, "the mixer's LO is so many times the RF PLL");
    readSidebands(reader, prefix, parameters);
    if (build.hasIfSynthesiser) {
        parameters.ifFrequency = reader.value(prefix + "if.frequency", 0, "intermediate frequency, kHz");
    }
    parameters.ifBb =
        reader.value(capital(direction) + "IfBb", 0,
                     build.hasIfSynthesiser ? "baseband offset inside the IF, MHz"
                                            : "baseband offset, MHz: not used without an IF synthesiser");
    if (build.hasOffsetArray) {
        readOffsetArray(reader, prefix, parameters);
    }
    if (build.readsChannelSpacing()) {
        parameters.channelSpacing = reader.value("ChannelSpacing", 3000, "channel spacing code");
    }
    return parameters;
}

const CalibrationTable* chargePumpTable(Standalone::TableStore& tables, int channel, Direction direction) {
    const std::string name = capital(direction) + ".Rf.Pll.Frequency.To.Chargepump.Setting";
    const CalibrationTable* const own = tables.find("Channel." + std::to_string(channel) + "." + name);
    return own != nullptr ? own : tables.find("Channel.1." + name + ".Pdb");
}

std::string driverPrefix(int channel, Direction direction) {
    return "channel." + std::to_string(channel) + "." + std::string(toString(direction)) + ".";
}

std::string signedText(std::int64_t number) {
    return (number < 0 ? "" : "+") + std::to_string(number);
}

} // namespace Radio::Plan
