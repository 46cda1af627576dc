#ifndef RADIO_CALIBRATION_FITOUTCOME_H
#define RADIO_CALIBRATION_FITOUTCOME_H

#include "radio/board/Board.h"
#include "radio/calibration/Calibration.h"
#include "radio/fit/Order.h"
#include "radio/fit/Outcome.h"

#include <cstdint>
#include <optional>
#include <vector>

/** Between a calibration and the fit that it has made. */
namespace Radio::Calibration {

/** What a fit is asked for by a calibration, `result`, that has no points yet. It begins where its route
 * does. */
Fit::Order fitOrder(const Board& board, const Result& result);

/** A point that was fitted, with its probes. `leakage` is that of the modelled transmitter, which says what
 * really leaks; null on hardware, where levels are as measured: in dBc if `isAbsolute`, else against each
 * other. */
Point pointOf(const Fit::Point& fitted, std::vector<Probe> probes, const LeakageDescription* leakage,
              bool isAbsolute);

/** A place where the tables were tried, in the same way. */
Point triedPointOf(const Fit::Verification& tried, const LeakageDescription* leakage, bool isAbsolute);

/**
 * What stands with the tables of a fit as its claim, in dBc. Nothing of relative levels, nor where the tables
 * could not be tried or were found wrong; a fit that missed `limit` by its claim alone claims that all the
 * same.
 */
std::optional<double> claimOf(const Fit::Outcome& outcome, const std::optional<double>& limit);

/** The nodes of the tables that came of a fit, for each temperature all carriers; those at the end of a range
 * are so. */
std::vector<Point> nodesOf(const Fit::Table& table, const Settings& settings,
                           const LeakageDescription* leakage);

} // namespace Radio::Calibration

#endif
