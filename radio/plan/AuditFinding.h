#ifndef RADIO_PLAN_AUDITFINDING_H
#define RADIO_PLAN_AUDITFINDING_H

#include "radio/board/Board.h"
#include "radio/plan/HardwareWords.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace Radio::Plan {

/** What can be wrong with one carrier. */
enum class FindingKind : std::uint8_t {
    failed,            ///< the library reported an error
    unhandledSpacing,  ///< the DSP has no half spacing for the channel spacing
    noCarrier,         ///< a word without which there is no carrier was not written
    ifPllOutOfRange,   ///< beyond the board's limits
    rfPllOutOfRange,   ///< beyond the board's limits
    wordOverflow,      ///< the driver's 32-bit word has another value than was meant
    chargePumpClamped, ///< the carrier lies outside the axis of the charge-pump table
    carrierOff,        ///< the produced carrier is further off than the board allows
    retuneDiffers,     ///< coming back from another carrier gives other words
};

/** The word for a kind in CSV and JSON, for example "if-pll-out-of-range". */
std::string_view toString(FindingKind kind);

/** Something outside its limits at one carrier. */
struct CarrierFinding {
    FindingKind kind;
    /** In kHz. */
    std::uint32_t carrier = 0;
    /** The word that is concerned. */
    Word word = Word::rfPll;
    /** What was found; its limits; and by how much it is outside. */
    std::int64_t value = 0;
    Range limits{0, 0};
    std::int64_t excess = 0;
    std::string_view unit{};
    /** For kinds whose story is more than numbers; for a carrier that is off, why, where that is known. */
    std::string text{};
};

/** The finding in words, without its carrier, for example "carrier off by +2000 Hz, allowed are 500 Hz". */
std::string describe(const CarrierFinding& finding);

} // namespace Radio::Plan

#endif
