#ifndef RADIO_PLAN_PRODUCEDCARRIER_H
#define RADIO_PLAN_PRODUCEDCARRIER_H

#include "radio/plan/HardwareWords.h"
#include "radio/plan/PlanParameters.h"

#include <cstdint>
#include <optional>

namespace Radio::Plan {

/** What the hardware makes of the words that it was given, in Hz. */
struct ProducedCarrier {
    /** The LO of the mixer. */
    std::int64_t lo = 0;
    /** The IF, without the baseband offset; 0 without an IF synthesiser. */
    std::int64_t intermediate = 0;
    /** By how much the DSP shifts what is received. */
    std::int64_t dspShift = 0;
    std::int64_t carrier = 0;
};

/**
 * The carrier that the written words stand for. Nothing when a word that it takes is missing, or when the
 * result needs more than 64 bits.
 *
 * This goes the other way round than the frequency plan and shares nothing with it: it starts from what the
 * synthesisers were told, and uses of the parameters only what is built into the board (which sideband is
 * kept, the multiplier, the baseband offset).
 */
std::optional<ProducedCarrier> producedCarrier(const HardwareWords& words, const Parameters& parameters);

/** The same for a direction that passes its carrier on. */
std::optional<ProducedCarrier> passedOnCarrier(const HardwareWords& words);

} // namespace Radio::Plan

#endif
