#include "radioctl/replay/ReplayProgram.h"

#include "radio/files/InputError.h"
#include "radio/files/Json.h"
#include "radio/text/Words.h"
#include "radioctl/console/Interrupt.h"
#include "radioctl/options/ExitCode.h"
#include "radioctl/replay/ReplayText.h"
#include "radioctl/replay/Replays.h"
#include "radioctl/report/JsonLine.h"
#include "radioctl/report/Output.h"

#include <algorithm>
#include <iostream>
#include <thread>

namespace Radio::Replaying {

namespace {

struct Counts {
    std::uint64_t identical = 0;
    std::uint64_t incomplete = 0;
    std::uint64_t different = 0;
    std::uint64_t stopped = 0;
    std::uint64_t unusable = 0;
    std::uint64_t calls = 0;
    std::uint64_t notCompared = 0;

    void add(const Verdict& verdict) {
        calls += verdict.calls;
        notCompared += verdict.notCompared;
        switch (verdict.outcome) {
        case Outcome::identical:
            ++identical;
            break;
        case Outcome::identicalUntilGap:
            ++incomplete;
            break;
        case Outcome::different:
            ++different;
            break;
        case Outcome::stopped:
            ++stopped;
            break;
        case Outcome::unusable:
            ++unusable;
            break;
        }
    }
    int exitCode() const {
        return unusable + stopped != 0 ? ExitCode::unusableInput
               : different != 0        ? ExitCode::different
                                       : ExitCode::good;
    }
};

// For people

/** A file may be another one by now. */
Told tellOr(const Verdict& verdict) {
    try {
        return tell(verdict);
    } catch (const InputError& error) {
        Told told;
        told.now = std::string("not told, since the file has changed: ") + error.what();
        return told;
    }
}

void showDifference(const Verdict& verdict) {
    const Told told = tellOr(verdict);
    if (!told.operation.empty()) {
        std::cout << "  in operation " << verdict.operation << ": " << harmless(told.operation) << "\n";
    }
    for (const std::string& line : told.before) {
        std::cout << "    " << harmless(line) << "\n";
    }
    if (!told.recorded.empty()) {
        std::cout << "  recorded: " << harmless(told.recorded) << "\n";
    }
    std::cout << "  now:      " << harmless(told.now) << "\n";
    if (verdict.difference == Difference::more) {
        std::cout << "  The library asks for more: the recording has no answer to it.\n";
    }
}

void showText(const Verdict& verdict) {
    if (verdict.outcome == Outcome::unusable) {
        complain(verdict.reason); // which names the file
        return;
    }
    std::cout << harmless(verdict.file) << ": " << harmless(summaryOf(verdict)) << "\n";
    if (verdict.outcome == Outcome::different) {
        showDifference(verdict);
    }
    if (verdict.passedOver != 0) {
        std::cout << "  The recording lacks " << counted(verdict.passedOver, "thing")
                  << " for which it had no room; that can look like a difference, and hide one.\n";
    }
}

/** `replayed` of `files` recordings. */
void showSummary(const Counts& counts, std::size_t replayed, std::size_t files) {
    if (files > 1) {
        std::cout << counted(replayed, "recording") << ": " << counts.identical << " identical, "
                  << counts.incomplete << " identical up to a gap, " << counts.different << " different, "
                  << counts.stopped << " stopped, " << counts.unusable << " unusable; "
                  << counted(counts.calls, "call") << notComparedText(counts.notCompared) << "\n";
    }
    if (replayed < files) {
        std::cout << "Interrupted: " << replayed << " of " << counted(files, "recording")
                  << (replayed == 1 ? " was" : " were") << " replayed.\n";
    }
}

// For programs

std::string wordOf(const Verdict& verdict) {
    switch (verdict.outcome) {
    case Outcome::identical:
        return "identical";
    case Outcome::identicalUntilGap:
        return "identical_until_gap";
    case Outcome::different:
        return "different";
    case Outcome::stopped:
        return "stopped";
    case Outcome::unusable:
        return "unusable";
    }
    return "";
}

std::string wordOf(Difference difference) {
    switch (difference) {
    case Difference::call:
        return "call";
    case Difference::more:
        return "more";
    case Difference::less:
        return "less";
    case Difference::answer:
        return "answer";
    case Difference::crash:
        return "crash";
    case Difference::none:
        break;
    }
    return "";
}

void showJson(const Verdict& verdict) {
    Json event{{"event", "replayed_recording"},      {"file", verdict.file},
               {"outcome", wordOf(verdict)},         {"calls", verdict.calls},
               {"recorded_calls", verdict.recorded}, {"not_compared", verdict.notCompared},
               {"passed_over", verdict.passedOver}};
    if (!verdict.reason.empty()) {
        event["reason"] = verdict.reason;
    }
    if (verdict.outcome == Outcome::different) {
        const Told told = tellOr(verdict);
        event["difference"] = wordOf(verdict.difference);
        event["operation_number"] = verdict.operation;
        event["operation"] = told.operation;
        event["before"] = told.before;
        event["recorded"] = told.recorded;
        event["now"] = told.now;
    }
    writeJsonLine(std::cout, event);
}

void showJsonSummary(const Counts& counts, std::size_t replayed, std::size_t files) {
    writeJsonLine(std::cout, {{"event", "replayed_recordings"},
                              {"recordings", replayed},
                              {"identical", counts.identical},
                              {"identical_until_gap", counts.incomplete},
                              {"different", counts.different},
                              {"stopped", counts.stopped},
                              {"unusable", counts.unusable},
                              {"calls", counts.calls},
                              {"not_compared", counts.notCompared},
                              {"interrupted", replayed < files}});
}

int replay(const Options& options) {
    const std::size_t processors = std::max(1U, std::thread::hardware_concurrency());
    const Interrupt interrupt;
    Counts counts;
    Replays replays(options, options.jobs ? static_cast<std::size_t>(*options.jobs) : processors,
                    [&](const Verdict& verdict) {
                        counts.add(verdict);
                        options.json ? showJson(verdict) : showText(verdict);
                    });
    replays.run(interrupt);
    const std::size_t files = options.files.size();
    options.json ? showJsonSummary(counts, replays.shown(), files)
                 : showSummary(counts, replays.shown(), files);
    return replays.shown() < files ? ExitCode::signalBase + interrupt.signal() : counts.exitCode();
}

} // namespace

int runReplay(const Options& options) {
    return refusing(options.json, [&] { return replay(options); });
}

} // namespace Radio::Replaying
