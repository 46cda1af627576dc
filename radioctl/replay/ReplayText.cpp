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

std::string crashText(int signal) {
    if (signal == SIGXCPU) {
        return "the library does not come back";
    }
    const std::string text = "the library ended the process";
    return signal == 0 ? text
                       : text + " with signal " + std::to_string(signal) + " (" + strsignal(signal) + ")";
}

std::string nowText(const Verdict& verdict, const RecordingFile& file, const Seen* recorded) {
    if (verdict.difference == Difference::crash) {
        return crashText(verdict.signal);
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
    RecordingFile file = readRecording(verdict.file);
    told.passedOver = file.header().passedOver;
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

std::string summaryOf(const Verdict& verdict) {
    const std::string calls = counted(verdict.calls, "call");
    switch (verdict.outcome) {
    case Outcome::identical:
        return "identical, " + calls;
    case Outcome::identicalUntilGap:
        return "identical up to the gap, " + calls + " of " + std::to_string(verdict.recorded);
    case Outcome::different:
        return "different after " + calls;
    case Outcome::stopped:
        return "identical up to what cannot be replayed, " + calls + " of " +
               std::to_string(verdict.recorded) + ": " + verdict.reason;
    case Outcome::unusable:
        return verdict.reason;
    }
    return "";
}

} // namespace Radio::Replaying
