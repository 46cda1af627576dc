#include "devices/IioServer.h"

#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <memory>
#include <string_view>

namespace Devices {

namespace {

using Clock = std::chrono::steady_clock;

struct HostAndPort {
    std::string host;
    std::string port;
};

/** What stands behind "ip:"; no host when there is nothing. */
HostAndPort parse(const std::string& uri) {
    std::string_view rest(uri);
    if (rest.rfind("ip:", 0) != 0) {
        return {};
    }
    rest.remove_prefix(3);
    if (!rest.empty() && rest.front() == '[') {
        const std::size_t end = rest.find(']');
        if (end == std::string_view::npos) {
            return {};
        }
        const std::string_view port = rest.substr(end + 1);
        return {std::string(rest.substr(1, end - 1)),
                port.size() > 1 && port.front() == ':' ? std::string(port.substr(1)) : "30431"};
    }
    const std::size_t colon = rest.find(':');
    if (colon == std::string_view::npos || rest.find(':', colon + 1) != std::string_view::npos) {
        return {std::string(rest), "30431"};
    }
    return {std::string(rest.substr(0, colon)), std::string(rest.substr(colon + 1))};
}

/** A socket that does not wait. */
class Socket {
public:
    explicit Socket(const addrinfo& address)
        : m_descriptor(::socket(address.ai_family, address.ai_socktype | SOCK_NONBLOCK | SOCK_CLOEXEC,
                                address.ai_protocol)) {}
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;
    ~Socket() {
        if (m_descriptor >= 0) {
            ::close(m_descriptor);
        }
    }

    int connect(const addrinfo& address, Clock::time_point deadline) const {
        if (m_descriptor < 0) {
            return errno;
        }
        if (::connect(m_descriptor, address.ai_addr, address.ai_addrlen) == 0) {
            return 0;
        }
        if (errno != EINPROGRESS) {
            return errno;
        }
        if (const int error = await(POLLOUT, deadline); error != 0) {
            return error;
        }
        int error = 0;
        socklen_t size = sizeof error;
        return ::getsockopt(m_descriptor, SOL_SOCKET, SO_ERROR, &error, &size) == 0 ? error : errno;
    }

    int send(std::string_view text) const {
        return ::send(m_descriptor, text.data(), text.size(), MSG_NOSIGNAL) < 0 ? errno : 0;
    }

    /** Waits for the first of an answer. */
    int hear(Clock::time_point deadline) const {
        if (const int error = await(POLLIN, deadline); error != 0) {
            return error;
        }
        char first = 0;
        const ssize_t count = ::recv(m_descriptor, &first, 1, 0);
        if (count < 0) {
            return errno;
        }
        return count == 0 ? ECONNRESET : std::isdigit(static_cast<unsigned char>(first)) != 0 ? 0 : EPROTO;
    }

private:
    int await(short events, Clock::time_point deadline) const {
        while (true) {
            const auto left =
                std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
            pollfd waiting{m_descriptor, events, 0};
            const int count = ::poll(&waiting, 1, static_cast<int>(std::max<decltype(left)>(left, 0)));
            if (count != -1) {
                return count == 0 ? ETIMEDOUT : 0;
            }
            if (errno != EINTR) {
                return errno;
            }
        }
    }

    int m_descriptor;
};

int tryAddress(const addrinfo& address, Clock::time_point deadline) {
    const Socket socket(address);
    if (const int error = socket.connect(address, deadline); error != 0) {
        return error;
    }
    // The version is a question that every server knows, and answers with a number.
    if (const int error = socket.send("VERSION\r\n"); error != 0) {
        return error;
    }
    if (const int error = socket.hear(deadline); error != 0) {
        return error;
    }
    static_cast<void>(socket.send("EXIT\r\n"));
    return 0;
}

} // namespace

int awaitIioServer(const std::string& uri, std::chrono::milliseconds limit) {
    const Clock::time_point deadline = Clock::now() + limit;
    const auto [host, port] = parse(uri);
    if (host.empty()) {
        return 0;
    }
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (const int failure = ::getaddrinfo(host.c_str(), port.c_str(), &hints, &found); failure != 0) {
        // libiio finds names that the system does not, of servers that announce themselves.
        return failure == EAI_SYSTEM ? errno : 0;
    }
    const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> addresses(found, &::freeaddrinfo);
    int error = EHOSTUNREACH;
    for (const addrinfo* address = found; address != nullptr; address = address->ai_next) {
        error = tryAddress(*address, deadline);
        if (error == 0) {
            return 0;
        }
    }
    return error;
}

} // namespace Devices
