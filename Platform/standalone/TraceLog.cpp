#include "standalone/TraceLog.h"

#include "standalone/TraceObjects.h"

namespace Standalone {

// Text that was never flushed belongs to an earlier log. Touching the common part of the trace objects here
// also has it exist before a static log is complete, and so until after that one's end.
TraceLog::TraceLog() {
    TraceObjects::ofTheProcess().text().clear();
}

TraceLog::~TraceLog() {
    TraceObjects::ofTheProcess().resetThresholds();
}

void TraceLog::setThreshold(OrbiTraceLevel level) {
    TraceObjects::ofTheProcess().setThreshold(level);
}

void TraceLog::enter(const TraceMessage& message) {
    m_lastWasKept = m_recording;
    if (m_recording) {
        m_messages.push_back(message);
    }
    if (m_sink) {
        m_sink(message);
    }
}

void TraceLog::end() {
    if (m_lastWasKept && !m_messages.empty()) {
        m_messages.back().ended = true;
    }
}

} // namespace Standalone
