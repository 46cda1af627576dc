#ifndef PLATFORM_STANDALONE_TRACEOBJECTS_H
#define PLATFORM_STANDALONE_TRACEOBJECTS_H

#include "OrbiTrace.h"

#include <string>
#include <vector>

namespace Standalone {

/** What all trace objects of the process share, whether or not there is a platform. Nobody else's business:
 * it is not installed. */
class TraceObjects {
public:
    /**
     * Created by the first trace object, in whichever shared object that lies, and so destroyed after the
     * last one: static objects are destroyed in the reverse order of their completion.
     */
    static TraceObjects& ofTheProcess();

    void add(OrbiTrace* object);
    void remove(const OrbiTrace* object);
    /** Sets the threshold of every object there is. */
    void setThreshold(OrbiTraceLevel level) const;
    /** Gives every object the threshold back that it had when it was added. */
    void resetThresholds() const;

    /** The text of a message that has not been flushed yet. */
    std::string& text() { return m_text; }

private:
    struct Entry {
        OrbiTrace* object;
        OrbiTraceLevel initialLevel;
    };

    std::vector<Entry> m_entries;
    std::string m_text;
};

} // namespace Standalone

#endif
