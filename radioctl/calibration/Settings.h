#ifndef RADIOCTL_CALIBRATION_SETTINGS_H
#define RADIOCTL_CALIBRATION_SETTINGS_H

#include "Board.h"
#include "JsonLine.h"
#include "calibration/Calibration.h"

#include <cstddef>

namespace Radioctl::Calibration {

// What can be asked for.
constexpr Range carrierBounds{1, 2147483647};
/** No radio works outside. */
constexpr Range temperatureBounds{-100, 200};
/** The difference of two corrections fits an int. */
constexpr Range correctionBounds{-1000000000, 1000000000};
constexpr Range minDeltaBounds{0, 1000000000};
constexpr Range iterationBounds{1, 1000};
/** In ms. */
constexpr Range settleTimeBounds{0, 60000};
constexpr std::size_t maxPoints = 100000;

constexpr const char* shrinkFactorText = "a number between 0 and 1, such as 0.75";
bool isShrinkFactor(double factor);

/**
 * What a calibration of a channel comes to: what is wished for, else what the board describes, else what
 * serves most transmitters. Throws InputError when something has to be said and nobody does. `wishes` names
 * one of the board's channels, which has a leakage.
 */
Settings settingsFor(const Board& board, const CalibrationDescription& wishes);

/** The leakage of a channel; null when the board describes none. */
const LeakageDescription* leakageOf(const Board& board, int channel);

/** What is written in front of a journal. */
Json toJson(const Settings& settings);
/** Reads it back; throws nlohmann's exceptions or std::runtime_error for anything that toJson does not write.
 */
Settings settingsFromJson(const Json& json);

} // namespace Radioctl::Calibration

#endif
