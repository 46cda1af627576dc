#ifndef FREQUENCYHANDLER_PRIVATE_FREQUENCYPLAN_H
#define FREQUENCYHANDLER_PRIVATE_FREQUENCYPLAN_H

#include <cstdint>

/**
 * The arithmetic of the microwave board's frequency plan: values in, values out.
 *
 * All of it is 32-bit two's complement with wrap-around, on any host, unless a 64-bit type is named.
 */
namespace RL::FrequencyHandler::FrequencyPlan {

/** What the plan depends on beside the carrier. */
struct Parameters {
    /** Sign of the conversion between baseband and IF: +1 or -1. */
    std::int32_t ifSideband;
    /** Sign of the conversion between IF and carrier: +1 puts the LO above the carrier, -1 below. */
    std::int32_t rfSideband;
    /** Intermediate frequency, in kHz. */
    std::int32_t ifFrequency;
    /** How many times the mixer's LO is the output of the RF PLL; not 0. */
    std::int32_t mixerMultiplicationFactor;
    /** Baseband offset inside the IF, in MHz. */
    std::int32_t ifBb;
};

/** The RF LO, in kHz, for a carrier in kHz: IF above or below it; a negative sum folds to its magnitude. */
std::uint32_t rfLoFrequency(std::uint32_t carrier, const Parameters& parameters);

/** A frequency in kHz rounded to whole MHz, halves up. */
std::uint32_t frequencyStep(std::uint32_t frequency);

/**
 * The IF PLL, in kHz, for a carrier in kHz. It takes up the baseband offset and what is left of the LO when
 * the RF PLL is tuned in whole MHz.
 */
std::uint32_t ifPllFrequency(std::uint32_t carrier, const Parameters& parameters);

/** The RF PLL, in kHz, for a carrier in kHz: the LO in whole MHz, divided by the multiplication factor. */
std::uint64_t rfPllFrequency(std::uint32_t carrier, const Parameters& parameters);

/** The RF PLL, in Hz, that gives exactly the LO `lo`, in kHz; IF and sidebands have no say in it. */
std::uint64_t exactRfPllFrequency(std::uint32_t lo, const Parameters& parameters);

/** The baseband frequency, in kHz. */
std::uint32_t bbFrequency(const Parameters& parameters);

} // namespace RL::FrequencyHandler::FrequencyPlan

#endif
