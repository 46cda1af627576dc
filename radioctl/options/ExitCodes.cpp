#include "radioctl/options/ExitCodes.h"

#include "radio/text/BrokenLines.h"
#include "radio/text/Words.h"
#include "radioctl/options/ExitCode.h"

#include <algorithm>
#include <csignal>
#include <iterator>

namespace Radio {

namespace {

using Commands = std::vector<std::string_view>;

const Commands& allCommands() {
    static const Commands all = {
        "run",          "console",      "new",          "check",       "plan explain",     "plan audit",
        "thermal",      "qualify",      "calibrate",    "laboratory",  "laboratory merge", "laboratory units",
        "serve",        "tables lint",  "tables diff",  "tables why",  "record show",      "record diff",
        "replay",       "describe",     "store list",   "store show",  "store tables",     "store compare",
        "store report", "store export", "store import", "store check", "store push",       "store grant",
        "completion"};
    return all;
}

/** The command of that name, and those below it. */
Commands commandsOf(std::string_view name) {
    Commands commands;
    std::copy_if(allCommands().begin(), allCommands().end(), std::back_inserter(commands),
                 [name](std::string_view command) {
                     const std::string_view behind = command.substr(std::min(name.size(), command.size()));
                     return command.substr(0, name.size()) == name &&
                            (name.empty() || behind.empty() || behind.front() == ' ');
                 });
    return commands;
}

/** The commands, those below one word by that word alone where there are many and all of them are there. */
Commands withFamilies(const Commands& some) {
    constexpr std::size_t many = 4;
    Commands names;
    for (const std::string_view command : some) {
        const std::string_view family = command.substr(0, command.find(' '));
        const Commands members = commandsOf(family);
        const bool isWhole = members.size() >= many &&
                             std::all_of(members.begin(), members.end(), [&some](std::string_view one) {
                                 return std::find(some.begin(), some.end(), one) != some.end();
                             });
        const std::string_view name = isWhole ? family : command;
        if (names.empty() || names.back() != name) {
            names.push_back(name);
        }
    }
    return names;
}

/** Some of the commands that are `asked` about, as they stand in front of a reason: nothing for all of them.
 */
std::string namesOf(const Commands& some, const Commands& asked) {
    constexpr std::size_t many = 5;
    if (some.size() == asked.size()) {
        return {};
    }
    Commands others;
    std::copy_if(asked.begin(), asked.end(), std::back_inserter(others), [&some](std::string_view command) {
        return std::find(some.begin(), some.end(), command) == some.end();
    });
    constexpr std::size_t few = 6;
    if (others.size() <= few && asked.size() > many) {
        const std::string last(others.back());
        others.pop_back();
        return "all but " + joined(others, ", ") + (others.empty() ? "" : " and ") + last + ": ";
    }
    return joined(withFamilies(some), ", ") + ": ";
}

std::string withNames(const ExitReason& reason, const Commands& asked) {
    Commands concerned;
    std::copy_if(asked.begin(), asked.end(), std::back_inserter(concerned),
                 [&reason](std::string_view command) {
                     return std::find(reason.commands.begin(), reason.commands.end(), command) !=
                            reason.commands.end();
                 });
    if (concerned.empty()) {
        return {};
    }
    return namesOf(concerned, asked) + std::string(reason.text);
}

/** The number in its column, and the text beside it; of several reasons only the first has the number. */
std::string lines(const std::string& number, const std::string& text) {
    constexpr std::size_t indent = 7;
    std::string result = "  " + number + std::string(indent - 2 - number.size(), ' ');
    const char* separator = "";
    for (const std::string& line : brokenLines(text, terminalWidth - indent)) {
        result += separator + line + "\n";
        separator = "       ";
    }
    return result;
}

} // namespace

const std::vector<ExitReason>& exitReasons() {
    const Commands& all = allCommands();
    static const std::vector<ExitReason> reasons = {
        {ExitCode::good, all, "good"},
        {ExitCode::expectationFailed,
         {"run", "console"},
         "an expectation failed, or a command failed without an \"expect result\" behind it"},
        {ExitCode::expectationFailed, {"check", "tables lint"}, "there are errors"},
        {ExitCode::expectationFailed,
         {"check"},
         "with --strict there are warnings, or with --all a carrier is outside its limits"},
        {ExitCode::expectationFailed, {"check"}, "with --hardware an attribute cannot be used"},
        {ExitCode::outsideLimits,
         {"plan explain"},
         "the library reported an error or wrote something else than the steps say, no carrier came of it, "
         "or the board forbids it"},
        {ExitCode::outsideLimits, {"plan audit"}, "a carrier is outside its limits"},
        {ExitCode::outsideLimits, {"plan audit"}, "with --hardware the connection to a device was lost"},
        {ExitCode::outsideLimits, {"thermal"}, "the radio complained"},
        {ExitCode::outsideLimits,
         {"qualify", "calibrate"},
         "nothing can be measured with the detector as it is"},
        {ExitCode::outsideLimits, {"calibrate"}, "there are points without good corrections"},
        {ExitCode::outsideLimits,
         {"laboratory", "laboratory merge"},
         "more transmitters fail with all settings than may"},
        {ExitCode::outsideLimits, {"thermal", "calibrate"}, "a limit that the board states is not held"},
        {ExitCode::outsideLimits,
         {"run", "console", "plan audit", "qualify", "calibrate", "serve"},
         "with --hardware an on_exit value could not be written"},
        {ExitCode::different, {"tables diff", "record diff"}, "there are differences"},
        {ExitCode::different, {"replay"}, "the library went another way than a recording"},
        {ExitCode::outsideLimits, {"tables why"}, "the library wrote something else than was computed"},
        {ExitCode::different, {"store check"}, "a run is not whole, or the database is damaged"},
        {ExitCode::wrongCommandLine, all, "wrong command line"},
        {ExitCode::unusableInput,
         {"run", "console", "check", "plan explain", "plan audit", "thermal", "qualify", "calibrate", "serve",
          "tables lint", "tables diff", "tables why"},
         "a board cannot be used"},
        {ExitCode::unusableInput, {"new"}, "the file is there already"},
        {ExitCode::unusableInput, {"run"}, "a script cannot be used"},
        {ExitCode::unusableInput, {"console"}, "a line through a pipe was refused"},
        {ExitCode::unusableInput, {"plan audit"}, "a board has no raster to audit"},
        {ExitCode::unusableInput,
         {"thermal"},
         "the log cannot be used, or the board has no compensation to replay"},
        {ExitCode::unusableInput, {"calibrate"}, "a journal or a table cannot be used"},
        {ExitCode::unusableInput,
         {"laboratory"},
         "the laboratory file or its board cannot be used, or a transmitter cannot be calibrated"},
        {ExitCode::unusableInput,
         {"laboratory", "laboratory merge"},
         "results cannot be used, or do not belong together"},
        {ExitCode::unusableInput,
         {"laboratory units"},
         "the board or the store cannot be used, or there is no unit that can be fitted"},
        {ExitCode::unusableInput,
         {"serve"},
         "an address, a token, a certificate or a state cannot be used, or the program was built without it"},
        {ExitCode::unusableInput,
         {"tables lint", "tables diff", "tables why"},
         "a table cannot be used, or there are none to look at"},
        {ExitCode::unusableInput,
         {"record show", "record diff", "replay", "describe"},
         "a recording cannot be used"},
        {ExitCode::unusableInput, {"record diff"}, "nothing was compared"},
        {ExitCode::unusableInput,
         {"run", "plan audit", "thermal", "calibrate"},
         "the settings file cannot be used, or the run could be kept neither in its store nor in a file"},
        {ExitCode::unusableInput,
         {"store list", "store show", "store tables", "store compare", "store report", "store export",
          "store import", "store check", "store push", "store grant"},
         "the store cannot be used, or has nothing of what was asked for"},
        {ExitCode::unusableInput, {"store import", "store push"}, "a file has no run"},
        {ExitCode::unusableInput,
         {"thermal", "calibrate", "laboratory", "laboratory merge", "store report"},
         "gnuplot is missing"},
        {ExitCode::unusableInput,
         {"run", "console", "plan audit", "qualify", "calibrate", "serve"},
         "with --hardware the hardware is missing or in use by another program, or there is no place for its "
         "mark"},
        {ExitCode::unusableInput, {"calibrate"}, "with --hardware a temperature did not come about in time"},
        {ExitCode::unusableInput, all, "output cannot be written"},
        {ExitCode::notBooted,
         {"run", "console"},
         "the radio did not boot, and no \"expect result\" came first"},
        {ExitCode::notBooted,
         {"plan explain", "plan audit", "thermal", "qualify", "calibrate", "serve", "tables why"},
         "the radio did not boot"},
        {ExitCode::notBooted, {"check"}, "with --all the radio did not boot"},
        {ExitCode::signalBase + SIGINT,
         {"run", "console", "plan audit", "thermal", "qualify", "calibrate", "laboratory", "laboratory units",
          "replay", "store list", "store report", "store export", "store import"},
         "interrupted by Ctrl-C (129 and 143: by SIGHUP and SIGTERM)"},
        {ExitCode::signalBase + SIGINT, {"check"}, "with --all the audit was interrupted likewise"},
    };
    return reasons;
}

std::string exitCodeHelp(std::string_view command) {
    const Commands asked = commandsOf(command);
    std::string text = "Exit codes:\n";
    int codeBefore = -1;
    for (const ExitReason& reason : exitReasons()) {
        const std::string told = withNames(reason, asked);
        if (!told.empty()) {
            text += lines(reason.code == codeBefore ? "" : std::to_string(reason.code), told);
            codeBefore = reason.code;
        }
    }
    return text;
}

std::string reasonWithCommands(const ExitReason& reason) {
    return withNames(reason, allCommands());
}

} // namespace Radio
