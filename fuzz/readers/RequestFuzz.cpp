// A request as it is written, "METHOD TARGET", headers, an empty line and a body: who may ask, where somebody
// goes on who follows events, what is answered without the radio, and what a body has in it.

#include "ServiceRules.h"
#include "service/http/Gate.h"
#include "service/radio/Body.h"
#include "service/radio/EventRing.h"
#include "service/radio/Resources.h"

#include <array>
#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <stdexcept>

namespace {

using namespace Radio::Service;

const std::string token = "a-token-of-24-characters";
const std::string ownName = "radio.example";

struct Written {
    Request request{};
    /** By their names in small letters. */
    std::map<std::string, std::string> headers{};

    const std::string* header(const std::string& name) const {
        const auto found = headers.find(name);
        return found == headers.end() ? nullptr : &found->second;
    }
};

std::string small(std::string_view text) {
    std::string result(text);
    for (char& letter : result) {
        if (letter >= 'A' && letter <= 'Z') {
            letter = static_cast<char>(letter - 'A' + 'a');
        }
    }
    return result;
}

/** What stands before `end`, which is taken away with it; all of it where there is no such thing. */
std::string_view taken(std::string_view& text, std::string_view end) {
    const std::size_t at = std::min(text.find(end), text.size());
    const std::string_view found = text.substr(0, at);
    text.remove_prefix(std::min(at + end.size(), text.size()));
    return found;
}

Written readWritten(std::string_view text) {
    Written written;
    std::string_view line = taken(text, "\n");
    written.request.method = taken(line, " ");
    written.request.path = taken(line, "?");
    written.request.query = line;
    for (line = taken(text, "\n"); !line.empty(); line = taken(text, "\n")) {
        const std::string name = small(taken(line, ": "));
        written.headers.emplace(name, line);
    }
    written.request.body = text;
    const std::string* const type = written.header("content-type");
    written.request.contentType = type == nullptr ? "" : *type;
    return written;
}

bool isWithPort(const std::string& host, const std::string& name, const std::string& port) {
    return host == name + ":" + port;
}

/** Whether a host is that of the service, told a second time. */
bool isOurs(const Gate::Way& way, const std::string& host) {
    if (host.rfind(ownName, 0) == 0) {
        const std::string rest = host.substr(ownName.size());
        if (rest.empty() || (rest.front() == ':' && rest.find_first_of(":]", 1) == std::string::npos)) {
            return true;
        }
    }
    const bool isUsual = way.port == (way.isEncrypted ? 443 : 80);
    const std::string port = std::to_string(way.port);
    const std::string other = way.isLoopback ? "localhost" : way.address;
    return isWithPort(host, way.address, port) || isWithPort(host, other, port) ||
           (isUsual && (host == way.address || host == other));
}

int statusThatIsRight(const Gate::Way& way, const Written& written, bool wantsToken) {
    const std::string* const host = written.header("host");
    if (host == nullptr || !isOurs(way, small(*host))) {
        return 403;
    }
    if (const std::string* const origin = written.header("origin")) {
        std::string_view rest = *origin;
        taken(rest, "://");
        const bool hasScheme = origin->find("://") != std::string::npos;
        if (!hasScheme || small(rest) != small(*host)) {
            return 403;
        }
    }
    const std::string* const said = written.header("authorization");
    const bool isKnown =
        said != nullptr && small(said->substr(0, 7)) == "bearer " && said->substr(7) == token;
    return wantsToken && !isKnown ? 401 : 200;
}

void goThroughGate(const Written& written) {
    static const std::array<Gate::Way, 3> ways{{
        {"127.0.0.1", 8080, true, false},
        {"[::1]", 80, true, false},
        {"192.0.2.7", 443, false, true},
    }};
    static const Gate open("", {"Radio.Example"});
    static const Gate closed(token, {"Radio.Example"});
    const Gate::Way& way = ways.at(written.request.body.size() % ways.size());
    for (const Gate* const gate : {&open, &closed}) {
        const auto problem = gate->whyNot(
            way, {written.header("host"), written.header("origin"), written.header("authorization"), false});
        const int right = statusThatIsRight(way, written, gate == &closed);
        Fuzz::require(problem.has_value() == (right != 200), "who may is let in, and nobody else");
        if (problem) {
            Fuzz::requireAnswer(problem->answer(), {right});
        }
    }
}

void goOn(const Written& written) {
    static EventRing events(7, 5, 1000);
    static const bool isFilled = [] {
        for (int number = 0; number < 12; ++number) {
            events.push("{}");
        }
        return true;
    }();
    const std::string* const name = written.header("last-event-id");
    const auto seen = name == nullptr ? std::nullopt : events.numberOf(*name);
    if (!isFilled || !seen) {
        Fuzz::require(name == nullptr || *name != events.nameOf(events.last()), "the last event is known");
        return;
    }
    Fuzz::require(*seen <= events.last(), "somebody goes on behind an event that there was");
    Fuzz::require(name->rfind("7-", 0) == 0, "nobody goes on in the events of another run", *name);
    const auto piece = events.after(*seen, 1000);
    Fuzz::require(piece.has_value() == (*seen + 1 >= events.first()), "a gap is told where there is one");
    Fuzz::require(!piece || piece->last == events.last(), "somebody who goes on is given all that is there");
}

void answerAtOnce(const Request& request) {
    const std::optional<Answer> answer = answerWithoutRadio(request);
    if (answer && answer->status != 200) {
        Fuzz::requireAnswer(*answer, {400, 404, 405});
    }
}

/** One member after the other, as resources ask for them; what is refused is refused in words. */
void readBody(const std::string& text) {
    constexpr std::int64_t low = -100;
    constexpr std::int64_t high = 30000000;
    constexpr std::size_t most = 4;
    try {
        Body body(text);
        const auto khz = body.optionalInteger("khz", low, high);
        Fuzz::require(!khz || (*khz >= low && *khz <= high), "a whole number is within its range");
        body.flag("force");
        body.optionalNumber("tolerance");
        body.optionalText("object");
        const auto degrees = body.optionalIntegers("temperatures_c", 1, most, -100, 200);
        Fuzz::require(degrees.size() <= most, "a list has no more than it may");
        for (const std::int32_t one : degrees) {
            Fuzz::require(one >= -100 && one <= 200, "each number of a list is within its range");
        }
        body.numbersByName("carriers", low, high);
        body.end();
    } catch (const std::invalid_argument& error) {
        Fuzz::require(*error.what() != '\0' && Fuzz::isHarmless(error.what()),
                      "what is wrong with a body can be shown", error.what());
    }
    try {
        Body body(text);
        Fuzz::require(body.integers("values", most).size() <= most, "a list has no more than it may");
        body.text("operation");
        body.integer("code", std::numeric_limits<std::int32_t>::min(),
                     std::numeric_limits<std::uint32_t>::max());
        body.end();
    } catch (const std::invalid_argument& error) {
        Fuzz::require(*error.what() != '\0' && Fuzz::isHarmless(error.what()),
                      "what is wrong with a body can be shown", error.what());
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const Written written = readWritten({reinterpret_cast<const char*>(data), size});
    goThroughGate(written);
    goOn(written);
    answerAtOnce(written.request);
    readBody(written.request.body);
    return 0;
}
