#ifndef RADIO_SESSION_CHANNELFAILURES_H
#define RADIO_SESSION_CHANNELFAILURES_H

#include "radio/board/Board.h"
#include "standalone/Platform.h"

#include <map>
#include <string>
#include <string_view>

namespace Radio {

/** What went wrong last on each channel of a board: a trace error that names it, or a write that failed. */
class ChannelFailures {
public:
    explicit ChannelFailures(const Board& board);

    void note(const Standalone::Call& call);
    void note(const Standalone::TraceMessage& message);
    /** For each channel, by its number, the last failure as a text; empty for none. */
    const std::map<int, std::string>& texts() const { return m_texts; }

private:
    std::map<int, std::string> m_texts;
};

/** Whether a text of the library speaks of a channel: "channel.1.", "Channel.1.", "RadioChannel 1". */
bool namesChannel(std::string_view text, int channel);

} // namespace Radio

#endif
