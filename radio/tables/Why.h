#ifndef RADIO_TABLES_WHY_H
#define RADIO_TABLES_WHY_H

#include "radio/session/BootedRadio.h"
#include "radio/tables/Lookup.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Radio::Tables {

/** How the correction of one branch came about. */
struct BranchReason {
    /** "I" or "Q". */
    std::string branch;
    std::string table;
    /** The CSV file of the table and its column; empty when it stands in the board. */
    std::string file;
    std::string column;
    /** Nothing when the table gives no value; then `whyNoValue` says why, and 0 is written. */
    std::optional<Lookup> lookup;
    std::string whyNoValue;
    /** What is to be written. */
    std::int64_t computed = 0;
    /** The driver that takes it. */
    std::string driver;
    /** What was tried to write to it; nothing when it was not written. */
    std::optional<std::int64_t> written;
    /** The driver's answer. */
    std::int32_t code = 0;
};

/** How one carrier at one temperature comes to its corrections. */
struct Reason {
    ChannelDescription channel;
    /** In kHz. */
    std::uint32_t carrier;
    /** In degrees Celsius. */
    std::int32_t temperature;
    /** Why there are no corrections by frequency at all; empty when there are. */
    std::string whyNone;
    /** Both branches; none without corrections. */
    std::vector<BranchReason> branches;
    /** Modelled leakage as it is now, and with both corrections 0, in dBc; nothing without a model. */
    std::optional<double> level;
    std::optional<double> levelWithout;
    /** What the library reported as errors. */
    std::vector<std::string> complaints;
    /** In what the library did something else than the tables say, told for a person. */
    std::vector<std::string> disagreements;
};

/**
 * Sets a temperature, tunes the transmitter of a channel of a radio that is up, and explains its corrections;
 * what goes wrong is in the reason. `booted` is a radio of `board`, and `channel` one of the board's;
 * `carrier` is in kHz, `temperature` in degrees Celsius. What `booted` noted before is forgotten, and the
 * radio stays at that temperature and carrier.
 *
 * To be called on the thread that drives `booted`. What is given is borrowed during the call only.
 */
Reason explainCorrections(BootedRadio& booted, const Board& board, const ChannelDescription& channel,
                          std::uint32_t carrier, std::int32_t temperature);

} // namespace Radio::Tables

#endif
