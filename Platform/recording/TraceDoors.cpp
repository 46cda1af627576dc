// Trace messages. The library writes on a stream of the recorder's, which hands everything to the platform's
// and keeps the beginning of the text.

#include "Calls.h"
#include "Next.h"
#include "OrbiTrace.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <new>
#include <ostream>
#include <streambuf>

using namespace Recording;

namespace {

Next<std::ostream&(OrbiTrace*, OrbiTraceLevel, const char*, int)>
    s_begin("_ZN9OrbiTrace11beginLogMsgE14OrbiTraceLevelPKci");
Next<void(OrbiTrace*)> s_end("_ZN9OrbiTrace9endLogMsgEv");
Next<void*(void*, const char*, std::int32_t)> s_construct("_ZN9OrbiTraceC1EPKc14OrbiTraceLevel");
Next<OrbiTraceLevel(int)> s_level("CZulTraceHandler_DmLevel2GtLevel");

/** One message on its way. */
class Message final : public std::streambuf {
public:
    void begin(std::ostream& target, const Entry& entry) {
        m_target = &target;
        m_entry = entry;
        m_length = 0;
    }

protected:
    std::streamsize xsputn(const char* characters, std::streamsize count) override {
        keep(characters, static_cast<std::size_t>(count));
        return marked(count, [&] { return m_target->rdbuf()->sputn(characters, count); });
    }
    int_type overflow(int_type character) override {
        if (traits_type::eq_int_type(character, traits_type::eof())) {
            return traits_type::not_eof(character);
        }
        const char one = traits_type::to_char_type(character);
        keep(&one, 1);
        return marked(character, [&] { return m_target->rdbuf()->sputc(one); });
    }
    int sync() override {
        const int answer = marked(0, [&] { return m_target->rdbuf()->pubsync(); });
        write(Outcome::returned);
        return answer;
    }

private:
    void keep(const char* characters, std::size_t count) {
        count = std::min(count, m_text.size() - m_length);
        std::memcpy(&m_text[m_length], characters, count);
        m_length += count;
    }
    /** Writes the record, once. */
    void write(Outcome outcome) {
        if (m_length != 0) {
            m_entry.outcome = outcome;
            Recorder::write(m_entry, m_text.data(), m_length);
        }
        m_length = 0;
    }
    /** What the platform's stream answers or throws leaves the mark on it that it would have without the
     * recorder. */
    template <typename Answer, typename Call>
    __attribute__((no_sanitize("undefined"))) Answer marked(Answer good, Call call) {
        try {
            const InPlatform inside;
            const Answer answer = call();
            if (answer != good) {
                m_target->setstate(std::ios::badbit);
            }
            return answer;
        } catch (const abi::__forced_unwind&) {
            mark();
            write(Outcome::unwound);
            throw;
        } catch (...) {
            mark();
            write(Outcome::threwSomething);
            throw;
        }
    }
    /** As a stream marks itself whose buffer has thrown: without a word. */
    void mark() noexcept {
        try {
            m_target->setstate(std::ios::badbit);
        } catch (const std::ios::failure&) { // NOLINT(bugprone-empty-catch): something else is being thrown
        }
    }

    std::ostream* m_target = nullptr;
    Entry m_entry{Kind::traceMessage};
    std::array<char, 512> m_text{};
    std::size_t m_length = 0;
};

/** A message and its stream. */
struct Place {
    std::atomic<bool> isTaken;
    std::ostream* stream;
    alignas(Message) std::array<unsigned char, sizeof(Message)> messageRoom;
    alignas(std::ostream) std::array<unsigned char, sizeof(std::ostream)> streamRoom;

    Message& message() { return *std::launder(reinterpret_cast<Message*>(messageRoom.data())); }
};
/** As many threads as ever write messages at once. */
std::array<Place, 16> s_places;

/** That of this thread, which may have one from a message that was not finished. */
Place* takePlace() {
    if (t_thread.message != nullptr) {
        return static_cast<Place*>(t_thread.message);
    }
    for (Place& place : s_places) {
        if (!place.isTaken.exchange(true)) {
            t_thread.message = &place;
            return &place;
        }
    }
    Recorder::passOver();
    return nullptr;
}

/** Each message is one statement; the next one on this thread, or the end of this one, finds it over. */
void givePlaceBack() {
    auto* const place = static_cast<Place*>(t_thread.message);
    if (place != nullptr) {
        t_thread.message = nullptr;
        place->isTaken.store(false, std::memory_order_release);
    }
}

/** The stream through which the library is to write, on `target`. */
std::ostream& streamFor(std::ostream& target, const Entry& entry) {
    Place* const place = target.good() ? takePlace() : nullptr;
    if (place == nullptr) {
        Recorder::write(entry); // a message whose text nobody can see
        return target;
    }
    if (place->stream == nullptr) {
        place->stream = new (place->streamRoom.data()) std::ostream(
            new (place->messageRoom.data()) Message); // in rooms of their own: nothing is allocated
    }
    place->message().begin(target, entry);
    place->stream->clear();
    place->stream->copyfmt(target);
    return *place->stream;
}

std::uint16_t sourceOf(const char* file) {
    struct Known {
        std::atomic<const char*> file;
        std::atomic<std::uint16_t> number;
    };
    static std::array<Known, 64> s_known;
    for (Known& known : s_known) {
        const char* there = known.file.load(std::memory_order_acquire);
        if (there == file && known.number != 0) {
            return known.number;
        }
        if (there == nullptr) {
            const std::uint16_t number = Recorder::name(ObjectKind::sourceFile, file != nullptr ? file : "");
            if (known.file.compare_exchange_strong(there, file)) {
                known.number = number;
            }
            return number;
        }
    }
    return Recorder::name(ObjectKind::sourceFile, file != nullptr ? file : "");
}

} // namespace

std::ostream& OrbiTrace::beginLogMsg(OrbiTraceLevel level, const char* sourceFile, int line) {
    if (!isFromLibrary(__builtin_return_address(0))) {
        return s_begin(this, level, sourceFile, line);
    }
    const Entry entry{Kind::traceMessage, sourceOf(sourceFile), 0, level, line};
    std::ostream* stream = nullptr;
    static_cast<void>(outgoing(entry, [&] {
        stream = &s_begin(this, level, sourceFile, line);
        return 0;
    }));
    return streamFor(*stream, entry);
}

void OrbiTrace::endLogMsg() {
    if (!isFromLibrary(__builtin_return_address(0))) {
        s_end(this);
        return;
    }
    givePlaceBack();
    const Entry entry{Kind::traceEnd};
    static_cast<void>(outgoing(entry, [&] {
        s_end(this);
        return 0;
    }));
    Recorder::write(entry);
}

OrbiTraceLevel CZulTraceHandler_DmLevel2GtLevel(int level) {
    if (!isFromLibrary(__builtin_return_address(0))) {
        return s_level(level);
    }
    Entry entry{Kind::traceLevel, 0, 0, level};
    const OrbiTraceLevel answer = outgoing(entry, [&] { return s_level(level); });
    entry.code = answer;
    Recorder::write(entry);
    return answer;
}

extern "C" {

/** The first thing that the library does, while it is loaded: the recording begins here. */
RADIO_API void* recordTraceObject(void* self, const char* name,
                                  std::int32_t level) __asm__("_ZN9OrbiTraceC1EPKc14OrbiTraceLevel");
void* recordTraceObject(void* self, const char* name, std::int32_t level) {
    Recorder::begin(__builtin_return_address(0));
    return s_construct(self, name, level);
}

} // extern "C"
