#ifndef RADIO_CALIBRATION_FITOUTCOME_H
#define RADIO_CALIBRATION_FITOUTCOME_H

#include "radio/board/Board.h"
#include "radio/calibration/Calibration.h"
#include "radio/calibration/FitProber.h"
#include "radio/fit/Order.h"

#include <cstdint>

/** Between a calibration and the fit that it has made. */
namespace Radio::Calibration {

/** What a fit is asked for by a calibration, `result`, that has no points yet. */
Fit::Order fitOrder(const Board& board, const Result& result, std::int32_t startTemperature);

/**
 * Puts what came of a fit into `result`: its points with their probes, held to `limits`, and the nodes of its
 * tables. `leakage` is that of the modelled transmitter, which says what really leaks; null on hardware.
 */
void takeOutcome(Result& result, Fit::Outcome outcome, const FitProber& prober,
                 const LeakageDescription* leakage, const Limits& limits);

} // namespace Radio::Calibration

#endif
