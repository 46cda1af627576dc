#include "radioctl/replayer/Report.h"

#include <unistd.h>

#include <cstdlib>

namespace Replayer {

namespace {

std::string hexadecimal(const std::string& bytes) {
    constexpr const char* digits = "0123456789abcdef";
    std::string text;
    for (const char byte : bytes) {
        text += digits[static_cast<unsigned char>(byte) >> 4U];
        text += digits[static_cast<unsigned char>(byte) & 0xFU];
    }
    return text;
}

} // namespace

void Report::add(const std::string& name, const std::string& text) {
    m_text += name + " ";
    for (const char character : text) {
        m_text += static_cast<unsigned char>(character) < ' ' ? ' ' : character;
    }
    m_text += '\n';
}

void Report::add(const Call& now) {
    std::string words;
    for (const std::int32_t word :
         {static_cast<std::int32_t>(now.kind), static_cast<std::int32_t>(now.outcome), now.code, now.a, now.b,
          now.c, static_cast<std::int32_t>(now.objectKind), now.number}) {
        words += (words.empty() ? "" : " ") + std::to_string(word);
    }
    add("now", words);
    add("now_name", now.name);
    add("now_bytes", hexadecimal(now.bytes));
}

void Report::send(Ending ending) const {
    std::size_t sent = 0;
    while (sent < m_text.size()) {
        const ssize_t count = write(STDOUT_FILENO, m_text.data() + sent, m_text.size() - sent);
        if (count <= 0) {
            break;
        }
        sent += static_cast<std::size_t>(count);
    }
    // Neither the library's objects nor the platform's are in a state in which they could be destroyed.
    std::_Exit(static_cast<int>(ending));
}

} // namespace Replayer
