#ifndef RADIO_BOARD_CALIBRATIONBOUNDS_H
#define RADIO_BOARD_CALIBRATIONBOUNDS_H

#include "radio/board/Board.h"

#include <cstddef>

/** What can be asked of a calibration, by a board or by whoever starts one; and of a radio's sensor. */
namespace Radio {

/** Transmit carriers, in kHz. */
constexpr Range carrierBounds{1, 2147483647};
/** No radio works outside, nor does its sensor; one in Kelvin or in tenths of a degree is found out. */
constexpr Range temperatureBounds{-100, 200};
/** The difference of two corrections fits an int. */
constexpr Range correctionBounds{-1000000000, 1000000000};
constexpr Range minDeltaBounds{0, 1000000000};
constexpr Range iterationBounds{1, 1000};
/** In ms. */
constexpr Range settleTimeBounds{0, 60000};
/** In degrees, and in seconds. */
constexpr Range toleranceBounds{0, 20};
constexpr Range dwellBounds{0, 86400};
/** In minutes. */
constexpr Range awaitLimitBounds{1, 1440};
/** In probes: less tell nothing of a band, and more nobody waits for. */
constexpr Range budgetBounds{60, 100000};
/** Their tables stay far below the size that boards load. */
constexpr std::size_t maxPoints = 40000;

constexpr const char* shrinkFactorText = "a number between 0 and 1, such as 0.75";
constexpr bool isShrinkFactor(double factor) {
    return factor > 0.0 && factor < 1.0;
}

} // namespace Radio

#endif
