#include "radio/tables/Lint.h"

#include "radio/board/BoardFile.h"
#include "radio/board/BoardNames.h"
#include "radio/board/TableCheck.h"
#include "radio/board/TableFile.h"
#include "radio/files/InputError.h"
#include "radio/tables/Corrections.h"
#include "radio/tables/LimitLint.h"
#include "radio/tables/TableLint.h"
#include "radio/text/Words.h"

#include <algorithm>
#include <array>
#include <set>
#include <tuple>
#include <utility>

namespace Radio::Tables {

namespace {

using Findings = std::vector<Finding>;

void sortByLine(Findings& findings) {
    std::stable_sort(findings.begin(), findings.end(),
                     [](const Finding& a, const Finding& b) { return a.place.line < b.place.line; });
}

/** What a state in a row says against its node. */
struct StateComplaint {
    const char* state;
    Severity severity;
    const char* ofSearch;
    const char* ofFit;
};

constexpr std::array<StateComplaint, 3> stateComplaints{
    {{"edge", Severity::warning,
      "the search ended at the edge of its range; the best corrections may lie beyond",
      "at the end of its range; the best corrections may lie beyond"},
     {"missed", Severity::warning, "the corrections found did not meet the limits of their board",
      "the corrections did not meet the limits of their board"},
     {"failed", Severity::error, "the search failed; there are no corrections", "there are no corrections"}}};

/** What stands in the column "state" of a calibration. A fit has so many nodes that the first stands for all.
 */
void lintStates(const CsvFile& file, Findings& findings) {
    if (!file.hasColumn("state")) {
        return;
    }
    const bool isFit = file.findProperty("method").has_value();
    const std::size_t column = file.column("state");
    for (const StateComplaint& complaint : stateComplaints) {
        std::vector<std::size_t> rows;
        for (std::size_t row = 0; row < file.rows(); ++row) {
            if (file.item(row, column).text() == complaint.state) {
                rows.push_back(row);
            }
        }
        const std::string more =
            isFit && rows.size() > 1 ? " and " + counted(rows.size() - 1, "more node") : "";
        if (isFit && !rows.empty()) {
            rows.resize(1);
        }
        for (const std::size_t row : rows) {
            findings.push_back({complaint.severity, file.item(row, column).place(),
                                file.item(row, 0).text() + " kHz at " + file.item(row, 1).text() +
                                    " degrees" + more + ": " +
                                    (isFit ? complaint.ofFit : complaint.ofSearch)});
        }
    }
}

/** What a calibration says of itself. */
void lintVerdict(const CsvFile& file, Findings& findings) {
    const std::optional<CsvItem> verdict = file.findProperty("verdict");
    if (verdict && verdict->text() != "PASS") {
        findings.push_back({Severity::warning, verdict->place(),
                            "limits of its board were not held: " + inQuotes(verdict->text())});
    }
}

// CSV files

/** The first row that is not behind the one before it, in the order that `isBefore` gives; or how many there
 * are. */
template <typename IsBefore>
std::size_t firstDisorder(std::size_t rows, IsBefore isBefore) {
    std::size_t row = 1;
    while (row < rows && !isBefore(row, row - 1)) {
        ++row;
    }
    return row;
}

/** Either axis may run fastest. */
void lintOrder(const CsvFile& file, Findings& findings) {
    std::vector<std::pair<std::int32_t, std::int32_t>> nodes;
    for (std::size_t row = 0; row < file.rows(); ++row) {
        nodes.emplace_back(file.item(row, 0).integer(), file.item(row, 1).integer());
    }
    const auto byCarrier = [&](std::size_t a, std::size_t b) { return nodes[a] < nodes[b]; };
    const auto byTemperature = [&](std::size_t a, std::size_t b) {
        return std::tie(nodes[a].second, nodes[a].first) < std::tie(nodes[b].second, nodes[b].first);
    };
    const std::size_t row =
        std::max(firstDisorder(nodes.size(), byCarrier), firstDisorder(nodes.size(), byTemperature));
    if (row < nodes.size()) {
        findings.push_back({Severity::warning,
                            {file.place().file, file.line(row)},
                            std::to_string(nodes[row].first) + " kHz at " +
                                std::to_string(nodes[row].second) +
                                " degrees: the rows are not in ascending order"});
    }
}

std::string oneColumnOnly(const std::string& present, const std::string& missing) {
    return "a column \"" + present + "\", but none \"" + missing + "\"";
}

/** Every value of the column is a correction, also where the nodes make no table. */
void readAll(const CsvFile& file, std::size_t column) {
    for (std::size_t row = 0; row < file.rows(); ++row) {
        file.item(row, column).integer();
    }
}

LintedTable tableOf(const CsvFile& file, const NodeGrid& grid, const std::string& column) {
    const Place heading{file.place().file, file.headingLine()};
    LintedTable linted{
        column, {"", grid.axis1, grid.axis2, valuesOf(file, grid, file.column(column))}, heading, {}};
    for (const std::size_t row : grid.rows) {
        linted.lines.push_back(file.line(row));
    }
    return linted;
}

// Boards

/** The two tables of one channel. */
class ChannelLint {
public:
    ChannelLint(const Board& board, int channel, Findings& findings)
        : m_board(board),
          m_channel(channel),
          m_findings(findings),
          m_i(findCancellationTable(board, channel, "I")),
          m_q(findCancellationTable(board, channel, "Q")) {}

    bool hasTables() const { return m_i != nullptr || m_q != nullptr; }
    void run();

private:
    std::string label() const { return "channel " + std::to_string(m_channel); }
    void warn(const TableDescription& table, const std::string& text) {
        m_findings.push_back({Severity::warning, table.place, text});
    }
    void lintMissing();
    void lintBoth(const LintedTable& i, const LintedTable& q, const Coverage& needed);
    std::optional<LintedTable> usable(const TableDescription* table, std::string_view branch);

    const Board& m_board;
    int m_channel;
    Findings& m_findings;
    const TableDescription* m_i;
    const TableDescription* m_q;
};

std::optional<LintedTable> ChannelLint::usable(const TableDescription* table, std::string_view branch) {
    const std::string name = label() + ", " + std::string(branch);
    if (table == nullptr) {
        return std::nullopt;
    }
    if (!table->isThere()) {
        warn(*table, name + ": there is no file " + inQuotes(table->file.string()) + " yet");
        return std::nullopt;
    }
    if (table->table.axis2.empty()) {
        m_findings.push_back({Severity::error, table->place, name + ": one axis, expected two"});
        return std::nullopt;
    }
    return LintedTable{name, table->table, table->place, {}};
}

void ChannelLint::lintMissing() {
    if (m_i == nullptr) {
        warn(*m_q, label() + ": a table for Q, but none for I");
    } else if (m_q == nullptr) {
        warn(*m_i, label() + ": a table for I, but none for Q");
    }
}

void ChannelLint::lintBoth(const LintedTable& i, const LintedTable& q, const Coverage& needed) {
    if (i.table.axis1 == q.table.axis1 && i.table.axis2 == q.table.axis2) {
        lintAxes(label(), i, needed, m_findings);
        return;
    }
    warn(*m_q, label() + ": the tables for I and Q have different axes");
    lintAxes(i.label, i, needed, m_findings);
    lintAxes(q.label, q, needed, m_findings);
}

void ChannelLint::run() {
    lintMissing();
    const std::optional<LintedTable> i = usable(m_i, "I");
    const std::optional<LintedTable> q = usable(m_q, "Q");
    const Coverage needed{transmitBand(m_board, m_channel), m_board.limits.temperature};
    if (i && q) {
        lintBoth(*i, *q, needed);
        lintLimits(m_board, m_channel, *m_i, *m_q, m_findings);
    } else if (i || q) {
        const LintedTable& only = i ? *i : *q;
        lintAxes(only.label, only, needed, m_findings);
    }
    const LeakageDescription* const leakage = findLeakage(m_board, m_channel);
    for (const auto& [linted, member] :
         {std::pair(&i, &LeakageDescription::i), std::pair(&q, &LeakageDescription::q)}) {
        if (*linted) {
            lintValues(**linted, m_findings);
        }
        if (*linted && leakage != nullptr) {
            lintConverter(**linted, leakage->*member, m_findings);
        }
    }
}

/** What the file of a channel's tables says of their origin and their points. */
void lintFile(const Board& board, int channel, const TableDescription& table, Findings& findings) {
    const Findings origin = findingsOfOrigin(table, board, channel);
    findings.insert(findings.end(), origin.begin(), origin.end());
    const CsvFile file(table.file, "a calibration table");
    lintClaim(board, channel, file, findings);
    lintVerdict(file, findings);
    lintStates(file, findings);
}

Findings lintFiles(const Board& board) {
    Findings findings;
    std::set<std::pair<int, std::filesystem::path>> files;
    for (const ChannelDescription& channel : board.channels) {
        for (const char* const branch : {"I", "Q"}) {
            const TableDescription* const table = findCancellationTable(board, channel.number, branch);
            const bool isInFile = table != nullptr && table->isThere() && !table->file.empty();
            if (isInFile && files.insert({channel.number, table->file}).second) {
                lintFile(board, channel.number, *table, findings);
            }
        }
    }
    return findings;
}

} // namespace

bool hasTables(const Board& board) {
    return std::any_of(board.channels.begin(), board.channels.end(),
                       [&board](const ChannelDescription& channel) {
                           return findCancellationTable(board, channel.number, "I") != nullptr ||
                                  findCancellationTable(board, channel.number, "Q") != nullptr;
                       });
}

Findings lintBoard(const Board& board) {
    Findings findings;
    for (const ChannelDescription& channel : board.channels) {
        ChannelLint lint(board, channel.number, findings);
        if (lint.hasTables()) {
            lint.run();
        }
    }
    if (!hasTables(board)) {
        throw InputError({board.file.string(), 0},
                         "no LO-cancellation tables, expected some such as " +
                             inQuotes(cancellationTableName(board.channels.front().number, "I")));
    }
    sortByLine(findings);
    const Findings ofFiles = lintFiles(board);
    findings.insert(findings.end(), ofFiles.begin(), ofFiles.end());
    return findings;
}

Findings lintCsv(const CsvFile& file) {
    const NodeGrid grid = gridOf(file);
    const Place heading{file.place().file, file.headingLine()};
    if (!file.hasColumn("i") && !file.hasColumn("q")) {
        throw InputError(heading, R"(no column "i" and none "q", expected corrections)");
    }
    Findings findings;
    for (const NodeProblem& problem : grid.problems) {
        findings.push_back({Severity::error, {file.place().file, problem.line}, problem.text});
    }
    lintVerdict(file, findings);
    lintOrder(file, findings);
    lintStates(file, findings);
    bool hasAxes = false;
    for (const auto& [column, other] : {std::pair<std::string, std::string>("i", "q"), {"q", "i"}}) {
        if (!file.hasColumn(column)) {
            findings.push_back({Severity::warning, heading, oneColumnOnly(other, column)});
            continue;
        }
        readAll(file, file.column(column));
        if (grid.problems.empty()) {
            const LintedTable linted = tableOf(file, grid, column);
            if (!std::exchange(hasAxes, true)) {
                lintAxes("", linted, {}, findings);
            }
            lintValues(linted, findings);
        }
    }
    sortByLine(findings);
    return findings;
}

std::vector<Finding> lintFile(const std::filesystem::path& file) {
    return isBoardFile(file) ? lintBoard(loadBoard(file)) : lintCsv(CsvFile(file, "a calibration table"));
}

} // namespace Radio::Tables
