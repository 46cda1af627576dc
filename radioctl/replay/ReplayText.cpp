#include "radioctl/replay/ReplayText.h"

#include "radio/board/Board.h"
#include "radio/recording/RecordingWords.h"
#include "radio/text/Words.h"
#include "radioctl/record/RecordingText.h"

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

/** Without the space in front. */
std::string trimmed(const std::string& text);

/** A call without the number that a write has in front: "7", or "-" when it failed. */
std::string callText(const std::string& text) {
    const std::string line = trimmed(text);
    const std::size_t behind = line.find_first_not_of("0123456789-");
    return behind != 0 && line.compare(behind, 2, "  ") == 0 ? line.substr(behind + 2) : line;
}

std::string trimmed(const std::string& text) {
    const std::size_t begin = text.find_first_not_of(" \n>");
    const std::size_t end = text.find_last_not_of(" \n");
    return begin == std::string::npos ? "" : text.substr(begin, end - begin + 1);
}

std::string answerText(const Record& record) {
    if (record.outcome != Recordings::Outcome::returned) {
        return "the operation ended: " + std::string(Recordings::toString(record.outcome)) +
               (record.bytes.empty() ? "" : " " + harmless(record.bytes));
    }
    std::string text = "the operation was over and answered " + codeText(record.code);
    if (record.a == static_cast<std::int32_t>(Kind::calibrate) && record.bytes.size() == 16) {
        text += ", i " + std::to_string(record.number(0)) + ", q " + std::to_string(record.number(1)) +
                ", range " + std::to_string(record.number(2)) + ", " +
                counted(static_cast<std::uint32_t>(record.number(3)), "iteration");
    }
    return text;
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

/** The rest of a call: that the driver got its record in the place of its context. */
std::string detail(const Record& record) {
    const bool isDriver = record.kind == Kind::driverWrite || record.kind == Kind::driverWriteBuffer ||
                          record.kind == Kind::driverRead;
    return isDriver && record.b != 0 ? " (by its record)" : "";
}

std::string nowText(const Verdict& verdict, const Seen* recorded, Shown& lines) {
    switch (verdict.difference) {
    case Difference::crash:
        return verdict.signal == 24
                   ? "the library does not come back"
                   : "the library ended the process with signal " + std::to_string(verdict.signal) + " (" +
                         strsignal(verdict.signal) + ")";
    case Difference::less:
    case Difference::answer:
        return answerText(verdict.now);
    default:
        break;
    }
    Seen seen;
    seen.record = verdict.now;
    seen.record.object = verdict.object ? &*verdict.object : nullptr;
    if (recorded != nullptr) {
        seen.channel = recorded->channel;
        seen.level = recorded->level;
    }
    return callText(lines.of(seen)) + detail(seen.record);
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
            told.operation = trimmed(text);
        }
        addLines(told.before, text);
    }
    if (told.before.size() > linesBefore) {
        told.before.erase(told.before.begin(), told.before.end() - linesBefore);
    }
    told.now = nowText(verdict, recorded ? &*recorded : nullptr, lines);
    if (!recorded) {
        told.recorded = "nothing more";
    } else if (recorded->record.kind == Kind::finished) {
        told.recorded = answerText(recorded->record);
    } else {
        told.recorded = callText(lines.of(*recorded)) + detail(recorded->record);
    }
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
