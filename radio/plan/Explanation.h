#ifndef RADIO_PLAN_EXPLANATION_H
#define RADIO_PLAN_EXPLANATION_H

#include "radio/board/PlatformWords.h"
#include "radio/plan/PlanParameters.h"
#include "radio/session/BootedRadio.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Radio::Plan {

/** One line of arithmetic. */
struct ExplainedStep {
    /** For example "IF PLL". */
    std::string name;
    /** With the numbers in it, for example "|140000 + 0 + 250|". */
    std::string formula;
    std::int64_t value;
    /** For example "kHz"; may be empty. */
    std::string unit;
    /** What else there is to know; may be empty. */
    std::string note;
};

/** A value on its way to hardware. */
struct ExplainedWrite {
    std::string driver;
    std::int64_t value;
    std::int32_t code;
};

/** How one carrier becomes words, and what these produce. */
struct Explanation {
    ChannelDescription channel;
    Direction direction;
    /** In kHz. */
    std::uint32_t carrier;
    /** Empty for a direction that passes its carrier on as it is. */
    std::vector<ReadVariable> variables;
    std::vector<ExplainedStep> steps;
    std::vector<ExplainedWrite> writes;
    /** What the library reported as errors. */
    std::vector<std::string> complaints;
    std::vector<ExplainedStep> production;
    /** In Hz; nothing when no carrier comes of the words. */
    std::optional<std::int64_t> produced;
    /** Why the produced carrier is off, told for a person; empty where the steps show it. */
    std::string whyOff;
    /** The temperature that corrections were taken for, though none was told; nothing where none counts. */
    std::optional<std::int32_t> assumedDegrees;
    /** Words in which the steps and the library differ, told for a person; empty when they agree. */
    std::vector<std::string> disagreements;

    bool passesOn() const { return !buildOf(channel.type, direction).has_value(); }
    /** By how much the produced carrier is off, in Hz. */
    std::optional<std::int64_t> error() const;
    /** Why the board forbids the carrier, whatever came of it; empty when it does not. */
    std::string forbidden{};
    /** The library reported no error and wrote what the steps say, and the board allows it. */
    bool isGood() const {
        return complaints.empty() && disagreements.empty() && produced.has_value() && forbidden.empty();
    }
};

/**
 * Tunes a channel of a radio that is up, and explains what came of it; what goes wrong is in the explanation.
 * `booted` is of `board`, `channel` is one of its channels, `carrier` is in kHz. What `booted` noted before
 * is forgotten, and the radio stays tuned to `carrier`.
 *
 * To be called on the thread that drives `booted`. What is given is borrowed during the call only.
 */
Explanation explain(BootedRadio& booted, const Board& board, const ChannelDescription& channel,
                    Direction direction, std::uint32_t carrier);

} // namespace Radio::Plan

#endif
