#include "radioctl/replay/ReplayText.h"

#include "radio/board/Board.h"
#include "radio/recording/RecordingWords.h"
#include "radio/text/Words.h"
#include "radioctl/record/RecordingText.h"

#include <csignal>
#include <cstring>
#include <sstream>

namespace Radio::Replaying {

namespace {

using namespace Recordings;

constexpr std::size_t linesBefore = 10;

void addLines(std::vector<std::string>& lines, const std::string& text) {
    std::istringstream stream(text);
    std::string line;
    while (std::getline(stream, line)) {
        if (!line.empty()) {
            lines.push_back(line);
        }
    }
}

/** The operation as it was shown, without what stands in front of it. */
std::string operationIn(const std::string& text) {
    const std::size_t begin = text.find_first_not_of(" \n>");
    const std::size_t end = text.find_last_not_of(" \n");
    return begin == std::string::npos ? "" : text.substr(begin, end - begin + 1);
}

/** Shows records one by one. */
class Shown {
public:
    explicit Shown(const RecordingFile& file) : m_text(m_stream, file, true) {}

    std::string of(const Seen& seen) {
        m_stream.str("");
        m_text.show(seen);
        return m_stream.str();
    }

private:
    std::ostringstream m_stream;
    RecordingText m_text;
};

std::string crashText(const Verdict& verdict) {
    if (verdict.signal == 0) {
        return "the library ended the process with " + std::to_string(verdict.ending) + " without a report";
    }
    return verdict.signal == SIGXCPU
               ? "the library does not come back"
               : "the library ended the process with signal " + std::to_string(verdict.signal) + " (" +
                     strsignal(verdict.signal) + ")";
}

std::string nowText(const Verdict& verdict, const RecordingFile& file, const Seen* recorded) {
    if (verdict.difference == Difference::crash) {
        return crashText(verdict);
    }
    Seen seen;
    seen.record = verdict.now;
    seen.record.object = verdict.object ? &*verdict.object : nullptr;
    if (recorded != nullptr) {
        seen.channel = recorded->channel;
        seen.level = recorded->level;
    }
    return lineOf(file, seen);
}

} // namespace

Told tell(const Verdict& verdict) {
    Told told;
    if (verdict.difference == Difference::crash && !verdict.at) {
        told.now = crashText(verdict); // where it was, it did not say
        return told;
    }
    RecordingFile file = readRecording(verdict.file);
    Selection selection(file, {});
    Shown lines(file);
    std::optional<Seen> recorded;
    while (const auto seen = selection.next()) {
        if (verdict.at && seen->record.sequence >= *verdict.at) {
            recorded = seen;
            break;
        }
        const std::string text = lines.of(*seen);
        if (seen->record.sequence == verdict.begin && isIncoming(seen->record.kind)) {
            told.operation = operationIn(text);
        }
        addLines(told.before, text);
    }
    if (told.before.size() > linesBefore) {
        told.before.erase(told.before.begin(), told.before.end() - linesBefore);
    }
    told.now = nowText(verdict, file, recorded ? &*recorded : nullptr);
    told.recorded = recorded ? lineOf(file, *recorded) : "nothing more";
    return told;
}

std::string notComparedText(std::uint64_t calls) {
    return calls != 0 ? ", " + std::to_string(calls) + " not compared" : "";
}

std::string summaryOf(const Verdict& verdict) {
    const std::string calls = counted(verdict.calls, "call");
    const std::string ofAll = calls + " of " + std::to_string(verdict.recorded);
    const std::string rest = notComparedText(verdict.notCompared);
    switch (verdict.outcome) {
    case Outcome::identical:
        return "identical, " + calls + rest;
    case Outcome::identicalUntilGap:
        return "identical up to the gap, " + ofAll + rest;
    case Outcome::different:
        return "different after " + calls + rest;
    case Outcome::stopped:
        return "stopped after " + ofAll + rest + ": " + verdict.reason;
    case Outcome::unusable:
        return verdict.reason;
    }
    return "";
}

} // namespace Radio::Replaying
