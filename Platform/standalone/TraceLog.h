#ifndef PLATFORM_STANDALONE_TRACELOG_H
#define PLATFORM_STANDALONE_TRACELOG_H

#include "OrbiTrace.h"
#include "Visibility.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Standalone {

/**
 * The trace levels of the stand-alone platform. A threshold lets through its own level and those above it in
 * this list. Numeric levels map so: 0x8000 and every failing code to error, 256 to notice, 2048 to
 * information, anything else (a success code given as a level) to warning.
 */
namespace TraceLevel {
constexpr OrbiTraceLevel off{0};
constexpr OrbiTraceLevel error{1};
constexpr OrbiTraceLevel warning{2};
constexpr OrbiTraceLevel notice{3};
constexpr OrbiTraceLevel information{4};
} // namespace TraceLevel

/** One trace message as it was emitted. */
struct TraceMessage {
    std::string source;
    OrbiTraceLevel level;
    std::string file;
    int line;
    /** Without the closing newline. */
    std::string text;
    /** Whether endLogMsg was called after it. */
    bool ended = false;
};

/** Where trace messages go, and the threshold of all trace objects of the process. */
class RADIO_API TraceLog {
public:
    TraceLog();
    TraceLog(const TraceLog&) = delete;
    TraceLog& operator=(const TraceLog&) = delete;
    /** Gives every trace object its initial threshold back. */
    ~TraceLog();

    /** Sets the threshold of every trace object there is. */
    void setThreshold(OrbiTraceLevel level);

    /**
     * Is told of every message when its line is complete. What it throws reaches whoever writes the message,
     * as from a platform that breaks its contract. It may be set anew while it is told, and write messages of
     * its own. An empty function for nobody.
     */
    void setSink(std::function<void(const TraceMessage&)> sink);
    /** Whether messages are kept; they are, unless told otherwise. */
    void setRecording(bool recording) {
        m_recording = recording;
        if (!recording) {
            m_last.reset();
        }
    }
    /** True when messages are kept or somebody is told of them. */
    bool isRead() const { return m_recording || m_sink != nullptr; }
    /** The messages so far, oldest first. */
    const std::vector<TraceMessage>& messages() const { return m_messages; }
    void clear() {
        m_gone += m_messages.size();
        m_messages.clear();
    }

    /** For the trace objects: a line is complete; the message was ended. */
    void enter(const TraceMessage& message);
    void end();

private:
    std::vector<TraceMessage> m_messages;
    /** Null for nobody. Whoever tells it holds it, too. */
    std::shared_ptr<const std::function<void(const TraceMessage&)>> m_sink;
    bool m_recording = true;
    /** How many were kept and are no more. */
    std::size_t m_gone = 0;
    /** The number of the line to be marked as ended, counted from the first that was ever kept. */
    std::optional<std::size_t> m_last;
};

} // namespace Standalone

#endif
