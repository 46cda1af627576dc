#include "radioctl/report/Output.h"

#include "radio/files/InputError.h"
#include "radio/session/BootedRadio.h"
#include "radio/text/Words.h"
#include "radioctl/options/ExitCode.h"
#include "radioctl/report/JsonLine.h"
#include "radioctl/report/JsonReporter.h"
#include "radioctl/report/TextReporter.h"

#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <set>
#include <string_view>

namespace Radio {

bool wantsColour() {
    const char* const noColour = std::getenv("NO_COLOR");
    const char* const terminal = std::getenv("TERM");
    const bool refused = (noColour != nullptr && *noColour != '\0') || terminal == nullptr ||
                         std::string_view(terminal) == "dumb";
    return !refused && isatty(STDOUT_FILENO) == 1;
}

std::unique_ptr<Reporter> makeReporter(bool json, bool verbose, bool echo) {
    if (json) {
        return std::make_unique<JsonReporter>(std::cout, verbose);
    }
    return std::make_unique<TextReporter>(std::cout, TextStyle{wantsColour(), verbose, echo});
}

void complain(const std::string& message) {
    std::cout << std::flush;
    std::cerr << "radioctl: " << harmless(message) << "\n";
}

void warnOnce(const std::string& remark) {
    static std::set<std::string> told;
    if (told.insert(remark).second) {
        complain("warning: " + remark);
    }
}

int refuse(const std::string& message, bool json, int exitCode) {
    if (json) {
        writeJsonLine(std::cout, {{"event", "error"}, {"message", message}});
    }
    complain(message);
    return exitCode;
}

std::string adviceOf(const ChoiceError& error) {
    if (error.choice() == "restart") {
        return "; --restart begins anew";
    }
    if (error.choice() == "hardware or restart") {
        return "; --hardware goes on with it, --restart begins anew";
    }
    if (error.choice() == "resume or restart") {
        return "; --resume goes on with it, --restart keeps it as a backup and begins anew";
    }
    if (error.choice() == "put away") {
        return "; --restart keeps it as a backup and begins anew";
    }
    return ", or --" + (error.choice() == "tables" ? "out" : error.choice()) +
           (error.among().empty() ? "" : " with " + error.among());
}

int refusing(bool json, const std::function<int()>& action) {
    try {
        return action();
    } catch (const GivenUp& error) {
        return ExitCode::signalBase + error.signal();
    } catch (const ChoiceError& error) {
        return refuse(error.what() + adviceOf(error), json, ExitCode::unusableInput);
    } catch (const InputError& error) {
        return refuse(error.what(), json, ExitCode::unusableInput);
    } catch (const RadioError& error) {
        return refuse(error.what(), json, ExitCode::notBooted);
    }
}

std::string noSuchChannel(const Board& board, int number) {
    std::vector<std::string> numbers;
    for (const ChannelDescription& channel : board.channels) {
        numbers.push_back(std::to_string(channel.number));
    }
    return "--channel: " + harmless(board.file.string()) + " has no channel " + std::to_string(number) +
           "; it has: " + joined(numbers, ", ");
}

int checkedOutput(int exitCode) {
    std::cout << std::flush;
    // Who was told to leave did not wait for a reader.
    if (std::cout || exitCode > ExitCode::signalBase) {
        return exitCode;
    }
    std::cerr << "radioctl: standard output cannot be written\n";
    return ExitCode::unusableInput;
}

} // namespace Radio
