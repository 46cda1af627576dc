#include "FrequencyPlan.h"

namespace RL::FrequencyHandler::FrequencyPlan {

namespace {

/** The 32-bit word of a signed number, on which sums, differences and products wrap around. */
constexpr std::uint32_t word(std::int32_t number) {
    return static_cast<std::uint32_t>(number);
}

/** The magnitude of the signed number that `value` stands for. */
constexpr std::uint32_t magnitude(std::uint32_t value) {
    return static_cast<std::int32_t>(value) < 0 ? 0U - value : value;
}

/** The factor widened with its sign: a negative one divides by a huge number. */
constexpr std::uint64_t divisor(const Parameters& parameters) {
    return static_cast<std::uint64_t>(std::int64_t{parameters.mixerMultiplicationFactor});
}

} // namespace

std::uint32_t rfLoFrequency(std::uint32_t carrier, const Parameters& parameters) {
    return magnitude(carrier + word(parameters.ifFrequency) * word(parameters.rfSideband));
}

std::uint32_t frequencyStep(std::uint32_t frequency) {
    return (frequency + 500U) / 1000U;
}

std::uint32_t ifPllFrequency(std::uint32_t carrier, const Parameters& parameters) {
    const std::uint32_t lo = rfLoFrequency(carrier, parameters);
    const std::uint32_t residue = lo - 1000U * frequencyStep(lo);
    const std::uint32_t baseband = 1000U * (word(parameters.ifBb) * word(parameters.ifSideband));
    return magnitude(word(parameters.ifFrequency) + baseband - word(parameters.rfSideband) * residue);
}

std::uint64_t rfPllFrequency(std::uint32_t carrier, const Parameters& parameters) {
    const std::uint32_t step = frequencyStep(rfLoFrequency(carrier, parameters));
    return std::uint64_t{step} * 1000U / divisor(parameters);
}

std::uint64_t exactRfPllFrequency(std::uint32_t lo, const Parameters& parameters) {
    return std::uint64_t{lo} * 1000U / divisor(parameters);
}

std::uint32_t bbFrequency(const Parameters& parameters) {
    return 1000U * word(parameters.ifBb);
}

} // namespace RL::FrequencyHandler::FrequencyPlan
