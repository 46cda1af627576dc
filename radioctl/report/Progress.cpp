#include "radioctl/report/Progress.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <iostream>
#include <string_view>

namespace Radio {

namespace {

constexpr std::size_t barWidth = 20;
constexpr std::chrono::milliseconds interval{100};

bool isTerminal() {
    const char* const terminal = std::getenv("TERM");
    const bool isDumb = terminal != nullptr && std::string_view(terminal) == "dumb";
    return !isDumb && isatty(STDERR_FILENO) == 1;
}

/** How many columns a line may have on the terminal. */
std::size_t columns() {
    winsize size{};
    const bool isKnown = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1;
    return isKnown ? size.ws_col - 1U : 79U;
}

} // namespace

std::string progressLine(std::uint64_t done, std::uint64_t total, std::string_view things) {
    const auto filled = static_cast<std::size_t>(total == 0 ? barWidth : done * barWidth / total);
    const std::string percent = std::to_string(total == 0 ? 100 : done * 100 / total);
    return "[" + std::string(filled, '#') + std::string(barWidth - filled, '.') + "] " +
           std::string(3 - percent.size(), ' ') + percent + " %  " + std::to_string(done) + " of " +
           std::to_string(total) + " " + std::string(things);
}

std::string timeLeft(std::chrono::duration<double> elapsed, std::uint64_t done, std::uint64_t total) {
    if (done == 0) {
        return {};
    }
    const double left = elapsed.count() * static_cast<double>(total - done) / static_cast<double>(done);
    const auto seconds = static_cast<std::uint64_t>(std::ceil(left));
    return (seconds < 60 ? "" : std::to_string(seconds / 60) + " min ") + std::to_string(seconds % 60) +
           " s left";
}

Progress::Progress(std::uint64_t total, std::string_view things)
    : m_total(total),
      m_things(things),
      m_isShown(isTerminal()),
      m_begin(std::chrono::steady_clock::now()),
      m_next(m_begin + interval) {}

Progress::~Progress() {
    if (m_isDrawn) {
        std::cerr << "\r\033[K" << std::flush;
    }
}

void Progress::update(std::uint64_t done) {
    if (isDue()) {
        draw(progressLine(done, m_total, m_things));
    }
}

void Progress::update(std::uint64_t done, const std::string& note) {
    if (isDue()) {
        const std::string left = timeLeft(std::chrono::steady_clock::now() - m_begin, done - m_doneAtBegin,
                                          m_total - m_doneAtBegin);
        draw(progressLine(done, m_total, m_things) + (left.empty() ? "" : ", " + left) +
             (note.empty() ? "" : ", " + note));
    }
}

void Progress::beginAt(std::uint64_t done) {
    m_begin = std::chrono::steady_clock::now();
    m_doneAtBegin = done;
}

bool Progress::isDue() {
    const auto now = std::chrono::steady_clock::now();
    if (!m_isShown || now < m_next) {
        return false;
    }
    m_next = now + interval;
    return true;
}

void Progress::draw(const std::string& line) {
    m_isDrawn = true;
    // A shorter line leaves nothing of the one before it, and a longer one does not go on below.
    std::cerr << "\r" << line.substr(0, columns()) << "\033[K" << std::flush;
}

} // namespace Radio
