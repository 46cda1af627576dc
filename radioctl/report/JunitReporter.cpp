#include "radioctl/report/JunitReporter.h"

#include "ResultCode.h"
#include "radio/text/Words.h"

#include <algorithm>
#include <utility>

namespace Radio {

namespace {

using std::chrono::steady_clock;

/** How many bytes the character has that begins with this one; 0 when none does. */
std::size_t lengthBehind(unsigned char first) {
    return first < 0x80 ? 1 : first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : first >= 0xC0 ? 2 : 0;
}

/** The character at the beginning of `text`; empty when there is none that a document may have. */
std::string_view firstCharacter(std::string_view text) {
    const auto first = static_cast<unsigned char>(text.front());
    const std::string_view character = text.substr(0, lengthBehind(first));
    const bool isNone = character == "\xEF\xBF\xBE" || character == "\xEF\xBF\xBF";
    const bool isBlank = first == '\t' || first == '\n' || first == '\r';
    return isNone || (!isBlank && harmless(character) != character) ? std::string_view() : character;
}

std::string escaped(std::string_view character) {
    switch (character.front()) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '"':
        return "&quot;";
    case '\t':
    case '\n':
    case '\r':
        // As they are they would be taken for blanks.
        return "&#" + std::to_string(static_cast<int>(character.front())) + ";";
    default:
        return std::string(character);
    }
}

std::string inSeconds(double seconds) {
    return inDecimals(seconds, 3);
}

double between(steady_clock::time_point from, steady_clock::time_point to) {
    return std::chrono::duration<double>(to - from).count();
}

} // namespace

std::string inXml(std::string_view text) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string xml;
    while (!text.empty()) {
        const std::string_view character = firstCharacter(text);
        if (character.empty()) {
            const auto byte = static_cast<unsigned char>(text.front());
            xml += {'\\', 'x', digits[byte >> 4U], digits[byte & 0xFU]};
            text.remove_prefix(1);
        } else {
            xml += escaped(character);
            text.remove_prefix(character.size());
        }
    }
    return xml;
}

JunitReporter::JunitReporter(Reporter& other, std::string script)
    : m_other(other),
      m_script(std::move(script)) {}

JunitReporter::Case JunitReporter::makeCase(const Place& place, const std::string& name, Verdict verdict,
                                            const std::string& message) {
    const steady_clock::time_point now = steady_clock::now();
    return {place, name, verdict, message, between(std::exchange(m_before, now), now)};
}

/** A failure that no expectation has asked for by now was not expected. */
void JunitReporter::settleOpen() {
    if (m_open) {
        m_cases.push_back(*std::exchange(m_open, std::nullopt));
    }
}

void JunitReporter::booted(bool succeeded) {
    const Case boot = makeCase({m_script, 0}, "boot", succeeded ? Verdict::passed : Verdict::failure,
                               succeeded ? "" : "the radio did not boot");
    if (succeeded) {
        m_cases.push_back(boot);
    } else {
        m_open = boot;
    }
    m_other.booted(succeeded);
}

void JunitReporter::commandStarted(const ScriptLine& line) {
    const auto* const action = std::get_if<Action>(&line.command);
    if (action != nullptr && actsOnRadio(*action)) {
        settleOpen();
    }
    m_place = line.place;
    m_text = line.text;
    m_other.commandStarted(line);
}

void JunitReporter::commandFinished(std::int32_t code, const std::string& note) {
    if (isFailure(code)) {
        m_open = makeCase(m_place, m_text, Verdict::failure,
                          "result " + codeText(code) + (note.empty() ? "" : ", ") + note);
    }
    m_other.commandFinished(code, note);
}

void JunitReporter::judged(const ScriptLine& line, const Judgement& judgement) {
    const auto* const expectation = std::get_if<Expectation>(&line.command);
    if (expectation != nullptr && std::holds_alternative<ExpectResult>(*expectation) && m_open) {
        // It is the expectation that says whether that was good. Of the start-up there is always a case.
        if (m_open->name == "boot" && m_open->place.line == 0) {
            m_open->verdict = Verdict::passed;
            settleOpen();
        }
        m_open.reset();
    }
    m_cases.push_back(
        makeCase(line.place, line.text, judgement.held ? Verdict::passed : Verdict::failure,
                 judgement.held ? "" : "expected " + judgement.expected + ", found " + judgement.found));
    m_other.judged(line, judgement);
}

void JunitReporter::refused(const std::string& message) {
    m_cases.push_back(makeCase({m_script, 0}, "run", Verdict::error, message));
    m_isConcluded = true;
    m_other.refused(message);
}

void JunitReporter::summarised(const RunSummary& summary, int exitCode) {
    settleOpen();
    if (summary.signal != 0) {
        m_cases.push_back(makeCase({m_script, 0}, "run", Verdict::error,
                                   "interrupted by signal " + std::to_string(summary.signal)));
    }
    m_isConcluded = true;
    m_other.summarised(summary, exitCode);
}

std::vector<std::pair<std::string, bool>> JunitReporter::outcomes() const {
    std::vector<std::pair<std::string, bool>> outcomes;
    for (const Case& item : m_cases) {
        outcomes.emplace_back(item.name, item.verdict == Verdict::passed);
    }
    return outcomes;
}

std::size_t JunitReporter::countOf(Verdict verdict) const {
    return static_cast<std::size_t>(std::count_if(
        m_cases.begin(), m_cases.end(), [verdict](const Case& item) { return item.verdict == verdict; }));
}

void JunitReporter::writeCase(std::ostream& out, const Case& item) {
    out << "    <testcase classname=\"" << inXml(item.place.file) << "\" name=\"" << inXml(item.name)
        << "\" file=\"" << inXml(item.place.file) << "\"";
    if (item.place.line != 0) {
        out << " line=\"" << item.place.line << "\"";
    }
    out << " time=\"" << inSeconds(item.seconds) << "\"";
    if (item.verdict == Verdict::passed) {
        out << "/>\n";
        return;
    }
    const char* const element = item.verdict == Verdict::error ? "error" : "failure";
    out << ">\n      <" << element << " message=\"" << inXml(item.message) << "\">"
        << inXml(toString(item.place) + ": " + item.name) << "</" << element << ">\n    </testcase>\n";
}

void JunitReporter::write(std::ostream& out, int exitCode) const {
    const Case lost{{m_script, 0},
                    "run",
                    Verdict::error,
                    "ended before its time, with exit code " + std::to_string(exitCode),
                    0.0};
    const std::size_t more = m_isConcluded ? 0 : 1;
    const std::string counts = "tests=\"" + std::to_string(m_cases.size() + more) + "\" failures=\"" +
                               std::to_string(countOf(Verdict::failure)) + "\" errors=\"" +
                               std::to_string(countOf(Verdict::error) + more) + "\" time=\"" +
                               inSeconds(between(m_start, steady_clock::now())) + "\"";
    out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites " << counts << ">\n  <testsuite name=\""
        << inXml(m_script) << "\" " << counts << ">\n";
    for (const Case& item : m_cases) {
        writeCase(out, item);
    }
    if (!m_isConcluded) {
        writeCase(out, lost);
    }
    out << "  </testsuite>\n</testsuites>\n";
}

void JunitReporter::boardLoaded(const Board& board) {
    m_other.boardLoaded(board);
}

void JunitReporter::phaseStarted(unsigned long phase) {
    m_other.phaseStarted(phase);
}

void JunitReporter::phaseFinished(const Standalone::PhaseReport& report) {
    m_other.phaseFinished(report);
}

void JunitReporter::called(const Standalone::Call& call) {
    m_other.called(call);
}

void JunitReporter::traced(const Standalone::TraceMessage& message) {
    m_other.traced(message);
}

void JunitReporter::notified(const Notification& notification) {
    m_other.notified(notification);
}

void JunitReporter::valueRead(const Reading& reading) {
    m_other.valueRead(reading);
}

void JunitReporter::warned(const std::string& text) {
    m_other.warned(text);
}

void JunitReporter::listed(const Listing& listing) {
    m_other.listed(listing);
}

void JunitReporter::helpWanted(const std::string& about) {
    m_other.helpWanted(about);
}

} // namespace Radio
