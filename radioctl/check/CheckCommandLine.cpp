#include "radioctl/check/CheckCommandLine.h"

#include "radio/board/BoardCheck.h"
#include "radio/board/BoardFile.h"
#include "radio/plan/Audit.h"
#include "radio/tables/Lint.h"
#include "radio/text/Words.h"
#include "radioctl/bench/HardwareCheck.h"
#include "radioctl/options/ExitCode.h"
#include "radioctl/plan/PlanPrograms.h"
#include "radioctl/report/FindingReport.h"
#include "radioctl/report/JsonLine.h"
#include "radioctl/report/Output.h"

#include <algorithm>
#include <iostream>

namespace Radio {

namespace {

/** Adds those of `more` that are not there yet: check and lint look at some things both. */
void addNew(std::vector<Finding>& findings, const std::vector<Finding>& more) {
    for (const Finding& finding : more) {
        const bool isThere = std::any_of(findings.begin(), findings.end(), [&finding](const Finding& other) {
            return toString(other.place) == toString(finding.place) && other.text == finding.text;
        });
        if (!isThere) {
            findings.push_back(finding);
        }
    }
}

} // namespace

CheckCommandLine::CheckCommandLine(CommandLine::Command program)
    : m_check(program.command("check", "Say what a board lacks or has too much of,\nwithout booting it")) {
    m_check.option("BOARD", m_boards, "Board descriptions (TOML)").required().file({".toml"});
    m_check.flag("--all", m_all,
                 "Look at its tables as well, as tables lint\ndoes, then boot it and audit its carriers");
    m_check.flag("--strict", m_strict, "Warnings count as errors");
    m_check.flag("--hardware", m_hardware,
                 "Also find every device and attribute, readable\nand writable, writing nothing");
    m_check.json(m_json);
}

int CheckCommandLine::run(bool json) {
    m_json |= json;
    int worst = ExitCode::good;
    for (const std::string& board : m_boards) {
        worst = std::max(worst, refusing(m_json, [&] { return check(board); }));
        if (worst > ExitCode::signalBase) {
            break;
        }
    }
    return worst;
}

int CheckCommandLine::check(const std::string& file) const {
    const Board board = loadBoard(file);
    std::vector<Finding> findings = checkBoard(board);
    if (m_all && Tables::hasTables(board)) {
        addNew(findings, Tables::lintBoard(board));
    }
    int code = showFindings(file, findings, m_json, m_strict);
    if (m_hardware) {
        code = std::max(code, checkHardware(board, m_json));
    }
    if (!m_all) {
        return code;
    }
    if (!Tables::hasTables(board)) {
        tellSkipped(file, "tables", "it has no tables of the LO cancellation");
    }
    return std::max(code, audit(file, board, std::any_of(findings.begin(), findings.end(), isError)));
}

int CheckCommandLine::audit(const std::string& file, const Board& board, bool hasErrors) const {
    if (Plan::rowsOf(board).empty()) {
        tellSkipped(file, "audit", "it has no raster");
        return ExitCode::good;
    }
    if (hasErrors) {
        tellSkipped(file, "audit", "it has errors");
        return ExitCode::good;
    }
    Plan::AuditOptions options;
    options.json = m_json;
    options.boards = {file};
    return Plan::runAudit(options);
}

void CheckCommandLine::tellSkipped(const std::string& file, const char* part, const std::string& why) const {
    if (m_json) {
        writeJsonLine(std::cout, {{"event", "skipped"}, {"file", file}, {"part", part}, {"why", why}});
    } else {
        std::cout << harmless(file) << ": " << part << " passed over: " << why << "\n";
    }
}

} // namespace Radio
