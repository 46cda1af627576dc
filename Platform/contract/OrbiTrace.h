#ifndef PLATFORM_CONTRACT_ORBITRACE_H
#define PLATFORM_CONTRACT_ORBITRACE_H

#include "Visibility.h"

#include <cstdint>
#include <ostream>

/** A trace level; the lower, the more severe. What each number means is the trace facility's own. */
enum OrbiTraceLevel : std::int32_t {};

/**
 * One source of trace messages with a threshold of its own. Meant to be a static object: it is built before
 * `main` and destroyed at program exit. Supplied by the platform.
 */
class RADIO_CLASS OrbiTrace {
public:
    /** `name` must outlive the object; `level` is the initial threshold. */
    OrbiTrace(const char* name, OrbiTraceLevel level);
    OrbiTrace(const OrbiTrace&) = delete;
    OrbiTrace& operator=(const OrbiTrace&) = delete;
    ~OrbiTrace();

    /** The current threshold: a message is wanted when its level is not above it. */
    OrbiTraceLevel getLevel() const { return m_level; }
    void setLevel(OrbiTraceLevel level) { m_level = level; }
    const char* getName() const { return m_name; }

    /**
     * Opens one message and returns the stream for its text, which is closed with a newline and a flush.
     * `sourceFile` must stay valid until the flush. One message at a time on a thread; where channels are
     * driven on threads of their own, as many at a time as there are threads.
     */
    std::ostream& beginLogMsg(OrbiTraceLevel level, const char* sourceFile, int line);
    /** Closes it. Not called after every message, so that nothing may wait for it: what was flushed stands.
     */
    void endLogMsg();

private:
    const char* m_name;
    OrbiTraceLevel m_level;
};

/** The trace level that stands for a numeric message level such as 2048 (information) or 32768 (error). */
extern "C" RADIO_API OrbiTraceLevel CZulTraceHandler_DmLevel2GtLevel(int level);

#endif
