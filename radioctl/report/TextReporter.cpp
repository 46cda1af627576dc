#include "radioctl/report/TextReporter.h"

#include "ResultCode.h"
#include "radio/board/PlatformWords.h"
#include "radio/language/HelpText.h"
#include "radio/session/HardwareWrite.h"
#include "radio/session/ScriptLine.h"
#include "radio/text/Words.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <iomanip>
#include <sstream>

namespace Radio {

namespace {

/** What is shown below a command stands here, behind the column of the numbers. */
constexpr std::string_view indent = "     ";

/** The command as it was written, with nothing in it that a terminal would obey. */
std::string shown(const ScriptLine& line) {
    std::string text = line.text;
    std::replace(text.begin(), text.end(), '\t', ' ');
    return harmless(text);
}

std::string channelList(const std::vector<unsigned>& channels) {
    return (channels.size() == 1 ? "channel " : "channels ") + numberList(channels);
}

std::string cellText(const Listing::Cell& cell) {
    return std::visit(Visitor{[](std::int64_t number) { return std::to_string(number); },
                              [](double level) { return inTwoDecimals(level); },
                              [](const std::string& text) { return harmless(text); },
                              [](std::monostate) { return std::string("-"); },
                              [](const std::vector<std::int32_t>& values) {
                                  std::vector<std::string> items;
                                  std::transform(values.begin(), values.end(), std::back_inserter(items),
                                                 [](std::int32_t value) { return std::to_string(value); });
                                  return joined(items, ",");
                              }},
                      cell);
}

std::vector<std::vector<std::string>> textCells(const Listing& listing) {
    std::vector<std::vector<std::string>> lines{listing.columns};
    for (const auto& row : listing.rows) {
        std::vector<std::string> line;
        std::transform(row.begin(), row.end(), std::back_inserter(line), cellText);
        lines.push_back(std::move(line));
    }
    return lines;
}

std::vector<std::size_t> columnWidths(const std::vector<std::vector<std::string>>& lines) {
    std::vector<std::size_t> widths(lines.front().size(), 0);
    for (const auto& line : lines) {
        for (std::size_t column = 0; column < line.size(); ++column) {
            widths[column] = std::max(widths[column], line[column].size());
        }
    }
    return widths;
}

std::string leftIn(const std::string& text, std::size_t width) {
    return text + std::string(width - text.size(), ' ');
}

std::string rightIn(const std::string& text, std::size_t width) {
    return std::string(width - text.size(), ' ') + text;
}

/** So many writes that are as expected are shown on either side of one that is not. */
constexpr std::size_t shownAround = 3;

/** A value in one of two lists side by side. */
std::string valueText(const std::optional<std::int64_t>& value) {
    return value ? std::to_string(*value) : "-";
}

std::string padded(const std::vector<std::string>& line, const std::vector<std::size_t>& widths) {
    std::string text(indent);
    for (std::size_t column = 0; column + 1 < line.size(); ++column) {
        text += line[column] + std::string(widths[column] - line[column].size() + 2, ' ');
    }
    return text + line.back();
}

} // namespace

std::string numberList(const std::vector<unsigned>& numbers) {
    std::vector<std::string> items;
    for (std::size_t begin = 0; begin < numbers.size();) {
        std::size_t end = begin + 1;
        while (end < numbers.size() && numbers[end] == numbers[end - 1] + 1) {
            ++end;
        }
        const bool isRange = end - begin > 2;
        items.push_back(std::to_string(numbers[begin]) +
                        (isRange ? " to " + std::to_string(numbers[end - 1]) : ""));
        begin = isRange ? end : begin + 1;
    }
    return joined(items, ", ");
}

std::string TextReporter::painted(Paint paint, std::string_view text) const {
    if (!m_style.colour) {
        return std::string(text);
    }
    constexpr std::array<std::string_view, 4> escapes = {"\033[1;31m", "\033[33m", "\033[36m", "\033[2m"};
    return std::string(escapes.at(static_cast<std::size_t>(paint))) + std::string(text) + "\033[0m";
}

std::string TextReporter::answer(std::int32_t code) const {
    if (isFailure(code)) {
        return "  " + failure("FAILED " + codeText(code));
    }
    return code == 0 ? "" : "  (answered " + codeText(code) + ")";
}

void TextReporter::boardLoaded(const Board& board) {
    m_boardFile = harmless(board.file.string());
    m_out << harmless(board.name) << " (" << m_boardFile << ")\n";
    std::istringstream description(board.description);
    for (std::string line; std::getline(description, line);) {
        m_out << "  " << harmless(line) << "\n";
    }
    std::vector<std::pair<std::string_view, std::vector<unsigned>>> byType;
    for (const ChannelDescription& channel : board.channels) {
        const std::string_view type = toString(channel.type);
        if (byType.empty() || byType.back().first != type) {
            byType.push_back({type, {}});
        }
        byType.back().second.push_back(static_cast<unsigned>(channel.number));
    }
    for (const auto& [type, channels] : byType) {
        m_out << "  " << channelList(channels) << ": " << type << "\n";
    }
}

void TextReporter::sensed(int degrees, std::size_t observers) {
    m_out << indent << "sensor: " << degrees << " degrees, " << counted(observers, "observer") << " told\n"
          << std::flush;
}

void TextReporter::phaseStarted(unsigned long phase) {
    m_writes = 0;
    m_out << "phase " << phase << ": " << meaningOf(phase) << "\n";
}

void TextReporter::phaseFinished(const Standalone::PhaseReport& report) {
    std::vector<unsigned> good;
    std::string name;
    const auto showGood = [&] {
        if (!good.empty()) {
            m_out << "  " << harmless(name) << ", " << channelList(good) << ": ok\n";
        }
        good.clear();
    };
    for (const Standalone::PhaseStep& step : report.steps) {
        if (step.moduleName != name || isFailure(step.code)) {
            showGood();
        }
        name = step.moduleName;
        if (isFailure(step.code)) {
            m_out << "  " << harmless(name) << ", channel " << step.channel << ": "
                  << failure("FAILED " + codeText(step.code)) << "\n";
        } else {
            good.push_back(step.channel);
        }
    }
    showGood();
}

void TextReporter::booted(bool succeeded) {
    if (succeeded) {
        m_out << "The radio is up.\n";
    } else {
        m_out << failure("The radio did not boot.") << " \"radioctl check " << m_boardFile
              << "\" may say why.\n";
    }
    m_out << std::flush;
}

void TextReporter::commandStarted(const ScriptLine& line) {
    m_writes = 0;
    if (m_style.echo || !line.place.file.empty()) {
        m_out << "\n> " << shown(line) << "\n";
    }
}

void TextReporter::commandFinished(std::int32_t code, const std::string& note) {
    if (isFailure(code)) {
        m_out << indent << "result" << answer(code) << "\n";
    }
    if (!note.empty()) {
        m_out << indent << harmless(note) << "\n";
    }
    m_out << std::flush;
}

void TextReporter::called(const Standalone::Call& call) {
    if (isWrite(call)) {
        showWrite(call);
    } else if (m_style.verbose || mattersToAPerson(call)) {
        m_out << indent << Standalone::toString(call.operation) << (call.object.empty() ? "" : " ")
              << harmless(call.object) << answer(call.code) << "\n";
    }
}

void TextReporter::showWrite(const Standalone::Call& call) {
    if (isSuccess(call.code)) {
        m_out << std::setw(3) << ++m_writes;
    } else {
        m_out << "  -";
    }
    m_out << "  " << harmless(destination(call)) << " <- " << call.value;
    if (call.operation == Standalone::Operation::driverWriteBuffer) {
        m_out << " (" << counted(call.bytes.size(), "byte") << ")";
    }
    m_out << answer(call.code) << "\n";
    for (const AttributeWrite& write : attributesOf(call)) {
        m_out << indent << "  => " << harmless(write.attribute) << " <- "
              << (write.text.empty() ? "nothing that it could take" : harmless(write.text)) << "\n";
    }
}

void TextReporter::traced(const Standalone::TraceMessage& message) {
    namespace Level = Standalone::TraceLevel;
    const Paint paint = message.level == Level::error     ? Paint::failure
                        : message.level == Level::warning ? Paint::warning
                        : message.level == Level::notice  ? Paint::notice
                                                          : Paint::faint;
    std::string text = std::string(toString(message.level)) + ": " + message.text;
    if (m_style.verbose) {
        text += " [" + std::filesystem::path(message.file).filename().string() + ":" +
                std::to_string(message.line) + "]";
    }
    m_out << indent << painted(paint, harmless(text)) << "\n";
}

void TextReporter::notified(const Notification& notification) {
    m_out << indent << toString(notification.direction) << " " << notification.channel << " told its "
          << (notification.throughC ? "C observer: " : "observer: ") << notification.frequency << " kHz\n"
          << std::flush;
}

void TextReporter::valueRead(const Reading& reading) {
    m_out << indent;
    if (reading.seconds) {
        m_out << std::setw(8) << inDecimals(*reading.seconds, 1) << " s  ";
    }
    m_out << harmless(reading.driver) << " = " << reading.value << "\n" << std::flush;
}

void TextReporter::warned(const std::string& text) {
    m_out << indent << painted(Paint::warning, "warning: " + harmless(text)) << "\n";
}

void TextReporter::judged(const ScriptLine& line, const Judgement& judgement) {
    if (judgement.held) {
        m_out << "  held    " << shown(line) << "\n";
    } else {
        m_out << "  " << failure("FAILED") << "  " << shown(line)
              << (line.place.file.empty() ? "" : "  (" + toString(line.place) + ")") << "\n";
        if (judgement.writes.empty()) {
            m_out << "          expected " << harmless(judgement.expected) << ", found "
                  << harmless(judgement.found) << "\n";
        } else {
            showWrites(judgement.writes);
        }
    }
    m_out << std::flush;
}

void TextReporter::showWrites(const std::vector<AlignedWrite>& writes) {
    const auto differsNear = [&writes](std::size_t at) {
        const std::size_t first = at - std::min(at, shownAround);
        const std::size_t last = std::min(at + shownAround + 1, writes.size());
        return std::any_of(writes.begin() + static_cast<std::ptrdiff_t>(first),
                           writes.begin() + static_cast<std::ptrdiff_t>(last),
                           [](const AlignedWrite& write) { return !write.isSame(); });
    };
    std::vector<std::vector<std::string>> lines{{" ", "driver", "expected", "found"}};
    std::size_t skipped = 0;
    const auto tellSkipped = [&] {
        if (skipped != 0) {
            lines.push_back({" ", "... " + std::to_string(skipped) + " as expected", "", ""});
        }
        skipped = 0;
    };
    for (std::size_t at = 0; at < writes.size(); ++at) {
        if (!differsNear(at)) {
            ++skipped;
            continue;
        }
        tellSkipped();
        const AlignedWrite& write = writes[at];
        lines.push_back({write.isSame() ? " " : "!", harmless(write.driver), valueText(write.expected),
                         valueText(write.found)});
    }
    tellSkipped();
    const auto widths = columnWidths(lines);
    for (const auto& line : lines) {
        const std::string text = "        " + line[0] + " " + leftIn(line[1], widths[1]) + "  " +
                                 rightIn(line[2], widths[2]) + "  " + rightIn(line[3], widths[3]);
        m_out << text.substr(0, text.find_last_not_of(' ') + 1) << "\n";
    }
}

void TextReporter::listed(const Listing& listing) {
    const auto lines = textCells(listing);
    if (listing.rows.empty()) {
        m_out << indent << "no " << listing.title << "\n";
        return;
    }
    const auto widths = columnWidths(lines);
    for (const auto& line : lines) {
        m_out << padded(line, widths) << "\n";
    }
}

void TextReporter::helpWanted(const std::string& about) {
    m_out << helpText(about);
}

void TextReporter::refused(const std::string& /*message*/) {
    m_out << std::flush;
}

void TextReporter::summarised(const RunSummary& summary, int /*exitCode*/) {
    m_out << "\n";
    showTotals(summary.session);
    if (!summary.session.bootAccepted) {
        m_out << failure("The radio did not boot, and no \"expect result\" came first.") << "\n";
    }
    if (summary.session.unexpectedFailures != 0) {
        m_out << failure(counted(summary.session.unexpectedFailures, "command") + " FAILED")
              << " without an \"expect result\".\n";
    }
    if (summary.refusedLines != 0) {
        m_out << failure(counted(summary.refusedLines, "line") + " refused.") << "\n";
    }
    if (summary.signal != 0) {
        m_out << "Interrupted.\n";
    }
    m_out << std::flush;
}

void TextReporter::showTotals(const Summary& summary) {
    const std::size_t expectations = summary.held + summary.failed;
    m_out << counted(summary.commands, "command") << ", " << counted(expectations, "expectation");
    if (summary.failed != 0) {
        m_out << ": " << failure(std::to_string(summary.failed) + " FAILED");
    } else if (expectations != 0) {
        m_out << ": all held";
    }
    m_out << ".\n";
}

} // namespace Radio
