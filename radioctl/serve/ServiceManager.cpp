#include "radioctl/serve/ServiceManager.h"

#include "radio/text/Numbers.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace Radio::Serving {

namespace {

std::string variable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

} // namespace

ServiceManager::ServiceManager() : m_address(variable("NOTIFY_SOCKET")) {
    const bool isName = m_address.size() > 1 && (m_address.front() == '/' || m_address.front() == '@');
    if (!isName || m_address.size() >= sizeof(sockaddr_un::sun_path)) {
        return;
    }
    m_socket = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (m_address.front() == '@') {
        m_address.front() = '\0';
    }
    const std::string interval = variable("WATCHDOG_USEC");
    const auto watched = parseNumber<std::int64_t>(interval, 1);
    const std::string process = variable("WATCHDOG_PID");
    if (watched && (process.empty() || process == std::to_string(getpid()))) {
        m_interval = std::chrono::microseconds(*watched) / 3;
    }
}

ServiceManager::~ServiceManager() {
    if (m_socket >= 0) {
        close(m_socket);
    }
}

/** Whoever does not hear it is no reason to do anything else. */
void ServiceManager::tell(const std::string& text) const {
    if (m_socket < 0) {
        return;
    }
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(static_cast<char*>(address.sun_path), m_address.data(), m_address.size());
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + m_address.size());
    static_cast<void>(sendto(m_socket, text.data(), text.size(), MSG_NOSIGNAL,
                             reinterpret_cast<const sockaddr*>(&address), size));
}

void ServiceManager::ready(const std::string& status) {
    tell("READY=1\nSTATUS=" + status);
    m_next = std::chrono::steady_clock::now();
}

void ServiceManager::alive() {
    const auto now = std::chrono::steady_clock::now();
    if (m_interval.count() != 0 && now >= m_next) {
        tell("WATCHDOG=1");
        m_next = now + m_interval;
    }
}

void ServiceManager::stopping() {
    tell("STOPPING=1");
}

} // namespace Radio::Serving
