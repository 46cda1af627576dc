#include "radio/plan/Forecast.h"

namespace Radio::Plan {

HardwareWords expectedWords(const SpacingShift& shift, const PlanSteps& steps, const Parameters& parameters) {
    HardwareWords words;
    if (const auto dspWord = shift.dspWord()) {
        words[Word::dspOffset] = *dspWord;
    }
    if (steps.ifPll) {
        words[Word::ifPll] = static_cast<std::int32_t>(*steps.ifPll);
    }
    words[Word::rfPll] = parameters.build.hasLoInHz
                             ? static_cast<std::int64_t>(steps.rfPll)
                             : static_cast<std::int32_t>(static_cast<std::uint32_t>(steps.rfPll));
    return words;
}

std::optional<HardwareWords> forecast(Standalone::Platform& platform, const ChannelDescription& channel,
                                      Direction direction, std::uint32_t carrier) {
    const std::optional<Build> build = buildOf(channel.type, direction);
    if (!build) {
        HardwareWords words;
        words[Word::carrier] = carrier;
        return words;
    }
    const Parameters parameters = readParameters(platform.variables(), channel.number, direction, *build);
    const SpacingShift shift = spacingShiftOf(parameters);
    if (shift.isUnhandled || parameters.factor == 0) {
        return std::nullopt;
    }
    return expectedWords(shift, stepsFor(carrier, shift, parameters), parameters);
}

} // namespace Radio::Plan
