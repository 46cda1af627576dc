#include "radioctl/record/RecordPrograms.h"

#include "radioctl/options/ExitCode.h"
#include "radioctl/record/RecordingJson.h"
#include "radioctl/record/RecordingText.h"
#include "radioctl/report/Output.h"

#include <iostream>

namespace Radio::Recordings {

namespace {

int show(const ShowOptions& options) {
    RecordingFile file = readRecording(options.file);
    Selection selection(file, options.wanted);
    // Whoever asks for a driver wants all that is done with it.
    RecordingText text(std::cout, file, options.verbose || !options.wanted.driver.empty());
    RecordingJson json(std::cout);
    options.json ? json.begin(options.file, file) : text.begin(options.file);
    while (const std::optional<Seen> seen = selection.next()) {
        options.json ? json.show(*seen) : text.show(*seen);
    }
    options.json ? json.end(file) : text.end();
    return ExitCode::good;
}

} // namespace

int runShow(const ShowOptions& options) {
    return refusing(options.json, [&] { return show(options); });
}

} // namespace Radio::Recordings
