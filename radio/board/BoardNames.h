#ifndef RADIO_BOARD_BOARDNAMES_H
#define RADIO_BOARD_BOARDNAMES_H

#include "radio/board/Board.h"
#include "radio/board/PlatformWords.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Radio {

/** The names that a command can use on one board: what lines are checked against and completed from. */
struct BoardNames {
    explicit BoardNames(const Board& board);

    std::vector<std::string> channels;
    std::vector<std::string> drivers;
    std::vector<std::string> variables;
    std::vector<std::string> tables;
    /** The remote radio units that the board describes. */
    std::vector<std::string> raus;
    /** The interfaces of the platform whose presence can be changed. */
    std::vector<std::string> platformInterfaces;
    /** Every name that somebody looks up in or gives to the broker. */
    std::vector<std::string> brokerNames;
    /** Where values reach hardware: drivers, and the carriers of remote radio units. */
    std::vector<std::string> hardware;
};

/** The board's channel of that number; null when there is none. */
const ChannelDescription* findChannel(const Board& board, int number);
/** The LO leakage of a channel; null when the board describes none. */
const LeakageDescription* findLeakage(const Board& board, int channel);
/** What a driver is in hardware; null when it has none. */
const Devices::DriverHardware* findHardware(const Board& board, std::string_view driver);
/** From the first to the last transmit carrier of the channel's rasters, in kHz; nothing without any. */
std::optional<Range> transmitBand(const Board& board, int channel);
/** `base`, followed by "_" and the channel unless it is 0. */
std::string channelName(std::string_view base, int channel);
/** The name under which a handler is published, for example "IFrequencyHandler_Tx_1". */
std::string handlerName(Direction direction, int channel);
/** The name under which the remote radio unit of a channel is published, for example "IRauHandler_1". */
std::string rauName(int channel);
/** How a carrier of a remote radio unit is called where values reach hardware, for example
 * "IRauHandler_1.tx". */
std::string rauCarrierName(std::string_view rau, Direction direction);
/** The channel of the remote radio unit `name`; nothing when it is no name of one. */
std::optional<int> rauChannel(std::string_view name);
/** The table that corrects a branch, "I" or "Q", of a channel's mixer by frequency and temperature. */
std::string cancellationTableName(int channel, std::string_view branch);
/** The LO-cancellation table for a branch, "I" or "Q", of a board's channel; null when there is none. */
const TableDescription* findCancellationTable(const Board& board, int channel, std::string_view branch);
/**
 * The array of which a receiver reads as many integers as the variable `name` says; null when `name` is no
 * such variable, or the board has no such array.
 */
const VariableDescription* arraySizedBy(std::string_view name, const Board& board);

} // namespace Radio

#endif
