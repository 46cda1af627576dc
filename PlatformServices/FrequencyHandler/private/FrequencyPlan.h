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
    /** How many times the mixer's LO is the output of the RF PLL. */
    std::int32_t mixerMultiplicationFactor;
    /** Baseband offset inside the IF, in MHz. */
    std::int32_t ifBb;
};

/** The 32-bit word of a signed number, on which sums, differences and products wrap around. */
constexpr std::uint32_t word(std::int32_t number) {
    return static_cast<std::uint32_t>(number);
}

/** The magnitude of the signed number that `value` stands for. */
constexpr std::uint32_t magnitude(std::uint32_t value) {
    return value >> 31U == 0U ? value : 0U - value;
}

/** Not for use outside this file. */
namespace Detail {

/**
 * What a division by the multiplication factor leaves: quotient and rest. A negative factor stands for the
 * huge 64-bit number with its sign, by which nothing is divided but to 0; a factor of 0 is taken like one. In
 * 32 bits, because a division of 64 bits takes hundreds of instructions where the processor has none.
 */
struct Divided {
    std::uint32_t quotient;
    std::uint32_t rest;
    std::uint32_t divisor;
};
constexpr Divided divide(std::uint32_t frequency, const Parameters& parameters) {
    const std::int32_t factor = parameters.mixerMultiplicationFactor;
    return factor > 0 ? Divided{frequency / word(factor), frequency % word(factor), word(factor)}
                      : Divided{0, 0, 1};
}

} // namespace Detail

/** The RF LO, in kHz, for a carrier in kHz: IF above or below it; a negative sum folds to its magnitude. */
constexpr std::uint32_t rfLoFrequency(std::uint32_t carrier, const Parameters& parameters) {
    return magnitude(carrier + word(parameters.ifFrequency) * word(parameters.rfSideband));
}

/** A frequency in kHz rounded to whole MHz, halves up. */
constexpr std::uint32_t frequencyStep(std::uint32_t frequency) {
    return (frequency + 500U) / 1000U;
}

/**
 * The IF PLL, in kHz, for a carrier in kHz. It takes up the baseband offset and what is left of the LO when
 * the RF PLL is tuned in whole MHz.
 */
constexpr std::uint32_t ifPllFrequency(std::uint32_t carrier, const Parameters& parameters) {
    const std::uint32_t lo = rfLoFrequency(carrier, parameters);
    const std::uint32_t residue = lo - 1000U * frequencyStep(lo);
    const std::uint32_t baseband = 1000U * (word(parameters.ifBb) * word(parameters.ifSideband));
    return magnitude(word(parameters.ifFrequency) + baseband - word(parameters.rfSideband) * residue);
}

/** The RF PLL, in kHz, for a carrier in kHz: the LO in whole MHz, divided by the multiplication factor. */
constexpr std::uint64_t rfPllFrequency(std::uint32_t carrier, const Parameters& parameters) {
    return Detail::divide(1000U * frequencyStep(rfLoFrequency(carrier, parameters)), parameters).quotient;
}

/** The RF PLL, in Hz, that gives exactly the LO `lo`, in kHz; IF and sidebands have no say in it. */
constexpr std::uint64_t exactRfPllFrequency(std::uint32_t lo, const Parameters& parameters) {
    const Detail::Divided inKHz = Detail::divide(lo, parameters);
    return std::uint64_t{inKHz.quotient} * 1000U + std::uint64_t{inKHz.rest} * 1000U / inKHz.divisor;
}

/** The baseband frequency, in kHz. */
constexpr std::uint32_t bbFrequency(const Parameters& parameters) {
    return 1000U * word(parameters.ifBb);
}

} // namespace RL::FrequencyHandler::FrequencyPlan

#endif
