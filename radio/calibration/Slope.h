#ifndef RADIO_CALIBRATION_SLOPE_H
#define RADIO_CALIBRATION_SLOPE_H

#include <optional>
#include <utility>
#include <vector>

namespace Radio::Calibration {

/** Readings along a line of corrections: where, and what was read. */
using ReadingLine = std::vector<std::pair<double, double>>;

/**
 * The slope of a logarithmic detector, in units for each dB, from its readings along lines. Power is a
 * parabola along each of them: the slope is that with which the readings become the best parabolas. Nothing
 * when no slope fits them to `tolerance`, root mean square, in units; and when there are fewer than eight
 * readings.
 */
std::optional<double> slopeOf(const std::vector<ReadingLine>& lines, double tolerance);

} // namespace Radio::Calibration

#endif
