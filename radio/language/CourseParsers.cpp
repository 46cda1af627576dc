// The commands that read and write drivers, take time or stand for other lines.

#include "radio/language/CommandParser.h"
#include "radio/language/CommandParsers.h"
#include "radio/language/TimeWords.h"
#include "radio/session/PeekPoke.h"
#include "radio/session/ScriptLine.h"
#include "radio/text/WordError.h"
#include "radio/text/Words.h"

#include <utility>

namespace Radio {

namespace {

constexpr std::uint32_t mostCarriers = 1000000;
constexpr std::int64_t mostTurns = 1000000;

/** The words as a line that they are read from again. */
std::string asLine(const std::vector<std::string>& words) {
    std::string line;
    for (const std::string& word : words) {
        const bool needsQuotes =
            word.empty() || word.front() == '#' || word.find_first_of(" \t\r\n\v\f\"") != std::string::npos;
        line += line.empty() ? "" : " ";
        if (!needsQuotes) {
            line += word;
            continue;
        }
        line += '"';
        for (const char character : word) {
            line += character == '"' || character == '\\' ? "\\" : "";
            line += character;
        }
        line += '"';
    }
    return line;
}

} // namespace

bool canBeRepeated(std::string_view command) {
    return command != "repeat" && command != "include" && command != "quit" && command != "exit";
}

bool takeForce(Arguments& arguments) {
    const bool isForced = !arguments.atEnd() && arguments.last() == "force";
    if (isForced) {
        arguments.dropLast();
    }
    return isForced;
}

Command parseRead(Arguments& arguments) {
    return ReadDriver{arguments.take("DRIVER")};
}

Command parseWrite(Arguments& arguments) {
    const bool isForced = takeForce(arguments);
    const std::string name = arguments.take("DRIVER");
    if (takesHz(name)) {
        return WriteDriver{name, arguments.takeInt64("VALUE"), isForced};
    }
    return WriteDriver{name, arguments.takeInt32("VALUE"), isForced};
}

Command parseWatch(Arguments& arguments) {
    Watch command{{arguments.take("DRIVER")}, {}};
    while (!arguments.atEnd() && arguments.peek() != "for") {
        command.names.push_back(arguments.take("DRIVER"));
    }
    if (!arguments.atEnd()) {
        arguments.take("for");
        command.time = takeTime(arguments, "TIME");
    }
    return command;
}

Command parseWait(Arguments& arguments) {
    return Wait{takeTime(arguments, "TIME")};
}

Command parseSweep(Arguments& arguments) {
    Sweep command{};
    command.isForced = takeForce(arguments);
    command.direction = arguments.takeDirection();
    command.channel = arguments.takeChannel();
    command.from = arguments.takeFrequency("FROM");
    command.to = arguments.takeFrequency("TO");
    command.step = arguments.takeFrequency("STEP");
    if (command.step == 0) {
        throw WordError("a step of 0 gets nowhere, expected at least 1 kHz");
    }
    if ((command.from < command.to ? command.to - command.from : command.from - command.to) / command.step >=
        mostCarriers) {
        throw WordError("more than 1000000 carriers, expected a wider step or a narrower band");
    }
    if (!arguments.atEnd()) {
        command.dwell = takeTime(arguments, "DWELL");
    }
    return command;
}

Command parseRepeat(Arguments& arguments) {
    const std::int64_t count = arguments.takeInteger("COUNT", 1, mostTurns);
    std::vector<std::string> words{arguments.take("COMMAND")};
    // Before the rest is read: a line that repeats repetitions could be as deep as it is long.
    if (!canBeRepeated(words.front())) {
        throw WordError(inQuotes(words.front()) + " cannot be repeated, expected another command");
    }
    while (!arguments.atEnd()) {
        words.push_back(arguments.take("COMMAND"));
    }
    auto line = std::make_shared<ScriptLine>();
    line->text = asLine(words);
    line->command = parseWords(std::move(words));
    return Repeat{static_cast<std::uint32_t>(count), std::move(line)};
}

Command parseInclude(Arguments& arguments) {
    const std::string& file = arguments.take("FILE");
    if (file.empty()) {
        throw WordError("FILE is empty, expected the name of a script");
    }
    return Include{file};
}

} // namespace Radio
