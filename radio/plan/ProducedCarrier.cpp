#include "radio/plan/ProducedCarrier.h"

namespace Radio::Plan {

namespace {

constexpr std::int64_t hzPerKHz = 1000;
constexpr std::int64_t hzPerMHz = 1'000'000;

/** What a synthesiser with a 32-bit word in kHz takes it for: its bits, without sign. */
std::int64_t hzOfWord(std::int64_t word) {
    return static_cast<std::int64_t>(static_cast<std::uint32_t>(word)) * hzPerKHz;
}

/** The IF that carries the baseband: what the IF PLL gives, less the offset that the baseband has itself. */
std::int64_t intermediateFrequency(std::int64_t ifPll, const Parameters& parameters) {
    const std::int64_t baseband = std::int64_t{parameters.ifBb} * parameters.ifSideband * hzPerMHz;
    return hzOfWord(ifPll) - baseband;
}

} // namespace

std::optional<ProducedCarrier> producedCarrier(const HardwareWords& words, const Parameters& parameters) {
    const std::optional<std::int64_t> rfPll = words[Word::rfPll];
    const std::optional<std::int64_t> ifPll = words[Word::ifPll];
    if (!rfPll || (parameters.build.hasIfSynthesiser && !ifPll)) {
        return std::nullopt;
    }
    ProducedCarrier produced;
    const std::int64_t rfPllHz = parameters.build.hasLoInHz ? *rfPll : hzOfWord(*rfPll);
    if (__builtin_mul_overflow(rfPllHz, std::int64_t{parameters.factor}, &produced.lo)) {
        return std::nullopt;
    }
    if (parameters.build.hasIfSynthesiser) {
        produced.intermediate = intermediateFrequency(*ifPll, parameters);
    }
    produced.dspShift = words[Word::dspOffset].value_or(0) * hzPerKHz;

    // An LO above the carrier has the difference kept, an LO below it the sum.
    const bool loIsAbove = parameters.rfSideband > 0;
    const std::int64_t fromIf = loIsAbove ? -produced.intermediate : produced.intermediate;
    if (__builtin_add_overflow(produced.lo, fromIf + produced.dspShift, &produced.carrier)) {
        return std::nullopt;
    }
    return produced;
}

std::optional<ProducedCarrier> passedOnCarrier(const HardwareWords& words) {
    const std::optional<std::int64_t> carrier = words[Word::carrier];
    if (!carrier) {
        return std::nullopt;
    }
    ProducedCarrier produced;
    produced.carrier = hzOfWord(*carrier);
    return produced;
}

} // namespace Radio::Plan
