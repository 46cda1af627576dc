#ifndef RADIO_PLAN_PLANSTEPS_H
#define RADIO_PLAN_PLANSTEPS_H

#include "radio/plan/PlanParameters.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

/**
 * The steps of the frequency plan, worked out apart from the library, to explain what it does and to know
 * what it should have written. Numbers wrap around at 32 bits where the radio's do.
 */
namespace Radio::Plan {

/** By how much the LO of a receiver with an offset array is moved, and why. */
struct SpacingOffset {
    enum class Source : std::uint8_t {
        arrayEntry,  ///< the array has an entry for the channel spacing
        halfSpacing, ///< it has none, but the DSP hardware takes half the spacing
        byDefault,   ///< neither
    };
    Source source;
    std::int32_t kHz;
    /** For an array entry, the offset as it stands there; its sign does not count. */
    std::int32_t stored;
    std::int32_t dspWord;
};

/** What the channel spacing does to a carrier, whatever that is. */
struct SpacingShift {
    /** For a receiver with an offset array. */
    std::optional<SpacingOffset> offset;
    /** For a receiver whose DSP shifts by half the spacing: by how much, in kHz. */
    std::optional<std::int32_t> half;
    /** The DSP has no half spacing for this code: nothing is written at all. */
    bool isUnhandled = false;

    /** The carrier in kHz with the offset added; the charge-pump table is read at it. */
    std::uint32_t adjusted(std::uint32_t carrier) const;
    /** What the DSP is told in the end. */
    std::optional<std::int32_t> dspWord() const;
};

SpacingShift spacingShiftOf(const Parameters& parameters);

/** Why `shift` has the produced carrier off, told for a person; empty when it does not. */
std::string whyCarrierIsOff(const SpacingShift& shift, const Parameters& parameters);

/** Where the LO lies for a carrier, and what the synthesisers have to do for it. In kHz unless stated. */
struct PlanSteps {
    /** The carrier with the channel-spacing offset added. */
    std::uint32_t adjusted = 0;
    /** The carrier for which the LO is made: the one above less half the spacing. */
    std::uint32_t planned = 0;

    /** Carrier and IF, added with the sideband's sign; below 0 it folds. Not for an LO in Hz. */
    std::int32_t signedLo = 0;
    std::uint32_t lo = 0;
    /** The LO in whole MHz, and what is left of it. */
    std::uint32_t stepMHz = 0;
    std::int32_t residue = 0;

    /** With an IF synthesiser: its frequency with sign, and as written. */
    std::optional<std::int32_t> signedIfPll;
    std::optional<std::uint32_t> ifPll;

    /** The LO in the unit of the RF PLL, and that divided by the factor, as far as it goes. */
    std::uint64_t dividend = 0;
    std::uint64_t rfPll = 0;
    std::uint64_t remainder = 0;
};

/** The steps for a carrier in kHz. The factor is not 0. */
PlanSteps stepsFor(std::uint32_t carrier, const SpacingShift& shift, const Parameters& parameters);

/** How a charge-pump setting is found between two cells of its table. */
struct ChargePumpStep {
    /** The carrier, as the table takes it. */
    std::int32_t at;
    /** The nodes on both sides; the same twice on a node and outside the axis. */
    std::size_t low;
    std::size_t high;
    /** Distance from the lower node, and of the two nodes. */
    std::uint32_t offset;
    std::uint32_t width;
    /** The carrier lies outside the axis: the nearest node holds. */
    bool isClamped;
    std::int32_t setting;
};

/** `table` has one axis. */
ChargePumpStep chargePumpAt(const CalibrationTable& table, std::uint32_t carrier);

} // namespace Radio::Plan

#endif
