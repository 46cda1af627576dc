#include "conformance/Look.h"

#include "conformance/Ending.h"

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <exception>
#include <iostream>

namespace Conformance {

namespace {

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

using Clock = std::chrono::steady_clock;

/** Waits until there is something to read, or nobody left to write; false: not by then. */
bool isReadable(int descriptor, Clock::time_point end) {
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
        pollfd waited{descriptor, POLLIN, 0};
        const int count = ::poll(&waited, 1, static_cast<int>(std::max<std::int64_t>(left.count(), 0)));
        if (count >= 0) {
            return count > 0;
        }
        if (errno != EINTR) {
            return false;
        }
    }
}

/** What was sent until all had closed their end, or by then; `isWhole` tells which. */
std::string receive(int descriptor, Clock::time_point end, bool& isWhole) {
    std::string text;
    std::array<char, 4096> part{};
    while (isReadable(descriptor, end)) {
        const ssize_t count = ::read(descriptor, part.data(), part.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            isWhole = true;
            return text;
        }
        text.append(part.data(), static_cast<std::size_t>(count));
    }
    isWhole = false;
    return text;
}

} // namespace

int waitFor(pid_t child) {
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

std::string endOf(int status) {
    if (WIFSIGNALED(status)) {
        const int number = WTERMSIG(status);
        return "it ends the process by signal " + std::to_string(number) + " (" + ::strsignal(number) +
               ")"; // NOLINT(concurrency-mt-unsafe)
    }
    return "it ends the process with " + std::to_string(WEXITSTATUS(status));
}

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

Finding lookApart(const Rule& rule, Adapter& adapter, unsigned deadline) {
    std::cout.flush();
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0) {
        return {State::unseen,
                std::string("no pipe can be had: ") + std::strerror(errno)}; // NOLINT(concurrency-mt-unsafe)
    }
    const pid_t child = ::fork();
    if (child == 0) {
        ::setpgid(0, 0); // so that whatever it starts can be ended with it
        ::close(ends[0]);
        send(ends[1], lookHere(rule, adapter));
        ::_exit(0);
    }
    ::close(ends[1]);
    if (child < 0) {
        ::close(ends[0]);
        return {State::unseen, std::string("no process can be had: ") +
                                   std::strerror(errno)}; // NOLINT(concurrency-mt-unsafe)
    }
    ::setpgid(child, child); // whoever of the two is first
    bool isWhole = false;
    const std::string text = receive(ends[0], Clock::now() + std::chrono::seconds(deadline), isWhole);
    ::close(ends[0]);
    if (isWhole) {
        // Its end is waited for and not yet taken: as long as it is not, nobody else has its number.
        siginfo_t ended{};
        while (::waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOWAIT) < 0 && errno == EINTR) {
        }
    }
    ::kill(-child, SIGKILL);
    const int status = waitFor(child);
    if (text.empty() && !isWhole) {
        return {State::broken, "it does not come back within " + std::to_string(deadline) + " s"};
    }
    if (text.empty()) {
        return {State::broken, endOf(status)};
    }
    return {static_cast<State>(text.front() - '0'), text.substr(1)};
}

} // namespace Conformance
