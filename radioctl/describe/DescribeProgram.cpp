#include "radioctl/describe/DescribeProgram.h"

#include "radio/description/Description.h"
#include "radio/files/AtomicFile.h"
#include "radio/files/Json.h"
#include "radio/recording/RecordingTime.h"
#include "radio/text/Words.h"
#include "radioctl/options/ExitCode.h"
#include "radioctl/report/JsonLine.h"
#include "radioctl/report/Output.h"

#include <iostream>

namespace Radio::Describing {

namespace {

void writeScript(const std::string& file, const std::string& text) {
    AtomicFile script(file);
    script.stream() << text;
    script.commit();
}

void showJson(const Options& options, const Description& description) {
    writeJsonLine(std::cout, {{"event", "described"},
                              {"file", options.file},
                              {"channels", description.channels},
                              {"drivers", description.drivers},
                              {"variables", description.variables},
                              {"tables", description.tables},
                              {"unknown", description.unknown},
                              {"board", description.board},
                              {"script", description.script}});
}

/** On standard error, since standard output is the board. */
void showSummary(const Options& options, const Description& description) {
    std::string line = harmless(options.file) + ": " + counted(description.channels, "channel") + ", " +
                       counted(description.drivers, "driver") + ", " +
                       counted(description.variables, "variable") + ", " +
                       counted(description.tables, "table");
    if (!description.unknown.empty()) {
        line += "; not known: " + harmless(joined(description.unknown, ", "));
    }
    std::cerr << line << "\n";
}

/** Why the script cannot be written where it is to be; empty when it can. */
std::string whyNoScript(const Options& options) {
    if (!options.script.empty() && isSameFile(options.script, options.file)) {
        return "--script: " + options.script + " is the recording, expected a file of its own";
    }
    if (!options.script.empty() && isStandardOutput(options.script)) {
        return "--script: " + options.script + " is where the board goes, expected a file of its own";
    }
    return {};
}

int describe(const Options& options) {
    const std::string wrong = whyNoScript(options);
    if (!wrong.empty()) {
        return refuse(wrong, options.json, ExitCode::wrongCommandLine);
    }
    Recordings::RecordingFile file = Recordings::readRecording(options.file);
    const Description description =
        Describing::describe(file, options.file, Recordings::timeText(file.header().started));
    if (!options.script.empty()) {
        writeScript(options.script, description.script);
    }
    if (options.json) {
        showJson(options, description);
    } else {
        std::cout << description.board;
        showSummary(options, description);
    }
    return ExitCode::good;
}

} // namespace

int runDescribe(const Options& options) {
    return refusing(options.json, [&] { return describe(options); });
}

} // namespace Radio::Describing
