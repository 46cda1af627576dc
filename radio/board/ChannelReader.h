#ifndef RADIO_BOARD_CHANNELREADER_H
#define RADIO_BOARD_CHANNELREADER_H

#include "radio/board/Board.h"
#include "radio/board/TomlItem.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace Radio {

/** Reads for which channels there are tables, and sees to it that none has two. */
class ChannelReader {
public:
    /** `what` is what the tables describe, for example "leakage". Borrows `channels`, those of the board. */
    ChannelReader(const std::vector<ChannelDescription>& channels, std::string what)
        : m_channels(channels),
          m_what(std::move(what)) {}

    /** The number under "channel" of `table`. */
    int read(const TomlItem& table);

private:
    const std::vector<ChannelDescription>& m_channels;
    std::string m_what;
    std::map<int, unsigned> m_lineOfChannel;
};

} // namespace Radio

#endif
