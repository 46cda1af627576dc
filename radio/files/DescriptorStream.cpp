#include "radio/files/DescriptorStream.h"

#include <unistd.h>

#include <cerrno>

namespace Radio {

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
        const ssize_t written = write(m_descriptor, next, static_cast<std::size_t>(pptr() - next));
        if (written == -1 && errno != EINTR) {
            m_reason = errno;
            return -1;
        }
        next += written == -1 ? 0 : written;
    }
    setp(m_waiting.data(), m_waiting.data() + m_waiting.size());
    return 0;
}

} // namespace Radio
