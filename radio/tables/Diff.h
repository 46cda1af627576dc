#ifndef RADIO_TABLES_DIFF_H
#define RADIO_TABLES_DIFF_H

#include "radio/tables/Corrections.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

/** What became of LO-cancellation tables. Touches no radio; may be called on any thread. */
namespace Radio::Tables {

/** One node of two pairs of tables. */
struct NodeDifference {
    /** In kHz. */
    std::int32_t carrier = 0;
    /** In degrees Celsius. */
    std::int32_t temperature = 0;
    LoCorrections before;
    LoCorrections after;
    /** Modelled leakage with each, in dBc; nothing without a model. */
    std::optional<double> levelBefore;
    std::optional<double> levelAfter;

    /** How far the corrections moved, in units of their drivers. */
    double move() const;
    bool hasMoved() const { return before.i != after.i || before.q != after.q; }
    /** By how many dB the leakage rose; 0 when it did not, or nobody knows. */
    double worsening() const;
};

/** What became of one channel. */
struct ChannelDifference {
    /** Nothing when neither file says which it is. */
    std::optional<int> channel;
    /** The tables have other nodes: they were compared at those of both. */
    bool axesDiffer;
    /** In the order of carriers, then temperatures. At least one. */
    std::vector<NodeDifference> nodes;

    std::size_t moved() const;
};

struct Difference {
    /** The channels that both have. At least one. */
    std::vector<ChannelDifference> channels;
    std::vector<int> onlyBefore;
    std::vector<int> onlyAfter;

    bool isThere() const;
};

/** The board that describes the leakage: `named` if there is one, else `after`, else `before`; null when none
 * does. It is a part of what was given, and valid as long as that. */
const Board* modelOf(const std::optional<Board>& named, const Source& before, const Source& after);

/**
 * Compares the tables of `before` and `after`, of all channels that both have or only of `channel`. Leakage
 * is modelled as `model` describes it; null: not at all. A file that does not say its channel goes with any
 * one. All of it is borrowed during the call only. Throws InputError when they have no channel in common, and
 * ChoiceError, with the choice "channel", when a file that does not say its channel could go with several.
 */
Difference compare(const Source& before, const Source& after, const Board* model, std::optional<int> channel);

} // namespace Radio::Tables

#endif
