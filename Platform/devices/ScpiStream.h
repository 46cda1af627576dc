#ifndef PLATFORM_DEVICES_SCPISTREAM_H
#define PLATFORM_DEVICES_SCPISTREAM_H

#include <chrono>
#include <optional>
#include <string>

#define ASIO_STANDALONE
#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>

namespace Devices {

/**
 * Lines over TCP, each way bounded in time. Questions and answers have nothing that tells which belongs to
 * which: whatever puts them out of step breaks the stream for good. Opened on the thread that connects, used
 * on the one that drives: the context runs on whichever calls, and has no thread of its own but for names.
 */
class ScpiStream {
public:
    explicit ScpiStream(std::chrono::milliseconds timeLimit) : m_timeLimit(timeLimit), m_socket(m_context) {}

    /** Connects; 0, or an error number. */
    int open(const std::string& host, const std::string& port);
    /** Sends lines, and waits for one if there is an `answer` to be stored; 0, or an error number. */
    int exchange(const std::string& lines, std::string* answer);
    bool isBroken() const { return m_isBroken; }

private:
    using Clock = std::chrono::steady_clock;

    int checkSilence();
    int receiveLine(Clock::time_point deadline, std::string& line);
    int breakOff(int error);
    template <typename Start>
    std::error_code perform(Clock::time_point deadline, Start start);

    std::chrono::milliseconds m_timeLimit;
    asio::io_context m_context{1};
    asio::ip::tcp::socket m_socket;
    std::string m_received;
    bool m_isBroken = false;
};

} // namespace Devices

#endif
