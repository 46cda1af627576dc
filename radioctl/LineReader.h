#ifndef RADIOCTL_LINEREADER_H
#define RADIOCTL_LINEREADER_H

#include "Interrupt.h"

#include <optional>
#include <string>

namespace Radioctl {

/** Reads lines from a descriptor, until its end or until a signal asks the program to leave. */
class LineReader {
public:
    /** `interrupt` must outlive the object; the descriptor stays the caller's. */
    LineReader(int descriptor, const Interrupt& interrupt)
        : m_descriptor(descriptor),
          m_interrupt(interrupt) {}

    /** The next line without its end; nothing when there is none. A last line without an end counts. */
    std::optional<std::string> next();
    /** Everything up to the end. */
    std::string all();

private:
    /** Reads what there is; false at the end. */
    bool readMore();

    int m_descriptor;
    const Interrupt& m_interrupt;
    std::string m_buffer;
};

} // namespace Radioctl

#endif
