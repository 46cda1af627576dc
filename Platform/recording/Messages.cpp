#include "Messages.h"

#include "Calls.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <locale>
#include <new>
#include <ostream>
#include <streambuf>

namespace Recording::Messages {

namespace {

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
        m_text[m_length] = one; // there is room behind the last that counts
        m_length += m_length < mostText ? 1 : 0;
        return marked(character, [&] { return m_target->rdbuf()->sputc(one); });
    }
    int sync() override {
        const int answer = marked(0, [&] { return m_target->rdbuf()->pubsync(); });
        write(Outcome::returned);
        return answer;
    }

private:
    void keep(const char* characters, std::size_t count) {
        count = std::min(count, mostText - m_length);
        std::memcpy(&m_text[m_length], characters, count);
        m_length += count;
    }
    /** Writes the record, once. */
    void write(Outcome outcome) {
        if (m_length != 0) {
            m_entry.outcome = outcome;
            std::memset(&m_text[m_length], 0, continuationBytes);
            Recorder::writePadded(m_entry, m_text.data(), m_length);
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
    static constexpr std::size_t mostText = 512;
    std::array<char, mostText + continuationBytes> m_text{};
    std::size_t m_length = 0;
};

/** A message and its stream. */
struct Place {
    std::atomic<bool> isTaken;
    std::ostream* stream;
    /** The stream's. */
    alignas(std::locale) std::array<unsigned char, sizeof(std::locale)> localeRoom;
    alignas(Message) std::array<unsigned char, sizeof(Message)> messageRoom;
    alignas(std::ostream) std::array<unsigned char, sizeof(std::ostream)> streamRoom;

    std::locale& locale() { return *std::launder(reinterpret_cast<std::locale*>(localeRoom.data())); }
    Message& message() { return *std::launder(reinterpret_cast<Message*>(messageRoom.data())); }
};
/** As many threads as have messages. */
std::array<Place, 64> s_places;

/** One that this thread keeps until it ends; null when there is none. */
[[gnu::cold, gnu::noinline]] Place* takePlace() {
    for (Place& place : s_places) {
        if (!place.isTaken.exchange(true)) {
            t_thread.message = &place;
            if (place.stream == nullptr) {
                // In rooms of their own: nothing is allocated.
                place.stream =
                    new (place.streamRoom.data()) std::ostream(new (place.messageRoom.data()) Message);
                new (place.localeRoom.data()) std::locale(place.stream->getloc());
            }
            return &place;
        }
    }
    Recorder::passOver();
    return nullptr;
}

Place* placeOfThread() {
    if (t_thread.message != nullptr) {
        return static_cast<Place*>(t_thread.message);
    }
    if (t_thread.number == 0) {
        static_cast<void>(Threads::takeNumber()); // with which it gives the place back
    }
    return takePlace();
}

/** What is written on the stream looks as if it were written on the platform's. */
void format(Place& place, const std::ios& as) {
    std::ios& stream = *place.stream;
    stream.flags(as.flags());
    stream.precision(as.precision());
    stream.width(as.width());
    static_cast<void>(stream.fill(as.fill()));
    if (!stream.good()) {
        stream.clear();
    }
    if (stream.exceptions() != as.exceptions()) {
        stream.exceptions(as.exceptions());
    }
    const std::locale locale = as.getloc();
    if (locale != place.locale()) {
        static_cast<void>(stream.imbue(locale));
        place.locale() = locale;
    }
}

} // namespace

std::ostream& streamFor(std::ostream& target, const Entry& entry) {
    Place* const place = target.good() ? placeOfThread() : nullptr;
    if (place == nullptr) {
        Recorder::write(entry); // a message whose text nobody can see
        return target;
    }
    place->message().begin(target, entry);
    format(*place, target);
    return *place->stream;
}

void atThreadsEnd() {
    auto* const place = static_cast<Place*>(t_thread.message);
    if (place != nullptr) {
        t_thread.message = nullptr;
        place->isTaken.store(false, std::memory_order_release);
    }
}

} // namespace Recording::Messages
