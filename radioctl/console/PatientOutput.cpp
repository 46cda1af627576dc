#include "radioctl/console/PatientOutput.h"

#include "radioctl/console/Interrupt.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>

namespace Radio {

namespace {

/** How long what the program has to say at the end may wait for a reader, once it was told to leave. */
constexpr int patienceAtTheEnd = 2; // of the waits below
constexpr std::chrono::milliseconds oneWait(250);

} // namespace

PatientOutput::PatientOutput(std::ostream& stream, int descriptor)
    : m_stream(stream),
      m_descriptor(descriptor),
      m_before(stream.rdbuf(nullptr)) {
    setp(m_buffer.data(), m_buffer.data() + m_buffer.size());
    m_stream.rdbuf(this);
}

PatientOutput::~PatientOutput() {
    const std::ios::iostate state = m_stream.rdstate();
    static_cast<void>(writeAll());
    m_stream.rdbuf(m_before); // which takes it for good
    m_stream.setstate(state);
}

bool PatientOutput::isGone() {
    pollfd output{STDOUT_FILENO, 0, 0};
    return poll(&output, 1, 0) > 0 && (output.revents & (POLLERR | POLLHUP | POLLNVAL)) != 0;
}

PatientOutput::int_type PatientOutput::overflow(int_type character) {
    if (!writeAll()) {
        return traits_type::eof();
    }
    if (!traits_type::eq_int_type(character, traits_type::eof())) {
        sputc(traits_type::to_char_type(character));
    }
    return traits_type::not_eof(character);
}

int PatientOutput::sync() {
    return writeAll() ? 0 : -1;
}

bool PatientOutput::writeAll() {
    const char* next = pbase();
    bool isGood = true;
    while (isGood && next != pptr()) {
        isGood = waitUntilWritable();
        if (isGood) {
            // A pipe that can be written has room for so much.
            const auto most = std::min<std::ptrdiff_t>(pptr() - next, PIPE_BUF);
            const ssize_t count = write(m_descriptor, next, static_cast<std::size_t>(most));
            isGood = count >= 0 || errno == EINTR || errno == EAGAIN;
            next += std::max<ssize_t>(count, 0);
        }
    }
    setp(m_buffer.data(), m_buffer.data() + m_buffer.size());
    return isGood;
}

bool PatientOutput::waitUntilWritable() {
    for (int waits = 0;; ++waits) {
        pollfd output{m_descriptor, POLLOUT, 0};
        const int count = poll(&output, 1, static_cast<int>(waits == 0 ? 0 : oneWait.count()));
        if (count > 0) {
            return (output.revents & POLLOUT) != 0;
        }
        if (!Interrupt::isWaitedOn() && waits >= patienceAtTheEnd) {
            return false;
        }
    }
}

} // namespace Radio
