#ifndef RADIOCTL_PLAN_PROGRESS_H
#define RADIOCTL_PLAN_PROGRESS_H

#include <chrono>
#include <cstdint>
#include <string>

namespace Radioctl::Plan {

/** "[#####...............]  25 %  1000 of 4000 carriers". */
std::string progressLine(std::uint64_t done, std::uint64_t total);

/** A bar on standard error while something takes its time; nothing at all when that is no terminal. */
class Progress {
public:
    explicit Progress(std::uint64_t total);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    /** Takes the bar away. */
    ~Progress();

    /** Draws the bar, but not more often than the eye can follow. */
    void update(std::uint64_t done);

private:
    std::uint64_t m_total;
    bool m_isShown;
    bool m_isDrawn = false;
    std::chrono::steady_clock::time_point m_next;
};

} // namespace Radioctl::Plan

#endif
