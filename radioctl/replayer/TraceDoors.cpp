// Trace messages, and waiting.

#include "OrbiTrace.h"
#include "radioctl/replayer/Player.h"

#include <unistd.h>

#include <limits>
#include <optional>
#include <ostream>
#include <streambuf>
#include <utility>
#include <vector>

using namespace Replayer;

namespace {

/** All there are: they live as long as the process. */
std::vector<OrbiTrace*>& traceObjects() {
    static auto* const objects = new std::vector<OrbiTrace*>; // NOLINT(cppcoreguidelines-owning-memory)
    return *objects;
}

/** Compares each message with what was recorded when it is flushed. */
class MessageBuffer final : public std::streambuf {
public:
    void begin(OrbiTraceLevel level) {
        m_level = level;
        m_text.clear();
    }

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
        if (!m_text.empty() && Player::current() != nullptr) {
            Call call{Kind::traceMessage, ObjectKind::sourceFile};
            call.a = m_level;
            call.bytes = std::exchange(m_text, {}); // whoever is told of it may write another one
            static_cast<void>(Player::current()->answer(call));
        }
        return 0;
    }

private:
    OrbiTraceLevel m_level{};
    std::string m_text;
};

struct MessageStream {
    MessageBuffer buffer;
    std::ostream stream{&buffer};
};

MessageStream& messages() {
    static auto* const stream = new MessageStream; // NOLINT(cppcoreguidelines-owning-memory)
    return *stream;
}

/** The platform threw when the message was begun, and not later: then there is no text. */
bool isThrownAtOnce(const std::optional<Record>& next) {
    return next && next->kind == Kind::traceMessage &&
           (next->outcome == Outcome::threwException ||
            (next->outcome != Outcome::returned && next->bytes.empty()));
}

} // namespace

OrbiTrace::OrbiTrace(const char* name, OrbiTraceLevel level) : m_name(name), m_level(level) {
    traceObjects().push_back(this);
}

OrbiTrace::~OrbiTrace() = default;

std::ostream& OrbiTrace::beginLogMsg(OrbiTraceLevel level, const char* /*sourceFile*/, int /*line*/) {
    MessageStream& shared = messages();
    shared.stream.clear();
    // What whoever is told of a message throws reaches the one who writes it.
    shared.stream.exceptions(std::ios::badbit);
    shared.buffer.begin(level);
    if (Player::current() != nullptr && isThrownAtOnce(Player::current()->peekCall())) {
        Call call{Kind::traceMessage, ObjectKind::sourceFile};
        call.a = level;
        static_cast<void>(Player::current()->answer(call));
    }
    return shared.stream;
}

void OrbiTrace::endLogMsg() {
    if (Player::current() != nullptr) {
        static_cast<void>(Player::current()->answer({Kind::traceEnd}));
    }
}

OrbiTraceLevel CZulTraceHandler_DmLevel2GtLevel(int level) {
    if (Player::current() == nullptr) {
        return OrbiTraceLevel{std::numeric_limits<std::int32_t>::max()};
    }
    Call call{Kind::traceLevel};
    call.a = level;
    const auto answer = static_cast<OrbiTraceLevel>(Player::current()->answer(call).code);
    // Which levels were wanted is not recorded, but which messages were.
    const auto next = Player::current()->peekCall();
    const bool isWanted = next && next->kind == Kind::traceMessage;
    for (OrbiTrace* const object : traceObjects()) {
        object->setLevel(isWanted ? answer : OrbiTraceLevel{std::numeric_limits<std::int32_t>::min()});
    }
    return answer;
}

/** What the library waits for has been waited for when the recording was made. */
extern "C" RADIO_API int usleep(useconds_t /*microseconds*/) {
    return 0;
}
