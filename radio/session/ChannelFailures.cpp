#include "radio/session/ChannelFailures.h"

#include "ResultCode.h"
#include "radio/board/BoardNames.h"
#include "radio/session/HardwareWrite.h"
#include "radio/text/Words.h"

#include <cctype>

namespace Radio {

static bool isDigit(char character) {
    return std::isdigit(static_cast<unsigned char>(character)) != 0;
}

bool namesChannel(std::string_view text, int channel) {
    constexpr std::string_view rest = "hannel";
    const std::string number = std::to_string(channel);
    for (std::size_t at = text.find(rest); at != std::string_view::npos; at = text.find(rest, at + 1)) {
        const std::string_view behind = text.substr(at + rest.size());
        const bool isParted = !behind.empty() && (behind.front() == '.' || behind.front() == ' ');
        if (isParted && behind.substr(1, number.size()) == number &&
            (behind.size() == number.size() + 1 || !isDigit(behind[number.size() + 1]))) {
            return true;
        }
    }
    return false;
}

ChannelFailures::ChannelFailures(const Board& board) {
    for (const ChannelDescription& channel : board.channels) {
        m_texts[channel.number];
    }
}

void ChannelFailures::note(const Standalone::Call& call) {
    if (!isWrite(call) || isSuccess(call.code)) {
        return;
    }
    for (auto& [channel, text] : m_texts) {
        if (namesChannel(call.object, channel) || call.object == rauName(channel)) {
            text = destination(call) + " <- " + std::to_string(call.value) + " failed with " +
                   codeText(call.code);
        }
    }
}

void ChannelFailures::note(const Standalone::TraceMessage& message) {
    if (message.level > Standalone::TraceLevel::error) {
        return;
    }
    for (auto& [channel, text] : m_texts) {
        if (namesChannel(message.text, channel)) {
            text = message.text;
        }
    }
}

} // namespace Radio
