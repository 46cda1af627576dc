#include "radioctl/replayer/Report.h"

#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <string_view>

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

/** Writes it to standard output and ends the process. */
[[noreturn]] void sendAndEnd(std::string_view text, Ending ending) {
    while (!text.empty()) {
        const ssize_t count = write(STDOUT_FILENO, text.data(), text.size());
        if (count <= 0) {
            break;
        }
        text.remove_prefix(static_cast<std::size_t>(count));
    }
    // Neither the library's objects nor the platform's are in a state in which they could be destroyed.
    std::_Exit(static_cast<int>(ending));
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
          now.c, static_cast<std::int32_t>(now.objectKind), now.number, now.d}) {
        words += (words.empty() ? "" : " ") + std::to_string(word);
    }
    add("now", words);
    add("now_name", now.name);
    add("now_bytes", hexadecimal(now.bytes));
}

void Report::send(Ending ending) const {
    sendAndEnd(m_text, ending);
}

void CrashReport::put(char character) {
    if (m_length < m_text.size()) {
        m_text.at(m_length++) = character;
    }
}

void CrashReport::add(const char* name, std::uint64_t value) {
    for (; *name != '\0'; ++name) {
        put(*name);
    }
    put(' ');
    std::array<char, 20> digits{};
    const auto end = std::to_chars(digits.begin(), digits.end(), value).ptr;
    std::for_each(digits.begin(), end, [this](char digit) { put(digit); });
    put('\n');
}

void CrashReport::send(Ending ending) const {
    sendAndEnd({m_text.data(), m_length}, ending);
}

} // namespace Replayer
