#include "radio/files/DescriptorStream.h"

#include "radio/files/FileWait.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>

namespace Radio {

void DescriptorBuffer::attach(int descriptor) {
    m_descriptor = descriptor;
    struct stat status {};
    m_mayKeepWaiting = fstat(descriptor, &status) == 0 && !S_ISREG(status.st_mode);
}

DescriptorBuffer::int_type DescriptorBuffer::overflow(int_type character) {
    if (sync() != 0) {
        return traits_type::eof();
    }
    if (!traits_type::eq_int_type(character, traits_type::eof())) {
        sputc(traits_type::to_char_type(character));
    }
    return traits_type::not_eof(character);
}

int DescriptorBuffer::sync() {
    const char* next = pbase();
    while (next != pptr()) {
        auto most = static_cast<std::size_t>(pptr() - next);
        if (m_mayKeepWaiting) {
            m_signal = waitForFile(FileUse::writing, m_descriptor);
            if (m_signal != 0) {
                m_reason = EINTR;
                return -1;
            }
            // A pipe that can be written has room for so much.
            most = std::min<std::size_t>(most, PIPE_BUF);
        }
        const ssize_t written = write(m_descriptor, next, most);
        if (written == -1 && errno != EINTR && errno != EAGAIN) {
            m_reason = errno;
            return -1;
        }
        next += written == -1 ? 0 : written;
    }
    setp(m_waiting.data(), m_waiting.data() + m_waiting.size());
    return 0;
}

} // namespace Radio
