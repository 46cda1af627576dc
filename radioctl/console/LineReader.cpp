#include "radioctl/console/LineReader.h"

#include "radio/files/InputError.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

namespace Radio {

namespace {

constexpr std::size_t maxLineLength = std::size_t{64} * 1024;

} // namespace

bool LineReader::readMore() {
    std::array<char, 4096> bytes{};
    for (;;) {
        if (!m_interrupt.waitForInput(STDIN_FILENO, m_idle)) {
            if (m_interrupt.signal() != 0) {
                return false;
            }
            continue;
        }
        const ssize_t count = read(STDIN_FILENO, bytes.data(), bytes.size());
        if (count >= 0) {
            m_buffer.append(bytes.data(), static_cast<std::size_t>(count));
            return count > 0;
        }
        if (errno != EINTR && errno != EAGAIN) {
            throw InputError({standardInput, 0}, "cannot be read: " + std::generic_category().message(errno));
        }
    }
}

std::optional<std::string> LineReader::next() {
    std::size_t end = m_buffer.find('\n');
    for (std::size_t searched = m_buffer.size();
         end == std::string::npos && searched <= maxLineLength && readMore(); searched = m_buffer.size()) {
        end = m_buffer.find('\n', searched);
    }
    if (m_interrupt.signal() != 0 || (end == std::string::npos && m_buffer.empty())) {
        return std::nullopt;
    }
    ++m_lines;
    if (std::min(end, m_buffer.size()) > maxLineLength) {
        throw InputError({standardInput, m_lines}, "longer than 64 KiB, expected one command");
    }
    std::string line = m_buffer.substr(0, end);
    m_buffer.erase(0, end == std::string::npos ? end : end + 1);
    return line;
}

std::string LineReader::all(std::size_t most) {
    while (m_buffer.size() <= most && readMore()) {
    }
    return std::exchange(m_buffer, {});
}

} // namespace Radio
