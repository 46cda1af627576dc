#include "standalone/TraceLog.h"

#include "standalone/TraceObjects.h"

namespace Standalone {

namespace {

/** Whoever is told of a message may write others, or throw: the next end is that message's all the same. */
class KeptLast {
public:
    explicit KeptLast(std::optional<std::size_t>& last) : m_last(last), m_own(last) {}
    KeptLast(const KeptLast&) = delete;
    KeptLast& operator=(const KeptLast&) = delete;
    ~KeptLast() { m_last = m_own; }

private:
    std::optional<std::size_t>& m_last;
    const std::optional<std::size_t> m_own;
};

} // namespace

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
        const KeptLast kept(m_last);
        (*sink)(message);
    }
}

void TraceLog::end() {
    if (m_last && *m_last >= m_gone && *m_last - m_gone < m_messages.size()) {
        m_messages[*m_last - m_gone].ended = true;
    }
}

} // namespace Standalone
