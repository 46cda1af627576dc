#include "radioctl/report/JsonReporter.h"

#include "ResultCode.h"
#include "radio/board/PlatformWords.h"
#include "radio/language/HelpText.h"
#include "radio/session/HardwareWrite.h"
#include "radio/session/ScriptLine.h"
#include "radioctl/report/JsonLine.h"

#include <cmath>

namespace Radio {

namespace {

/** Puts file and line into `event` if the line was read from a file. */
void addPlace(Json& event, const Place& place) {
    if (!place.file.empty()) {
        event["file"] = place.file;
        event["line"] = place.line;
    }
}

void addCode(Json& event, std::int32_t code) {
    event["code"] = code;
    event["ok"] = isSuccess(code);
}

Json cellValue(const Listing::Cell& cell) {
    return std::visit(Visitor{[](const auto& value) { return Json(value); },
                              [](double level) { return Json(std::round(level * 100.0) / 100.0); },
                              [](std::monostate) { return Json(nullptr); }},
                      cell);
}

/** Where two lists of writes are not the same. */
Json differences(const std::vector<AlignedWrite>& writes) {
    Json list = Json::array();
    for (const AlignedWrite& write : writes) {
        if (!write.isSame()) {
            list.push_back({{"driver", write.driver},
                            {"expected", orNull(write.expected)},
                            {"found", orNull(write.found)}});
        }
    }
    return list;
}

} // namespace

void JsonReporter::boardLoaded(const Board& board) {
    Json channels = Json::array();
    for (const ChannelDescription& channel : board.channels) {
        channels.push_back({{"number", channel.number}, {"type", toString(channel.type)}});
    }
    writeJsonLine(m_out, {{"event", "board"},
                          {"file", board.file.string()},
                          {"name", board.name},
                          {"description", board.description},
                          {"channels", channels}});
}

void JsonReporter::sensed(int degrees, std::size_t observers) {
    writeJsonLine(m_out, {{"event", "sensed"}, {"degrees", degrees}, {"observers", observers}});
}

void JsonReporter::phaseStarted(unsigned long phase) {
    writeJsonLine(m_out, {{"event", "phase"}, {"phase", phase}, {"meaning", meaningOf(phase)}});
}

void JsonReporter::phaseFinished(const Standalone::PhaseReport& report) {
    for (const Standalone::PhaseStep& step : report.steps) {
        Json event = {{"event", "module"},
                      {"phase", report.phase},
                      {"module", step.moduleName},
                      {"id", step.moduleId},
                      {"channel", step.channel}};
        addCode(event, step.code);
        writeJsonLine(m_out, event);
    }
}

void JsonReporter::booted(bool succeeded) {
    writeJsonLine(m_out, {{"event", "booted"}, {"ok", succeeded}});
}

void JsonReporter::commandStarted(const ScriptLine& line) {
    Json event = {{"event", "command"}, {"text", line.text}};
    addPlace(event, line.place);
    writeJsonLine(m_out, event);
}

void JsonReporter::commandFinished(std::int32_t code, const std::string& note) {
    Json event = {{"event", "result"}};
    addCode(event, code);
    if (!note.empty()) {
        event["note"] = note;
    }
    writeJsonLine(m_out, event);
}

void JsonReporter::called(const Standalone::Call& call) {
    if (!m_verbose && !mattersToAPerson(call)) {
        return;
    }
    Json event = {
        {"event", "call"}, {"operation", Standalone::toString(call.operation)}, {"object", call.object}};
    if (isWrite(call)) {
        event["destination"] = destination(call);
    }
    event["value"] = call.value;
    if (call.operation == Standalone::Operation::driverWriteBuffer) {
        event["bytes"] = call.bytes;
    }
    addCode(event, call.code);
    for (const AttributeWrite& write : attributesOf(call)) {
        event["attributes"].push_back({{"attribute", write.attribute}, {"text", write.text}});
    }
    writeJsonLine(m_out, event);
}

void JsonReporter::traced(const Standalone::TraceMessage& message) {
    writeJsonLine(m_out, {{"event", "trace"},
                          {"level", toString(message.level)},
                          {"source", message.source},
                          {"file", message.file},
                          {"line", message.line},
                          {"text", message.text}});
}

void JsonReporter::notified(const Notification& notification) {
    writeJsonLine(m_out, {{"event", "notified"},
                          {"direction", toString(notification.direction)},
                          {"channel", notification.channel},
                          {"khz", notification.frequency},
                          {"observer", notification.throughC ? "C" : "class"}});
}

void JsonReporter::valueRead(const Reading& reading) {
    Json event = {{"event", "value"}, {"driver", reading.driver}, {"value", reading.value}};
    if (reading.seconds) {
        event["seconds"] = std::round(*reading.seconds * 1000.0) / 1000.0;
    }
    writeJsonLine(m_out, event);
}

void JsonReporter::warned(const std::string& text) {
    writeJsonLine(m_out, {{"event", "warning"}, {"text", text}});
}

void JsonReporter::judged(const ScriptLine& line, const Judgement& judgement) {
    Json event = {{"event", "expectation"},
                  {"text", line.text},
                  {"held", judgement.held},
                  {"expected", judgement.expected},
                  {"found", judgement.found}};
    if (!judgement.writes.empty()) {
        event["differences"] = differences(judgement.writes);
    }
    addPlace(event, line.place);
    writeJsonLine(m_out, event);
}

void JsonReporter::listed(const Listing& listing) {
    Json rows = Json::array();
    for (const auto& row : listing.rows) {
        Json object = Json::object();
        for (std::size_t column = 0; column < row.size(); ++column) {
            object[listing.columns[column]] = cellValue(row[column]);
        }
        rows.push_back(object);
    }
    writeJsonLine(m_out, {{"event", "list"}, {"of", listing.title}, {"rows", rows}});
}

void JsonReporter::helpWanted(const std::string& about) {
    writeJsonLine(m_out, {{"event", "help"}, {"text", helpText(about)}});
}

void JsonReporter::refused(const std::string& message) {
    writeJsonLine(m_out, {{"event", "error"}, {"message", message}});
}

void JsonReporter::summarised(const RunSummary& summary, int exitCode) {
    writeJsonLine(m_out, {{"event", "summary"},
                          {"booted", summary.session.booted},
                          {"commands", summary.session.commands},
                          {"held", summary.session.held},
                          {"failed", summary.session.failed},
                          {"unexpected_failures", summary.session.unexpectedFailures},
                          {"refused_lines", summary.refusedLines},
                          {"interrupted", summary.signal != 0},
                          {"exit_code", exitCode}});
}

} // namespace Radio
