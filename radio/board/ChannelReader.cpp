#include "radio/board/ChannelReader.h"

#include <algorithm>

namespace Radio {

int ChannelReader::read(const TomlItem& table) {
    const std::string expected = "the number of one of the board's channels";
    const TomlItem item = table.get("channel", expected);
    const int number = item.integer();
    if (std::none_of(m_channels.begin(), m_channels.end(),
                     [number](const ChannelDescription& channel) { return channel.number == number; })) {
        item.failExpecting(expected);
    }
    const auto [first, isNew] = m_lineOfChannel.emplace(number, item.place().line);
    if (!isNew) {
        item.fail(std::to_string(number) + " has the " + m_what + " on line " +
                  std::to_string(first->second) + ", expected one for each channel");
    }
    return number;
}

} // namespace Radio
