// The trace objects: doors to the platform's TraceLog.

#include "OrbiTrace.h"
#include "ResultCode.h"
#include "standalone/Platform.h"
#include "standalone/TraceObjects.h"

#include <ostream>
#include <streambuf>
#include <string>
#include <utility>

using Standalone::Platform;
using Standalone::TraceObjects;
namespace TraceLevel = Standalone::TraceLevel;

namespace {

/** What a text belongs to. The names are those that the library gave; they last until the message is over. */
struct Origin {
    const char* source;
    OrbiTraceLevel level;
    const char* file;
    int line;
};

/** How a stream writes numbers. */
class Format {
public:
    explicit Format(const std::ios& stream)
        : m_flags(stream.flags()),
          m_precision(stream.precision()),
          m_width(stream.width()),
          m_fill(stream.fill()) {}

    void restore(std::ios& stream) const {
        stream.flags(m_flags);
        stream.precision(m_precision);
        stream.width(m_width);
        static_cast<void>(stream.fill(m_fill));
    }

private:
    std::ios::fmtflags m_flags;
    std::streamsize m_precision;
    std::streamsize m_width;
    char m_fill;
};

/**
 * Takes the text of one message and hands it over at each flush. A message of which nobody is told takes no
 * memory but what earlier ones left here.
 */
class MessageBuffer final : public std::streambuf {
public:
    explicit MessageBuffer(std::ios& stream) : m_stream(stream) {}
    /** What the next text belongs to. */
    void describe(const Origin& origin) { m_origin = origin; }

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
            if (m_text.back() == '\n') {
                m_text.pop_back();
            }
            const Standalone::TraceMessage message{m_origin.source, m_origin.level, m_origin.file,
                                                   m_origin.line, m_text};
            // Whoever is told of the message may write one of its own, and this one may go on after it.
            m_text.clear();
            const Outer outer(*this);
            platform->trace().enter(message);
        }
        return 0;
    }

private:
    /** Gives the outer message its origin and its format back, also when something is thrown. */
    class Outer {
    public:
        explicit Outer(MessageBuffer& buffer)
            : m_buffer(buffer),
              m_origin(buffer.m_origin),
              m_format(buffer.m_stream) {}
        Outer(const Outer&) = delete;
        Outer& operator=(const Outer&) = delete;
        ~Outer() {
            m_buffer.m_origin = m_origin;
            m_format.restore(m_buffer.m_stream);
        }

    private:
        MessageBuffer& m_buffer;
        const Origin m_origin;
        const Format m_format;
    };

    Origin m_origin{};
    /** The stream that writes here. */
    std::ios& m_stream;
    std::string& m_text = TraceObjects::ofTheProcess().text();
};

/** The stream of all messages. */
struct MessageStream {
    /** What whoever is told of a message throws reaches the one who writes it: a stream would keep it back.
     */
    MessageStream() {
        stream.rdbuf(&buffer);
        plain.exceptions(std::ios::badbit);
    }

    std::ostream stream{nullptr};
    MessageBuffer buffer{stream};
    /** The state of a stream to which nobody did anything. */
    std::ios plain{&buffer};
};

/** Created by the first trace object, and so destroyed after the last one; it writes on what they share. */
MessageStream& messages() {
    static MessageStream theMessages;
    return theMessages;
}

} // namespace

OrbiTrace::OrbiTrace(const char* name, OrbiTraceLevel level) : m_name(name), m_level(level) {
    static_cast<void>(messages()); // exists until after this object's end
    TraceObjects::ofTheProcess().add(this);
}

OrbiTrace::~OrbiTrace() {
    TraceObjects::ofTheProcess().remove(this);
}

std::ostream& OrbiTrace::beginLogMsg(OrbiTraceLevel level, const char* sourceFile, int line) {
    MessageStream& shared = messages();
    shared.buffer.pubsync();
    shared.buffer.describe({m_name, level, sourceFile, line});
    // Neither a number base nor an error that the last message left behind may reach this one.
    shared.stream.clear();
    shared.stream.copyfmt(shared.plain);
    return shared.stream;
}

void OrbiTrace::endLogMsg() {
    messages().buffer.pubsync();
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
