// Requests to a served radio, with a line "~~~" between them: each "METHOD TARGET" and its body behind it.

#include "ServiceRules.h"
#include "radio/board/BoardFile.h"
#include "radio/session/SessionListener.h"
#include "service/radio/Resources.h"
#include "service/radio/ServedRadio.h"

#include <optional>

// The wrapper of a C observer lives as long as the process.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
    return "leak:IFrequencyHandler::registerObserver\n";
}

namespace {

using namespace Radio;
using namespace Radio::Service;

const char* const boardText = R"(
name = "Fuzzed radio"
[[channel]]
number = 1
type = "rf-module"
[drivers]
"channel.1.tx.rf.frequency" = {}
"channel.1.rx.rf.frequency" = {}
"amplifier" = {}
[variables]
"list" = [1, 2]
[tables]
"Curve" = { axis = [0, 10], values = [5, 6] }
[limits]
temperature = [-40, 85]
)";

/** Nobody looks. */
class Silence final : public SessionListener {
public:
    void phaseStarted(unsigned long /*phase*/) override {}
    void phaseFinished(const Standalone::PhaseReport& /*report*/) override {}
    void booted(bool /*succeeded*/) override {}
    void commandStarted(const ScriptLine& /*line*/) override {}
    void commandFinished(std::int32_t /*code*/, const std::string& /*note*/) override {}
    void called(const Standalone::Call& /*call*/) override {}
    void traced(const Standalone::TraceMessage& /*message*/) override {}
    void notified(const Notification& /*notification*/) override {}
    void judged(const ScriptLine& /*line*/, const Judgement& /*judgement*/) override {}
    void listed(const Listing& /*listing*/) override {}
    void helpWanted(const std::string& /*about*/) override {}
};

Request requestOf(std::string_view text) {
    const std::size_t lineEnd = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, lineEnd);
    const std::size_t space = std::min(line.find(' '), line.size());
    const std::string_view target = line.substr(std::min(space + 1, line.size()));
    const std::size_t question = std::min(target.find('?'), target.size());
    Request request;
    request.method = line.substr(0, space);
    request.path = target.substr(0, question);
    request.query = target.substr(std::min(question + 1, target.size()));
    request.contentType = "application/json";
    request.body = text.substr(std::min(lineEnd + 1, text.size()));
    return request;
}

} // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    static Board board = readBoard(boardText, "radio.toml", [](const auto&) { return std::nullopt; });
    std::string_view text(reinterpret_cast<const char*>(data), size);
    Silence silence;
    StateFile state("", board);
    EventRing events(1, 10, 1000);
    ServedRadio radio(
        board, silence, [](int, std::size_t) {}, Standalone::TraceLevel::information, nullptr, state);
    Fuzz::require(radio.boot({}), "the radio boots");
    Calibrations calibrations(board, radio, {});
    Resources resources(radio, calibrations, events, [](const Change&) {});
    constexpr std::string_view separator = "\n~~~\n";
    for (bool isOver = false; !isOver;) {
        const std::size_t end = std::min(text.find(separator), text.size());
        const Request request = requestOf(text.substr(0, end));
        isOver = end == text.size();
        text.remove_prefix(isOver ? end : end + separator.size());
        std::optional<Answer> answer = answerWithoutRadio(request);
        if (!answer && request.path != eventsPath) {
            answer = resources.answer(request);
        }
        if (answer) {
            Fuzz::requireAnswer(*answer, {200, 201, 400, 404, 405, 409, 502});
        }
    }
    return 0;
}
