#include "radioctl/plan/ExplanationReport.h"

#include "ResultCode.h"
#include "radio/text/Words.h"
#include "radioctl/report/JsonLine.h"
#include "radioctl/report/TextTable.h"
#include "radioctl/report/Wrapped.h"

#include <algorithm>
#include <iterator>

namespace Radio::Plan {

namespace {

/** A list that is longer stands among the meanings, where there is room for it. */
constexpr std::size_t widestValue = 11;

std::string valuesText(const std::vector<std::int32_t>& values, std::string_view separator) {
    std::vector<std::string> items;
    std::transform(values.begin(), values.end(), std::back_inserter(items),
                   [](std::int32_t value) { return std::to_string(value); });
    return items.empty() ? "missing" : joined(items, separator);
}

/** A formula that is broken between its summands only. */
std::string inSums(std::string formula) {
    constexpr std::string_view times = " x ";
    for (std::size_t at = formula.find(times); at != std::string::npos; at = formula.find(times, at)) {
        formula[at] = unbreakableSpace;
        formula[at + 2] = unbreakableSpace;
    }
    return formula;
}

void writeSteps(std::ostream& out, const std::string& heading, const std::vector<ExplainedStep>& steps) {
    TextTable table;
    table.alignRight(2);
    table.fit(4, 1);
    for (const ExplainedStep& step : steps) {
        table.add({step.name, inSums(step.formula), std::to_string(step.value), step.unit, step.note});
    }
    out << "\n" << heading << "\n";
    table.write(out);
}

void writeVariables(std::ostream& out, const std::vector<ReadVariable>& variables) {
    TextTable table;
    table.alignRight(1);
    table.fit(2);
    for (const ReadVariable& variable : variables) {
        const std::string values = valuesText(variable.values, ",");
        if (values.size() <= widestValue) {
            table.add({variable.name, values, variable.meaning});
        } else {
            table.add({variable.name, "", variable.meaning + ": " + valuesText(variable.values, ", ")});
        }
    }
    out << "\nParameters\n";
    table.write(out);
}

void writeWrites(std::ostream& out, const std::vector<ExplainedWrite>& writes) {
    out << "\nWords written, in this order\n";
    TextTable table;
    table.alignRight(0);
    std::size_t number = 0;
    for (const ExplainedWrite& write : writes) {
        const bool failed = isFailure(write.code);
        table.add({failed ? "-" : std::to_string(++number),
                   write.driver + " <- " + std::to_string(write.value) +
                       (failed ? "  FAILED " + codeText(write.code) : "")});
    }
    if (writes.empty()) {
        table.add({"none"});
    }
    table.write(out);
}

void writeOutcome(std::ostream& out, const Explanation& explanation) {
    out << "\n";
    if (!explanation.forbidden.empty()) {
        writeWrapped(out, "FORBIDDEN by the board: " + explanation.forbidden, 0, 4);
    }
    for (const std::string& complaint : explanation.complaints) {
        writeWrapped(out, "The library reports: " + complaint, 0, 4);
    }
    if (explanation.produced) {
        const std::int64_t error = *explanation.error();
        const std::string off = "off by " + signedText(error) + " Hz" +
                                (explanation.whyOff.empty() ? "" : ": " + explanation.whyOff);
        writeWrapped(out,
                     "These words produce " + std::to_string(*explanation.produced) + " Hz, " +
                         (error == 0 ? "exactly the carrier" : off) + ".",
                     0, 4);
    } else {
        out << "No carrier comes of these words.\n";
    }
    for (const std::string& disagreement : explanation.disagreements) {
        writeWrapped(out, "DIFFERENT " + disagreement, 0, 4);
    }
    if (explanation.disagreements.empty()) {
        out << "The library wrote what the steps say.\n";
    }
}

void writeJsonSteps(std::ostream& out, const char* event, const std::vector<ExplainedStep>& steps) {
    for (const ExplainedStep& step : steps) {
        Json line = {{"event", event},
                     {"name", step.name},
                     {"formula", step.formula},
                     {"value", step.value},
                     {"unit", step.unit}};
        if (!step.note.empty()) {
            line["note"] = step.note;
        }
        writeJsonLine(out, line);
    }
}

} // namespace

void writeText(std::ostream& out, const Board& board, const Explanation& explanation) {
    writeBoardName(out, board.name, harmless(board.file.string()));
    out << "  " << toString(explanation.direction) << " " << explanation.channel.number << ", "
        << Radio::toString(explanation.channel.type) << ": " << explanation.carrier << " kHz\n";
    if (explanation.passesOn()) {
        out << "\nThe carrier is passed on unchanged; its plan is made elsewhere.\n";
    } else {
        writeVariables(out, explanation.variables);
        writeSteps(out, "Steps", explanation.steps);
    }
    writeWrites(out, explanation.writes);
    if (explanation.assumedDegrees) {
        out << "\nThe mixer's corrections are for " << *explanation.assumedDegrees
            << " degrees: no temperature was told.\n";
    }
    if (!explanation.production.empty()) {
        writeSteps(out, "What the words produce", explanation.production);
    }
    writeOutcome(out, explanation);
}

void writeJson(std::ostream& out, const Board& board, const Explanation& explanation) {
    writeJsonLine(out, {{"event", "carrier"},
                        {"file", board.file.string()},
                        {"channel", explanation.channel.number},
                        {"type", Radio::toString(explanation.channel.type)},
                        {"direction", toString(explanation.direction)},
                        {"khz", explanation.carrier},
                        {"passed_on", explanation.passesOn()},
                        {"assumed_degrees", orNull(explanation.assumedDegrees)}});
    for (const ReadVariable& variable : explanation.variables) {
        writeJsonLine(out, {{"event", "parameter"},
                            {"variable", variable.name},
                            {"values", variable.values},
                            {"meaning", variable.meaning}});
    }
    writeJsonSteps(out, "step", explanation.steps);
    for (const ExplainedWrite& write : explanation.writes) {
        writeJsonLine(out, {{"event", "word"},
                            {"driver", write.driver},
                            {"value", write.value},
                            {"code", write.code},
                            {"ok", isSuccess(write.code)}});
    }
    writeJsonSteps(out, "production", explanation.production);
    Json end = {{"event", "explained"},
                {"produced_hz", orNull(explanation.produced)},
                {"error_hz", orNull(explanation.error())},
                {"complaints", explanation.complaints},
                {"disagreements", explanation.disagreements},
                {"ok", explanation.isGood()}};
    if (!explanation.whyOff.empty()) {
        end["why_off"] = explanation.whyOff;
    }
    writeJsonLine(out, end);
}

} // namespace Radio::Plan
