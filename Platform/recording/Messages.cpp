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
/** As many threads as have messages. */
std::array<Place, 64> s_places;

/** One that this thread keeps until it ends; null when there is none. */
[[gnu::cold, gnu::noinline]] Place* takePlace() {
    for (Place& place : s_places) {
        if (!place.isTaken.exchange(true)) {
            t_thread.message = &place;
            // In rooms of their own: nothing is allocated.
            place.stream = place.stream != nullptr ? place.stream
                                                   : new (place.streamRoom.data())
                                                         std::ostream(new (place.messageRoom.data()) Message);
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

/** What is written on the one looks as if it were written on the other. */
void format(std::ostream& stream, const std::ostream& as) {
    stream.flags(as.flags());
    stream.precision(as.precision());
    stream.width(as.width());
    stream.fill(as.fill());
    stream.clear();
    if (stream.exceptions() != as.exceptions()) {
        stream.exceptions(as.exceptions());
    }
    if (stream.getloc() != as.getloc()) {
        stream.imbue(as.getloc());
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
    format(*place->stream, target);
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
