#include "standalone/TraceLog.h"

#include "ResultCode.h"
#include "standalone/Platform.h"

#include <algorithm>
#include <streambuf>
#include <utility>

using Standalone::Platform;
namespace TraceLevel = Standalone::TraceLevel;

namespace {

/** What a text belongs to. The names are those that the library gave; they last until the message is over. */
struct Origin {
    const char* source;
    OrbiTraceLevel level;
    const char* file;
    int line;
};

/**
 * Takes the text of one message and hands it over at each flush. A message of which nobody is told takes no
 * memory but what earlier ones left here.
 */
class MessageBuffer final : public std::streambuf {
public:
    /** What the next text belongs to. */
    void describe(const Origin& origin) { m_origin = origin; }
    /** Forgets a text that was not flushed. */
    void discard() { m_text.clear(); }

protected:
    int_type overflow(int_type character) override {
        if (!traits_type::eq_int_type(character, traits_type::eof())) {
            m_text.push_back(traits_type::to_char_type(character));
        }
        return traits_type::not_eof(character);
    }

    std::streamsize xsputn(const char* characters, std::streamsize count) override {
        m_text.append(characters, static_cast<std::size_t>(count));
        return count;
    }

    int sync() override {
        Platform* const platform = Platform::current();
        if (platform == nullptr || !platform->trace().isRead()) {
            m_text.clear();
        } else if (!m_text.empty()) {
            // Emptied first: whoever is told of the message may write one of its own.
            std::string text = std::exchange(m_text, {});
            if (text.back() == '\n') {
                text.pop_back();
            }
            platform->trace().enter(
                {m_origin.source, m_origin.level, m_origin.file, m_origin.line, std::move(text)});
        }
        return 0;
    }

private:
    Origin m_origin{};
    std::string m_text;
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
    shared.buffer.describe({m_name, level, sourceFile, line});
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
    facility().buffer.discard();
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
