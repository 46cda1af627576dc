#include "radioctl/serve/EventLines.h"

namespace Radio::Serving {

void EventLines::put(char character) {
    if (character != '\n') {
        m_line += character;
        return;
    }
    if (m_copy != nullptr) {
        *m_copy << m_line << "\n" << std::flush;
    }
    m_ring.push(m_line);
    m_line.clear();
}

EventLines::int_type EventLines::overflow(int_type character) {
    if (!traits_type::eq_int_type(character, traits_type::eof())) {
        put(traits_type::to_char_type(character));
    }
    return traits_type::not_eof(character);
}

std::streamsize EventLines::xsputn(const char* text, std::streamsize size) {
    for (std::streamsize at = 0; at < size; ++at) {
        put(text[at]);
    }
    return size;
}

} // namespace Radio::Serving
