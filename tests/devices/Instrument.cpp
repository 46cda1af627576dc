#include "Instrument.h"

#include "Server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <stdexcept>
#include <utility>

namespace DeviceTests {

Instrument::Instrument(Script script) : m_port(freePort()), m_script(std::move(script)) {
    switchOn();
}

void Instrument::setScript(Script script) {
    const std::lock_guard lock(m_mutex);
    m_script = std::move(script);
}

std::vector<std::string> Instrument::heard() {
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_heard, {});
}

void Instrument::switchOn() {
    m_listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int yes = 1;
    setsockopt(m_listener, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(m_port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (bind(m_listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        listen(m_listener, 8) != 0) {
        throw std::runtime_error("the instrument does not listen");
    }
    m_isEnding = false;
    m_thread = std::thread([this] { run(); });
}

void Instrument::switchOff() {
    if (m_thread.joinable()) {
        m_isEnding = true;
        m_thread.join();
    }
}

void Instrument::run() {
    while (!m_isEnding) {
        std::vector<pollfd> waiting{{m_listener, POLLIN, 0}};
        for (const auto& client : m_clients) {
            waiting.push_back({client.first, POLLIN, 0});
        }
        poll(waiting.data(), waiting.size(), 10);
        if (waiting[0].revents != 0) {
            accept();
        }
        for (std::size_t i = 1; i < waiting.size(); ++i) {
            if (waiting[i].revents != 0 && !serve(waiting[i].fd)) {
                close(waiting[i].fd);
                m_clients.erase(waiting[i].fd);
            }
        }
    }
    for (const auto& client : m_clients) {
        close(client.first);
    }
    m_clients.clear();
    close(m_listener);
}

void Instrument::accept() {
    const int client = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
    if (client >= 0) {
        m_clients[client];
        ++m_connections;
    }
}

bool Instrument::serve(int client) {
    std::array<char, 1000> bytes{};
    const ssize_t count = recv(client, bytes.data(), bytes.size(), 0);
    if (count <= 0) {
        return false;
    }
    std::string& text = m_clients[client];
    text.append(bytes.data(), static_cast<std::size_t>(count));
    for (std::size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n')) {
        const std::string line = text.substr(0, end);
        text.erase(0, end + 1);
        if (!react(client, line)) {
            return false;
        }
    }
    return true;
}

bool Instrument::react(int client, const std::string& line) {
    Reaction reaction;
    {
        const std::lock_guard lock(m_mutex);
        m_heard.push_back(line);
        reaction = m_script(line);
    }
    std::this_thread::sleep_for(reaction.after);
    send(client, reaction.says.data(), reaction.says.size(), MSG_NOSIGNAL);
    return !reaction.hangsUp;
}

} // namespace DeviceTests
