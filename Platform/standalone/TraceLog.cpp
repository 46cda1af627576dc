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

void TraceLog::setSink(std::function<void(const TraceMessage&)> sink) {
    m_sink =
        sink ? std::make_shared<const std::function<void(const TraceMessage&)>>(std::move(sink)) : nullptr;
}

void TraceLog::enter(const TraceMessage& message) {
    m_last.reset();
    if (m_recording) {
        m_last = m_gone + m_messages.size();
        m_messages.push_back(message);
    }
    if (const std::shared_ptr<const std::function<void(const TraceMessage&)>> sink = m_sink) {
        // Who is told may write messages of its own; the next end is this one's all the same.
        const std::optional<std::size_t> own = m_last;
        try {
            (*sink)(message);
        } catch (...) {
            m_last = own;
            throw;
        }
        m_last = own;
    }
}

void TraceLog::end() {
    if (m_last && *m_last >= m_gone && *m_last - m_gone < m_messages.size()) {
        m_messages[*m_last - m_gone].ended = true;
    }
}

} // namespace Standalone
