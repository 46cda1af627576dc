#ifndef RADIOCTL_REPORT_PROGRESS_H
#define RADIOCTL_REPORT_PROGRESS_H

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

namespace Radio {

/** "[#####...............]  25 %  1000 of 4000 carriers", or whatever is counted. */
std::string progressLine(std::uint64_t done, std::uint64_t total, std::string_view things = "carriers");

/** How long something will still take that has come so far in `elapsed`, for example "2 min 5 s left"; empty
 * at the beginning. */
std::string timeLeft(std::chrono::duration<double> elapsed, std::uint64_t done, std::uint64_t total);

/** A bar on standard error while something takes its time; nothing at all when that is no terminal. */
class Progress {
public:
    /** `things` is what is counted; the text must outlive the object. */
    explicit Progress(std::uint64_t total, std::string_view things = "carriers");
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    /** Takes the bar away. */
    ~Progress();

    /** Draws the bar, but not more often than the eye can follow. */
    void update(std::uint64_t done);
    /** What was done up to here came from somewhere else: it says nothing about the time that is left. */
    void beginAt(std::uint64_t done);
    /** The same as the first, with the time that is left and a note behind it. */
    void update(std::uint64_t done, const std::string& note);

private:
    bool isDue();
    void draw(const std::string& line);

    std::uint64_t m_total;
    std::string_view m_things;
    bool m_isShown;
    bool m_isDrawn = false;
    /** When what was measured began, and how much there was. */
    std::chrono::steady_clock::time_point m_begin;
    std::uint64_t m_doneAtBegin = 0;
    std::chrono::steady_clock::time_point m_next;
};

} // namespace Radio

#endif
