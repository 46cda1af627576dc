#include "standalone/TraceLog.h"

#include "ResultCode.h"
#include "standalone/Platform.h"

#include <algorithm>
#include <sstream>

using Standalone::Platform;
using Standalone::TraceMessage;
namespace TraceLevel = Standalone::TraceLevel;

namespace {

/** Takes the text of one message and hands it over at each flush. */
class MessageBuffer final : public std::stringbuf {
public:
    /** What the next text belongs to. */
    void describe(TraceMessage message) { m_message = std::move(message); }

protected:
    int sync() override {
        std::string text = str();
        if (text.empty()) {
            return 0;
        }
        // Emptied first: whoever is told of the message may write one of its own.
        str({});
        if (text.back() == '\n') {
            text.pop_back();
        }
        if (Platform* const platform = Platform::current()) {
            TraceMessage message = m_message;
            message.text = std::move(text);
            platform->trace().enter(message);
        }
        return 0;
    }

private:
    TraceMessage m_message{};
};

/** What all trace objects share. */
struct TraceFacility {
    struct Entry {
        OrbiTrace* object;
        OrbiTraceLevel initialLevel;
    };

    std::vector<Entry> objects;
    MessageBuffer buffer;
    std::ostream stream{&buffer};
    /** The state of a stream to which nobody did anything. */
    const std::ios plain{nullptr};
};

/**
 * Created by the first trace object, in whichever shared object that lies, and so destroyed after the last
 * one: static objects are destroyed in the reverse order of their completion.
 */
TraceFacility& facility() {
    static TraceFacility theFacility;
    return theFacility;
}

} // namespace

OrbiTrace::OrbiTrace(const char* name, OrbiTraceLevel level) : m_name(name), m_level(level) {
    facility().objects.push_back({this, level});
}

OrbiTrace::~OrbiTrace() {
    std::vector<TraceFacility::Entry>& objects = facility().objects;
    const auto gone =
        std::remove_if(objects.begin(), objects.end(),
                       [this](const TraceFacility::Entry& entry) { return entry.object == this; });
    objects.erase(gone, objects.end());
}

std::ostream& OrbiTrace::beginLogMsg(OrbiTraceLevel level, const char* sourceFile, int line) {
    TraceFacility& shared = facility();
    shared.buffer.pubsync();
    shared.buffer.describe({m_name, level, sourceFile, line, {}});
    // Neither a number base nor an error that the last message left behind may reach this one.
    shared.stream.clear();
    shared.stream.copyfmt(shared.plain);
    return shared.stream;
}

void OrbiTrace::endLogMsg() {
    facility().buffer.pubsync();
    if (Platform* const platform = Platform::current()) {
        platform->trace().end();
    }
}

OrbiTraceLevel CZulTraceHandler_DmLevel2GtLevel(int level) {
    constexpr int notice = 256;
    constexpr int information = 2048;
    if (level == information) { // first, because nearly every message of a radio that works is one
        return TraceLevel::information;
    }
    if (isFailure(level)) {
        return TraceLevel::error;
    }
    return level == notice ? TraceLevel::notice : TraceLevel::warning;
}

namespace Standalone {

// Text that was never flushed belongs to an earlier log. Touching the common part of the trace objects here
// also has it exist before a static log is complete, and so until after that one's end.
TraceLog::TraceLog() {
    facility().buffer.str({});
}

TraceLog::~TraceLog() {
    for (const TraceFacility::Entry& entry : facility().objects) {
        entry.object->setLevel(entry.initialLevel);
    }
}

void TraceLog::setThreshold(OrbiTraceLevel level) {
    for (const TraceFacility::Entry& entry : facility().objects) {
        entry.object->setLevel(level);
    }
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
