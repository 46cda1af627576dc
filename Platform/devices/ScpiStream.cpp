#include "devices/ScpiStream.h"

#include "devices/Patience.h"

#include <asio/buffer.hpp>
#include <asio/connect.hpp>
#include <asio/error.hpp>
#include <asio/read_until.hpp>
#include <asio/write.hpp>
#include <netinet/tcp.h>

#include <cerrno>
#include <cstddef>
#include <system_error>

namespace Devices {

namespace {

constexpr std::size_t longestLine = 4096;

int errorNumber(const std::error_code& error) {
    if (error == asio::error::eof) {
        return ECONNRESET;
    }
    if (error == asio::error::not_found) {
        return EPROTO; // no end of a line where there has to be one
    }
    if (error.category() == asio::error::get_system_category() && error.value() > 0) {
        return error.value();
    }
    return error ? EHOSTUNREACH : 0; // a name that nobody knows
}

} // namespace

/** Has an operation done that `start` begins, or given up at the deadline. */
template <typename Start>
std::error_code ScpiStream::perform(Clock::time_point deadline, Start start) {
    std::optional<std::error_code> result;
    start([&result](const std::error_code& error, const auto&... /*what*/) { result = error; });
    m_context.restart();
    const Patience patience(deadline);
    while (!result && !patience.isOver()) {
        m_context.run_until(patience.nextLook());
    }
    if (!result) {
        std::error_code ignored;
        static_cast<void>(m_socket.close(ignored));
        m_context.restart();
        m_context.run(); // the operation ends now that its socket is closed
        return asio::error::timed_out;
    }
    return *result;
}

int ScpiStream::open(const std::string& host, const std::string& port) {
    const Clock::time_point deadline = Clock::now() + m_timeLimit;
    asio::ip::tcp::resolver resolver(m_context);
    asio::ip::tcp::resolver::results_type addresses;
    std::error_code error = perform(deadline, [&](auto done) {
        resolver.async_resolve(host, port, [&addresses, done](const std::error_code& failure, auto found) {
            addresses = std::move(found);
            done(failure);
        });
    });
    if (!error) {
        error =
            perform(deadline, [&](auto done) { asio::async_connect(m_socket, addresses, std::move(done)); });
    }
    if (error) {
        return breakOff(errorNumber(error));
    }
    std::error_code ignored;
    static_cast<void>(m_socket.non_blocking(true, ignored));
    static_cast<void>(m_socket.set_option(asio::ip::tcp::no_delay(true), ignored));
    // A command without an answer tells nothing of its arrival: what is not acknowledged in time ends the
    // connection, which the next command then finds.
    using UserTimeout = asio::detail::socket_option::integer<IPPROTO_TCP, TCP_USER_TIMEOUT>;
    static_cast<void>(m_socket.set_option(UserTimeout(static_cast<int>(m_timeLimit.count())), ignored));
    return 0;
}

int ScpiStream::exchange(const std::string& lines, std::string* answer) {
    if (m_isBroken) {
        return ENOTCONN;
    }
    if (const int error = checkSilence(); error != 0) {
        return error;
    }
    const Clock::time_point deadline = Clock::now() + m_timeLimit;
    const std::error_code error = perform(
        deadline, [&](auto done) { asio::async_write(m_socket, asio::buffer(lines), std::move(done)); });
    if (error) {
        return breakOff(errorNumber(error));
    }
    return answer != nullptr ? receiveLine(deadline, *answer) : 0;
}

/** Nobody says anything unasked, or has left. */
int ScpiStream::checkSilence() {
    char byte = 0;
    std::error_code error;
    m_socket.receive(asio::buffer(&byte, 1), asio::socket_base::message_peek, error);
    if (error == asio::error::would_block || error == asio::error::try_again) {
        return 0;
    }
    return breakOff(error ? errorNumber(error) : EPROTO);
}

int ScpiStream::receiveLine(Clock::time_point deadline, std::string& line) {
    m_received.clear();
    const std::error_code error = perform(deadline, [&](auto done) {
        asio::async_read_until(m_socket, asio::dynamic_buffer(m_received, longestLine), '\n',
                               std::move(done));
    });
    if (error) {
        return breakOff(errorNumber(error));
    }
    const std::size_t end = m_received.find('\n');
    if (end + 1 != m_received.size()) {
        return breakOff(EPROTO); // one line was asked for
    }
    line = m_received.substr(0, end);
    return 0;
}

int ScpiStream::breakOff(int error) {
    m_isBroken = true;
    std::error_code ignored;
    static_cast<void>(m_socket.close(ignored));
    return error;
}

} // namespace Devices
