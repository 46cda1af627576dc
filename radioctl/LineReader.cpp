#include "LineReader.h"

#include <unistd.h>

#include <array>
#include <utility>

namespace Radioctl {

bool LineReader::readMore() {
    std::array<char, 4096> bytes{};
    if (!m_interrupt.waitForInput(m_descriptor)) {
        return false;
    }
    const ssize_t count = read(m_descriptor, bytes.data(), bytes.size());
    if (count <= 0) {
        return false;
    }
    m_buffer.append(bytes.data(), static_cast<std::size_t>(count));
    return true;
}

std::optional<std::string> LineReader::next() {
    std::size_t end = m_buffer.find('\n');
    while (end == std::string::npos && readMore()) {
        end = m_buffer.find('\n');
    }
    if (m_interrupt.signal() != 0 || (end == std::string::npos && m_buffer.empty())) {
        return std::nullopt;
    }
    std::string line = m_buffer.substr(0, end);
    m_buffer.erase(0, end == std::string::npos ? end : end + 1);
    return line;
}

std::string LineReader::all() {
    while (readMore()) {
    }
    return std::exchange(m_buffer, {});
}

} // namespace Radioctl
