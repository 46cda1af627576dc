#include "Output.h"

#include "JsonLine.h"
#include "JsonReporter.h"
#include "TextReporter.h"

#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <string_view>

namespace Radioctl {

bool wantsColour() {
    const char* const noColour = std::getenv("NO_COLOR");
    const char* const terminal = std::getenv("TERM");
    const bool refused = (noColour != nullptr && *noColour != '\0') || terminal == nullptr ||
                         std::string_view(terminal) == "dumb";
    return !refused && isatty(STDOUT_FILENO) == 1;
}

std::unique_ptr<Reporter> makeReporter(const Options& options, bool echo) {
    if (options.json) {
        return std::make_unique<JsonReporter>(std::cout, options.verbose);
    }
    return std::make_unique<TextReporter>(std::cout, TextStyle{wantsColour(), options.verbose, echo});
}

void complain(const std::string& message) {
    std::cout << std::flush;
    std::cerr << "radioctl: " << message << "\n";
}

int refuse(const std::string& message, bool json, int exitCode) {
    if (json) {
        writeJsonLine(std::cout, {{"event", "error"}, {"message", message}});
    }
    complain(message);
    return exitCode;
}

int checkedOutput(int exitCode) {
    std::cout << std::flush;
    if (std::cout) {
        return exitCode;
    }
    std::cerr << "radioctl: standard output cannot be written\n";
    return ExitCode::unusableInput;
}

} // namespace Radioctl
