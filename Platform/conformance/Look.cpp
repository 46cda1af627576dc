#include "conformance/Look.h"

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <exception>
#include <iostream>

namespace Conformance {

namespace {

constexpr unsigned patience = 20;

/** The state as a letter, and the reason. */
void send(int descriptor, const Finding& finding) {
    const std::string text = static_cast<char>('0' + static_cast<int>(finding.state)) + finding.why;
    std::size_t sent = 0;
    while (sent < text.size()) {
        const ssize_t count = ::write(descriptor, text.data() + sent, text.size() - sent);
        if (count <= 0) {
            return;
        }
        sent += static_cast<std::size_t>(count);
    }
}

std::string receive(int descriptor) {
    std::string text;
    std::array<char, 4096> part{};
    for (;;) {
        const ssize_t count = ::read(descriptor, part.data(), part.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return text;
        }
        text.append(part.data(), static_cast<std::size_t>(count));
    }
}

int waitFor(pid_t child) {
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

std::string endOf(int status) {
    if (WIFSIGNALED(status)) {
        const int number = WTERMSIG(status);
        return number == SIGALRM ? "it does not come back within " + std::to_string(patience) + " s"
                                 : "it ends the process by signal " + std::to_string(number) + " (" +
                                       ::strsignal(number) + ")"; // NOLINT(concurrency-mt-unsafe)
    }
    return "it ends the process with " + std::to_string(WEXITSTATUS(status));
}

} // namespace

Finding lookHere(const Rule& rule, Adapter& adapter) {
    try {
        if (!adapter.begin()) {
            return {State::broken, "the adapter cannot begin"};
        }
        rule.look(adapter);
        return {};
    } catch (const Broken& broken) {
        return {State::broken, broken.what()};
    } catch (const Unseen& unseen) {
        return {State::unseen, unseen.what()};
    } catch (const std::exception& error) {
        return {State::broken, std::string("it throws: ") + error.what()};
    } catch (...) {
        return {State::broken, "it throws something that is no std::exception"};
    }
}

Finding lookApart(const Rule& rule, Adapter& adapter) {
    std::cout.flush();
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0) {
        return {State::unseen,
                std::string("no pipe can be had: ") + std::strerror(errno)}; // NOLINT(concurrency-mt-unsafe)
    }
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(ends[0]);
        ::alarm(patience);
        send(ends[1], lookHere(rule, adapter));
        ::_exit(0);
    }
    ::close(ends[1]);
    if (child < 0) {
        ::close(ends[0]);
        return {State::unseen, std::string("no process can be had: ") +
                                   std::strerror(errno)}; // NOLINT(concurrency-mt-unsafe)
    }
    const std::string text = receive(ends[0]);
    ::close(ends[0]);
    const int status = waitFor(child);
    if (text.empty()) {
        return {State::broken, endOf(status)};
    }
    return {static_cast<State>(text.front() - '0'), text.substr(1)};
}

} // namespace Conformance
