#include "radio/plan/PlanSteps.h"

#include "standalone/Interpolation.h"

#include <algorithm>
#include <array>

namespace Radio::Plan {

namespace {

constexpr std::int32_t defaultOffset = 3000;
constexpr std::int32_t codeForHalfSpacing = 3;
constexpr std::array<std::int32_t, 3> spacingsWithHalf = {125, 250, 500};

struct HalfSpacing {
    std::int32_t code;
    std::int32_t kHz;
};
constexpr std::array<HalfSpacing, 10> halfSpacings{{{50, 25000},
                                                    {100, 50000},
                                                    {150, 75000},
                                                    {200, 100000},
                                                    {250, 125000},
                                                    {300, 25000},
                                                    {350, 50000},
                                                    {400, 75000},
                                                    {450, 100000},
                                                    {600, 125000}}};

/** What is left of a number in 32 bits with sign. */
std::int32_t wrapped(std::int64_t number) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(number));
}

std::uint32_t magnitude(std::int32_t number) {
    return static_cast<std::uint32_t>(number < 0 ? -std::int64_t{number} : std::int64_t{number});
}

/** The array's offset for the channel spacing; 0 when there is no entry. */
std::int32_t storedOffset(const Parameters& parameters) {
    const std::vector<std::int32_t>& array = parameters.offsetArray;
    for (std::size_t i = 0; i + 1 < array.size(); i += 2) {
        if (array[i] == parameters.channelSpacing) {
            return array[i + 1];
        }
    }
    return 0;
}

SpacingOffset spacingOffsetOf(const Parameters& parameters) {
    const std::int64_t sign = parameters.rfSideband;
    const std::int32_t spacing = parameters.channelSpacing;
    SpacingOffset offset{SpacingOffset::Source::byDefault, defaultOffset, 0, 0};
    const std::int32_t stored = storedOffset(parameters);
    const bool takesHalf =
        parameters.hwCodeDsp == codeForHalfSpacing &&
        std::find(spacingsWithHalf.begin(), spacingsWithHalf.end(), spacing) != spacingsWithHalf.end();
    if (stored != 0) {
        offset = {SpacingOffset::Source::arrayEntry, wrapped(sign * magnitude(stored)), stored, 0};
    } else if (takesHalf) {
        offset = {SpacingOffset::Source::halfSpacing, wrapped(sign * spacing * 1000 / 2), 0, 0};
    }
    offset.dspWord = offset.kHz == defaultOffset ? 0 : wrapped(-std::int64_t{offset.kHz});
    return offset;
}

/** The weighted sum of two cells over the width, rounded to the nearest integer, halves away from zero. */
std::int32_t weighed(std::int32_t low, std::int32_t high, std::uint32_t offset, std::uint32_t width) {
    const std::int64_t sum = std::int64_t{low} * (width - offset) + std::int64_t{high} * offset;
    const std::int64_t whole = sum / width;
    const std::int64_t rest = sum % width;
    const bool roundsAway = 2 * (rest < 0 ? -rest : rest) >= width;
    return static_cast<std::int32_t>(whole + (roundsAway ? (sum < 0 ? -1 : 1) : 0));
}

} // namespace

std::uint32_t SpacingShift::adjusted(std::uint32_t carrier) const {
    return carrier + static_cast<std::uint32_t>(offset ? offset->kHz : 0);
}

std::optional<std::int32_t> SpacingShift::dspWord() const {
    if (half) {
        return half;
    }
    return offset ? std::optional(offset->dspWord) : std::nullopt;
}

std::string whyCarrierIsOff(const SpacingShift& shift, const Parameters& parameters) {
    if (!shift.offset || shift.offset->source != SpacingOffset::Source::byDefault) {
        return {};
    }
    return "the array has no entry for channel spacing " + std::to_string(parameters.channelSpacing) +
           ", and by default the LO moves by " + signedText(defaultOffset / 1000) + " MHz";
}

SpacingShift spacingShiftOf(const Parameters& parameters) {
    SpacingShift shift;
    if (parameters.build.hasOffsetArray) {
        shift.offset = spacingOffsetOf(parameters);
    }
    if (parameters.build.shiftsByHalfSpacing) {
        const auto* const row =
            std::find_if(halfSpacings.begin(), halfSpacings.end(), [&](const HalfSpacing& candidate) {
                return candidate.code == parameters.channelSpacing;
            });
        shift.isUnhandled = row == halfSpacings.end();
        shift.half = shift.isUnhandled ? std::nullopt : std::optional(row->kHz);
    }
    return shift;
}

PlanSteps stepsFor(std::uint32_t carrier, const SpacingShift& shift, const Parameters& parameters) {
    PlanSteps steps;
    steps.adjusted = shift.adjusted(carrier);
    steps.planned = steps.adjusted - static_cast<std::uint32_t>(shift.half.value_or(0));

    const std::int64_t rfSideband = parameters.rfSideband;
    steps.signedLo = wrapped(std::int64_t{steps.planned} + rfSideband * parameters.ifFrequency);
    steps.lo = magnitude(steps.signedLo);
    steps.stepMHz = (steps.lo + 500) / 1000;
    steps.residue = wrapped(std::int64_t{steps.lo} - 1000 * std::int64_t{steps.stepMHz});
    if (parameters.build.hasIfSynthesiser) {
        const std::int64_t baseband =
            wrapped(1000 * std::int64_t{wrapped(std::int64_t{parameters.ifBb} * parameters.ifSideband)});
        steps.signedIfPll = wrapped(parameters.ifFrequency + baseband - rfSideband * steps.residue);
        steps.ifPll = magnitude(*steps.signedIfPll);
    }
    // A negative factor divides by the huge number that it is in 64 bits without sign.
    const auto divisor = static_cast<std::uint64_t>(std::int64_t{parameters.factor});
    steps.dividend = std::uint64_t{parameters.build.hasLoInHz ? steps.planned : steps.stepMHz} * 1000;
    steps.rfPll = steps.dividend / divisor;
    steps.remainder = steps.dividend % divisor;
    return steps;
}

ChargePumpStep chargePumpAt(const CalibrationTable& table, std::uint32_t carrier) {
    const auto at = static_cast<std::int32_t>(carrier);
    const std::vector<std::int32_t>& axis = table.axis1;
    const auto [low, offset, width] = Standalone::Interpolation::locate(axis, at);
    const std::size_t high = offset == 0 ? low : low + 1;
    const bool isClamped = at < axis.front() || at > axis.back();
    return {at,
            low,
            high,
            offset,
            width,
            isClamped,
            weighed(table.values[low], table.values[high], offset, width)};
}

} // namespace Radio::Plan
