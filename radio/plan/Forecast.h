#ifndef RADIO_PLAN_FORECAST_H
#define RADIO_PLAN_FORECAST_H

#include "radio/plan/HardwareWords.h"
#include "radio/plan/PlanSteps.h"

#include <cstdint>
#include <optional>

/** What a carrier will put into hardware, before the radio is tuned to it. */
namespace Radio::Plan {

/** What the steps of a microwave board expect in hardware, beside charge pump and corrections. */
HardwareWords expectedWords(const SpacingShift& shift, const PlanSteps& steps, const Parameters& parameters);

/**
 * What a channel will be told for a carrier in kHz, beside charge pump and corrections, with the variables as
 * the database has them. Nothing when it will be told nothing: a spacing that is not handled, or the factor
 * 0.
 */
std::optional<HardwareWords> forecast(Standalone::Platform& platform, const ChannelDescription& channel,
                                      Direction direction, std::uint32_t carrier);

} // namespace Radio::Plan

#endif
