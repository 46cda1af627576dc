#include "radio/language/CommandTable.h"

#include "radio/language/CommandParsers.h"
#include "radio/text/NearestName.h"
#include "radio/text/Tokenizer.h"
#include "radio/text/WordError.h"
#include "radio/text/Words.h"

#include <algorithm>

namespace Radio {

namespace {

/** The first words of `text`, as many as `words` has. */
bool beginsWith(const std::vector<std::string>& words, const std::vector<std::string>& start) {
    return start.size() <= words.size() && std::equal(start.begin(), start.end(), words.begin());
}

/** The words of the names, in the order of the table. */
const std::vector<std::vector<std::string>>& splitNames() {
    static const std::vector<std::vector<std::string>> names = [] {
        std::vector<std::vector<std::string>> split;
        for (const CommandInfo& info : commandTable()) {
            split.push_back(splitIntoWords(info.name));
        }
        return split;
    }();
    return names;
}

[[noreturn]] void throwUnknownCommand(const std::vector<std::string>& known,
                                      const std::vector<std::string>& words,
                                      const std::vector<std::string>& candidates) {
    const std::string choice =
        (candidates.size() == 1 ? "expected " : "expected one of ") + joined(candidates, ", ");
    if (known.size() == words.size()) {
        throw WordError("the line ends after " + inQuotes(joined(known, " ")) + ", " + choice);
    }
    const std::string& word = words[known.size()];
    throw WordError((known.empty() ? "unknown command " : "unknown expectation ") + inQuotes(word) +
                    didYouMean(word, candidates) + ", " + choice);
}

} // namespace

const std::vector<CommandInfo>& commandTable() {
    static const std::vector<CommandInfo> table = {
        {"tune", "tune tx|rx CHANNEL FREQUENCY [kHz|MHz|GHz] [force]", "Sets the carrier of a channel.",
         "Without a unit the frequency is in kHz. Decimal fractions are exact: a fraction of a kHz, or more "
         "than 4294967295 kHz, is refused. The result is ok also when the hardware refused the value; what "
         "failed is shown and traced. With \"force\" a carrier is set also where a warning would keep it "
         "from "
         "that.",
         parseTune},
        {"sweep", "sweep tx|rx CHANNEL FROM TO STEP [DWELL] [force]",
         "Sets one carrier after the other, up or down.",
         "FROM, TO and STEP are in kHz or have a unit behind them, each of its own, and DWELL, how long a "
         "carrier stays, is in seconds or has ms, s or min behind it. There are at most 1000000 carriers. It "
         "stops at the first that fails, whose result it has. For expectations it is one command.",
         parseSweep},
        {"temperature", "temperature DEGREES [force]",
         "Tells the radio its temperature: -100 to 200 degrees Celsius.",
         "Whole degrees, as its sensor gives them. Observers of the temperature are told when it changes.",
         parseTemperature},
        {"set", "set VARIABLE VALUE[,VALUE...]", "Changes a variable of the database.",
         "The handlers see a change at once where they keep the variable's address, otherwise when its phase "
         "is run again, which the command then says. Fewer values than the variable has places leave the "
         "others as they are.",
         parseSet},
        {"phase", "phase init|storage|frame-format|11|5|20", "Runs a start-up phase again over all channels.",
         "It stops at the first module that fails; the result is then 0x8000.", parsePhase},
        {"fault", "fault OPERATION [OBJECT] CODE [once|always|N times]",
         "Has the platform answer calls with a code.",
         "Without an object all calls of the operation are answered so; without a number of turns, always. "
         "Where several faults match, the one given last decides. With a code below 0x8000, a success, the "
         "call is carried out all the same.",
         parseFault},
        {"clear", "clear all|OPERATION [OBJECT]", "Takes faults back.",
         "Without an object, all faults of the operation.", parseClear},
        {"interface", "interface INTERFACE present|absent|null|foreign|null-record",
         "Changes how an interface of the platform shows itself.",
         "absent: no entry in the broker; null: an entry that holds nothing; foreign: an entry of another "
         "type; null-record: the right type without a C record. Handlers notice in the next phase init.",
         parseInterface},
        {"observe", "observe tx|rx CHANNEL", "Subscribes to a channel once more, as a C client does.",
         "radioctl observes every handler as a class-based client from the start.", parseObserve},
        {"trace", "trace off|error|warning|notice|information",
         "Sets which trace messages are written and shown.", "The start is notice.", parseTrace},
        {"show", "show drivers|variables|observers|faults|interfaces|tables|leakage|channels [PATTERN]",
         "Lists what the radio has, and its state.",
         "A pattern chooses names that contain it; it may have the wildcards * and ?. Of the modelled LO "
         "leakages and of the channels, it chooses the numbers of channels.",
         parseShow},
        {"read", "read DRIVER", "Reads a driver and shows its value.",
         "It goes through the driver's record, as a client's read does: faults strike it, and the result is "
         "the driver's code. A record gives 32 bits.",
         parseRead},
        {"write", "write DRIVER VALUE [force]", "Writes a value to a driver.",
         "It goes through the driver's record past all handlers, and the result is the driver's code. A "
         "value "
         "of more than 32 bits is for a driver whose name ends in \".in.hz\", as a buffer of 8 bytes. With "
         "\"force\" a value is written also where a warning would keep it from that.",
         parseWrite},
        {"watch", "watch DRIVER... [for TIME [ms|s|min]]", "Shows values of drivers whenever they change.",
         "First all of them, then what has changed when they are read again, every 200 ms. At a prompt any "
         "key or Ctrl-C ends it; elsewhere it needs a time. With a time the modelled time goes on, for which "
         "nobody waits.",
         parseWatch},
        {"wait", "wait TIME [ms|s|min]", "Lets time pass.",
         "Without a unit it is in seconds, with decimals or without, at most one hour. What is modelled "
         "settles meanwhile, and nobody waits for that. Expectations behind it are about the command "
         "before it.",
         parseWait},
        {"repeat", "repeat COUNT COMMAND...", "Carries a command out several times.",
         "Up to 1000000 times; a command or an expectation with all its words, but not repeat, include, quit "
         "or exit. The last command is that of the last turn.",
         parseRepeat},
        {"include", "include FILE", "Carries out the lines of another script.",
         "The name is relative to the folder of the script with this line, at the prompt to the working "
         "directory. All scripts are read before the radio boots. They may be 16 deep, and none may include "
         "itself.",
         parseInclude},
        {"expect driver", "expect driver DRIVER VALUE", "Holds when a driver has this value.",
         "A driver that was never written has the value from the board file.", parseExpectDriver},
        {"expect frequency", "expect frequency tx|rx CHANNEL FREQUENCY [kHz|MHz|GHz]",
         "Holds when the frequency handler reports this carrier.", "", parseExpectFrequency},
        {"expect rau", "expect rau tx|rx CHANNEL FREQUENCY [kHz|MHz|GHz]",
         "Holds when the remote radio unit has this carrier.", "", parseExpectRau},
        {"expect notified", "expect notified tx|rx CHANNEL FREQUENCY [kHz|MHz|GHz]",
         "Holds when the last command told the observers this carrier.", "", parseExpectNotified},
        {"expect result", "expect result ok|failed|CODE", "Holds when the last command answered so.",
         "At the beginning of a script the last command is the start-up of the radio. A command that fails "
         "without an \"expect result\" behind it makes the run fail.",
         parseExpectResult},
        {"expect trace", "expect trace TEXT", "Holds when the last command traced a message with this text.",
         "A text of several words stands in quotation marks. Only messages of the level set by the command "
         "trace count (notice at the start), whatever --trace shows.",
         parseExpectTrace},
        {"expect no trace", "expect no trace [TEXT]",
         "Holds when it did not; without a text, when it traced none.", "", parseExpectNoTrace},
        {"expect writes", "expect writes COUNT|DRIVER=VALUE...",
         "Holds when the last command wrote this to the hardware.",
         "Either how many values, or exactly which ones in which order. The carriers of a remote radio unit "
         "go by the names IRauHandler_1.tx and IRauHandler_1.rx. A write that failed did not reach the "
         "hardware.",
         parseExpectWrites},
        {"expect leakage", "expect leakage CHANNEL below DBC",
         "Holds when the modelled LO leakage of a channel is lower.",
         "It is in dBc, at the transmit carrier and the temperature of the moment, with the corrections that "
         "the drivers have. Without a temperature it counts as that at 25 degrees; a channel without a "
         "carrier "
         "has no leakage that could be expected.",
         parseExpectLeakage},
        {"help", "help [COMMAND]", "Lists the commands, or explains one.", "", parseHelp},
        {"?", "? [COMMAND]", "The same as help.", "", parseHelp},
        {"quit", "quit", "Ends the script or leaves the prompt.", "", parseQuit},
        {"exit", "exit", "The same as quit.", "", parseQuit},
    };
    return table;
}

const CommandInfo& findCommand(const std::vector<std::string>& words) {
    std::vector<std::string> known;
    for (;;) {
        std::vector<std::string> candidates;
        for (std::size_t row = 0; row < splitNames().size(); ++row) {
            const std::vector<std::string>& name = splitNames()[row];
            if (beginsWith(words, name)) {
                return commandTable()[row];
            }
            if (name.size() > known.size() && beginsWith(name, known) &&
                std::find(candidates.begin(), candidates.end(), name[known.size()]) == candidates.end()) {
                candidates.push_back(name[known.size()]);
            }
        }
        const bool isKnown =
            known.size() < words.size() &&
            std::find(candidates.begin(), candidates.end(), words[known.size()]) != candidates.end();
        if (!isKnown) {
            throwUnknownCommand(known, words, candidates);
        }
        known.push_back(words[known.size()]);
    }
}

std::vector<const CommandInfo*> commandsNamed(std::string_view name) {
    const std::vector<std::string> wanted = splitIntoWords(name);
    std::vector<const CommandInfo*> found;
    for (std::size_t row = 0; row < splitNames().size(); ++row) {
        if (beginsWith(splitNames()[row], wanted)) {
            found.push_back(&commandTable()[row]);
        }
    }
    return found;
}

} // namespace Radio
