#ifndef RADIO_CALIBRATION_CLIMATETERMS_H
#define RADIO_CALIBRATION_CLIMATETERMS_H

#include "radio/board/Board.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <vector>

namespace Radio::Calibration {

/** When a temperature counts as reached. */
struct ClimateTerms {
    /** So many degrees beside the wanted temperature will do. */
    int tolerance = 2;
    /** So long the sensor has to have been near. */
    std::chrono::seconds dwell{0};
    /** Somebody is there who brings temperatures about. */
    bool isAttended = false;
};

/** What is wished for, else what the board says, else 2 degrees; and a minute where there is a chamber, whose
 * air is there before the radio is. */
ClimateTerms climateTermsFor(const Board& board, const CalibrationDescription& wishes, bool isAttended);

/**
 * Ascending temperatures in the order in which a radio gets through them soonest that is at `now`: to the end
 * that is nearer, by what lies on the way, and then to the other one. Without `now` as they are.
 */
std::vector<std::int32_t> routeThrough(const std::vector<std::int32_t>& temperatures, std::optional<int> now);

} // namespace Radio::Calibration

#endif
