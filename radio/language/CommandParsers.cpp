#include "radio/language/CommandParsers.h"

#include "radio/board/PlatformWords.h"
#include "radio/language/CommandTable.h"
#include "radio/text/NearestName.h"
#include "radio/text/Numbers.h"
#include "radio/text/Tokenizer.h"
#include "radio/text/WordError.h"
#include "radio/text/Words.h"

#include <array>
#include <utility>

namespace Radio {

namespace {

std::vector<std::string_view> operationWords() {
    std::vector<std::string_view> words;
    for (const Standalone::Operation operation : Standalone::allOperations()) {
        words.push_back(Standalone::toString(operation));
    }
    return words;
}

std::optional<Show::Kind> showKindFromString(std::string_view word) {
    constexpr std::array<std::pair<std::string_view, Show::Kind>, 8> kinds = {
        {{"drivers", Show::Kind::drivers},
         {"variables", Show::Kind::variables},
         {"observers", Show::Kind::observers},
         {"faults", Show::Kind::faults},
         {"interfaces", Show::Kind::interfaces},
         {"tables", Show::Kind::tables},
         {"leakage", Show::Kind::leakage},
         {"channels", Show::Kind::channels}}};
    for (const auto& [name, kind] : kinds) {
        if (name == word) {
            return kind;
        }
    }
    return std::nullopt;
}

/** "tx|rx CHANNEL FREQUENCY", which several commands have behind their names. */
template <typename Target>
Target takeTarget(Arguments& arguments) {
    const Direction direction = arguments.takeDirection();
    const std::int32_t channel = arguments.takeChannel();
    Target target{};
    target.direction = direction;
    target.channel = channel;
    target.frequency = arguments.takeFrequency();
    return target;
}

/** Takes "once", "always" or "N times" from the end of the line, where they may stand. */
std::optional<std::uint32_t> takeTurns(Arguments& arguments) {
    if (arguments.left() < 2) {
        return std::nullopt;
    }
    const std::string word = arguments.last();
    if (parseInteger(word).has_value() && parseInteger(arguments.beforeLast()).has_value()) {
        throw WordError(inQuotes(word) + " lacks \"times\"");
    }
    if (word == "always" || word == "once" || word == "times") {
        arguments.dropLast();
    }
    if (word != "times") {
        return word == "once" ? std::optional<std::uint32_t>(1) : std::nullopt;
    }
    const std::int32_t times = parseInt32(arguments.last(), "N");
    if (times < 1) {
        throw WordError(inQuotes(arguments.last()) + " times is never, expected at least 1");
    }
    arguments.dropLast();
    return static_cast<std::uint32_t>(times);
}

std::string takeText(Arguments& arguments) {
    const std::string& text = arguments.take("TEXT");
    if (text.empty()) {
        throw WordError("an empty text is in every message, expected some text");
    }
    return text;
}

std::pair<std::string, std::int64_t> parseWrite(const std::string& word) {
    const std::size_t equals = word.rfind('=');
    if (equals == std::string::npos || equals == 0) {
        throw WordError(inQuotes(word) + " is no write, expected NAME=VALUE or the number of writes alone");
    }
    const std::string value = word.substr(equals + 1);
    const std::optional<std::int64_t> number = parseInteger(value);
    if (!number.has_value()) {
        throw WordError(inQuotes(value) + " in " + inQuotes(word) + " is no value, expected a number");
    }
    return {word.substr(0, equals), *number};
}

} // namespace

Command parseTune(Arguments& arguments) {
    const bool isForced = takeForce(arguments);
    Tune command = takeTarget<Tune>(arguments);
    command.isForced = isForced;
    return command;
}

Command parseTemperature(Arguments& arguments) {
    const bool isForced = takeForce(arguments);
    return SetTemperature{arguments.takeTemperature(), isForced};
}

Command parseSet(Arguments& arguments) {
    SetVariable command{arguments.take("VARIABLE"), {}};
    std::string_view list = arguments.take("VALUE");
    for (;;) {
        const std::size_t comma = list.find(',');
        command.values.push_back(parseInt32(list.substr(0, comma), "VALUE"));
        if (comma == std::string_view::npos) {
            return command;
        }
        list.remove_prefix(comma + 1);
    }
}

Command parsePhase(Arguments& arguments) {
    return RunPhase{
        arguments.takeOneOf("PHASE", phaseFromString, {"init", "storage", "frame-format", "11", "5", "20"})};
}

Command parseFault(Arguments& arguments) {
    Standalone::Fault fault{};
    fault.operation = arguments.takeOneOf("OPERATION", Standalone::operationFromString, operationWords());
    fault.times = takeTurns(arguments);
    if (arguments.left() > 1) {
        fault.object = arguments.take("OBJECT");
    }
    fault.code = arguments.takeCode("CODE");
    return InjectFault{fault};
}

Command parseClear(Arguments& arguments) {
    if (!arguments.atEnd() && arguments.peek() == "all") {
        arguments.take("all");
        return ClearFaults{};
    }
    const auto operation =
        arguments.takeOneOf("OPERATION", Standalone::operationFromString, operationWords());
    return ClearFaults{operation, arguments.takeIfAny()};
}

Command parseInterface(Arguments& arguments) {
    const std::string name = arguments.take("INTERFACE");
    return SetPresence{name, arguments.takeOneOf("STATE", presenceFromString, presenceWords())};
}

Command parseObserve(Arguments& arguments) {
    const Direction direction = arguments.takeDirection();
    return Observe{direction, arguments.takeChannel()};
}

Command parseTrace(Arguments& arguments) {
    return SetTrace{arguments.takeOneOf("LEVEL", traceLevelFromString, traceLevelWords())};
}

Command parseShow(Arguments& arguments) {
    const Show::Kind kind = arguments.takeOneOf(
        "LIST", showKindFromString,
        {"drivers", "variables", "observers", "faults", "interfaces", "tables", "leakage", "channels"});
    return Show{kind, arguments.takeIfAny()};
}

Command parseHelp(Arguments& arguments) {
    std::string about;
    while (!arguments.atEnd()) {
        about += (about.empty() ? "" : " ") + arguments.take("COMMAND");
    }
    if (!about.empty() && commandsNamed(about).empty()) {
        findCommand(splitIntoWords(about));
    }
    return Help{about};
}

Command parseQuit(Arguments& /*arguments*/) {
    return Quit{};
}

Command parseExpectDriver(Arguments& arguments) {
    const std::string name = arguments.take("DRIVER");
    return ExpectDriver{name, arguments.takeInt64("VALUE")};
}

Command parseExpectFrequency(Arguments& arguments) {
    return takeTarget<ExpectFrequency>(arguments);
}

Command parseExpectRau(Arguments& arguments) {
    return takeTarget<ExpectRau>(arguments);
}

Command parseExpectNotified(Arguments& arguments) {
    return takeTarget<ExpectNotified>(arguments);
}

Command parseExpectResult(Arguments& arguments) {
    const std::string word = arguments.atEnd() ? std::string() : arguments.peek();
    if (word == "ok" || word == "failed") {
        arguments.take("RESULT");
        return ExpectResult{word == "ok" ? ExpectResult::Kind::ok : ExpectResult::Kind::failed, 0};
    }
    if (!word.empty() && !parseInteger(word).has_value()) {
        throw WordError("unknown result " + inQuotes(word) + didYouMean(word, {"ok", "failed"}) +
                        ", expected ok, failed or a code such as 0x8000");
    }
    return ExpectResult{ExpectResult::Kind::code, arguments.takeCode("CODE")};
}

Command parseExpectTrace(Arguments& arguments) {
    return ExpectTrace{takeText(arguments)};
}

Command parseExpectNoTrace(Arguments& arguments) {
    return ExpectNoTrace{arguments.atEnd() ? std::string() : takeText(arguments)};
}

Command parseExpectWrites(Arguments& arguments) {
    const std::string& first = arguments.take("COUNT or NAME=VALUE");
    const std::optional<std::int64_t> count = parseInteger(first);
    if (count.has_value()) {
        if (*count < 0) {
            throw WordError(inQuotes(first) + " is no number of writes, expected 0 or more");
        }
        return ExpectWriteCount{static_cast<std::size_t>(*count)};
    }
    ExpectWrites expected{{parseWrite(first)}};
    while (!arguments.atEnd()) {
        expected.writes.push_back(parseWrite(arguments.take("NAME=VALUE")));
    }
    return expected;
}

Command parseExpectLeakage(Arguments& arguments) {
    const std::int32_t channel = arguments.takeChannel();
    const std::string& word = arguments.take("below");
    if (word != "below") {
        arguments.throwUsage(inQuotes(word) + " is out of place");
    }
    return ExpectLeakage{channel, arguments.takeLevel("DBC")};
}

} // namespace Radio
