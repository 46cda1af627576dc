#include "radioctl/calibrate/Attendant.h"

#include "radio/board/CalibrationBounds.h"
#include "radio/text/Numbers.h"

#include <unistd.h>

#include <array>
#include <chrono>
#include <cmath>

namespace Radio::Calibration {

namespace {

std::string trimmed(const std::string& line) {
    const std::size_t begin = line.find_first_not_of(" \t\r");
    return begin == std::string::npos ? "" : line.substr(begin, line.find_last_not_of(" \t\r") - begin + 1);
}

} // namespace

bool isAttendedTerminal() {
    return isatty(STDIN_FILENO) == 1 && isatty(STDOUT_FILENO) == 1;
}

PersonsWord Attendant::listen() {
    constexpr std::size_t longest = 1000;
    std::array<char, 200> bytes{};
    if (!m_interrupt.waitForInput(STDIN_FILENO, std::chrono::milliseconds(0))) {
        return {};
    }
    const ssize_t count = read(STDIN_FILENO, bytes.data(), bytes.size());
    if (count <= 0) {
        return {false, {}, true};
    }
    m_begun.append(bytes.data(), static_cast<std::size_t>(count));
    const std::size_t end = m_begun.find('\n');
    if (end == std::string::npos) {
        m_begun.resize(m_begun.size() > longest ? 0 : m_begun.size());
        return {};
    }
    const std::string line = m_begun.substr(0, end);
    m_begun.erase(0, end + 1);
    return understand(trimmed(line));
}

PersonsWord Attendant::understand(const std::string& line) {
    if (line.empty()) {
        return {true};
    }
    const std::optional<double> degrees = parseOption(line);
    if (!degrees || *degrees < temperatureBounds.low || *degrees > temperatureBounds.high) {
        m_out << "     expected Enter, or the temperature in degrees Celsius\n" << std::flush;
        return {};
    }
    return {true, static_cast<int>(std::lround(*degrees))};
}

} // namespace Radio::Calibration
