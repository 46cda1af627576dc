#ifndef RADIOCTL_CONSOLE_LINEREADER_H
#define RADIOCTL_CONSOLE_LINEREADER_H

#include "radioctl/console/Interrupt.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <utility>

namespace Radio {

/** How messages call standard input. */
constexpr const char* standardInput = "stdin";

/**
 * Reads lines from standard input, until its end or until a signal asks the program to leave. What cannot be
 * read throws InputError.
 */
class LineReader {
public:
    /** `interrupt` must outlive the object. */
    explicit LineReader(const Interrupt& interrupt) : m_interrupt(interrupt) {}

    /** Is called every 250 ms while a line is waited for. */
    void setIdle(std::function<void()> idle) { m_idle = std::move(idle); }
    /**
     * The next line without its end; nothing when there is none. A last line without an end counts; one of
     * more than 64 KiB throws.
     */
    std::optional<std::string> next();
    /** Everything up to the end; of more than `most` bytes, some more than these. */
    std::string all(std::size_t most);

private:
    /** Reads what there is; false at the end. */
    bool readMore();

    const Interrupt& m_interrupt;
    std::function<void()> m_idle;
    std::string m_buffer;
    /** How many lines were given out. */
    unsigned m_lines = 0;
};

} // namespace Radio

#endif
