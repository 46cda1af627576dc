#include "Progress.h"

#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <string_view>

namespace Radioctl {

namespace {

constexpr std::uint64_t barWidth = 20;
constexpr std::chrono::milliseconds interval{100};

bool isTerminal() {
    const char* const terminal = std::getenv("TERM");
    const bool isDumb = terminal != nullptr && std::string_view(terminal) == "dumb";
    return !isDumb && isatty(STDERR_FILENO) == 1;
}

} // namespace

std::string progressLine(std::uint64_t done, std::uint64_t total, std::string_view things) {
    const std::uint64_t filled = total == 0 ? barWidth : done * barWidth / total;
    const std::string percent = std::to_string(total == 0 ? 100 : done * 100 / total);
    return "[" + std::string(filled, '#') + std::string(barWidth - filled, '.') + "] " +
           std::string(3 - percent.size(), ' ') + percent + " %  " + std::to_string(done) + " of " +
           std::to_string(total) + " " + std::string(things);
}

Progress::Progress(std::uint64_t total, std::string_view things)
    : m_total(total),
      m_things(things),
      m_isShown(isTerminal()),
      m_next(std::chrono::steady_clock::now() + interval) {}

Progress::~Progress() {
    if (m_isDrawn) {
        std::cerr << "\r\033[K" << std::flush;
    }
}

void Progress::update(std::uint64_t done) {
    if (!m_isShown || std::chrono::steady_clock::now() < m_next) {
        return;
    }
    m_next = std::chrono::steady_clock::now() + interval;
    m_isDrawn = true;
    std::cerr << "\r" << progressLine(done, m_total, m_things) << std::flush;
}

} // namespace Radioctl
