#include "radioctl/record/RecordPrograms.h"

#include "radio/text/Words.h"
#include "radioctl/options/ExitCode.h"
#include "radioctl/record/ComparisonReport.h"
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

int compare(const DiffOptions& options) {
    RecordingFile before = readRecording(options.before);
    RecordingFile after = readRecording(options.after);
    const Comparison comparison(before, after, options.wanted);
    const ComparisonStyle style{options.before, options.after, static_cast<std::uint64_t>(options.limit),
                                options.verbose};
    options.json ? writeJson(std::cout, comparison, style) : writeText(std::cout, comparison, style);
    if (comparison.operations().isNothing()) {
        return refuse(harmless(options.before) + " and " + harmless(options.after) +
                          ": nothing was compared, expected operations that were asked for in one of them",
                      options.json, ExitCode::unusableInput);
    }
    return comparison.operations().isDifferent() ? ExitCode::different : ExitCode::good;
}

} // namespace

int runShow(const ShowOptions& options) {
    return refusing(options.json, [&] { return show(options); });
}

int runDiff(const DiffOptions& options) {
    return refusing(options.json, [&] { return compare(options); });
}

} // namespace Radio::Recordings
