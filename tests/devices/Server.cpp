#include "Server.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <stdexcept>
#include <thread>

namespace DeviceTests {

namespace {

sockaddr_in loopback(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

} // namespace

int freePort() {
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = loopback(0);
    socklen_t size = sizeof address;
    if (bind(listener, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
        getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
        throw std::runtime_error("there is no free port");
    }
    close(listener);
    return ntohs(address.sin_port);
}

bool isListening(int port) {
    const int client = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = loopback(port);
    const bool is = connect(client, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    close(client);
    return is;
}

Server::Server() : m_port(freePort()) {}

void Server::start() {
    posix_spawn_file_actions_t actions{};
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    std::string port = std::to_string(m_port);
    std::string program = "iiod";
    std::string option = "-p";
    std::array<char*, 4> arguments{program.data(), option.data(), port.data(), nullptr};
    const int failure =
        posix_spawn(&m_process, "/usr/sbin/iiod", &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (failure != 0) {
        m_process = 0;
        throw std::runtime_error("iiod does not start");
    }
    for (int i = 0; i < 500 && !isListening(m_port); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

void Server::kill() {
    if (m_process != 0) {
        ::kill(m_process, SIGKILL);
        waitpid(m_process, nullptr, 0);
        m_process = 0;
    }
}

void Server::freeze() const {
    ::kill(m_process, SIGSTOP);
    waitpid(m_process, nullptr, WUNTRACED); // until then it may still answer
}

void Server::thaw() const {
    ::kill(m_process, SIGCONT);
}

} // namespace DeviceTests
