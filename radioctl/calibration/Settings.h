#ifndef RADIOCTL_CALIBRATION_SETTINGS_H
#define RADIOCTL_CALIBRATION_SETTINGS_H

#include "Board.h"
#include "JsonLine.h"
#include "calibration/Calibration.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>

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
/** Their tables stay far below the size that boards load. */
constexpr std::size_t maxPoints = 40000;

constexpr const char* shrinkFactorText = "a number between 0 and 1, such as 0.75";
bool isShrinkFactor(double factor);

/**
 * What a calibration of a channel comes to: what is wished for, else what the board describes, else what
 * serves most transmitters. Throws InputError when something has to be said and nobody does. `wishes` names
 * one of the board's channels, which has a leakage.
 */
Settings settingsFor(const Board& board, const CalibrationDescription& wishes);

/** A whole number of a file, within `bounds`; throws std::runtime_error for anything else. */
template <typename Number>
Number wholeNumber(const Json& json, const Range& bounds = {std::numeric_limits<Number>::min(),
                                                            std::numeric_limits<Number>::max()}) {
    const bool isWhole =
        json.is_number_integer() &&
        (!json.is_number_unsigned() || json.get<std::uint64_t>() <= std::numeric_limits<std::int64_t>::max());
    const std::int64_t number = isWhole ? json.get<std::int64_t>() : 0;
    if (!isWhole || number < bounds.low || number > bounds.high) {
        throw std::runtime_error("expected a whole number from " + std::to_string(bounds.low) + " to " +
                                 std::to_string(bounds.high) + ", found " + std::string(json.type_name()));
    }
    return static_cast<Number>(number);
}

/** What is written in front of a journal. */
Json toJson(const Settings& settings);
/** Reads it back; throws nlohmann's exceptions or std::runtime_error for anything that toJson does not write.
 */
Settings settingsFromJson(const Json& json);

} // namespace Radioctl::Calibration

#endif
