#ifndef RADIO_PLAN_PLANPARAMETERS_H
#define RADIO_PLAN_PLANPARAMETERS_H

#include "radio/board/Board.h"
#include "radio/board/PlatformWords.h"
#include "standalone/Platform.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Radio::Plan {

/** How one direction of a microwave board is built. */
struct Build {
    /** The IF comes from a synthesiser of its own; without one there is no IF. */
    bool hasIfSynthesiser = false;
    /** The DSP shifts what is received by half the channel spacing. */
    bool shiftsByHalfSpacing = false;
    /** The LO is moved by an offset per channel spacing, and the DSP moves what is received back. */
    bool hasOffsetArray = false;
    /** The RF PLL takes Hz instead of kHz. */
    bool hasLoInHz = false;

    bool readsChannelSpacing() const { return shiftsByHalfSpacing || hasOffsetArray; }
};

/** How a direction of a channel is built; nothing when it passes its carrier on as it is. */
std::optional<Build> buildOf(::FrequencyHandler::FrequencyHandlerType type, Direction direction);

/** A database variable that the plan read, and what it makes of it. */
struct ReadVariable {
    std::string name;
    /** Empty when there is no such variable. */
    std::vector<std::int32_t> values;
    std::string meaning;
};

/** What the plan of one direction depends on beside the carrier. */
struct Parameters {
    Build build;
    std::int32_t factor = 1;
    /** +1: the LO lies above the carrier, -1: below. */
    std::int32_t rfSideband = -1;
    std::int32_t ifSideband = -1;
    /** In kHz; 0 without an IF synthesiser. */
    std::int32_t ifFrequency = 0;
    /** Baseband offset inside the IF, in MHz. */
    std::int32_t ifBb = 0;
    std::int32_t channelSpacing = 3000;
    std::int32_t hwCodeDsp = 0;
    /** Pairs of channel spacing and offset in kHz, as far as the size variable counts. */
    std::vector<std::int32_t> offsetArray;
    /** What was read for all this, in the order of reading. */
    std::vector<ReadVariable> variables;
};

/** Reads the parameters as the handler of that channel and direction does in its start-up phases. */
Parameters readParameters(Standalone::VariableStore& database, int channel, Direction direction,
                          const Build& build);

/** The charge-pump table of a channel and direction; null when there is none. */
const CalibrationTable* chargePumpTable(Standalone::TableStore& tables, int channel, Direction direction);

/** "channel.1.tx." */
std::string driverPrefix(int channel, Direction direction);

/** "+1" or "-1": with its sign, whatever it is. */
std::string signedText(std::int64_t number);

} // namespace Radio::Plan

#endif
